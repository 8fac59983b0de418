// Fails every call that a contact read makes, one after the other: once, and from then on; with a status,
// without memory, and with the function missing. Whatever happens, the result is a documented one, the
// contacts that arrived are whole, nothing stays behind, and the next read finds everything.
#include <fstream>
#include <set>

#include "contacts/contacts_test.h"

namespace ovno2::Contacts {
namespace {

class FaultSweep : public ContactsTest {
  protected:
    static constexpr library::Status failure = library::connectionLost;

    FaultSweep() {
        clock().set({.year = 2008, .month = 7, .day = 1, .hour = 12});
        processes().onStartCaptured = [](TextView) { return nullptr; };
        table = tableOf({1, 2, 3, 20, 80, 49});
        pictureFolder = replaceAll(folder.path().u16string(), u"/", u"\\") + u"\\pics\\";
        const auto image = folder.path() / "phone";
        std::filesystem::create_directories(image);
        std::ofstream(image / "picture") << "bytes";
        const Json picture = {{"format", "JPEG"}, {"file", "picture"}};
        const Json first = {{{"id", 2}, {"text", "Anna"}},
                            {{"id", 10}, {"picture", picture}},
                            {{"id", 256}, {"address", {"", "Street", "10115", "Berlin", "Land"}}}};
        const Json second = {{{"id", 2}, {"text", "Bob"}}, {{"id", 32}, {"text", "+49"}}};
        std::ofstream(image / "contacts.json")
            << Control::phoneBook({contactOf("01", first), contactOf("02", second)});
        attachPhone();
        whole = {u"Anna||||" + pictureFolder + u"01.jpg|Land", u"Bob|||+49||"};
    }

    void attachPhone() {
        simulator.run("addPhone", {{"phone", Control::plainPhone(serial)},
                                   {"image", (folder.path() / "phone").string()}});
    }

    // A step's code, a highest index, or a status of the library.
    static bool isDocumented(Long result) {
        const bool isStatus = static_cast<std::uint32_t>(result) >> 24 == 0x80;
        return isStatus || (result >= -5 && result <= 2);
    }

    // One read under a fault, then a clean one.
    void readBoth(const std::string& fault) {
        items.clear();
        const Long result = read();
        EXPECT_TRUE(isDocumented(result)) << fault << ": " << result;
        EXPECT_EQ(result > 0 ? result : 0, items.hasElements() ? items.upperBound() : 0) << fault;
        for (Long i = 1; i <= items.upperBound(); ++i)
            EXPECT_TRUE(values(i) == whole[0] || values(i) == whole[1]) << fault;
        simulator.clearPlan();
        libraries().missingFunctions.clear();
        letGo();
        EXPECT_EQ("", simulator.leaks()) << fault;
        items.clear();
        EXPECT_EQ(2, read()) << "after " << fault;
        EXPECT_EQ(whole[0], values(1)) << "after " << fault;
        EXPECT_EQ(whole[1], values(2)) << "after " << fault;
        letGo();
        calls();
    }

    static bool givesBack(const std::string& name) {
        return name.find("Free") != std::string::npos || name.find("Close") != std::string::npos ||
               name.find("End") != std::string::npos || name.find("Terminate") != std::string::npos;
    }

    // The calls of a clean read.
    std::vector<std::string> cleanCalls() {
        calls();
        EXPECT_EQ(2, read());
        return calls();
    }

    std::array<Text, 2> whole;
};

TEST_F(FaultSweep, EveryCallMayFail) {
    const std::size_t count = cleanCalls().size();
    letGo();
    for (std::uint32_t n = 1; n <= count + 1; ++n) {
        for (const bool onwards : {false, true}) {
            simulator.fail("*", failure, n, onwards);
            readBoth("status at call " + std::to_string(n) + (onwards ? " and on" : ""));
            simulator.failAllocation("*", n, onwards);
            readBoth("no memory at call " + std::to_string(n) + (onwards ? " and on" : ""));
        }
    }
}

TEST_F(FaultSweep, EveryFunctionAndLibraryMayBeMissing) {
    const std::vector<std::string> made = cleanCalls();
    letGo();
    for (const std::string& name : std::set<std::string>(made.begin(), made.end())) {
        resetThreadState();
        usePlatform(machine);
        libraries().missingFunctions = {name};
        if (!givesBack(name)) {
            readBoth(name + " missing");
            continue;
        }
        // Nothing can be given back, and the contacts arrive all the same.
        items.clear();
        EXPECT_EQ(2, read()) << name;
        libraries().missingFunctions.clear();
        simulator.reset();
        attachPhone();
    }
    for (const char16_t* library : {u"ConnAPI", u"DAAPI"}) {
        resetThreadState();
        usePlatform(machine);
        libraries().missingLibraries = {library};
        EXPECT_GT(0, read());
        libraries().missingLibraries.clear();
        readBoth("library missing before");
    }
}

}  // namespace
}  // namespace ovno2::Contacts
