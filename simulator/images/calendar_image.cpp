// calendar.json's items: entries with their dates, repetition and fields.
#include <algorithm>
#include <array>

#include "simulator/base/text.h"
#include "simulator/images/date_text.h"
#include "simulator/images/item_image.h"
#include "simulator/world/calendar_entry.h"

namespace ovno2::simulator {
namespace {

using Field = CalendarEntry::Field;

struct Name {
    const char* text;
    Word number;
};

constexpr Name types[] = {{"meeting", library::calendarMeeting},   {"call", library::calendarCall},
                          {"birthday", library::calendarBirthday}, {"note", library::calendarNote},
                          {"reminder", library::calendarReminder}, {"unnamed", library::calendarUnnamed},
                          {"to-do", library::calendarToDo}};
constexpr Name repetitions[] = {{"day", library::repeatsDaily},
                                {"week", library::repeatsWeekly},
                                {"month", library::repeatsMonthly},
                                {"year", library::repeatsYearly}};
constexpr std::array<const char*, 7> weekdays = {"MO", "TU", "WE", "TH", "FR", "SA", "SU"};

// Fields that have a name of their own. The description of a birthday is the year of birth, a number.
constexpr Name fieldNames[] = {
    {"summary", library::calendarSummary},         {"location", library::calendarLocation},
    {"description", library::calendarDescription}, {"birthYear", library::calendarDescription},
    {"priority", library::calendarPriority},       {"status", library::calendarStatus}};

constexpr Word mostInterval = 255;

template <std::size_t count>
const Name* findName(const Name (&names)[count], const JsonNode& node) {
    const auto* const found = std::find_if(std::begin(names), std::end(names),
                                           [&](const Name& name) { return node.is(name.text); });
    return found == std::end(names) ? nullptr : found;
}

template <std::size_t count>
const char* nameOf(const Name (&names)[count], Word number) {
    const auto* const found = std::find_if(std::begin(names), std::end(names),
                                           [&](const Name& name) { return name.number == number; });
    return found == std::end(names) ? nullptr : found->text;
}

bool isSet(const library::DateRecord& date) {
    return date.year != 0 || date.month != 0 || date.day != 0 || date.hour != 0 || date.minute != 0 ||
           date.second != 0 || date.firstOffset != 0 || date.secondOffset != 0;
}

// The name under which a field is a member of its entry, or null.
const char* ownName(const Field& field) {
    const bool isNumber = std::holds_alternative<Word>(field.value);
    if (field.group != CalendarEntry::usualGroup || field.reserved != 0) return nullptr;
    if (field.id == library::calendarDescription) return isNumber ? "birthYear" : "description";
    const bool wantsNumber = field.id == library::calendarPriority || field.id == library::calendarStatus;
    return isNumber == wantsNumber ? nameOf(fieldNames, field.id) : nullptr;
}

class CalendarImage : public ItemImage {
  public:
    std::shared_ptr<ContentItem> read(const JsonNode& node, Word position) override {
        entry = std::make_shared<CalendarEntry>();
        entry->position = position;
        bool hasAlarmState = false;
        node.forEachMember([&](std::string_view name, const JsonNode& value) {
            if (readItemMember(name, value, *entry)) return;
            if (isName(name, "type")) {
                readType(value);
            } else if (isName(name, "start")) {
                readDate(value, entry->start);
            } else if (isName(name, "end")) {
                readDate(value, entry->end);
            } else if (isName(name, "alarm")) {
                readDate(value, entry->alarm);
                if (!hasAlarmState) entry->alarmState = library::alarmSet;
            } else if (isName(name, "alarmState")) {
                entry->alarmState = value.word();
                hasAlarmState = true;
            } else if (isName(name, "repeat")) {
                readRepetition(value);
            } else if (isName(name, "until")) {
                readDate(value, entry->recurrenceEnd);
            } else if (isName(name, "exceptions")) {
                value.forEachElement([&](const JsonNode& date, std::size_t) {
                    readDate(date, entry->exceptions.emplace_back());
                });
            } else if (isName(name, "fields")) {
                value.forEachElement([&](const JsonNode& field, std::size_t) { readField(field); });
            } else if (!readNamedField(name, value)) {
                value.fail("no member of this name");
            }
        });
        if (entry->fields.size() > mostEntryFields) node.fail("at most 255 fields");
        if (entry->exceptions.size() > mostExceptions) node.fail("at most 255 exceptions");
        return std::move(entry);
    }

    void write(JsonWriter& writer, const ContentItem& item) const override {
        const auto& written = static_cast<const CalendarEntry&>(item);
        if (const char* const type = nameOf(types, written.type)) {
            writeItemMember(writer, "type", type);
        } else {
            writeItemMember(writer, "type", written.type);
        }
        const auto writeDate = [&](const char* name, const library::DateRecord& date) {
            if (isSet(date)) writeItemMember(writer, name, dateTextWithOffsets(date));
        };
        writeDate("start", written.start);
        writeDate("end", written.end);
        writeDate("alarm", written.alarm);
        const Word usualState = isSet(written.alarm) ? library::alarmSet : library::alarmNone;
        if (written.alarmState != usualState) writeItemMember(writer, "alarmState", written.alarmState);
        if (written.recurrence != 0) writeRepetition(writer, written.recurrence);
        writeDate("until", written.recurrenceEnd);
        if (!written.exceptions.empty()) {
            std::vector<std::string> dates;
            for (const library::DateRecord& date : written.exceptions)
                dates.push_back(dateTextWithOffsets(date));
            writeItemMember(writer, "exceptions", dates);
        }
        writeFields(writer, written.fields);
    }

