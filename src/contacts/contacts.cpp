#include "contacts/contacts.h"

#include <optional>
#include <utility>

#include "contacts/contact_fields.h"
#include "contacts/contacts_connection.h"
#include "content/field_tables.h"
#include "content/host_fields.h"
#include "content/item_ids.h"
#include "content/item_reading.h"
#include "content/progress.h"
#include "content/sessions.h"
#include "content/vendor_service.h"
#include "core/pending_messages.h"
#include "devices/current_phone.h"
#include "devices/devices.h"

namespace ovno2::Contacts {

using namespace std::string_view_literals;  // names of routines whose length is known beforehand

namespace {

using library::ContactRecord;
using library::is;
using library::ItemIdRecord;
using library::Word;

constexpr Long libraryNotStarted = -1;
constexpr Long phoneNotFound = -2;
constexpr Long connectionNotOpened = -3;
constexpr Long folderNotFound = -4;
constexpr Long phoneStayedBusy = -5;
constexpr Long operationNotBegun = -2;

constexpr Long progressOfIdList = 50;

void logStatus(TextView tag, Long status) {
    DebugLine(tag, hex{status});
}

void closeAndEnd() {
    CloseContactsConnection();
    Content::PIMApiTerminate();
}

// What a contact read needs from its first pass to its last.
struct Retries {
    int connections = 0;
    int serviceEnds = 0;
    bool busy = false;
};

// A failed connection is tried once more, and a third time when the phone could not be reached over its
// medium.
bool connectsAgain(Retries& retries, Long status, FailureNumber pending) {
    ++retries.connections;
    const bool unreached = is(status, library::connectionFailed) || is(pending, library::connectionFailed);
    return retries.connections == 1 || (retries.connections == 2 && unreached);
}

// Decides after a read: true for another pass.
bool readsAgain(Retries& retries, Long& result) {
    closeAndEnd();
    if (Content::serviceIsStuck(result)) {
        Content::endVendorService();
        if (++retries.serviceEnds < Content::mostServiceEnds) return true;
        closeAndEnd();
        return false;
    }
    if (is(result, library::deviceBusy)) {
        if (!std::exchange(retries.busy, true)) return true;
        result = phoneStayedBusy;
    }
    return false;
}

// One read of the contacts folder.
class ContactReader : public Content::FolderReader {
  public:
    ContactReader(HostArray<AdrItem>& items, const TextTable& table, const Text& pictureFolder,
                  const Content::Progress& progress)
        : items_(items), tableOfHost_(table), pictureFolder_(pictureFolder), progress_(progress) {}

  protected:
    Long notListed(Long status) override {
        logStatus(u" e1:", status);
        return status;
    }
    void listed(Word count) override {
        if (pendingFailure().number != noFailure) DebugWrite(u" e0");
        progress_.advance(progressOfIdList);
        DebugLine(u" c:", decimal{static_cast<Long>(count)});
    }
    Long notBegun(Long status) override {
        logStatus(u" e2:", status);
        return operationNotBegun;
    }
    void begun(Word count, std::size_t copied) override {
        processPendingMessages();
        Content::InitFieldTables();
        DebugLine(u"caIDList.iUIDCount:", decimal{static_cast<Long>(count)});
        attempt([&] { items_.elements().reserve(items_.size() + copied + 1); });
        places_.emplace(tableOfHost_);
    }
    void readItem(library::Handle operation, ItemIdRecord& id) override {
        processPendingMessages();
        readContact(operation, id);
    }
    // The highest index of the host's array, 0 for an array without elements.
    Long done() override {
        const Long result = highestIndex();
        DebugLine(decimal{result});
        return result;
    }

  private:
    // Where a contact's values go.
    struct Places {
        const FieldDefinitions table;
        ContactValues values;
        const bool nameFallback;
        explicit Places(const TextTable& tableOfHost)
            : table(tableOfHost),
              values(table.rows()),
              nameFallback(!table.has(HostField::lastName) && table.has(HostField::formalName)) {}
    };

    Long highestIndex() const { return items_.hasElements() ? items_.upperBound() : 0; }

    void readContact(library::Handle operation, ItemIdRecord& id) {
        Content::ItemData<ContactRecord> data(connection().handle);
        Text uid;
        Long status = library::notCalled;
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

        places_->values.beginContact();
        DebugWrite(u"1");
        savePair(record.a, contact, places_->nameFallback, pictureFolder_, contact.Uid);
        DebugWrite(u"3");
        attempt([&] { cleanUpName(places_->values, places_->table); });
        for (const library::ItemPair& pair : {record.d, record.b, record.c})
            savePair(pair, contact, /*nameFallback=*/false, /*pictureFolder=*/noText_, /*uid=*/noText_);
        attempt([&] { contact.FieldValues = places_->values.joined(); });
        DebugWrite(u"11");
        attempt([&] { contact.FieldValuesAsRead = contact.FieldValues; });
    }

    void savePair(const library::ItemPair& pair, AdrItem& contact, bool nameFallback,
                  const Text& pictureFolder, const Text& uid) {
        constexpr Word countMask = 0xFF;
        dataItems_.clear();
        Content::CopyToDataStruct(dataItems_, pair.items, static_cast<Long>(pair.count & countMask));
        for (const Content::DataItem& item : dataItems_)
            SaveContactInfo(contact, places_->values, item, places_->table, nameFallback, pictureFolder, uid);
    }

    static decimal number(Word value) { return {static_cast<Long>(value)}; }
    static spacedDecimal spaced(std::size_t value) { return {static_cast<Long>(value)}; }

    HostArray<AdrItem>& items_;
    const TextTable& tableOfHost_;
    std::optional<Places> places_;
    std::vector<Content::DataItem> dataItems_;
    const Text& pictureFolder_;
    const Text noText_;
    const Content::Progress& progress_;
};

}  // namespace

Long GetContacts(Long folder, HostArray<AdrItem>& AdrItems, const TextTable& Mobilefields,
                 const Text& FolderForPics, const platform::ObjectPointer& Progressbar) {
    const RoutineLog log(u"GetContacts");
    const Content::Progress progress(Progressbar);
    if (connection().handle == 0) CheckContactsConnection(Devices::currentPhone().serial);
    Devices::forgetCurrentPhone();
    clearPendingFailure();
    return ContactReader(AdrItems, Mobilefields, FolderForPics, progress).read(connection(), folder);
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

        const Long status = CheckContactsConnection(serial);
        if (status != 0) {
            const FailureNumber pending = pendingFailure().number;
            logStatus(u"e2:", status);
            if (!connectsAgain(retries, status, pending))
                return is(status, library::contentAccessDenied) ? status : connectionNotOpened;
            closeAndEnd();
            continue;
        }
        progress.advance();

        const Long folder = GetContactsFolder(model, serial);
        if (folder < 0) return folderNotFound;
        progress.advance();

        Long result = GetContacts(folder, AdrItems, Mobilefields, FolderForPics, Progressbar);
        if (!readsAgain(retries, result)) return result;
    }
}

}  // namespace ovno2::Contacts
