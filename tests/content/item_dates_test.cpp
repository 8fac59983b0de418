#include "content/item_dates.h"

#include "content/content_test.h"
#include "core/settings.h"
#include "dates/date_value.h"
#include "devices/devices.h"
#include "platform/portable/time_zone.h"

namespace ovno2::Content {
namespace {

using library::DateRecord;
using ::testing::Contains;

// Central Europe by the European rule; the user's dates are written day, month, year.
class ItemDates : public ContentTest {
  protected:
    static constexpr TextView zoneKey = u"SYSTEM\\CurrentControlSet\\Control\\TimeZoneInformation";

    ItemDates() {
        setRegistryNumber(platform::localMachine, zoneKey, u"Bias", static_cast<std::uint32_t>(-60));
        setRegistryNumber(platform::localMachine, zoneKey, u"DaylightBias", static_cast<std::uint32_t>(-60));
        constexpr std::uint16_t lastSunday = 5;
        setTransition(u"DaylightStart", {.month = 3, .day = lastSunday, .hour = 2});
        setTransition(u"StandardStart", {.month = 10, .day = lastSunday, .hour = 3});
        setRegistryText(platform::currentUser, u"Control Panel\\International", u"sShortDate", u"dd.MM.yyyy");
    }

    void setTransition(TextView name, const platform::SystemTime& rule) {
        setRegistryBytes(platform::localMachine, zoneKey, name, platform::portable::bytesOfTransition(rule));
    }

