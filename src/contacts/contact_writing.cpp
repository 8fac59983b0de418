#include "contacts/contact_writing.h"

#include <cstring>

#include "contacts/contact_editor.h"
#include "contacts/contacts_connection.h"
#include "contacts/write_session.h"
#include "contacts/writing_state.h"
#include "content/host_fields.h"
#include "content/item_reading.h"
#include "content/sessions.h"
#include "devices/devices.h"
#include "pc/ansi.h"

namespace ovno2::Contacts {

namespace {

using Content::ItemId;
using library::ContactRecord;
using library::ItemIdRecord;
using library::Word;

constexpr Long notConnected = -3;
constexpr Long givenUp = -9;
constexpr Long lastOldVersion = 32;

constexpr std::size_t wordsPerGroup = 100 * sizeof(library::DataItemRecord) / sizeof(Word);

Long beginSession(const Text& model, Text& serial) {
    writingState().ContactsWritten = 0;
    const Long begun = ContactsInitWriteSession(model, serial);
    if (begun != notConnected) return begun;
    Content::waitToReconnect();
    CloseContactsConnection();
    Content::PIMApiTerminate();
    return ContactsInitWriteSession(model, serial);
}

FieldMerging mergingFor(const FieldDefinitions& table, bool oldLibrary) {
    const bool undivided = !table.has(HostField::homeTown) || !table.has(HostField::workTown);
    const Long platform = Devices::platformType();
    return {.addresses = oldLibrary || undivided,
            .mails = oldLibrary || undivided,
            .pages = undivided || platform == eNokiaPhoneS60 || platform == eNokiaPhoneS60_2};
}

// What the host says to a contact whose notes and categories the library cannot write back.
Long askHost(Long pCallBack, const Text& name) {
    constexpr Long request = 4, question = 805, style = 51;
    Long answer = 0;
    attempt([&] {
        const std::string bytes = toAnsi(name);
        library::LowWords text(bytes.size() / sizeof(Word) + 1);
        if (text.size() == 0) throw RuntimeFailure(outOfMemory);
        std::memcpy(text.at(0), bytes.c_str(), bytes.size() + 1);
        require(currentPlatform().windows().callProcedure(
            pCallBack, request, question, style, static_cast<Long>(library::addressOf(text.at(0))), answer));
    });
    return answer;
}

// The items as the library takes them; the arrays go back to it at the end.
class WrittenRecord {
  public:
    WrittenRecord(const ContactEditor& editor, bool withoutLastGroup) {
        library::LowWords& spare = writingState().WriteSpare;
        if (spare.size() == 0) spare.allocate(ContactEditor::groupCount * wordsPerGroup);
        const auto groups = editor.merged();
        library::ItemPair* const pairs[] = {&record_.a, &record_.b, &record_.c, &record_.d};
        record_.size = sizeof record_;
        for (std::size_t i = 0; i < groups.size() - (withoutLastGroup ? 1 : 0); ++i)
            *pairs[i] = {static_cast<Word>(groups[i].size()),
                         Content::CopyFromDataStructToNokia(groups[i], spare, i * wordsPerGroup)};
        if (void* const block = library::CONAAllocMemory.tried(sizeof record_)) {
            std::memcpy(block, &record_, sizeof record_);
            copy_ = block;
        }
    }
    ~WrittenRecord() {
        if (copy_) library::CONAFreeMemory.tried(copy_);
        for (const library::ItemPair& pair : {record_.a, record_.b, record_.c, record_.d})
            Content::FreeDataItems(pair.items, writingState().WriteSpare);
    }
    WrittenRecord(const WrittenRecord&) = delete;
    WrittenRecord& operator=(const WrittenRecord&) = delete;

    void* get() { return copy_ ? copy_ : &record_; }

  private:
    ContactRecord record_{};
    void* copy_ = nullptr;
};

// Reads the contact that is to be changed; false when it cannot be read. Throws RuntimeFailure when it has
// been read and there is no memory for it.
bool readExisting(const ItemId& id, Content::ItemData<ContactRecord>& data, ContactEditor& editor) {
    Content::LibraryItemId record(id);
    const Long status = data.read(connection().writeSession.operation, record.get());
    if (status != 0) {
        DebugLine(u"e0:", hex{status});
        return false;
    }
    if (data.record().size > sizeof(ContactRecord)) DebugWrite(u"CAReadItem !!!");
    editor.takeExisting(data.record());
    return true;
}

ItemId& addNew(const Text& model) {
    Text serial;
    ItemId id;
    id.Size = sizeof(ItemIdRecord);
    id.FolderId = GetContactsFolder(model, serial);
    if (id.FolderId < 0) throw RuntimeFailure(invalidProcedureCall);
    return writingState().ContactsSessionIds.add(std::move(id));
}

Long writeItem(ItemId& id, const ContactEditor& editor, bool oldLibrary) {
    WrittenRecord written(editor, /*withoutLastGroup=*/oldLibrary);
    Content::LibraryItemId record(id);
    Long status = library::notCalled;
    {
        const RoutineLog log(u"CAWriteItem");
        status = library::CAWriteItem
                     .tried(connection().writeSession.operation, &record.get(), /*zero=*/0, /*one=*/1,
                            written.get())
                     .status;
    }
    DebugLine(u"e1:", hex{status});
    if (status == 0) id.Position = static_cast<Long>(record.get().position);
    return status;
}

}  // namespace

Long WriteContact(const Text& model, Text& serial, Text& Id, const Text& elems, const TextTable& Mobilefields,
                  bool isnew, Long isrewrite, Long pCallBack) {
    constexpr Long lastGroup = ContactEditor::groupCount;
    constexpr Long answerNo = 7, answerCancel = 2;
    const RoutineLog log(u"WriteContact");
    if (!isWriting())
        if (const Long begun = beginSession(model, serial); begun < 0) return begun;
    WritingState& state = writingState();
    Long status = library::notCalled;
    attempt([&] {
        reverseFields();
        const Long version = roundHalfToEven(Content::GetApiVersion());
        // Taken for an old one, a library would not be given notes and categories.
        if (version == 0) throw RuntimeFailure(invalidProcedureCall);
        const bool oldLibrary = version <= lastOldVersion;
        const FieldDefinitions table(Mobilefields);
        Content::ItemData<ContactRecord> data(connection().handle);
        ContactEditor editor(mergingFor(table, oldLibrary), version);

        ItemId* id = isnew ? nullptr : state.ContactsSessionIds.findUid(Id);
        if (!isnew && !id) id = state.ContactsSessionIds.findNew(Id);
        if (id && !readExisting(*id, data, editor)) id = nullptr;
        const bool added = id == nullptr;
        if (added) {
            DebugWrite(u" new");
            id = &addNew(model);
        } else if (oldLibrary && editor.has(lastGroup) && pCallBack != 0) {
            const Long answer = askHost(pCallBack, editor.name());
            if (answer == answerNo || answer == answerCancel) {
                status = answer == answerNo ? 0 : givenUp;
                return;
            }
        }
        editor.place(elems, table, isrewrite != 0);
        status = writeItem(*id, editor, oldLibrary);
        if (status != 0) return;
        ++state.ContactsWritten;
        if (added || Id.empty()) {
            Id = decimalText(id->Position);
            if (added) state.ContactsSessionIds.nameLast(id->Position);
        }
        DebugWrite(u"4");
    });
    return status;
}

}  // namespace ovno2::Contacts
