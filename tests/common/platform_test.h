// What the conformance tests stand on: the platform of this build, reached through the seam alone, so that
// one suite gives the same answers everywhere. Natively each test has a machine on a profile folder of its
// own.
#pragma once

#include "common/machine_test.h"

namespace ovno2 {

class PlatformTest : public ::testing::Test {
  protected:
    PlatformTest() {
        resetThreadState();
#ifndef _WIN32
        usePlatform(machine_);
#endif
        std::filesystem::create_directory(folder());
    }
    ~PlatformTest() override {
        resetThreadState();
    }

    std::filesystem::path folder() const {
        return folder_.path() / "files";
    }
    // A path in the test's own folder, as the seam takes it.
    Text pathOf(const std::string& name) const {
#ifdef _WIN32
        return (folder() / name).make_preferred().u16string();
#else
        return u"Z:" + replaceAll((folder() / name).u16string(), u"/", u"\\");
#endif
    }

    void writeFile(const std::string& name, std::string_view bytes) const {
        writeContent(folder() / name, bytes);
    }
    std::string readFile(const std::string& name) const {
        return contentOf(folder() / name);
    }

  private:
    TemporaryFolder folder_;
#ifndef _WIN32
    platform::portable::Machine machine_{folder_.path() / "profile"};
#endif
};

}  // namespace ovno2
