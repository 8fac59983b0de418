#include "contacts/contacts.h"

#include <utility>

#include "contacts/contact_fields.h"
#include "content/item_ids.h"
#include "content/progress.h"
#include "content/sessions.h"
#include "content/state.h"
#include "devices/devices.h"
#include "devices/session.h"
#include "library/library_memory.h"
#include "pc/capture_dos.h"

namespace ovno2::Contacts {

using namespace std::string_view_literals;  // names of routines whose length is known beforehand

namespace {

using Content::noStatus;
using library::ContactRecord;
using library::ItemIdRecord;
using library::Word;

constexpr Long libraryNotStarted = -1;
constexpr Long phoneNotFound = -2;
constexpr Long connectionNotOpened = -3;
constexpr Long folderNotFound = -4;
constexpr Long phoneStayedBusy = -5;
constexpr Long operationNotBegun = -2;

constexpr Long progressOfIdList = 50;

constexpr Long lastNameCode = 2;
constexpr Long formattedNameCode = 3;

void logStatus(TextView tag, Long status) {
    DebugLine(tag, hex{static_cast<std::uint32_t>(status)});
}

bool is(Long result, library::Status status) {
    return static_cast<library::Status>(result) == status;
}

void processPendingMessages() {
    attempt([] { currentPlatform().windows().processPendingMessages(); });
}

void closeAndEnd() {
    Content::CloseContactsConnection();
    Content::PIMApiTerminate();
}

// What a contact read needs from its first pass to its last.
struct Retries {
    int connections = 0;
    int restarts = 0;
    bool busy = false;
};

// A failed connection is tried once more, and a third time when the phone could not be reached over its
// medium.
bool connectsAgain(Retries& retries, Long status, FailureNumber pending) {
    ++retries.connections;
    const bool unreached = is(status, library::connectionFailed) || is(pending, library::connectionFailed);
    return retries.connections == 1 || (retries.connections == 2 && unreached);
}

// Ends the vendor's service, which starts afresh with the next call.
void endVendorService() {
    constexpr Long timeoutSeconds = 30;
    CaptureDos::ExecuteCommand(u"taskkill /F /IM ServiceLayer.exe", /*doNotWait=*/false, timeoutSeconds);
    currentPlatform().clock().sleep(200);
}

// Decides after a read: true for another pass.
bool readsAgain(Retries& retries, Long& result) {
    constexpr int mostRestarts = 3;
    closeAndEnd();
    if (is(result, library::connectionLost) || is(result, library::serviceFailed)) {
        endVendorService();
        if (++retries.restarts < mostRestarts) return true;
        closeAndEnd();
        return false;
    }
    if (is(result, library::deviceBusy)) {
        if (!std::exchange(retries.busy, true)) return true;
        result = phoneStayedBusy;
    }
    return false;
}

// Takes an item's data out of the library's memory and sees that the library gets it back.
class ItemData {
  public:
    ItemData() { record_.size = sizeof record_; }
    ~ItemData() {
        if (filled_)
            attempt([&] { library::CAFreeItemData(Content::state().ContactsHandle, /*one=*/1, &record_); });
    }
    ItemData(const ItemData&) = delete;
    ItemData& operator=(const ItemData&) = delete;

    Long read(library::Handle operation, ItemIdRecord& id) {
        Long status = noStatus;
        attempt([&] {
            status = static_cast<Long>(library::CAReadItem(operation, &id, /*zero=*/0, /*one=*/1, &record_));
        });
        filled_ = status == 0;
        return status;
    }
    const ContactRecord& record() const { return record_; }

  private:
    ContactRecord record_{};
    bool filled_ = false;
};

// One pass over the identifiers of a contacts folder.
class ContactReader {
  public:
    ContactReader(HostArray<AdrItem>& items, const TextTable& table, const Text& pictureFolder,
                  const Content::Progress& progress)
        : items_(items),
          table_(table),
          values_(table_.rows()),
          pictureFolder_(pictureFolder),
          progress_(progress),
          nameFallback_(!table_.has(lastNameCode) && table_.has(formattedNameCode)) {}

    // The highest index of the host's array afterwards, 0 for an array without elements.
    Long read(library::Handle operation, std::vector<ItemIdRecord>& ids) {
        attempt([&] { items_.elements().reserve(items_.size() + ids.size() + 1); });
        for (ItemIdRecord& id : ids) {
            processPendingMessages();
            attempt([&] { readContact(operation, id); });
        }
        return highestIndex();
    }

  private:
    Long highestIndex() const { return items_.hasElements() ? items_.upperBound() : 0; }

    void readContact(library::Handle operation, ItemIdRecord& id) {
        ItemData data;
        Text uid;
        Long status = noStatus;
        {
            const RoutineLog log(u"CAReadItem"sv);
            attempt([&] { uid = Content::GetUIDAsString(id); });
            DebugLine(number(id.position), u":", uid, u":", number(id.size), u":", number(id.folderId), u":",
                      number(id.uidLength), u":", number(id.word5));
            status = data.read(operation, id);
        }
        const ContactRecord& record = data.record();
        if (record.size > sizeof record)
            DebugLine(u"CAReadItem !!!", spaced(record.size), spaced(sizeof record));
        progress_.advance();
        if (status == 0) {
            addContact(id, std::move(uid), record);
        } else {
            logStatus(u" f1:", status);
        }
        DebugWrite(u"12");
    }

