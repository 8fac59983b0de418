#include "calendar/calendar_writing.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "calendar/calendar_connection.h"
#include "calendar/calendar_folders.h"
#include "calendar/calendar_session.h"
#include "calendar/calendar_state.h"
#include "calendar/entry_editor.h"
#include "content/item_reading.h"
#include "devices/devices.h"
#include "library/library_start.h"

namespace ovno2::Calendar {

namespace {

using Content::FolderEntry;
using Content::ItemId;
using library::CalendarRecord;

constexpr TextView tag = u"WriteCalItem";
constexpr std::size_t spareWords = 51;
constexpr std::size_t longestNumber = 3;  // digits of a temporary id that finds an entry
constexpr Long detailLevel = 3;

const ItemId* entryNamed(const Text& name) {
    Content::SessionItems& items = state().CalendarSessionIds;
    const ItemId* entry = items.findUid(name);
    if (entry || name.empty() || name.size() > longestNumber) return entry;
    entry = items.findNew(name);
    return entry ? entry : items.findPosition(numericLong(name));
}

// The folder that an entry moves to; none where it stays.
const FolderEntry* otherFolder(const std::vector<FolderEntry>& folders, const Text& name, Long own) {
    if (folders.size() < 2 || name.empty()) return nullptr;
    const auto found = std::ranges::find_if(
        folders, [&](const FolderEntry& folder) { return folder.Name == name && folder.FolderId != own; });
    return found == folders.end() ? nullptr : &*found;
}

ItemId newIdIn(const std::vector<FolderEntry>& folders, const Text& name) {
    constexpr Long firstVersionWithShortIds = 36;
    const auto named = std::ranges::find(folders, name, &FolderEntry::Name);
    ItemId id;
    id.Size = library::recordedContentVersion() < firstVersionWithShortIds
                  ? static_cast<Long>(library::shortCalendarRecord)
                  : static_cast<Long>(sizeof(library::ItemIdRecord));
    id.FolderId = !name.empty() && named != folders.end() ? named->FolderId
                                                          : folders[folders.size() > 1 ? 1 : 0].FolderId;
    return id;
}

// The entry as the library takes it; what was made for it goes back at the end.
class WrittenEntry {
  public:
    explicit WrittenEntry(const Entry& entry) : record_(entry.record) {
        library::LowWords& spare = state().WriteSpare;
        if (spare.size() == 0) spare.allocate(spareWords);
        record_.items.count = static_cast<library::Word>(entry.items.size());
        record_.items.items = Content::CopyFromDataStructToNokia(entry.items, spare, /*index=*/0);
        if (record_.items.items == 0 && !entry.items.empty()) throw RuntimeFailure(outOfMemory);
        copy_ = library::CONAAllocMemory.tried(sizeof record_);
        if (copy_) std::memcpy(copy_, &record_, sizeof record_);
    }
    ~WrittenEntry() {
        if (copy_) library::CONAFreeMemory.tried(copy_);
        Content::FreeDataItems(record_.items.items, state().WriteSpare);
    }
    WrittenEntry(const WrittenEntry&) = delete;
    WrittenEntry& operator=(const WrittenEntry&) = delete;

    void* get() { return copy_ ? copy_ : &record_; }

  private:
    CalendarRecord record_;
    void* copy_ = nullptr;
};

void logRefused(const Entry& entry) {
    if (!logsMoreThan(detailLevel)) return;
    const CalendarRecord& record = entry.record;
    for (const library::DateRecord* const date :
         {&record.start, &record.end, &record.alarm, &record.recurrenceEnd})
        DebugLine(decimal{date->year}, u"-", decimal{date->month}, u"-", decimal{date->day}, u" ",
                  decimal{date->hour}, u":", decimal{date->minute}, u":", decimal{date->second}, u" ",
                  decimal{date->firstOffset}, u" ", decimal{date->secondOffset});
    for (const Content::DataItem& item : entry.items)
        DebugLine(hex{item.FieldId}, u":", hex{item.Value});
}

// The library's status; `id` gets the temporary id.
Long writeEntry(ItemId& id, const Entry& entry) {
    WrittenEntry written(entry);
    Content::LibraryItemId record(id);
    Long status = library::notCalled;
    {
        const RoutineLog log(u"CAWriteItem");
        status = library::CAWriteItem
                     .tried(connection().writeSession.operation, &record.get(), /*zero=*/0, /*one=*/1,
                            written.get())
                     .status;
    }
    if (status == 0) {
        id.Position = static_cast<Long>(record.get().position);
    } else {
        DebugLine(u"e1:", hex{status});
        logRefused(entry);
    }
    return status;
}

void deleteMoved(const ItemId& id) {
    Content::LibraryItemId record(id);
    DebugLine(u" CADeleteItem:",
              hex{library::CADeleteItem.tried(connection().writeSession.operation, &record.get(), /*zero=*/0)
                      .status});
}

// One row on its way to the phone. Throws RuntimeFailure where it cannot be taken whole; nothing is written
// then.
class RowWriter {
  public:
    RowWriter(CalItem& item, const GridRow& row, const std::vector<FolderEntry>& folders, Long platform,
              const MemoryWatch& memory)
        : item_(item),
          row_(row),
          folders_(folders),
          platform_(platform),
          memory_(memory),
          data_(connection().handle, calendarRecordSize()) {}

