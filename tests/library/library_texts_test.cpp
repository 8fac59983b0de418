#include "library/library_texts.h"

#include "content/content_test.h"
#include "content/item_ids.h"

namespace ovno2::Content {
namespace {

using library::GetStringFromPointer;
using ::testing::Contains;
using ::testing::ElementsAre;

class ItemTexts : public ContentTest {};

TEST_F(ItemTexts, AreReadUpToTheirEndAndKeepTheirCharacters) {
    for (const TextView text : {u"", u"abc", u"Łódź Ελλάδα 東京 \U0001F600"})
        EXPECT_EQ(text, GetStringFromPointer(putText(Text(text))));
    EXPECT_EQ(u"edge", GetStringFromPointer(putAtEnd(u"edge", 5 * sizeof(char16_t))));
}

TEST_F(ItemTexts, AreEmptyBehindPointersThatLeadNowhere) {
    const Address unmapped = unmappedPage();
    const Address withoutEnd = putAtEnd(u"abcd", 4 * sizeof(char16_t));
    for (const Address pointer :
         {Address{0}, Address{200}, Address{256}, Address{0xFFFFFFFF}, unmapped, withoutEnd})
        EXPECT_EQ(u"", GetStringFromPointer(pointer)) << std::hex << pointer;
}

TEST_F(ItemTexts, AreReadAtOddAddresses) {
    std::string bytes(1, '\0');
    bytes.append(reinterpret_cast<const char*>(u"odd"), 4 * sizeof(char16_t));
    EXPECT_EQ(u"odd", GetStringFromPointer(put(bytes.data(), bytes.size()) + 1));
}

TEST_F(ItemTexts, AreLeftOutFromTheLengthOnThatTheLibraryNeverUses) {
    RecordingLog log;
    EXPECT_EQ(16381u, GetStringFromPointer(putText(Text(16381, u'x'))).size());
    EXPECT_THAT(log.lines, ElementsAre("<GetStringFromPointer", "GetStringFromPointer>"));
    for (const std::size_t length : {std::size_t{16382}, std::size_t{16384}, std::size_t{4000000}}) {
        log.lines.clear();
        EXPECT_EQ(u"", GetStringFromPointer(putText(Text(length, u'x')))) << length;
        EXPECT_THAT(log.lines, Contains("!!!1"));
    }
}

TEST_F(ItemTexts, TellAddressAndLengthAtHighDetail) {
    RecordingLog log;
    stateOf<LogFront>().level = 4;
    const Address text = putText(u"abc");
    GetStringFromPointer(text);
    EXPECT_THAT(log.lines,
                ElementsAre("<GetStringFromPointer", toUtf8(hexText(text)), "4", "GetStringFromPointer>"));
    stateOf<LogFront>().level = 0;
}

class ItemIds : public ContentTest {
  protected:
    static constexpr std::uint8_t uidBytes[] = {0x01, 0xAB};
    static library::ItemIdRecord recordWith(Address uid, Word length) {
        return {.size = 24, .folderId = 1, .position = 1, .uidLength = length, .uid = uid, .word5 = 0};
    }
};

TEST_F(ItemIds, AreKnownByTheHexadecimalTextOfTheirBytes) {
    EXPECT_EQ(u"01AB", BytesToHex(uidBytes));
    EXPECT_THAT(HexToBytes(u"01AB"), ElementsAre(0x01, 0xAB));
    EXPECT_THAT(HexToBytes(u"01abF"), ElementsAre(0x01, 0xAB));
    EXPECT_THAT(HexToBytes(u""), ElementsAre());
    EXPECT_EQ(u"01AB", GetUIDAsString(recordWith(put(uidBytes, 2), 2)));
    EXPECT_EQ(u"", GetUIDAsString(recordWith(0, 2)) + GetUIDAsString(recordWith(0xFFFFFFFF, 2)));
    EXPECT_EQ(u"", GetUIDAsString(recordWith(put(uidBytes, 2), 4000000000)));  // nothing readable behind it
}

TEST_F(ItemIds, LongerThanUsualAreMarkedAndStillRead) {
    RecordingLog log;
    const std::string bytes(2049, '\x5A');
    EXPECT_EQ(4098u, GetUIDAsString(recordWith(put(bytes.data(), bytes.size()), 2049)).size());
    EXPECT_THAT(log.lines, Contains("GetUIDAsString !!!"));
}

// The third case finds no memory in the library and keeps the bytes in the module's own.
TEST_F(ItemIds, TravelToTheLibraryAndBack) {
    const ItemId ids[] = {
        {.Size = 24, .FolderId = 3, .Position = 7, .UidLength = 0, .Uid = u"0A0B0C", .Word5 = 9},
        {.Size = 24, .FolderId = 1, .Position = 0, .UidLength = 2, .Uid = u"", .Word5 = 0},
        {.Size = 24, .FolderId = 1, .Position = 2, .UidLength = 3, .Uid = u"FF00", .Word5 = -1},
    };
    for (const ItemId& id : ids) {
        if (id.Uid == u"FF00") simulator.failAllocation("CONAAllocMemory");
        library::ItemIdRecord record{};
        CopyItemIdToLibrary(id, record);
        EXPECT_EQ(24u, record.size);
        EXPECT_EQ(static_cast<Word>(id.FolderId), record.folderId);
        EXPECT_EQ(static_cast<Word>(id.Position), record.position);
        EXPECT_EQ(static_cast<Word>(id.Word5), record.word5);
        EXPECT_EQ(id.Uid.size() / 2, record.uidLength);
        EXPECT_EQ(id.Uid, GetUIDAsString(record));
        FreeItemIdBytes(record);
        EXPECT_EQ(0u, record.uid);
    }
    simulator.clearPlan();
}

}  // namespace
}  // namespace ovno2::Content
