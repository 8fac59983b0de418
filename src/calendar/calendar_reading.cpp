#include "calendar/calendar_reading.h"

#include <algorithm>

#include "calendar/cal_info.h"
#include "calendar/calendar_connection.h"
#include "calendar/calendar_folders.h"
#include "calendar/calendar_state.h"
#include "content/field_tables.h"
#include "content/item_reading.h"
#include "content/progress.h"
#include "content/sessions.h"
#include "content/vendor_service.h"
#include "core/pending_messages.h"
#include "devices/current_phone.h"
#include "devices/devices.h"
#include "library/library_start.h"

namespace ovno2::Calendar {

namespace {

using Content::FolderEntry;
using library::CalendarRecord;
using library::ItemIdRecord;
using library::Word;

constexpr Long libraryNotStarted = -1;
constexpr Long phoneNotFound = -2;
constexpr Long connectionNotOpened = -3;
constexpr Long foldersNotRead = -4;
constexpr Long operationNotBegun = -2;
constexpr Long listRefused = -1;

constexpr Long progressOfIdList = 50;
constexpr Long textDetailLevel = 3;
constexpr std::size_t shownLength = 100;

Long highestIndex(const HostArray<CalItem>& items) {
    return items.hasElements() ? items.upperBound() : 0;
}

void logText(const Text& text) {
    if (!logsMoreThan(textDetailLevel)) return;
    attempt([&] { DebugLine(replaceAll(text, u"\r\n", u"\u00B6").substr(0, shownLength)); });
}

// One read of one calendar. A result below 0 ends the reading of all.
class EntryReader : public Content::FolderReader {
  public:
    EntryReader(HostArray<CalItem>& items, const Content::Progress& progress, Long platform)
        : items_(items), progress_(progress) {
        entry_.phonePlatform = platform;
    }
    Long readFolder(const FolderEntry& folder, Long numberOffset) {
        folder_ = &folder;
        numberOffset_ = numberOffset;
        return read(connection(), folder.FolderId);
    }

  protected:
    Long notListed(Long status) override {
        DebugLine(u"e1:", hex{status});
        return status < 0 ? status : listRefused;
    }
    void listed(Word) override { progress_.advance(progressOfIdList); }
    Long notBegun(Long) override { return operationNotBegun; }
    void begun(Word count, std::size_t copied) override {
        progress_.advance();
        Content::InitFieldTables();
        DebugLine(u"Ucalitems:", decimal{static_cast<Long>(count)});
        attempt([&] { items_.elements().reserve(items_.size() + copied); });
    }
    void readItem(library::Handle operation, ItemIdRecord& id) override {
        processPendingMessages();
        Content::ItemData<CalendarRecord> data(connection().handle, calendarRecordSize());
        DebugWrite(u"WriteDebugInfo", 1);
        const Long status = data.read(operation, id);
        const CalendarRecord& record = data.record();
        if (record.size > sizeof record)
            DebugLine(u"CAReadItem !!!", decimal{static_cast<Long>(record.size)});
        progress_.advance();
        if (status == 0) {
            addEntry(id, record);
        } else {
            DebugLine(u" f1:", hex{status});
        }
    }
    Long done() override { return 0; }

  private:
    void addEntry(const ItemIdRecord& id, const CalendarRecord& record) {
        DebugWrite(u"WriteDebugInfo", 2);
        entry_.record = record;
        const MemoryWatch memory;
        takeItems(entry_);
        Text uid = Content::GetUIDAsString(id);
        CalItem item;
        item.VCalText = entryText(entry_, folder_->Name, uid);
        item.VCalTextRead = item.VCalText;
        logText(item.VCalText);
        item.ItemNumber = static_cast<Long>(id.position + static_cast<Word>(numberOffset_));
        item.ItemKind = entry_.isToDo() ? 2 : 1;
        memory.check();
        item.ItemUid = uid.empty() ? decimalText(static_cast<Long>(id.position)) : std::move(uid);
        items_.extendTo(items_.hasElements() ? items_.upperBound() + 1 : 0);
        items_.at(items_.upperBound()) = std::move(item);
        DebugWrite(u"WriteDebugInfo", 6);
    }

    HostArray<CalItem>& items_;
    const Content::Progress& progress_;
    const FolderEntry* folder_ = nullptr;
    Long numberOffset_ = 0;
    Entry entry_;
};

}  // namespace

Long GetCalendarItems(const std::vector<FolderEntry>& folders, HostArray<CalItem>& CalItems,
                      const platform::ObjectPointer& Progressbar) {
    const RoutineLog log(u"GetCalendarItems");
    const Content::Progress progress(Progressbar);
    EntryReader reader(CalItems, progress, state().platform);
    const bool several = folders.size() > 1;
    for (std::size_t i = 0; i < std::min(folders.size(), mostFolders); ++i) {
        DebugLine(folders[i].Name);
        const Long result = reader.readFolder(folders[i], several ? folders[i].FolderId : 0);
        if (result < 0) return result;
    }
    return highestIndex(CalItems);
}

Long NokiaGetCalendarItems(const Text& model, const Text& PhoneId, HostArray<CalItem>& CalItems,
                           const platform::ObjectPointer& Progressbar) {
    const Content::Progress progress(Progressbar);
    int kills = 0;
    for (bool retried = false;;) {
        if (Devices::currentPhone().serial.empty() || connection().handle == 0)
            if (Content::PIMApiInit() < 0) return libraryNotStarted;
        progress.advance();

        Text serial;
        attempt([&] { serial = Devices::GetSerialNumber(model, PhoneId, /*force=*/false); });
        if (serial.empty()) return phoneNotFound;
        progress.advance();

        const Long status = CheckCalendarConnectionTwice(serial);
        if (library::is(status, library::contentAccessDenied)) return status;
        if (status != 0) return connectionNotOpened;
        progress.advance();

        std::vector<FolderEntry> folders;
        GetCalendarFolder(model, serial, folders);
        if (folders.empty() || folders[0].FolderId < 0) return foldersNotRead;
        progress.advance();

        phonePlatform(model, serial);
        CalItems.clear();
        const Long result = GetCalendarItems(folders, CalItems, Progressbar);
        CloseCalendarConnection();
        if (result >= 0 || retried) return result;
        if (Content::serviceIsStuck(result)) {
            Content::PIMApiTerminate();
            Content::endVendorService();
            if (++kills < Content::mostServiceEnds) continue;
            CloseCalendarConnection();
        }
        Content::PIMApiTerminate();
        retried = true;
    }
}

}  // namespace ovno2::Calendar
