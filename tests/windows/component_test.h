// The registered component as its hosts get it, with simulated phones attached.
//
// For the length of the program the component of this build is registered and the simulator is the machine's
// phone software; what was there before comes back at the end. Whatever a test leaves handed out by the
// simulator is a leak.
#pragma once

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <span>
#include <string>
#include <vector>

#include "com/interface.h"
#include "host/driver/com_client.h"
#include "simulator/control/control.h"

namespace ovno2::windows_tests {

using host::Bstr;
using host::ComPointer;
using host::OwnedSafeArray;
using host::slotsOf;
using host::textOf;
using Json = nlohmann::json;

// A file or folder of the build as Windows names it.
std::filesystem::path windowsPath(const char* path);
std::filesystem::path componentPath();

// Runs a program to its end; `output` gets what it printed, without carriage returns. Gives its exit status.
int run(const std::wstring& commandLine, std::string* output = nullptr);

std::vector<Text> textsOf(const OwnedSafeArray& array);
std::vector<Long> numbersOf(const OwnedSafeArray& array);
// A one-dimensional array of these texts from `lowerBound` on.
SAFEARRAY* newTexts(const std::vector<Text>& texts, LONG lowerBound = 0);

// The six arrays of a list of phones.
struct DeviceLists {
    OwnedSafeArray models, media, serials, addresses, names, types;

    // Asks for the list; gives the result.
    LONG read(_covNo2& object) {
        LONG result = -100;
        EXPECT_EQ(S_OK, object.GetConnectedDevices(models.address(), media.address(), serials.address(),
                                                   addresses.address(), names.address(), types.address(),
                                                   /*medium=*/-1, &result));
        return result;
    }
};

class ComponentTest : public ::testing::Test {
  protected:
    ComponentTest();
    ~ComponentTest() override;

    // A new object, by the name under which hosts know it.
    static ComPointer<_covNo2> create();

    static Json contactOf(const std::string& uid, Json fields) {
        return {{"uid", uid}, {"fields", std::move(fields)}};
    }
    // A phone with these contacts.
    void addPhone(Json contacts = Json::array()) {
        simulator.addPhone(simulator.plainPhone(serial), simulator.phoneBook(std::move(contacts)));
    }
    void addTwoContacts() {
        addPhone({contactOf("0A01", {{{"id", 2}, {"text", "Anna"}}, {{"id", 4}, {"text", "Müller"}}}),
                  contactOf("0A02", {{{"id", 2}, {"text", "Jörg"}}, {{"id", 64}, {"text", "0171 1"}}})});
    }
    // Reads a phone book into `items`; gives the result.
    static LONG readContacts(_covNo2& object, OwnedSafeArray& items, IDispatch* progress = nullptr,
                             TextView phone = u"356300010000017");

    simulator::Control simulator;
    const std::string serial = "356300010000017";
};

}  // namespace ovno2::windows_tests
