// The simulated libraries as a caller sees them: bound by name, and a reader that lets go of everything it
// gets.
#pragma once

#include <array>
#include <cstring>
#include <filesystem>
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

// A function of one of the two libraries, with the calling convention that the libraries have.
template <typename Signature>
struct Exported;
template <typename Result, typename... Arguments>
struct Exported<Result(Arguments...)> {
    using Pointer = Result(SIMULATOR_STDCALL*)(Arguments...);
};

void* symbol(const char* library, const char* name);

template <typename Signature>
typename Exported<Signature>::Pointer bound(const char* library, const char* name) {
    return reinterpret_cast<typename Exported<Signature>::Pointer>(symbol(library, name));
}

#define CONNAPI(name) (*simulator_tests::bound<ovno2::library::signature::name>("ConnAPI", #name))
#define DAAPI(name) (*simulator_tests::bound<ovno2::library::signature::name>("DAAPI", #name))

template <typename T>
T recordAt(ovno2::Address address) {
    T record;
    std::memcpy(&record, reinterpret_cast<const void*>(static_cast<std::uintptr_t>(address)), sizeof record);
    return record;
}

// Every test starts with an empty world and ends with everything given back.
class World : public ::testing::Test {
  protected:
    World();
    ~World() override;

    // A part of the balance as JSON text.
    std::string balance(const char* part);

    ovno2::simulator::Control control;
};

// A folder that is there for one test.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // Writes a file (a name in UTF-8), and the folders it lies in.
    std::filesystem::path write(const std::string& name, const std::string& content) const;

    std::filesystem::path path;
};

std::string fileContent(const std::filesystem::path& file);

inline const char* const annasSerial = "356300010000017";

// A contacts connection with one open operation.
class ContentSession {
  public:
    explicit ContentSession(const std::u16string& serial = u"356300010000017");
    ~ContentSession();
    ContentSession(const ContentSession&) = delete;
    ContentSession& operator=(const ContentSession&) = delete;

    std::vector<ItemIdRecord> ids(Word folder = 1) const;
    Status read(ItemIdRecord id, ContactRecord& contact) const;
    Status free(ContactRecord& contact) const;
    // All texts of a contact as "ID=TEXT", read and freed. Data items have 20 bytes.
    std::vector<std::u16string> texts(const ItemIdRecord& id) const;

    Handle connection = 0;
    Handle operation = 0;
    Status status = 0;
};

std::u16string textAt(ovno2::Address address);
std::u16string uidText(const ItemIdRecord& id);

}  // namespace simulator_tests
