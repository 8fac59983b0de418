// One calendar entry as a phone keeps it: close to the library's record, with its dates as they lie there.
//
// Immutable once it is in a store.
#pragma once

#include <optional>
#include <variant>
#include <vector>

#include "simulator/world/content_item.h"

namespace ovno2::simulator {

inline constexpr std::size_t mostEntryFields = 255;
inline constexpr std::size_t mostExceptions = 255;

struct CalendarEntry : ItemBase<CalendarEntry> {
    static constexpr Word usualGroup = 16;

    struct Field {
        Word id = 0;
        Word group = usualGroup;
        Word reserved = 0;
        std::variant<Word, std::optional<std::u16string>> value;  // a number, or a text that may be null
    };

    Word type = library::calendarMeeting;
    // The sizes of the dates are the phone's, not the entry's.
    library::DateRecord start{};
    library::DateRecord end{};
    Word alarmState = library::alarmNone;
    library::DateRecord alarm{};
    Word recurrence = 0;
    library::DateRecord recurrenceEnd{};
    std::vector<Field> fields;
    std::vector<library::DateRecord> exceptions;
};

// The kinds of a field's value that its id tells: numbers, or in a birthday one more.
inline bool isNumberField(Word id, Word entryType) {
    return id == library::calendarPriority || id == library::calendarStatus ||
           id == library::calendarBirthdayMark ||
           (id == library::calendarDescription && entryType == library::calendarBirthday);
}

}  // namespace ovno2::simulator
