#include "content/data_items.h"

#include "content/content_test.h"
#include "pc/registry_access.h"

namespace ovno2::Content {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

class DataItems : public ContentTest {
  protected:
    static constexpr TextView key = u"Software\\Marrowind\\Orvanta\\Nokia";

    Text storedSize() { return Registry::GetRegValue(platform::currentUser, key, u"S1"); }
    void storeSize(TextView size) {
        setRegistryText(platform::currentUser, key, u"S1", size);
        forgetStoredItemSize();
    }

    std::vector<DataItem> items;
};

TEST_F(DataItems, AreTakenApartInEveryRecordSize) {
    struct Case {
        std::vector<Word> words;
        Long count;
        TextView stored;  // the size kept for later writes
        std::vector<DataItem> items;
    };
    const Case cases[] = {
        {{20, 9, 1, 2, 300, 20, 8, 3, 259, 301}, 2, u"20", {{20, 9, 1, 2, 300}, {20, 8, 3, 259, 301}}},
        {{24, 9, 1, 2, 77, 300}, 1, u"24", {{24, 9, 1, 2, 300}}},
        {{4, 9, 1, 2, 300}, 1, u"24", {{4, 9, 1, 2, 300}}},  // only the words behind the size are counted
    };
    for (const Case& one : cases) {
        CopyToDataStruct(items, putWords(one.words), one.count);
        EXPECT_EQ(one.items, items);
        EXPECT_EQ(one.stored, storedSize());
    }
}

TEST_F(DataItems, WithoutSizeWordFollowTheRegistryThenTheLibrarysVersion) {
    struct Case {
        TextView stored;
        int version;
        Long size;
    };
    const Case cases[] = {{u"", 29, 16},  {u"", 30, 20},        {u"16", 50, 16}, {u"28", 29, 28},
                          {u"0", 29, 16}, {u"4000000", 30, 20}, {u"-5", 29, 16}};
    for (const Case& one : cases) {
        storeSize(one.stored);
        simulator.shape({{"deviceManagement", one.version}});
        EXPECT_EQ(one.size, GetCA_DATA_ITEM_size()) << one.version;
    }
    storeSize(u"");
    simulator.shape({{"deviceManagement", 29}});
    CopyToDataStruct(items, putWords({0, 1, 2, 300, 0, 3, 259, 301}), 2);
    EXPECT_EQ((std::vector<DataItem>{{0, 0, 1, 2, 300}, {0, 0, 3, 259, 301}}), items);
    EXPECT_EQ(u"", storedSize());
    simulator.shape({{"deviceManagement", nullptr}});
}

TEST_F(DataItems, KeepTheSizeOnceAndAskTheRegistryOncePerSession) {
    RecordingLog log;
    const Address array = putWords({20, 0, 1, 2, 300});
    CopyToDataStruct(items, array, 1);
    CopyToDataStruct(items, array, 1);
    EXPECT_EQ(1, std::count(log.lines.begin(), log.lines.end(), " SizeSet:20"));
    storeSize(u"16");
    CopyToDataStruct(items, array, 1);
    EXPECT_EQ(u"20", storedSize());
}

TEST_F(DataItems, ThatCannotBeReadAreNoneAndLeaveTheKnownSize) {
    RecordingLog log;
    CopyToDataStruct(items, putWords({20, 0, 1, 2, 300}), 1);
    const Address whole = putWords({20, 0, 1, 2, 300});
    const Word tooLong[] = {4000000, 0, 1, 2, 300};
    const Word odd[] = {60, 0, 1, 2, 300};
    const std::pair<Address, Long> cases[] = {{0, 255},
                                              {0xFFFFFFFF, 1},
                                              {whole, 100000},
                                              {unmappedPage(), 1},
                                              {put(tooLong, sizeof tooLong), 1},
                                              {putAtEnd(odd, sizeof odd), 1}};
    for (const auto& [array, count] : cases) {
        items = {{20, 0, 1, 2, 300}};
        CopyToDataStruct(items, array, count);
        EXPECT_TRUE(items.empty()) << count;
        EXPECT_EQ(20, state().ItemRecordSize);
        EXPECT_EQ(u"20", storedSize());
    }
    EXPECT_THAT(log.lines, Contains("!!!4000000"));
    EXPECT_THAT(log.lines, Contains("!!!60"));
    items = {{20, 0, 1, 2, 300}};
    CopyToDataStruct(items, whole, 0);
    EXPECT_EQ(1u, items.size());
}

// Array by array: what one build hands to the library reads back as the same items.
TEST_F(DataItems, ComeBackFromTheArraysThatAreWritten) {
    const std::vector<DataItem> written = {{20, 0, 1, 2, 300}, {20, 5, 3, 259, 0xFFFFFFFE}};
    library::LowWords spare(100);
    for (const bool libraryIsFull : {false, true}) {
        if (libraryIsFull) simulator.failAllocation("CONAAllocMemory");
        const Address array = CopyFromDataStructToNokia(written, spare, 10);
        ASSERT_NE(0u, array);
        EXPECT_EQ(libraryIsFull, spare.holds(array));
        CopyToDataStruct(items, array, 2);
        EXPECT_EQ(written, items);
        FreeDataItems(array, spare);
    }
    state().ItemRecordSize = 16;
    const Address array = CopyFromDataStructToNokia(written, spare, 0);
    EXPECT_EQ((std::vector<Word>{0, 1, 2, 300, 5, 3, 259, 0xFFFFFFFE}), library::copyBlock<Word>(array, 8));
    FreeDataItems(array, spare);
}

TEST_F(DataItems, HaveNoArrayWhenThereAreTooManyOrNoRoomIsLeft) {
    library::LowWords spare(9);
    const std::vector<DataItem> many(101);
    EXPECT_EQ(0u, CopyFromDataStructToNokia({}, spare, 0));
    EXPECT_EQ(0u, CopyFromDataStructToNokia(many, spare, 0));
    simulator.failAllocation("CONAAllocMemory", 1, /*onwards=*/true);
    const std::vector<DataItem> two(2);
    EXPECT_EQ(0u, CopyFromDataStructToNokia(two, spare, 0));
    EXPECT_EQ(0u, CopyFromDataStructToNokia(std::span(two).first(1), spare, 5));
    EXPECT_EQ(0u, CopyFromDataStructToNokia(std::span(two).first(1), spare, 10));
    EXPECT_NE(0u, CopyFromDataStructToNokia(std::span(two).first(1), spare, 4));
    simulator.clearPlan();
}

}  // namespace
}  // namespace ovno2::Content
