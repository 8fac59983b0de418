// What the conformance tests stand on: the platform of this build, reached through the seam alone, so that
// one suite gives the same answers everywhere. Natively each test has a machine on a profile folder of its
// own.
#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

#include "core/current_platform.h"

#ifdef _WIN32
#include <process.h>
#else
#include "common/machine_test.h"
#endif

namespace ovno2 {

class PlatformTest : public ::testing::Test {
  protected:
#ifdef _WIN32
    PlatformTest() {
        static int count = 0;
        folder_ = std::filesystem::temp_directory_path() /
                  ("ovno2-" + std::to_string(_getpid()) + "-" + std::to_string(++count));
        std::filesystem::create_directories(folder_);
        resetThreadState();
    }
    ~PlatformTest() override {
        resetThreadState();
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    const std::filesystem::path& folder() const {
        return folder_;
    }
    // A path in the test's own folder, as the seam takes it.
    Text pathOf(const std::string& name) const {
        return (folder_ / name).u16string();
    }
#else
    PlatformTest() : machine_(folder_.path() / "profile") {
        std::filesystem::create_directory(folder_.path() / "files");
        resetThreadState();
        usePlatform(machine_);
    }
    ~PlatformTest() override {
        resetThreadState();
    }
    std::filesystem::path folder() const {
        return folder_.path() / "files";
    }
    Text pathOf(const std::string& name) const {
        return u"Z:" + replaceAll((folder() / name).u16string(), u"/", u"\\");
    }
#endif

    void writeFile(const std::string& name, std::string_view bytes) const {
        std::ofstream(folder() / name, std::ios::binary) << bytes;
    }
    std::string readFile(const std::string& name) const {
        std::ifstream stream(folder() / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

  private:
#ifdef _WIN32
    std::filesystem::path folder_;
#else
    TemporaryFolder folder_;
    platform::portable::Machine machine_;
#endif
};

}  // namespace ovno2
