#include "calendar/local_dates.h"

#include "calendar/cal_info.h"
#include "content/item_dates.h"
#include "core/attempt.h"
#include "dates/date_parser.h"
#include "dates/date_text.h"
#include "dates/iso_date.h"

namespace ovno2::Calendar {

namespace {

using library::DateRecord;

// Seconds by which a record reads too early.
Long missing(const DateRecord& record, DateValue local, Long readMode) {
    const DateValue read = Content::GetDateFromStruct(record, /*withTime=*/true, readMode);
    return intervalsBetween(u"s", read, local);
}

DateRecord emptyRecord() {
    DateRecord record{};
    record.size = sizeof record;
    return record;
}

void checkStored(const DateRecord& record) {
    if (record.month == 0)
        throw RuntimeFailure(outOfMemory);  // nothing but memory keeps a date from its record
}

}  // namespace

std::optional<DateValue> dateIn(const Text& text) {
    std::optional<DateValue> date = readDate(text);
    if (!date) {
        Text iso = text;
        date = readDate(ISODate::GetISO8601Date(iso, /*initialiseFormats=*/true, /*convertUtc=*/true));
    }
    if (date && serialDay(*date) == 0) date.reset();
    return date;
}

bool hasTime(DateValue date) {
    return dayOf(date) != date;
}

void storeTime(DateValue local, DateRecord& record, Long readMode) {
    DateRecord stored = emptyRecord();
    Content::GetDateStruct(localDateText(local), stored, /*toUtc=*/true, utcMode);
    checkStored(stored);
    // On the days on which daylight time begins or ends the rule may see the local and the shifted day on
    // different sides.
    if (const Long seconds = missing(stored, local, readMode); seconds != 0) {
        const bool hasOffsets = stored.firstOffset != 0 || stored.secondOffset != 0;
        DateRecord shifted = stored;
        if (!hasOffsets) {
            const DateValue asRead = Content::GetDateFromStruct(stored, /*withTime=*/false, readMode);
            const DateValue written =
                addSeconds(asRead, (stored.hour * 60 + stored.minute) * 60 + stored.second + seconds);
            Content::GetDateStruct(localDateText(written), shifted, /*toUtc=*/false, /*mode=*/0);
        }
        if (hasOffsets || missing(shifted, local, readMode) != 0) {
            shifted = stored;
            shifted.secondOffset += seconds / 60;
        }
        stored = shifted;
    }
    record = stored;
}

void storeDay(DateValue local, DateRecord& record) {
    DateRecord stored = emptyRecord();
    Content::GetDateStruct(localDateText(local), stored, /*toUtc=*/false, /*mode=*/0);
    checkStored(stored);
    record = stored;
}

}  // namespace ovno2::Calendar
