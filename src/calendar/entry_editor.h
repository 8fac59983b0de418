// A row of the host's grid on its way into an entry: every cell that says something else than the entry does
// changes it, the others leave it as it is.
#pragma once

#include "calendar/cal_info.h"
#include "calendar/grid_row.h"
#include "calendar/local_dates.h"
#include "content/library_pieces.h"

namespace ovno2::Calendar {

class EntryEditor {
  public:
    // A new entry, empty but for the platform of its phone, or one that the phone has.
    explicit EntryEditor(Long phonePlatform);
    explicit EntryEditor(Entry existing);

    // Puts the cells in their places. Throws RuntimeFailure 7 where there is no memory for one, 6 for a rule
    // whose interval, or number of exceptions, an entry cannot hold; then nothing of it may be written.
    void place(const GridRow& row);

    bool changed() const { return changed_; }
    const Entry& entry() const { return entry_; }

  private:
    bool isUnchangedKind() const { return existing_ && original_.record.type == entry_.record.type; }

    void placeType(const Text& cell);
    void placeTexts(const GridRow& row);
    void placeDates(const GridRow& row);
    void placeStart(const Text& cell);
    void placeEnd(const Text& cell);
    void placeDue(const Text& cell);
    void placeRule(const Text& cell, const GridRow& row);
    void placeRepetition(const Text& rule);
    void placeLastDate(std::optional<DateValue> last, DateValue start);
    void placeExceptions(const Text& dates, const GridRow& row);
    void placeAlarm(const Text& cell);
    void clearAlarm();

    DateValue afterFirstYear(DateValue date, const Text& cell) const;
    DateValue start() const;
    bool shows(const Text& shown, DateValue date, bool withTime) const;
    bool store(DateValue date, library::DateRecord& record, bool withTime);
    template <class Value>
    void set(Value& place, const Value& value);

    Content::DataItem* find(library::Word fieldId);
    void setNumber(library::Word fieldId, Long number);
    void setText(library::Word fieldId, const Text& text);

    Entry entry_;
    Entry original_;
    Times shown_;
    bool existing_ = false;
    bool changed_ = false;
    Content::LibraryPieces pieces_;
};

}  // namespace ovno2::Calendar
