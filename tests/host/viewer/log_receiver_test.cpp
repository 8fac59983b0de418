#include "host/viewer/log_receiver.h"

#include <gmock/gmock.h>

#include "base/utf8.h"
#include "common/machine_test.h"
#include "host/viewer/routine_filter.h"

namespace ovno2::host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t chunk = 29797, shared = 29799;

class Receiving : public MachineTest {
  protected:
    std::vector<Text> lines;
    LogReceiver receiver{[this](TextView line) { lines.emplace_back(line); }};
};

TEST_F(Receiving, PutsChunksTogetherUntilTheLineEnds) {
    EXPECT_EQ(0, receiver.receive(29796, 1, 2));      // somebody else's
    receiver.receive(chunk, 0x63626154, 0x0D666564);  // "Tabcdef" CR
    EXPECT_THAT(lines, IsEmpty());
    receiver.receive(chunk, 0x0000000A, 0);
    receiver.receive(chunk, 0x0A0DE480, 0x0A0D4241);  // the euro sign and "ä" as Windows-1252; two lines
    EXPECT_THAT(lines, ElementsAre(u"Tabcdef", u"€ä", u"AB"));
    receiver.receive(chunk, 0x0A1B0741,
                     0x0A0D0D42);  // a line end is CR LF, and nothing reaches the terminal raw
    EXPECT_EQ(u"A␇␛ B ", lines.back());
    lines.clear();
    for (int i = 0; i < 0x10000; ++i)  // a line without end
        receiver.receive(chunk, 0x41414141, 0x41414141);
    EXPECT_EQ(8u, lines.size());
}

TEST_F(Receiving, ReadsTheSharedAreaAndSaysWhenItCannot) {
    EXPECT_EQ(0, receiver.receive(shared, 0, 5));  // no area yet
    {
        const auto tooSmall = machine.sharedMemory().create(u"OVDebug", 64);
        EXPECT_EQ(0, receiver.receive(shared, 0, 5));
    }
    cMemMappedFile area;
    area.MemName = u"OVDebug";
    ASSERT_EQ(0, area.MemWrite(u"[T]  53:Error\r\n[T] 電話\r\n"));
    struct {
        std::uint32_t offset, length;
    } const wild[] = {{0xFFFFFFF0, 4}, {0, 0}, {0, 0x80000000}, {0x100000 - 8, 4}, {0, 0x7FFFFFFF}};
    for (const auto& [offset, length] : wild) {
        lines.clear();
        EXPECT_EQ(0, receiver.receive(shared, offset, length)) << offset;
        EXPECT_EQ(1u, lines.size());
        lines.clear();
        EXPECT_EQ(1, receiver.receive(shared, 0, 23));
        EXPECT_THAT(lines, ElementsAre(u"[T]  53:Error", u"[T] 電話"));
    }
}

TEST(RoutineFilter, ShowsARoutineFromItsEntryToItsExit) {
    struct {
        TextView line;
        bool shown;
    } const lines[] = {
        {u"[ovNo2] remote Debug on, Level: 4", false},
        {u"[ovNo2] <GetDevices>_", false},
        {u"[ovNo2]  <ReadContacts>_", true},
        {u"[ovNo2]   <Read>_", true},
        {u"[ovNo2]  53:File not found", true},  // what is inside may be indented less
        {u"[ovNo2]   </Read>", true},
        {u"[ovNo2]   <readcontacts>_", true},  // calls itself
        {u"[ovNo2]   </readcontacts>", true},
        {u"[ovNo2]   step 5", true},
        {u"36000.5: [ovNo2]  </ReadContacts>", true},
        {u"[ovNo2]  after", false},
        {u"[ovNo2]  </ReadContacts>", false},  // without an entry
        {u"36000.5: [ovNo2] <ReadContacts>_", true},
        {u"[ovNo2] <ReadContacts>_", true},  // the first never said that it ended
        {u"[ovNo2] </ReadContacts>", true},
        {u"", false},
    };
    RoutineFilter all(u""), filter(u"ReadContacts");
    for (const auto& [line, shown] : lines) {
        EXPECT_TRUE(all.shows(line));
        EXPECT_EQ(shown, filter.shows(line)) << toUtf8(line);
    }
}

}  // namespace
}  // namespace ovno2::host