  private:
    void readType(const JsonNode& node) {
        const Name* const name = findName(types, node);
        const std::optional<Word> number = node.optionalWord();
        if (name == nullptr && !number) {
            node.fail(
                "\"meeting\", \"call\", \"birthday\", \"note\", \"reminder\", \"unnamed\", \"to-do\" or a "
                "number");
        }
        entry->type = name == nullptr ? *number : name->number;
    }

    void readRepetition(const JsonNode& node) {
        if (const std::optional<Word> word = node.optionalWord()) {
            entry->recurrence = *word;
            return;
        }
        node.expectMembers({"every", "interval", "days"});
        const JsonNode every = node.member("every");
        const Name* const kind = findName(repetitions, every);
        if (kind == nullptr) every.fail("\"day\", \"week\", \"month\" or \"year\"");
        Word interval = 1;
        if (const auto given = node.optionalMember("interval"))
            interval = given->wordBetween(0, mostInterval);
        Word days = 0;
        if (const auto given = node.optionalMember("days")) {
            given->forEachElement([&](const JsonNode& day, std::size_t) {
                const auto* const found =
                    std::ranges::find_if(weekdays, [&](const char* name) { return day.is(name); });
                if (found == weekdays.end()) day.fail(R"("MO", "TU", "WE", "TH", "FR", "SA" or "SU")");
                days |= 1U << (found - weekdays.begin());
            });
        }
        entry->recurrence = kind->number | interval << 8 | days << 16;
    }

    // What the words of a repetition cannot say is written as the number it is.
    static void writeRepetition(JsonWriter& writer, Word recurrence) {
        const char* const every = nameOf(repetitions, recurrence & 0xFF);
        if (every == nullptr || recurrence >> 23 != 0) {
            writeItemMember(writer, "repeat", recurrence);
            return;
        }
        writer.layout(std::string(", \"repeat\": {\"every\": \"") + every + "\"");
        const Word interval = recurrence >> 8 & 0xFF;
        if (interval != 1) writeItemMember(writer, "interval", interval);
        std::vector<std::string> days;
        for (std::size_t day = 0; day < weekdays.size(); ++day) {
            if ((recurrence >> 16 >> day & 1) != 0) days.emplace_back(weekdays[day]);
        }
        if (!days.empty()) writeItemMember(writer, "days", days);
        writer.layout("}");
    }

    bool readNamedField(std::string_view name, const JsonNode& value) {
        const auto* const found = std::find_if(std::begin(fieldNames), std::end(fieldNames),
                                               [&](const Name& one) { return name == one.text; });
        if (found == std::end(fieldNames)) return false;
        Field field;
        field.id = found->number;
        const bool isNumber = name == "birthYear" || name == "priority" || name == "status";
        if (isNumber) {
            field.value = value.word();
        } else {
            field.value = readItemText(value);
        }
        entry->fields.push_back(std::move(field));
        return true;
    }

    void readField(const JsonNode& node) {
        node.expectMembers({"id", "group", "reserved", "number", "text"});
        Field field;
        field.id = node.member("id").word();
        field.group = node.word("group", CalendarEntry::usualGroup);
        field.reserved = node.word("reserved", 0);
        const auto number = node.optionalMember("number");
        const auto text = node.optionalMember("text");
        if (number.has_value() == text.has_value()) node.fail("a field with a \"number\" or a \"text\"");
        if (number) {
            field.value = number->word();
        } else {
            field.value = readItemText(*text);
        }
        entry->fields.push_back(std::move(field));
    }

    static void writeValue(JsonWriter& writer, const char* name, const Field& field) {
        std::visit([&](const auto& value) { writeItemMember(writer, name, value); }, field.value);
    }

    // In their order: those with a name first, and from the first one on that cannot be a member (none of its
    // name is left, or it says more than a member can) all of them in a list.
    static void writeFields(JsonWriter& writer, const std::vector<Field>& fields) {
        std::size_t at = 0;
        std::vector<std::string> used;
        for (; at < fields.size(); ++at) {
            const char* const name = ownName(fields[at]);
            if (name == nullptr || std::ranges::find(used, name) != used.end()) break;
            used.emplace_back(name);
            writeValue(writer, name, fields[at]);
        }
        if (at == fields.size()) return;
        writer.layout(", \"fields\": [");
        for (const char* separator = ""; at < fields.size(); ++at, separator = ", ") {
            const Field& field = fields[at];
            writer.layout(separator + ("{\"id\": " + std::to_string(field.id)));
            if (field.group != CalendarEntry::usualGroup) writeItemMember(writer, "group", field.group);
            if (field.reserved != 0) writeItemMember(writer, "reserved", field.reserved);
            writeValue(writer, std::holds_alternative<Word>(field.value) ? "number" : "text", field);
            writer.layout("}");
        }
        writer.layout("]");
    }

    std::shared_ptr<CalendarEntry> entry;  // under way
};

}  // namespace

std::unique_ptr<ItemImage> calendarForm() {
    return std::make_unique<CalendarImage>();
}

}  // namespace ovno2::simulator