    Long write() {
        const Text* const cell = row_.cell(field::calendar);
        const Text calendar = cell ? *cell : Text();
        const ItemId* const known = entryNamed(item_.ItemUid);
        Long status = 0;
        if (known) status = readExisting(*known);
        const bool found = known && status == 0;
        const FolderEntry* const target = found ? otherFolder(folders_, calendar, known->FolderId) : nullptr;
        if (target) DebugWrite(u" Move to other folder");
        if (found && !target) DebugLine(u" found:", decimal{static_cast<Long>(entry_.record.type)});
        DebugWrite(tag, 2);

        const bool isNew = !found || target;
        EntryEditor editor = isNew ? EntryEditor(platform_) : EntryEditor(entry_);
        editor.place(row_);
        memory_.check();
        DebugWrite(tag, 3);
        if (!editor.changed()) return status;

        ItemId id = isNew ? newIdIn(folders_, calendar) : *known;
        if (target) {
            id.FolderId = target->FolderId;
            deleteMoved(*known);
        }
        status = writeEntry(id, editor.entry());
        DebugWrite(tag, 4);
        if (status != 0) return status;
        Content::SessionItems& items = state().CalendarSessionIds;
        const Long temporaryId = id.Position;
        if (isNew) {
            items.add(std::move(id));
            items.nameLast(temporaryId);
        }
        if (isNew || item_.ItemUid.empty()) item_.ItemUid = decimalText(temporaryId);
        return status;
    }

  private:
    Long readExisting(const ItemId& id) {
        Content::LibraryItemId record(id);
        const Long status = data_.read(connection().writeSession.operation, record.get());
        if (status != 0) {
            DebugLine(u"e0:", hex{status});
            return status;
        }
        entry_.phonePlatform = platform_;
        entry_.record = data_.record();
        takeItems(entry_);
        constexpr library::Word countMask = 0xFF;
        // Written without them, the entry would lose them.
        if (entry_.items.size() != (entry_.record.items.count & countMask)) throw RuntimeFailure(outOfMemory);
        return 0;
    }

    CalItem& item_;
    const GridRow& row_;
    const std::vector<FolderEntry>& folders_;
    Long platform_;
    const MemoryWatch& memory_;
    Content::ItemData<CalendarRecord> data_;  // holds what the entry's record points to until it is written
    Entry entry_;
};

}  // namespace

Long WriteCalItem(const Text& model, const Text& phoneId, CalItem& elemcal,
                  const platform::ObjectPointer& CalGrid, Long indexingrid,
                  const TextTable& MobileCalFields) {
    const RoutineLog log(tag);
    const Long begun = beginWriting(model, phoneId);
    if (begun < 0) return begun;
    Long status = library::notCalled;
    attempt([&] {
        DebugWrite(tag, 1);
        const MemoryWatch memory;
        const Text& serial = connection().serial;
        std::vector<FolderEntry> folders;
        GetCalendarFolder(model, serial, folders);
        if (folders.empty()) throw RuntimeFailure(invalidProcedureCall);
        const GridRow row(CalGrid, indexingrid, MobileCalFields);
        status = RowWriter(elemcal, row, folders, phonePlatform(model, serial), memory).write();
    });
    return status;
}

}  // namespace ovno2::Calendar