    static DateValue local(Long year, Long month, Long day, Long hour = 0, Long minute = 0, Long second = 0) {
        return dateOf(DateFields{year, month, day, hour, minute, second});
    }
    static DateRecord record(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
        const auto byte = [](int value) { return static_cast<std::uint8_t>(value); };
        return {20,
                static_cast<std::uint16_t>(year),
                byte(month),
                byte(day),
                byte(hour),
                byte(minute),
                byte(second),
                0,
                0,
                0};
    }
};

TEST_F(ItemDates, AreReadFromRecordsOfAnySizeByte) {
    RecordingLog log;
    const std::pair<Word, Long> sizes[] = {{0, 0}, {20, 20}, {28, 28}, {0x4414, 20}, {8, 8}};
    for (const auto& [size, remembered] : sizes) {
        DateRecord birthday = record(1975, 4, 12, 10, 30);
        birthday.size = size;
        state().DateRecordSize = 0;
        EXPECT_EQ(local(1975, 4, 12), GetDateFromPointer(putAtEnd(&birthday, sizeof birthday))) << size;
        EXPECT_EQ(remembered, state().DateRecordSize);
    }
    EXPECT_THAT(log.lines, Contains("datesize:28"));
    for (const Address nowhere : {Address{0}, Address{0xFFFFFFFF}, unmappedPage()})
        EXPECT_EQ(dateZero, GetDateFromPointer(nowhere));
}

TEST_F(ItemDates, OfAPhoneBecomeLocalTime) {
    struct Case {
        const char* what;
        DateRecord record;
        Long mode;
        Long platform;
        Long addTimeOffset;
        DateValue date;
    };
    DateRecord withOffsets = record(2008, 7, 1, 10);
    withOffsets.firstOffset = 60;
    withOffsets.secondOffset = -30;
    const Case cases[] = {
        {"no date", record(0, 7, 1, 10), 1, 0, 0, dateZero},
        {"UTC in summer", record(2008, 7, 1, 10), 1, eNokiaPhoneS60_3, 0, local(2008, 7, 1, 12)},
        {"UTC in winter", record(2008, 1, 1, 23, 30), 1, 0, 0, local(2008, 1, 2, 0, 30)},
        {"without daylight saving", record(2008, 7, 1, 10), -1, 0, 0, local(2008, 7, 1, 11)},
        {"a platform that shifts itself", record(2008, 7, 1, 10), 1, eNokiaPhoneS40_3, 0,
         local(2008, 7, 1, 11)},
        {"the host forbids shifts", record(2008, 7, 1, 10), 1, 0, -1, local(2008, 7, 1, 10)},
        {"local time", record(2008, 7, 1, 10), 0, 0, 0, local(2008, 7, 1, 10)},
        {"offsets", withOffsets, 1, 0, 0, local(2008, 7, 1, 10, 30)},
        {"a day too many", record(2008, 2, 30, 10), 0, 0, 0, local(2008, 3, 1, 10)},
    };
    refreshTimeBiases();
    for (const Case& one : cases) {
        stateOf<Devices::State>().platformType = one.platform;
        settings().addTimeOffset = one.addTimeOffset;
        EXPECT_EQ(one.date, GetDateFromStruct(one.record, /*withTime=*/true, one.mode)) << one.what;
    }
    EXPECT_EQ(local(2008, 7, 1), GetDateFromStruct(record(2008, 7, 1, 10), /*withTime=*/false, 1));
}

TEST_F(ItemDates, OfTheHostBecomeRecords) {
    struct Case {
        TextView text;
        bool toUtc;
        Long mode;
        Long platform;
        DateRecord record;  // the caller's first offset is 5
    };
    const auto offsets = [](DateRecord record, std::int32_t first, std::int32_t second) {
        record.firstOffset = first;
        record.secondOffset = second;
        return record;
    };
    const Case cases[] = {
        {u"01.07.2008 12:00:00", false, 0, 0, offsets(record(2008, 7, 1, 12), 5, 0)},
        {u"01.07.2008 12:00:00", true, 0, 0, offsets(record(2008, 7, 1, 10), 5, 0)},
        {u"01.07.2008 12:00:00", true, -1, 0, offsets(record(2008, 7, 1, 11), 5, 0)},
        {u"01.07.2008 12:00:00", true, 0, eNokiaPhoneS40_3, offsets(record(2008, 7, 1, 11), 5, 0)},
        {u"01.07.2008 12:00:00", false, 2, 0, offsets(record(2008, 7, 1, 13), 5, 0)},
        {u"01.07.2008 12:00:00", false, 1, 0, offsets(record(2008, 7, 1, 12), 60, 60)},
        {u"01.01.2008 12:00:00", false, 1, 0, offsets(record(2008, 1, 1, 12), 60, 0)},
        {u"01.07.2008 12:00:00", false, 1, eNokiaPhoneS40, offsets(record(2008, 7, 1, 12), 5, 0)},
        {u"31.12.7", false, 0, 0, offsets(record(2007, 12, 31), 5, 0)},
        {u"no date", false, 0, 0, offsets(record(1, 1, 1), 5, 0)},
        {u"no date", false, 1, 0, offsets(record(1, 1, 1), 60, 0)},
    };
    refreshTimeBiases();
    for (const Case& one : cases) {
        stateOf<Devices::State>().platformType = one.platform;
        DateRecord filled = offsets(record(1, 1, 1), 5, 7);
        GetDateStruct(Text(one.text), filled, one.toUtc, one.mode);
        EXPECT_EQ(0, std::memcmp(&one.record, &filled, sizeof filled))
            << filled.day << '.' << int{filled.month} << '.' << filled.year << ' ' << int{filled.hour}
            << " mode " << one.mode << " offsets " << filled.firstOffset << ' ' << filled.secondOffset;
    }
}

TEST_F(ItemDates, AreWrittenInTheSizeThatTheyWereReadIn) {
    DateRecord written = record(1, 1, 1);
    DateRecord read = record(1975, 4, 12);
    read.size = 16;
    GetDateFromPointer(putAtEnd(&read, sizeof read));
    GetDateStruct(u"01.07.2008", written, /*toUtc=*/false, 0);
    EXPECT_EQ(16u, written.size);
    forgetDateRecordSize();
    GetDateStruct(u"01.07.2008", written, /*toUtc=*/false, 0);
    EXPECT_EQ(20u, written.size);
}

// Nothing else has read the biases yet.
TEST_F(ItemDates, FetchTheBiasesForTheirFirstShiftToUtc) {
    DateRecord written = record(1, 1, 1);
    GetDateStruct(u"01.07.2008 12:00:00", written, /*toUtc=*/true, 0);
    EXPECT_EQ(10, written.hour);
}

}  // namespace
}  // namespace ovno2::Content
