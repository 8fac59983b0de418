#include "messages/data_writing.h"

#include <utility>

#include "content/item_dates.h"
#include "content/item_reading.h"
#include "content/library_pieces.h"
#include "content/sessions.h"
#include "core/pending_messages.h"
#include "dates/date_text.h"
#include "dates/date_value.h"
#include "devices/devices.h"
#include "messages/data_connection.h"
#include "messages/data_state.h"

namespace ovno2::Data {

namespace {

using Content::FolderEntry;
using Content::ItemId;
using library::ItemIdListRecord;
using library::MessageAddressRecord;
using library::MessageRecord;
using library::NoteRecord;
using library::Word;

constexpr Long libraryNotStarted = -1;
constexpr Long phoneNotFound = -2;
constexpr Long notConnected = -3;
constexpr Long operationNotBegun = -4;
constexpr Long notListed = -5;
constexpr Long noSuchItem = -1;

constexpr Long kindMask = 0xF;

// The fields of a `Msg`.
class Fields {
  public:
    enum Index : std::size_t {
        kindField = 0,
        noteUid = 1,
        folder = 3,
        id = 5,
        recipients = 6,
        text = 7,
        all = 8
    };

    explicit Fields(const Text& msg) : fields_(split(msg, u'\t')) {}

    // Empty where there is none.
    const Text& at(Index index) const { return index < fields_.size() ? fields_[index] : none_; }
    // A field that is not there is not made.
    void set(Index index, Text value) {
        if (index < fields_.size()) fields_[index] = std::move(value);
    }
    Long kind() const { return numericLong(at(kindField)) & kindMask; }
    Long folderId() const { return areMessages(kind()) ? numericLong(at(folder)) : 0; }
    Text joined() const { return join(fields_, u'\t'); }

    // A note names itself elsewhere when it is deleted.
    void asDeletedNote() {
        fields_.resize(all);
        fields_[folder] = u"0";
        fields_[id] = fields_[noteUid];
    }

