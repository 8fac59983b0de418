#include "content/item_dates.h"

#include <cstring>

#include "content/sessions.h"
#include "content/state.h"
#include "core/settings.h"
#include "dates/date_parser.h"
#include "dates/daylight.h"
#include "devices/devices.h"
#include "library/library_memory.h"

namespace ovno2::Content {

using namespace std::string_view_literals;  // names of routines whose length is known beforehand

namespace {

using library::DateRecord;

constexpr Long modeUtc = 1;
constexpr Long modeWithoutDaylight = -1;
constexpr Long modeStandingBiasOff = 2;
constexpr std::size_t recordSize = sizeof(DateRecord);

// Unknown platforms and the newer ones keep daylight saving apart from the zone's bias.
bool platformKnowsDaylight() {
    const Long type = Devices::platformType();
    return type == eNokiaPhoneType || type >= eNokiaPhoneS40_5;
}

void shiftMinutes(DateValue& date, std::int64_t minutes) {
    attempt([&] { date = addSeconds(date, minutes * 60); });
}

bool inDaylightTime(DateValue date) {
    return ISODate::DaylightOffsetHours(date) != 0;
}

bool daylightCounts(DateValue date, Long mode) {
    return mode != modeWithoutDaylight && platformKnowsDaylight() && inDaylightTime(date);
}

}  // namespace

DateValue GetDateFromPointer(Address pointer) {
    const RoutineLog log(u"GetDateFromPointer"sv);
    DateRecord record{};
    DateValue date = dateZero;
    attempt([&] {
        std::uint32_t first = 0;
        library::copyRecord(pointer, first);
        std::size_t size = first & 0xFFu;
        if (size == 0) {
            size = recordSize;
        } else {
            state().DateRecordSize = static_cast<Long>(size);
        }
        if (size > recordSize) {
            DebugLine(u"datesize:", decimal{static_cast<Long>(size)});
            size = recordSize;
        }
        const std::vector<unsigned char> bytes = library::copyBlock<unsigned char>(pointer, size);
        std::memcpy(&record, bytes.data(), size);
    });
    if (record.year == 0 && record.month == 0 && record.day == 0) return date;
    attempt([&] { date = dateSerial(record.year, record.month, record.day); });
    return date;
}

DateValue GetDateFromStruct(const DateRecord& record, bool withTime, Long mode) {
    const RoutineLog log(u"GetDateFromStruct");
    DateValue date = dateZero;
    if (record.year == 0) return date;
    attempt([&] { date = dateSerial(record.year, record.month, record.day); });
    if (!withTime) return date;
    attempt([&] { date = addSeconds(date, (record.hour * 60 + record.minute) * 60 + record.second); });
    if (record.firstOffset != 0) shiftMinutes(date, record.firstOffset);
    if (record.secondOffset != 0) shiftMinutes(date, record.secondOffset);

    const bool gaveUtc = (mode == modeUtc || mode == modeWithoutDaylight) && record.firstOffset == 0 &&
                         record.secondOffset == 0 && settings().addTimeOffset >= 0;
    if (!gaveUtc) return date;
    shiftMinutes(date, -std::int64_t{state().TimeBias});
    if (daylightCounts(date, mode)) shiftMinutes(date, -std::int64_t{state().DaylightTimeBias});
    return date;
}

void GetDateStruct(const Text& text, DateRecord& record, bool toUtc, Long mode) {
    const RoutineLog log(u"GetDateStruct");
    State& content = state();
    DateValue date = dateZero;
    const FailureNumber unreadable = attempt([&] {
        const std::optional<DateValue> read = readDate(text);
        if (!read) throw RuntimeFailure(typeMismatch);
        date = *read;
    });
    if (toUtc) {
        if (content.TimeBias == 0) refreshTimeBiases();
        shiftMinutes(date, content.TimeBias);
        if (daylightCounts(date, mode)) shiftMinutes(date, content.DaylightTimeBias);
    }
    if (mode == modeStandingBiasOff) shiftMinutes(date, -std::int64_t{content.TimeBias});
    record.size =
        content.DateRecordSize != 0 ? static_cast<library::Word>(content.DateRecordSize) : recordSize;
    record.secondOffset = 0;
    attempt([&] {
        if (unreadable != noFailure) return;
        const DateFields fields = fieldsOf(date);
        record.year = static_cast<std::uint16_t>(fields.year);
        record.month = static_cast<std::uint8_t>(fields.month);
        record.day = static_cast<std::uint8_t>(fields.day);
        record.hour = static_cast<std::uint8_t>(fields.hour);
        record.minute = static_cast<std::uint8_t>(fields.minute);
        record.second = static_cast<std::uint8_t>(fields.second);
    });
    if (mode != modeUtc || !platformKnowsDaylight()) return;
    if (inDaylightTime(date)) record.secondOffset = -content.DaylightTimeBias;
    record.firstOffset = -content.TimeBias;
}

}  // namespace ovno2::Content
