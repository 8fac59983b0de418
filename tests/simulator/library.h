// The simulated libraries as a caller sees them: bound by name, and a reader that lets go of everything it
// gets.
#pragma once

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "library/library_calls.h"
#include "simulator/calls/exports.h"
#include "simulator/control/control.h"

namespace simulator_tests {

using namespace ovno2::library;
using Json = nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// A function of one of the two libraries.
void* symbol(const char* library, const char* name);

template <typename Signature>
Signature* bound(const char* library, const char* name) {
    return reinterpret_cast<Signature*>(symbol(library, name));
}

#define CONNAPI(name) (*simulator_tests::bound<ovno2::library::signature::name>("ConnAPI", #name))
#define DAAPI(name) (*simulator_tests::bound<ovno2::library::signature::name>("DAAPI", #name))

inline char* at(Word address) {
    return reinterpret_cast<char*>(static_cast<std::uintptr_t>(address));
}
inline Word low(const void* pointer) {
    return static_cast<Word>(reinterpret_cast<std::uintptr_t>(pointer));
}
template <typename T>
T recordAt(ovno2::Address address) {
    T record;
    std::memcpy(&record, at(address), sizeof record);
    return record;
}

// Every test starts with an empty world and ends with everything given back.
class World : public ::testing::Test {
  protected:
    World() { control.reset(); }
    ~World() override { EXPECT_EQ(control.leaks(), ""); }

    ovno2::simulator::Control control;
};

// A folder that is there for one test.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder() { std::filesystem::remove_all(path); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // Writes a file (a name in UTF-8), and the folders it lies in.
    std::filesystem::path write(const std::string& name, const std::string& content) const;

    std::filesystem::path path;
};

inline std::string fileContent(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline const char* const annasSerial = "356300010000017";

// A connection, to the contacts by default, with one open operation.
class ContentSession {
  public:
    explicit ContentSession(const std::u16string& serial = u"356300010000017",
                            Word target = signature::targetContacts);
    ~ContentSession();
    ContentSession(const ContentSession&) = delete;
    ContentSession& operator=(const ContentSession&) = delete;

    std::vector<ItemIdRecord> ids(Word folder = 1) const;
    Status read(ItemIdRecord id, ContactRecord& contact) const;
    Status free(ContactRecord& contact) const { return DAAPI(CAFreeItemData)(connection, 1, &contact); }
    Status commit(ItemIdListRecord* written = nullptr) const {
        return DAAPI(CACommitOperations)(operation, written);
    }

    Handle connection = 0;
    Handle operation = 0;
    Status status = 0;
};

}  // namespace simulator_tests
