#include "pc/folders.h"

#include <fstream>
#include <gmock/gmock.h>

#include "common/executable_file.h"
#include "common/machine_test.h"
#include "common/recording_log.h"
#include "pc/file_info.h"
#include "platform/portable/processes.h"

namespace ovno2 {
namespace {

using Folders::GetSpecialFolder_;

using FoldersTest = MachineTest;

TEST_F(FoldersTest, ThePlatformsFolderIsTakenAndEndsAsAsked) {
    processes().folders = {{38, u"C:\\Programme"}, {35, u"C:\\Data\\"}, {36, Text(u"C:\\Win\0dows\0", 12)}};
    EXPECT_EQ(u"C:\\Programme", GetSpecialFolder_(38, false));
    EXPECT_EQ(u"C:\\Programme\\", GetSpecialFolder_(38, true));
    EXPECT_EQ(u"C:\\Data\\", GetSpecialFolder_(35, true));
    EXPECT_EQ(u"C:\\Windows", GetSpecialFolder_(36, false));
    EXPECT_TRUE(Folders::GetTemporaryFolder().ends_with(u'\\'));
}

TEST_F(FoldersTest, TheRegistryAnswersForFoldersThatThePlatformDoesNotKnow) {
    const Text key = u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
    const Text key32 = u"Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
    // From the last choice to the first; the machine's own 32-bit key is the other one redirected.
    const std::pair<Long, Text> places[] = {
        {platform::currentUser, key32}, {platform::localMachine, key}, {platform::currentUser, key}};
    const std::pair<Long, Text> names[] = {{0, u"Desktop"},   {5, u"Personal"},        {6, u"Favorites"},
                                           {13, u"My Music"}, {26, u"AppData"},        {28, u"Local AppData"},
                                           {32, u"Cache"},    {35, u"Common AppData"}, {39, u"My Pictures"}};
    for (const auto& [id, name] : names) {
        processes().folders[id] = u"x";  // shorter than a folder can be
        EXPECT_EQ(u"", GetSpecialFolder_(id, true)) << id;
        for (std::size_t i = 0; i < std::size(places); ++i) {
            const Text place = u"C:\\" + decimalText(static_cast<Long>(i));
            setRegistryText(places[i].first, places[i].second, name, place);
            EXPECT_EQ(place + u"\\", GetSpecialFolder_(id, true)) << id;
        }
    }
    setRegistryText(platform::currentUser, key, {}, u"C:\\wrong");
    processes().folders[38] = u"";
    RecordingLog log;
    EXPECT_EQ(u"", GetSpecialFolder_(38, true));
    EXPECT_THAT(log.lines, testing::ElementsAre("<GetSpecialFolder_", "38", "GetSpecialFolder_ 1",
                                                "GetSpecialFolder_ 2", "GetSpecialFolder_>"));
}

TEST_F(FoldersTest, TheProductVersionCountsWhereItSaysMore) {
    struct Case {
        platform::FileVersion version;
        Text asFile, asProduct;
    };
    const std::filesystem::path drive = folder.path() / "drives" / "c";
    std::filesystem::create_directories(drive);
    for (const Case& c : {Case{{.file = {1, 2, 3, 4}, .product = {5, 6, 7, 8}}, u"1.2.3.4", u"5.6.7.8"},
                          Case{{.file = {1, 2, 3, 4}, .product = {5, 0, 0, 0}}, u"1.2.3.4", u"1.2.3.4"},
                          Case{{.file = {1, 2, 3, 4}, .product = {0, 0, 7, 0}}, u"1.2.3.4", u"1.2.7.4"},
                          Case{{.file = {7, 0, 8, 65535}, .product = {}}, u"7.0.8.65535", u"7.0.8.65535"},
                          Case{{.file = {}, .product = {3, 1, 0, 0}}, u"0.0.0.0", u"3.1.0.0"}}) {
        std::ofstream(drive / "a.exe", std::ios::binary) << makeExecutable(c.version);
        EXPECT_EQ(c.asFile, GetFileInfo_::FileVersionText(u"C:\\a.exe", /*preferProductVersion=*/false));
        EXPECT_EQ(c.asProduct, GetFileInfo_::FileVersionText(u"C:\\a.exe", true));
    }
    EXPECT_EQ(u"", GetFileInfo_::FileVersionText(u"C:\\missing.exe", true));
}

}  // namespace
}  // namespace ovno2