    void addContact(const ItemIdRecord& id, Text uid, const ContactRecord& record) {
        const Long index = highestIndex() + 1;
        items_.extendTo(index);
        DebugLine(u" c:", decimal{index});
        AdrItem& contact = items_.at(index);
        attempt([&] { contact.Location = decimalText(static_cast<Long>(id.position)) + u" (SB)"; });
        contact.Uid = std::move(uid);

        values_.beginContact();
        DebugWrite(u"1");
        savePair(record.a, contact, nameFallback_, pictureFolder_, contact.Uid);
        DebugWrite(u"3");
        attempt([&] { cleanUpName(values_, table_); });
        for (const library::ItemPair& pair : {record.d, record.b, record.c})
            savePair(pair, contact, /*nameFallback=*/false, /*pictureFolder=*/noText_, /*uid=*/noText_);
        attempt([&] { contact.FieldValues = values_.joined(); });
        DebugWrite(u"11");
        attempt([&] { contact.FieldValuesAsRead = contact.FieldValues; });
    }

    void savePair(const library::ItemPair& pair, AdrItem& contact, bool nameFallback,
                  const Text& pictureFolder, const Text& uid) {
        constexpr Word countMask = 0xFF;
        dataItems_.clear();
        Content::CopyToDataStruct(dataItems_, pair.items, static_cast<Long>(pair.count & countMask));
        for (const Content::DataItem& item : dataItems_)
            SaveContactInfo(contact, values_, item, table_, nameFallback, pictureFolder, uid);
    }

    static decimal number(Word value) { return {static_cast<Long>(value)}; }
    static spacedDecimal spaced(std::size_t value) { return {static_cast<Long>(value)}; }

    HostArray<AdrItem>& items_;
    const FieldDefinitions table_;
    ContactValues values_;
    std::vector<Content::DataItem> dataItems_;
    const Text& pictureFolder_;
    const Text noText_;
    const Content::Progress& progress_;
    const bool nameFallback_;
};

// The identifiers of a list; none when they cannot be read.
std::vector<ItemIdRecord> copyIds(const library::ItemIdListRecord& list) {
    std::vector<ItemIdRecord> ids;
    if (library::isAddress(list.items))
        attempt([&] { ids = library::copyBlock<ItemIdRecord>(list.items, list.count); });
    return ids;
}

}  // namespace

Long GetContacts(Long folder, HostArray<AdrItem>& AdrItems, const TextTable& Mobilefields,
                 const Text& FolderForPics, const platform::ObjectPointer& Progressbar) {
    const RoutineLog log(u"GetContacts");
    const Content::Progress progress(Progressbar);
    Content::State& content = Content::state();
    if (content.ContactsHandle == 0) Content::CheckContactsConnection(currentPhone().serial);
    currentPhone().clear();
    clearPendingFailure();

    library::ItemIdListRecord list{.size = sizeof list, .count = 0, .items = 0};
    Long status = noStatus;
    attempt([&] {
        status = static_cast<Long>(
            library::CAGetIDList(content.ContactsHandle, static_cast<Word>(folder), /*zero=*/0, &list));
    });
    if (status != 0) {
        logStatus(u" e1:", status);
        return status;
    }
    if (pendingFailure().number != noFailure) DebugWrite(u" e0");
    progress.advance(progressOfIdList);
    DebugLine(u" c:", decimal{static_cast<Long>(list.count)});
    std::vector<ItemIdRecord> ids = copyIds(list);

    library::Handle operation = 0;
    status = noStatus;
    attempt([&] {
        status = static_cast<Long>(library::CABeginOperation(content.ContactsHandle, /*zero=*/0, &operation));
    });
    if (status != 0) {
        logStatus(u" e2:", status);
        return operationNotBegun;
    }
    processPendingMessages();
    Content::InitFieldTables();
    DebugLine(u"caIDList.iUIDCount:", decimal{static_cast<Long>(list.count)});
    Long result = AdrItems.hasElements() ? AdrItems.upperBound() : 0;
    attempt([&] {
        result = ContactReader(AdrItems, Mobilefields, FolderForPics, progress).read(operation, ids);
    });
    attempt([&] { library::CAEndOperation(operation); });
    DebugLine(decimal{result});
    return result;
}

Long NokiaGetAddressBookItems(Text& model, Text& PhoneId, HostArray<AdrItem>& AdrItems,
                              const TextTable& Mobilefields, const Text& FolderForPics,
                              const platform::ObjectPointer& Progressbar) {
    const Content::Progress progress(Progressbar);
    Retries retries;
    for (;;) {
        if (Content::PIMApiInit() < 0) return libraryNotStarted;
        progress.advance();

        Text serial;
        attempt([&] { serial = Devices::GetSerialNumber(model, PhoneId, /*force=*/false); });
        if (serial.empty()) return phoneNotFound;
        progress.advance();

        const Long status = Content::CheckContactsConnection(serial);
        if (status != 0) {
            const FailureNumber pending = pendingFailure().number;
            logStatus(u"e2:", status);
            if (!connectsAgain(retries, status, pending))
                return is(status, library::contentAccessDenied) ? status : connectionNotOpened;
            closeAndEnd();
            continue;
        }
        progress.advance();

        const Long folder = Content::GetContactsFolder(model, serial);
        if (folder < 0) return folderNotFound;
        progress.advance();

        Long result = GetContacts(folder, AdrItems, Mobilefields, FolderForPics, Progressbar);
        if (!readsAgain(retries, result)) return result;
    }
}

}  // namespace ovno2::Contacts