  private:
    std::vector<Text> fields_;
    const Text none_;
};

Content::Connection::WriteSession& session() {
    return connection().writeSession;
}

bool isWriting() {
    return session().open && session().operation != 0;
}

// Gives up what has been begun, so that the session can begin anew.
void startOver() {
    TextArray none;
    DataEndWriteSession(none, none, /*commit=*/false);
    Content::PIMApiTerminate();
}

// The folder whose items the session lists.
void takeFolder(const std::vector<FolderEntry>& folders, Long root, Long what, Long& folderId) {
    if (what == notes)
        folderId = root;
    else if (areMessages(what) && folderId == 0)
        folderId = outboxOf(folders);
}

// Begins a session for the phone of that model; `folderId` becomes the folder whose items are listed.
Long DataInitWriteSession(const Text& model, const Text& PhoneId, Long what, Long& folderId) {
    const RoutineLog log(u"DataInitWriteSession");
    bool readTwice = false, beganTwice = false, listedTwice = false;
    for (;;) {
        if (Content::PIMApiInit() < 0) return libraryNotStarted;
        Text serial;
        attempt([&] { serial = Devices::GetSerialNumber(model, PhoneId, /*force=*/false); });
        if (serial.empty()) return phoneNotFound;
        if (const Long connected = CheckDatasConnection(serial, what); connected != 0) {
            DebugLine(u"-3", hex{connected});
            return notConnected;
        }

        std::vector<FolderEntry> folders;
        const Long root = GetDataFolders(model, serial, what, folders);
        if (root != 0) DebugLine(u"-4_", hex{root});
        takeFolder(folders, root, what, folderId);
        if (root < 0 && !std::exchange(readTwice, true)) {
            CloseDatasConnection();
            Content::PIMApiTerminate();
            continue;
        }

        session() = {};
        const library::Answer begun =
            library::CABeginOperation.tried(connection().handle, /*zero=*/0, &session().operation);
        if (library::is(begun.status, library::deviceBusy) && !std::exchange(beganTwice, true)) {
            processPendingMessages();
            CloseDatasConnection();
            continue;
        }
        if (begun.status != 0) {
            DebugLine(u"-4", hex{begun.status});
            return operationNotBegun;
        }

        ItemIdListRecord list{.size = sizeof list, .count = 0, .items = 0};
        const library::Answer listed =
            library::CAGetIDList.tried(connection().handle, static_cast<Word>(folderId), /*zero=*/0, &list);
        if (listed.status != 0) DebugLine(u"-5", hex{listed.status});
        state().DataSessionItems.clear();
        if (listed.status == 0 && state().DataSessionItems.takeListed(list)) {
            session().open = true;
            return 0;
        }
        if (std::exchange(listedTwice, true)) return notListed;
        startOver();
    }
}

Long requireSession(const Text& model, const Text& PhoneId, Long what, Long& folderId) {
    if (isWriting()) return 0;
    const Long begun = DataInitWriteSession(model, PhoneId, what, folderId);
    if (begun != notConnected) return begun;
    Content::waitToReconnect();
    return DataInitWriteSession(model, PhoneId, what, folderId);
}

// A message as the library takes it: from now, to every recipient.
class WrittenMessage {
  public:
    explicit WrittenMessage(const Fields& fields) {
        constexpr Word textToBeSent = 0x3611;  // info field; the text is UTF-16
        constexpr Word recipient = 2;          // info field of an address
        constexpr std::size_t mostRecipients = 255;
        constexpr Long timeMayBeUtc = 1;
        std::vector<MessageAddressRecord> addresses;
        for (const Text& number : split(replaceAll(fields.at(Fields::recipients), u";", u","), u','))
            addresses.push_back({sizeof(MessageAddressRecord), recipient, pieces_.text(number)});
        if (addresses.size() > mostRecipients) throw RuntimeFailure(overflowFailure);
        const Text& text = fields.at(Fields::text);
        record_.size = sizeof record_;
        record_.info = textToBeSent;
        record_.dataLength = static_cast<Word>(text.size() * sizeof(char16_t));
        record_.data = pieces_.text(text);
        record_.addressCount = static_cast<Word>(addresses.size());
        if (!addresses.empty())
            record_.addresses = pieces_.block({reinterpret_cast<const std::uint8_t*>(addresses.data()),
                                               addresses.size() * sizeof(MessageAddressRecord)});
        Content::GetDateStruct(localDateText(currentDateTime()), record_.date, /*toUtc=*/true, timeMayBeUtc);
    }
    void* get() { return &record_; }

  private:
    Content::LibraryPieces pieces_;
    MessageRecord record_{};
};

class WrittenNote {
  public:
    explicit WrittenNote(const Fields& fields)
        : record_{sizeof record_, pieces_.text(fields.at(Fields::text))} {}
    void* get() { return &record_; }

