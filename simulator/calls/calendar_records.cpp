// Calendar entries as records.
#include <algorithm>
#include <cstring>

#include "simulator/calls/caller_memory.h"
#include "simulator/calls/item_form.h"
#include "simulator/calls/record_builder.h"
#include "simulator/images/date_text.h"
#include "simulator/world/calendar_entry.h"

namespace ovno2::simulator {
namespace {

using library::CalendarRecord;
using library::DateRecord;
using library::longCalendarRecord;
using library::shortCalendarRecord;

using Field = CalendarEntry::Field;

DateRecord withSize(DateRecord date, const RecordSizes& sizes) {
    date.size = sizes.date;
    return date;
}

// The data items, the exceptions, then the texts.
class EntryWriter {
  public:
    EntryWriter(const CalendarEntry& theEntry, const RecordSizes& itsSizes)
        : entry(theEntry), sizes(itsSizes), hasExceptions(sizes.calendar == longCalendarRecord) {}

    bool needsBlock() const { return !entry.fields.empty() || (hasExceptions && !entry.exceptions.empty()); }

    void write(World& world, CalendarRecord& record) {
        const std::size_t items = builder.addWords(entry.fields.size() * sizes.dataItem / sizeof(Word));
        for (std::size_t i = 0; i < entry.fields.size(); ++i)
            writeItem(items + i * sizes.dataItem, entry.fields[i]);
        std::size_t exceptions = 0;
        if (hasExceptions) {
            for (const DateRecord& date : entry.exceptions) {
                const DateRecord sized = withSize(date, sizes);
                const std::size_t at =
                    builder.addBytes({reinterpret_cast<const char*>(&sized), sizeof sized});
                if (&date == entry.exceptions.data()) exceptions = at;
            }
        }
        for (const auto& [item, text] : texts)
            builder.setPointer(item, sizes.dataItem / sizeof(Word) - 1, builder.addText(*text));
        char* const block = builder.finish(world, BlockKind::item);
        if (!entry.fields.empty())
            record.items = {static_cast<Word>(entry.fields.size()), addressOf(block + items)};
        if (hasExceptions && !entry.exceptions.empty()) {
            record.exceptionCount = static_cast<Word>(entry.exceptions.size());
            record.exceptions = addressOf(block + exceptions);
        }
    }

  private:
    void writeItem(std::size_t at, const Field& field) {
        const bool sized = sizes.dataItem == sizeof(library::DataItemRecord);
        std::size_t word = 0;
        if (sized) builder.setWord(at, word++, sizes.dataItem);
        builder.setWord(at, word++, field.reserved);
        builder.setWord(at, word++, field.group);
        builder.setWord(at, word++, field.id);
        if (const Word* const number = std::get_if<Word>(&field.value)) {
            builder.setWord(at, word, *number);
        } else if (const auto& text = std::get<std::optional<std::u16string>>(field.value)) {
            texts.emplace_back(at, &*text);
        }
    }

    const CalendarEntry& entry;
    const RecordSizes& sizes;
    const bool hasExceptions;
    RecordBuilder builder;
    std::vector<std::pair<std::size_t, const std::u16string*>> texts;
};

class CalendarForm : public ItemForm {
  public:
    std::string_view name() const override { return "entry"; }
    std::size_t bytes(const RecordSizes& sizes) const override { return sizes.calendar; }

    // Callers of the shorter form write the longer one as well, and give its size to new identifiers.
    bool takesRecord(Word size, const RecordSizes& sizes) const override {
        return size == sizes.calendar || (isShort(sizes) && size == longCalendarRecord);
    }
    bool takesId(Word size, const RecordSizes& sizes) const override {
        return ItemForm::takesId(size, sizes) || (isShort(sizes) && size == shortCalendarRecord);
    }

    void build(World& world, const Phone&, const RecordSizes& sizes, const ContentItem& item,
               void* record) const override {
        const auto& entry = static_cast<const CalendarEntry&>(item);
        CalendarRecord built{};
        built.size = sizes.calendar;
        built.type = entry.type;
        built.start = withSize(entry.start, sizes);
        built.end = withSize(entry.end, sizes);
        built.alarmState = entry.alarmState;
        built.alarm = withSize(entry.alarm, sizes);
        built.recurrence = entry.recurrence;
        built.recurrenceEnd = withSize(entry.recurrenceEnd, sizes);
        EntryWriter writer(entry, sizes);
        if (writer.needsBlock()) writer.write(world, built);
        std::memcpy(record, &built, sizes.calendar);
    }

    std::shared_ptr<ContentItem> read(World& world, const Phone& phone, const void* record,
                                      const ContentItem* previous) const override {
        const RecordSizes sizes = world.sizesOf(phone);
        CalendarRecord written{};
        std::memcpy(&written, record, sizes.calendar);
        const auto* const before = static_cast<const CalendarEntry*>(previous);
        const CallerMemory memory(world);
        auto entry = std::make_shared<CalendarEntry>();
        entry->type = written.type;
        entry->start = written.start;
        entry->end = written.end;
        entry->alarmState = written.alarmState;
        entry->alarm = written.alarm;
        entry->recurrence = written.recurrence;
        entry->recurrenceEnd = written.recurrenceEnd;
        for (const DateRecord& date : {entry->start, entry->end, entry->alarm, entry->recurrenceEnd})
            requireDate(date);
        if (written.items.count > mostEntryFields)
            memory.fail("more items than an entry can hold", written.items.count);
        for (Word i = 0; i < written.items.count; ++i) {
            const auto from = static_cast<Address>(written.items.items + i * sizes.dataItem);
            entry->fields.push_back(
                fieldFrom(memory, memory.readDataItem(from, sizes.dataItem), written.type, before));
        }
        if (isShort(sizes)) return entry;
        if (written.exceptionCount > mostExceptions)
            memory.fail("more exceptions than an entry can hold", written.exceptionCount);
        for (Word i = 0; i < written.exceptionCount; ++i) {
            const auto from = static_cast<Address>(written.exceptions + i * sizeof(DateRecord));
            entry->exceptions.push_back(memory.readDate(from));
        }
        return entry;
    }

    RecordParts parts(const void* record, const RecordSizes& sizes) const override {
        CalendarRecord entry{};
        std::memcpy(&entry, record, sizes.calendar);
        RecordParts parts;
        parts.add({"item", 0, entry.items.items, entry.items.count & 0xFF, sizes.dataItem, true});
        parts.add({"exception", 0, entry.exceptions, entry.exceptionCount, sizeof(DateRecord), false});
        return parts;
    }

  private:
    static bool isShort(const RecordSizes& sizes) { return sizes.calendar == shortCalendarRecord; }

    // The id tells whether a field is a number; of one that only the phone knows, the entry before does.
    static Field fieldFrom(const CallerMemory& memory, const CallerMemory::Words& words, Word type,
                           const CalendarEntry* before) {
        Field field;
        field.id = words.fieldId;
        field.group = words.group;
        field.reserved = words.reserved;
        bool isNumber = isNumberField(field.id, type);
        if (!isNumber && before != nullptr && field.id != library::calendarDescription) {
            const auto known = std::ranges::find(before->fields, field.id, &Field::id);
            isNumber = known != before->fields.end() && std::holds_alternative<Word>(known->value);
        }
        if (isNumber) {
            field.value = words.value;
        } else {
            field.value = memory.readText(words.value);
        }
        return field;
    }
};

const CalendarForm theCalendarForm;

}  // namespace

const ItemForm& calendarForm = theCalendarForm;

}  // namespace ovno2::simulator
