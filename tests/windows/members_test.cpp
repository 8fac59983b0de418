// What crosses the slots as more than numbers and texts: entries of a folder, and the host's function.
#include <algorithm>

#include "phonefs/dir_item.h"
#include "windows/component_test.h"

namespace ovno2::windows_tests {
namespace {

using ::testing::ElementsAre;
using MembersTest = ComponentTest;

std::vector<LONG> heard;
LONG WINAPI cancel(LONG request, LONG number, LONG style, LONG text) {
    heard = {request, number, style, text};
    constexpr LONG cancelled = 2;
    return cancelled;
}

TEST_F(MembersTest, AHostsFunctionIsCalledAndItsAnswerCounts) {
    LONG procedure = reinterpret_cast<LONG>(&cancel);
    LONG result = 0;
    EXPECT_EQ(S_OK, create()->LaunchPCSuite2IfRequired(&procedure, &result));
    EXPECT_EQ(-1, result);
    EXPECT_THAT(heard, ElementsAre(0, 154, 48, 0));
}

TEST_F(MembersTest, AnEntryOfAFolderHasEveryFieldInItsPlace) {
    simulator.load(windowsPath(BUNDLED_PHONES));
    LONG result = -1;
    Bstr model(u"Nokia N95"), path(u"C:/Documents/Notizen");
    OwnedSafeArray entries;
    EXPECT_EQ(S_OK, create()->GetDirContents(model.address(), entries.address(), path.get(), &result));
    EXPECT_EQ(0, result);
    const std::span<tDirItem> items = slotsOf<tDirItem>(entries);
    const auto entry =
        std::ranges::find_if(items, [](const tDirItem& item) { return textOf(item.Name) == u"Λίστα.txt"; });
    ASSERT_NE(items.end(), entry);
    EXPECT_EQ(u"Λίστα.txt", textOf(entry->DisplayName));
    EXPECT_EQ(u"C:\\Documents\\Notizen\\Λίστα.txt", textOf(entry->FullName));
    EXPECT_EQ(42, entry->Size);
    EXPECT_NE(std::u16string::npos, textOf(entry->DateText).find(u"2008"));
    EXPECT_EQ(dirItemChangeable, entry->Flags);
}

}  // namespace
}  // namespace ovno2::windows_tests