  private:
    Content::LibraryPieces pieces_;
    NoteRecord record_;
};

// True when the note that the session knows by that UID is there.
bool canBeRead(const ItemId& known) {
    Content::LibraryItemId id(known);
    Content::ItemData<NoteRecord> note(connection().handle);
    const Long status = note.read(session().operation, id.get());
    if (note.record().size > sizeof(NoteRecord))
        DebugLine(u"CAReadItem !!!", spacedDecimal{static_cast<Long>(note.record().size)},
                  spacedDecimal{static_cast<Long>(sizeof(NoteRecord))});
    if (status != 0) DebugLine(u"e0:", hex{status});
    return status == 0;
}

// The item that `fields` mean among those of the session; null when it is a new one.
const ItemId* existingItem(const Fields& fields) {
    if (fields.at(Fields::id).empty() || areMessages(fields.kind())) return nullptr;
    const ItemId* const known = state().DataSessionItems.findUid(fields.at(Fields::id));
    return known && fields.kind() == notes && !canBeRead(*known) ? nullptr : known;
}

ItemId newItem(const Text& model, Long kind, Long folderId) {
    std::vector<FolderEntry> folders;
    const Long root = GetDataFolders(model, /*serial=*/{}, kind, folders);
    ItemId id;
    id.Size = sizeof(library::ItemIdRecord);
    if (root < 0 && (!areMessages(kind) || folderId == 0)) throw RuntimeFailure(invalidProcedureCall);
    id.FolderId = !areMessages(kind) ? root : folderId == 0 ? outboxOf(folders) : folderId;
    return id;
}

template <class Written>
Long writeItem(const Fields& fields, const ItemId& item, bool isNew, Long& temporaryId) {
    Written written(fields);
    Content::LibraryItemId id(item);
    if (isNew) state().DataSessionItems.add(item);
    const RoutineLog log(u"CAWriteItem");
    const Long status =
        library::CAWriteItem.tried(session().operation, &id.get(), /*zero=*/0, /*one=*/1, written.get())
            .status;
    temporaryId = static_cast<Long>(id.get().position);
    return status;
}

}  // namespace

Long WriteDataItem(const Text& model, const Text& PhoneId, Text& Msg) {
    enum Stage : Long { begun = 1, found = 2, built = 3, written = 4 };
    Long status = library::notCalled;
    attempt([&] {
        Fields fields(Msg);
        const Long kind = fields.kind();
        Long folderId = fields.folderId();
        if (const Long started = requireSession(model, PhoneId, kind, folderId); started < 0) {
            status = started;
            return;
        }
        DebugWrite(u"WriteDataItem", begun);
        if (areMessages(kind) && !fields.at(Fields::id).empty() && fields.at(Fields::folder).empty())
            fields.set(Fields::folder, decimalText(folderId));
        const ItemId* const known = existingItem(fields);
        const bool isNew = known == nullptr;
        DebugWrite(u"WriteDataItem", found);
        const ItemId item = known ? *known : newItem(model, kind, folderId);
        DebugWrite(u"WriteDataItem", built);
        Long temporaryId = 0;
        if (areMessages(kind)) {
            status = writeItem<WrittenMessage>(fields, item, isNew, temporaryId);
        } else if (kind == notes) {
            status = writeItem<WrittenNote>(fields, item, isNew, temporaryId);
        } else {
            status = 0;
            return;
        }
        DebugWrite(u"WriteDataItem", written);
        if (status != 0) {
            DebugLine(u"e1:", hex{status});
        } else if (isNew) {
            fields.set(Fields::id, decimalText(temporaryId));
            Msg = fields.joined();
        }
    });
    return status;
}

Long DeleteDataItem(const Text& model, const Text& PhoneId, const Text& Msg) {
    constexpr std::size_t shortestUid = 8;
    Long status = noSuchItem;
    attempt([&] {
        Fields fields(Msg);
        if (fields.kind() == notes) fields.asDeletedNote();
        Long folderId = fields.folderId();
        if (const Long started = requireSession(model, PhoneId, fields.kind(), folderId); started < 0) {
            status = started;
            return;
        }
        const Text& id = fields.at(Fields::id);
        const ItemId* found = state().DataSessionItems.findUid(id);
        if (id.size() < shortestUid) {
            const ItemId* const placed = state().DataSessionItems.findPosition(numericLong(id));
            // The one that comes first counts.
            if (!found || (placed && placed < found)) found = placed ? placed : found;
        }
        if (!found) return;
        Content::LibraryItemId record(*found);
        status = library::CADeleteItem.tried(session().operation, &record.get(), /*zero=*/0).status;
    });
    return status;
}

Long DataEndWriteSession(TextArray& tempids, TextArray& uids, bool commit) {
    const RoutineLog log(u"DataEndWriteSession");
    const library::Handle operation = session().operation;
    Long status = 0;
    processPendingMessages();
    if (commit) {
        ItemIdListRecord list{.size = sizeof list, .count = 0, .items = 0};
        status = library::CACommitOperations.tried(operation, &list).status;
        if (status != 0) DebugLine(u"e0:", hex{status});
        Content::tellWritten(list, /*extra=*/1, tempids, uids);
    }
    processPendingMessages();
    if (status != 0) return status;
    status = library::CAEndOperation.tried(operation).valueOr(status);
    if (status != 0) DebugLine(u" e1:", hex{status});
    if (const Long closed = CloseDatasConnection(); closed != 0) DebugLine(u" e2:", hex{closed});
    return status;
}

}  // namespace ovno2::Data
