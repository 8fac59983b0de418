#include "messages/data_reading.h"

#include <utility>

#include "content/item_dates.h"
#include "content/item_ids.h"
#include "content/item_reading.h"
#include "content/progress.h"
#include "content/sessions.h"
#include "dates/date_text.h"
#include "devices/current_phone.h"
#include "devices/devices.h"
#include "library/library_texts.h"
#include "messages/data_connection.h"
#include "messages/message_text.h"

namespace ovno2::Data {

namespace {

using Content::FolderEntry;
using library::ItemIdRecord;
using library::MessageRecord;
using library::NoteRecord;
using library::Word;

constexpr Long libraryNotStarted = -1;
constexpr Long phoneNotFound = -2;
constexpr Long connectionNotOpened = -3;
constexpr Long foldersNotRead = -4;
constexpr Long notListed_ = -1;
constexpr Long notBegun_ = -2;

constexpr Long progressOfIdList = 50;
constexpr std::size_t mostFolders = 101;

// A time of the phone's that may be UTC.
constexpr Long timeMayBeUtc = 1;

// What stands before a message's own parts, for all messages of a folder.
Text partsOf(const FolderEntry& folder) {
    const Text& name = folder.Name.empty() ? folder.Path : folder.Name;
    return name + u"|" + folder.Path + u"|" + decimalText(folder.FolderId) + u"|";
}

// The recipients, or the sender.
Text addressesOf(const MessageRecord& record) {
    constexpr Word countMask = 0xFF;
    Text addresses;
    const Word count = record.addressCount & countMask;
    if (count == 0 || record.addresses == 0) return addresses;
    for (const auto& address : library::copyBlock<library::MessageAddressRecord>(record.addresses, count)) {
        if (address.text == 0) continue;
        attempt([&] {
            const Text text = library::GetStringFromPointer(address.text);
            if (!addresses.empty()) addresses += u',';
            addresses += text;
        });
    }
    return addresses;
}

class DataReader : public Content::FolderReader {
  public:
    DataReader(const FolderEntry& folder, TextArray& items, Long what, const platform::ObjectPointer& control)
        : items_(items), what_(what), progress_(control), hasControl_(control != nullptr) {
        if (areMessages(what)) folderParts_ = partsOf(folder);
    }

  protected:
    Long notListed(Long status) override {
        DebugLine(u"e1:", hex{status});
        return notListed_;
    }
    void listed(Word) override { progress_.advance(progressOfIdList); }
    Long notBegun(Long) override { return notBegun_; }
    void begun(Word count, std::size_t copied) override {
        progress_.advance();
        DebugLine(u" 5:", decimal{static_cast<Long>(count)});
        attempt([&] { items_.elements().reserve(items_.size() + copied); });
    }
    void readItem(library::Handle operation, ItemIdRecord& id) override {
        if (areMessages(what_))
            readOne<MessageRecord>(operation, id, u" f1:");
        else if (what_ == notes)
            readOne<NoteRecord>(operation, id, u" f2:");
        if (hasControl_) progress_.advance();
    }
    Long done() override {
        const Long last = items_.hasElements() ? items_.upperBound() : 0;
        DebugLine(decimal{last});
        return last;
    }

  private:
    template <class Record>
    void readOne(library::Handle operation, ItemIdRecord& id, TextView failureTag) {
        Content::ItemData<Record> data(connection().handle);
        const Long status = data.read(operation, id);
        const Record& record = data.record();
        if (record.size > sizeof record)
            DebugLine(u"CAReadItem !!!", spacedDecimal{static_cast<Long>(record.size)},
                      spacedDecimal{static_cast<Long>(sizeof record)});
        progress_.advance();
        if (status != 0) {
            DebugLine(failureTag, hex{status});
            return;
        }
        attempt([&] {
            const Long index = items_.hasElements() ? items_.upperBound() + 1 : 0;
            items_.extendTo(index);
            items_.at(index) = lineOf(id, record);
        });
    }

    Text lineOf(const ItemIdRecord& id, const MessageRecord& record) const {
        Text date, uid, addresses, text;
        attempt([&] {
            date = generalDateText(Content::GetDateFromStruct(record.date, /*withTime=*/true, timeMayBeUtc));
        });
        attempt([&] { uid = Content::GetUIDAsString(id); });
        attempt([&] { addresses = addressesOf(record); });
        DebugLine(u"dwInfoField:", decimal{static_cast<Long>(record.info)});
        attempt([&] { text = messageText(record); });
        Text line;
        line.reserve(folderParts_.size() + date.size() + uid.size() + addresses.size() + text.size() + 3);
        line += folderParts_;
        line += date;
        line += u'|';
        line += uid;
        line += u'|';
        line += addresses;
        line += u'|';
        line += text;
        return line;
    }

    Text lineOf(const ItemIdRecord& id, const NoteRecord& record) const {
        Text uid, text;
        attempt([&] { uid = Content::GetUIDAsString(id); });
        attempt([&] { text = library::GetStringFromPointer(record.text); });
        return uid + u"|" + text;
    }

    TextArray& items_;
    const Long what_;
    const Content::Progress progress_;
    const bool hasControl_;
    Text folderParts_;
};

void closeAndEnd() {
    CloseDatasConnection();
    Content::PIMApiTerminate();
}

}  // namespace

Long GetDataItems(const FolderEntry& folder, TextArray& DataItems, Long what,
                  const platform::ObjectPointer& Progressbar) {
    const RoutineLog log(u"GetDataItems");
    DebugLine(u"GetDataItems:", decimal{what});
    DebugLine(u"Folder:", decimal{folder.FolderId}, u" ", folder.Name);
    Devices::forgetCurrentPhone();
    Long result = notListed_;
    attempt([&] {
        result = DataReader(folder, DataItems, what, Progressbar).read(connection(), folder.FolderId);
    });
    return result;
}

Long NokiaGetDataItems(const Text& model, const Text& PhoneId, Long what, TextArray& DataItems,
                       const platform::ObjectPointer& Progressbar) {
    const Content::Progress progress(Progressbar);
    std::vector<FolderEntry> folders;
    for (bool again = false;; again = true) {
        if (Content::PIMApiInit() < 0) return libraryNotStarted;
        progress.advance();

        Text serial;
        attempt([&] { serial = Devices::GetSerialNumber(model, PhoneId, /*force=*/false); });
        if (serial.empty()) return phoneNotFound;
        progress.advance();

        if (CheckDatasConnection(serial, what) != 0) return connectionNotOpened;
        progress.advance();

        const Long root = GetDataFolders(model, serial, what, folders);
        if (root >= 0 || again) break;
        closeAndEnd();
    }
    progress.advance();
    if (Progressbar) progress.advance();

    Long result = foldersNotRead;
    for (std::size_t i = 0; i < folders.size() && i < mostFolders; ++i) {
        DebugLine(hex{GetDataItems(folders[i], DataItems, what, Progressbar)});
        result = 0;
    }
    closeAndEnd();
    return result;
}

}  // namespace ovno2::Data
