#include "phonefs/nokia_files.h"

#include "phonefs/phone_files_test.h"

namespace ovno2::NokiaFiles {
namespace {

using Json = simulator::Control::Json;

class NokiaFilesTest : public PhoneFilesTest {
  protected:
    void setEastEuropeanTime() {
        setRegistryNumber(platform::localMachine, u"SYSTEM\\CurrentControlSet\\Control\\TimeZoneInformation",
                          u"ActiveTimeBias", static_cast<std::uint32_t>(-120));
        setRegistryText(platform::currentUser, u"Control Panel\\International", u"sShortDate", u"dd.MM.yyyy");
        setRegistryText(platform::currentUser, u"Control Panel\\International", u"sTimeFormat", u"HH:mm:ss");
    }
};

TEST_F(NokiaFilesTest, TheRootShowsDrivesByTheirLabels) {
    for (const Text path : {u"", u"/", u"\\\\"}) {
        HostArray<DirItem> items;
        EXPECT_EQ(0, list(items, path));
        ASSERT_EQ(1, items.upperBound());
        EXPECT_EQ(u"[Phone memory]", items.at(0).DisplayName);
        EXPECT_EQ(items.at(0).Name, items.at(0).FullName);
        EXPECT_TRUE(items.at(0).Name.starts_with(u"C"));
        EXPECT_EQ(dirItemFolder | dirItemChangeable, items.at(0).Flags);
        EXPECT_EQ(u"[Memory card]", items.at(1).DisplayName);
    }
}

TEST_F(NokiaFilesTest, AFolderIsListedUnderEveryFormOfItsPath) {
    setEastEuropeanTime();
    HostArray<DirItem> root;
    list(root, u"");
    for (const Text path : {u"C:/Data", u"C:\\Data", u"\\\\C:\\Data", u"Phone memory/Data"}) {
        HostArray<DirItem> items;
        EXPECT_EQ(0, list(items, path));
        ASSERT_EQ(2, items.upperBound());
        EXPECT_EQ(u"[Images]", items.at(0).DisplayName);
        EXPECT_EQ(dirItemFolder | dirItemChangeable | dirItemSpecial, items.at(0).Flags);
        EXPECT_EQ(u"a.txt", items.at(1).DisplayName);
        EXPECT_EQ(u"C:\\Data\\a.txt", items.at(1).FullName);
        EXPECT_EQ(5, items.at(1).Size);
        EXPECT_EQ(u"19.07.2008 18:04:11", items.at(1).DateText);
        EXPECT_EQ(dirItemChangeable, items.at(1).Flags);
        EXPECT_EQ(u"20.07.2008", items.at(2).DateText);
        EXPECT_EQ(0, items.at(2).Flags);
    }
}

TEST_F(NokiaFilesTest, AnEmptyFolderLeavesTheListAsItWas) {
    HostArray<DirItem> items({DirItem{}, DirItem{}}, 3);
    items.at(4).Name = u"kept";
    EXPECT_EQ(0, list(items, u"E:/empty"));
    EXPECT_EQ(u"kept", items.at(4).Name);
    EXPECT_EQ(-1, list(items, u"E:/none"));
    EXPECT_EQ(3, items.lowerBound());
}

TEST_F(NokiaFilesTest, AStaleSessionIsReopenedOnceAndTheSearchRepeated) {
    open();
    simulator.fail("CONAFindBegin", 0x80100004);
    calls();
    HostArray<DirItem> items;
    EXPECT_EQ(0, list(items, u"E:/empty"));
    std::vector<std::string> made = calls();
    std::erase_if(made, [](const std::string& call) {
        return call.starts_with("CONAGet") || call.starts_with("CONAFreeDevice");
    });
    EXPECT_THAT(made, ::testing::ElementsAre(
                          "CONAAllocString", "CONAFindBegin", "FSAPI_GetAPIVersion", "FSAPI_Initialize",
                          "CONAAllocString", "CONAOpenFS", "CONAFreeString", "CONAFindBegin",
                          "CONAFreeString", "CONAFindNextFolder", "CONAFindEnd", "CONAAllocString",
                          "CONAFindBegin", "CONAFreeString", "CONAFindNextFile", "CONAFindEnd"));
    simulator.fail("CONAFindBegin", 0x80100004, 1, /*onwards=*/true);
    EXPECT_EQ(-1, list(items, u"C:/Data"));
}

TEST_F(NokiaFilesTest, WildRecordsCostTheirOwnFieldsOnly) {
    setEastEuropeanTime();
    struct Case {
        int word;  // of the first file
        Json value;
        Text name, date;
    };
    const Text date = u"19.07.2008 18:04:11", noDate = u"00:00:00";
    const Case cases[] = {{0, "unmapped", u"", date},
                          {0, "unterminated", u"", date},
                          {0, 0, u"", date},
                          {3, 0x7FFFFFFF, u"a.txt", noDate},
                          {3, 0xFFFFFFFF, u"a.txt", noDate}};
    for (const Case& c : cases) {
        simulator.clearPlan();
        Json poke = {{"call", "CONAFindNextFile"}, {"onwards", false}, {"record", "file"}};
        poke.update({{"word", c.word}, {"value", c.value}});
        simulator.run("poke", poke);
        HostArray<DirItem> items;
        EXPECT_EQ(0, list(items, u"C:/Data"));
        ASSERT_EQ(2, items.upperBound()) << c.value;
        EXPECT_EQ(c.name, items.at(1).Name) << c.value;
        EXPECT_EQ(u"C:\\Data\\" + c.name, items.at(1).FullName);
        EXPECT_EQ(c.date, items.at(1).DateText) << c.value;
        EXPECT_EQ(5, items.at(1).Size);
        EXPECT_EQ(dirItemChangeable, items.at(1).Flags);
        EXPECT_EQ(u"locked.txt", items.at(2).Name);
    }
}

TEST_F(NokiaFilesTest, ASearchThatNeverEndsIsGivenUp) {
    simulator.runText(
        R"({"command": "fault", "call": "CONAFindNextFile", "nth": 2, "onwards": true, "repeat": true})");
    HostArray<DirItem> items;
    EXPECT_EQ(-1, list(items, u"C:/Data"));
    EXPECT_EQ(u"a.txt", items.at(items.upperBound()).Name);
    simulator.clearPlan();
    EXPECT_EQ(0, list(items, u"C:/Data"));
    EXPECT_EQ(2, items.upperBound());

    // Names as no card has them, before there are too many entries.
    simulator.runText(
        R"({"command": "fault", "call": "CONAFindNextFile", "nth": 2, "onwards": true, "repeat": true})");
    Json poke = {{"call", "CONAFindNextFile"}, {"record", "file"}, {"word", 0}};
    poke["value"] = {{"text", std::string(16000, 'x')}};
    simulator.run("poke", poke);
    items = {};
    EXPECT_EQ(-1, list(items, u"C:/Data"));
    EXPECT_GT(2000, items.upperBound());
}

TEST_F(NokiaFilesTest, OpeningTellsWhichStepFailedAndTakesTheLastModelForNone) {
    Text model = u"Nokia 3210", none;
    EXPECT_EQ(-1, OpenFS(model, {}));
    simulator.fail("FSAPI_Initialize", 0x80100001);
    EXPECT_EQ(-2, open());
    simulator.fail("CONAOpenFS", 0x80100001);
    EXPECT_EQ(-3, open());
    EXPECT_EQ(0, OpenFS(none, {}));
    EXPECT_EQ(u"Nokia N95", none);
}

TEST_F(NokiaFilesTest, ChangingTheFolderTakesRootOffTheCallersPath) {
    open();
    Text path = u"root/C:/Data";
    simulator.readJournal();
    EXPECT_EQ(0, ChangeDir(path));
    EXPECT_EQ(u"C:/Data", path);
    EXPECT_THAT(simulator.readJournal(), ::testing::Contains(::testing::HasSubstr("\\C:")));
    path = u"C:/none";
    EXPECT_EQ(-1, ChangeDir(path));
}

}  // namespace
}  // namespace ovno2::NokiaFiles
