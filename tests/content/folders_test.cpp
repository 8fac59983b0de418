#include "content/folders.h"

#include "contacts/contacts_connection.h"
#include "content/content_test.h"
#include "devices/discovery.h"

namespace ovno2::Content {
namespace {

using library::FolderInfoRecord;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

// A store with subfolders: Work (2) holding Old (4), Home (3) and Travel (5).
class Folders : public ContentTest {
  protected:
    Folders() {
        Json book = simulator::Control::phoneBook(Json::array());
        book["folder"]["subfolders"] = {folderJson(2, "Work", {folderJson(4, "Old", Json::array())}),
                                        folderJson(3, "Home", Json::array()),
                                        folderJson(5, "Travel", Json::array())};
        simulator.addPhone(simulator::Control::plainPhone("1"), book);
        PIMApiInit();
        Contacts::CheckContactsConnection(u"1");
        calls();
    }
    ~Folders() override { simulator.shape({{"folder", nullptr}}); }

    static Json folderJson(int id, const char* name, Json subfolders) {
        return {{"id", id},
                {"name", name},
                {"path", std::string("\\") + name},
                {"subfolders", std::move(subfolders)}};
    }

    Long readRoot() { return GetNokiaFolder(Contacts::connection().handle, root); }
    // With names, the change; without, the walk.
    Long walk(const Text& oldName = {}, const Text& newName = {}, Long size = 0) {
        readRoot();
        calls();
        list.clear();
        const Long result = GetSubfolders(root.subfolderCount, root.subfolders, list, size,
                                          Contacts::connection().handle, oldName, newName);
        return result;
    }
    std::vector<Text> names() const {
        std::vector<Text> all;
        for (const FolderEntry& entry : list)
            all.push_back(entry.Name);
        return all;
    }

    FolderInfoRecord root{};
    std::vector<FolderEntry> list;
};

TEST_F(Folders, TellTheSizeOfRecordThatTheLibraryWrites) {
    for (const Long size : {32, 48}) {
        simulator.shape({{"folder", size}});
        root = {};
        EXPECT_EQ(size, readRoot());
        EXPECT_EQ(1u, root.folderId);
        EXPECT_EQ(3u, root.subfolderCount);
    }
    EXPECT_THAT(calls(), ElementsAre("CAGetFolderInfo", "CAGetFolderInfo", "CAGetFolderInfo"));
}

TEST_F(Folders, AreAskedForInTheLongerFormFirstWhereTheSuiteIsNewEnough) {
    setRegistryText(platform::localMachine, u"SOFTWARE\\Nokia\\Nokia Suite", u"BuildNumber", u"3.1.5");
    Single version = 0;
    Discovery::CheckIfNokiaSDKIsThere(/*startit=*/false, version);
    calls();
    simulator.shape({{"folder", 48}});
    EXPECT_EQ(48, readRoot());
    EXPECT_THAT(calls(), ElementsAre("CAGetFolderInfo"));
    simulator.shape({{"folder", 32}});
    EXPECT_EQ(32, readRoot());
}

TEST_F(Folders, ThatCannotBeReadGiveTheStatusAndLeaveTheRecord) {
    root.folderId = 99;
    simulator.fail("CAGetFolderInfo", 0x80200006, 1, /*onwards=*/true);
    EXPECT_EQ(static_cast<Long>(0x80200006), readRoot());
    EXPECT_EQ(99u, root.folderId);
    simulator.clearPlan();
    libraries().missingFunctions = {"CAGetFolderInfo"};
    resetThreadState();
    usePlatform(machine);
    EXPECT_EQ(-1, GetNokiaFolder(1, root));
    libraries().missingFunctions.clear();
    simulator.reset();
}

TEST_F(Folders, AreListedLevelByLevelWithTheirOwnBehindThem) {
    for (const Long size : {32, 48}) {
        simulator.shape({{"folder", size}});
        for (const Long told : {Long{0}, size, Long{80} - size}) {
            EXPECT_EQ(0, walk({}, {}, told));
            EXPECT_THAT(names(), ElementsAre(u"Work", u"Home", u"Travel", u"Old"));
        }
    }
    EXPECT_EQ(4, list[3].FolderId);
    EXPECT_EQ(u"\\Old", list[3].Path);
}

TEST_F(Folders, AreRenamedAndDeletedByTheirExactName) {
    EXPECT_EQ(-8, walk(u"home", u"House"));
    EXPECT_THAT(names(), ElementsAre(u"Work", u"Home", u"Travel", u"Old"));
    EXPECT_EQ(0, walk(u"Home", u"House"));
    EXPECT_THAT(calls(), ElementsAre("CABeginOperation", "CONAAllocString", "CARenameFolder",
                                     "CONAFreeString", "CACommitOperations", "CAEndOperation"));
    EXPECT_EQ(0, walk(u"Travel"));
    EXPECT_THAT(calls(),
                ElementsAre("CABeginOperation", "CADeleteFolder", "CACommitOperations", "CAEndOperation"));
    walk();
    EXPECT_THAT(names(), ElementsAre(u"Work", u"House", u"Old"));
    EXPECT_EQ(-8, walk(u"Old"));  // only the level asked for is searched
}

TEST_F(Folders, KeepTheirNameWhenAStepOfTheChangeFails) {
    constexpr Long failure = static_cast<Long>(0x80200006);
    for (const char* call : {"CABeginOperation", "CARenameFolder", "CACommitOperations"}) {
        simulator.fail(call, 0x80200006);
        EXPECT_EQ(failure, walk(u"Home", u"House")) << call;
    }
    simulator.failAllocation("CONAAllocString");
    EXPECT_EQ(-7, walk(u"Home", u"House"));
    walk();
    EXPECT_THAT(names(), Contains(u"Home"));
    EXPECT_EQ(0, simulator.balance()["closedInside"]);
}

TEST_F(Folders, ThatCannotBeTrueAreNone) {
    readRoot();
    const Address unmapped = unmappedPage();
    EXPECT_EQ(0, GetSubfolders(101, root.subfolders, list, 0, 0, {}, {}));
    EXPECT_EQ(0, GetSubfolders(0, root.subfolders, list, 0, 0, {}, {}));
    EXPECT_EQ(0, GetSubfolders(3, unmapped, list, 0, 0, {}, {}));
    EXPECT_EQ(-8, GetSubfolders(3, 0, list, 0, 0, u"Home", {}));
    EXPECT_TRUE(list.empty());
    // Two folders that each claim the two of them as their own subfolders.
    const Address circle = putWords({32, 7, 0, 0, 0, 2, 0, 0, 32, 8, 0, 0, 0, 2, 0, 0});
    auto* const words = static_cast<Word*>(library::pointerTo(circle));
    words[6] = words[14] = circle;
    GetSubfolders(2, circle, list, 0, 0, {}, {});
    EXPECT_LT(list.size(), 20000u);
}

TEST_F(Folders, WithNamesThatLeadNowhereHaveEmptyNames) {
    simulator.runText(R"({"command": "poke", "call": "CAGetFolderInfo", "record": "subfolder", "index": 1,
                          "word": 3, "value": "unmapped"})");
    walk();
    EXPECT_THAT(names(), ElementsAre(u"Work", u"", u"Travel", u"Old"));
    simulator.clearPlan();
}

}  // namespace
}  // namespace ovno2::Content
