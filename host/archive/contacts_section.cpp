// The contacts of an archive: cards, a table, pictures beside them, and what is no longer on the phone.
#include <algorithm>
#include <fstream>
#include <set>

#include "host/archive/archive_names.h"
#include "host/archive/archive_run.h"
#include "host/archive/kept_blocks.h"
#include "host/contacts/contact_content.h"
#include "host/contacts/contact_files.h"
#include "host/contacts/contact_output.h"
#include "host/contacts/contact_values.h"
#include "host/contacts/csv_contacts.h"
#include "host/contacts/field_table.h"
#include "host/contacts/phone_book.h"
#include "host/contacts/phone_draft.h"
#include "host/contacts/vcard_reader.h"
#include "host/files/local_name.h"
#include "host/output/console.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

constexpr const char* section = "contacts";
constexpr std::string_view kinds[] = {"VCARD"};

// The pictures of the archive, each under the name of the first contact that had it. None is ever overwritten
// by another.
class Pictures {
  public:
    explicit Pictures(ArchiveFolder& folder) : folder_(folder) {
        for (const std::string& path : folder.untouchedBelow(archive::pictures)) {
            names_.give(fromUtf8(path.substr(path.rfind('/') + 1)));
            known_.emplace(*folder.digestBefore(path), path);
        }
    }

    // Where the picture lies in the archive.
    const std::string& put(const std::string& title, const ContactDraft::Picture& picture) {
        const Digest digest = digestOf(picture.bytes);
        auto known = known_.find(digest);
        if (known == known_.end()) {
            const std::string name = title + (picture.extension.empty() ? "" : "." + picture.extension);
            const std::string path =
                std::string(archive::pictures) + "/" + toUtf8(names_.give(fromUtf8(name)));
            known = known_.emplace(digest, path).first;
        }
        if (put_.insert(digest).second) folder_.put(known->second, picture.bytes);
        return known->second;
    }

  private:
    ArchiveFolder& folder_;
    LocalNames names_;
    std::map<Digest, std::string> known_;
    std::set<Digest> put_;
};

class ContactsSection {
  public:
    ContactsSection(ArchiveRun& run, SectionReport& report)
        : run_(run),
          report_(report),
          before_(run.folder.read(archive::contactCards).value_or("")),
          goneBefore_(run.folder.read(archive::goneContacts).value_or("")),
          pictures_(run.folder) {}

    void write(const PhoneBook& book) {
        ArchiveOutput cards(run_.folder, archive::contactCards);
        PageArray page(run_.folder, section);
        for (const Contact& contact : book.contacts) {
            ContactDraft draft = draftOf(contact, pictureFiles(contact));
            draft.uid = exportedUid(run_.phone.serial, contact.uid);
            const std::string card = writeCard(draft, CardVersion::v40);
            cards.write(card);
            present_.add(card);
            addToPage(page.next(), draft, contact.location, /*goneSince=*/{});
            noteLosses(contact, card);
            addToTable(std::move(draft));
        }
        const std::vector<std::string_view> blocks = blocksOf(before_, kinds);
        const std::vector<std::string_view> goneBlocks = blocksOf(goneBefore_, kinds);
        const KeptBlocks kept = keptBlocks(blocks, goneBlocks, present_, book.missing.empty());
        for (const std::string_view card : kept.stays) {
            cards.write(card);
            for (ContactDraft& draft : readCards(card, archive::contactCards).contacts) {
                addToPage(page.next(), draft, {}, /*goneSince=*/{});
                addToTable(std::move(draft));
            }
        }
        writeGoneCards(kept, page);
        cards.finish();
        run_.folder.put(archive::contactTable, writeCsvContacts(table_));
        page.finish();
        report_.count = table_.size() + report_.gone;
        report_.newlyGone = kept.newlyGone;
    }

  private:
    static std::vector<fs::path> pictureFiles(const Contact& contact) {
        std::vector<fs::path> files;
        for (const Text& picture : contact.pictures)
            files.push_back(console::pathOf(toUtf8(picture)));
        return files;
    }

    // Those that are back on the phone stay in their file.
    void writeGoneCards(const KeptBlocks& kept, PageArray& page) {
        if (kept.gone.empty()) return;
        const std::vector<std::string> since =
            run_.record.goneSince(section, kept.gone.size(), run_.startedText());
        std::string text;
        for (std::size_t i = 0; i < kept.gone.size(); ++i) {
            text += kept.gone[i];
            if (present_.holds(kept.gone[i])) continue;
            for (const ContactDraft& draft : readCards(kept.gone[i], archive::goneContacts).contacts) {
                addToPage(page.next(), draft, {}, since[i]);
                ++report_.gone;
            }
        }
        run_.folder.put(archive::goneContacts, text);
    }

    void addToPage(JsonLine& line, const ContactDraft& draft, const Text& location,
                   const std::string& goneSince) {
        line.StartObject();
        writeDraft(line, draft);
        if (!location.empty()) line.member("location", TextView(location));
        for (std::size_t i = 0; i < draft.pictures.size(); ++i) {
            const std::string& path = pictures_.put(titleOf(draft), draft.pictures[i]);
            if (i == 0) line.member("picture", path);
        }
        if (!goneSince.empty()) writeGone(line, goneSince);
        line.EndObject();
    }

    // A table has no place for pictures.
    void addToTable(ContactDraft draft) {
        draft.pictures.clear();
        table_.push_back(std::move(draft));
    }

    void noteLosses(const Contact& contact, const std::string& card) {
        const std::string title = titleOf(contact);
        for (const Loss& loss : lossesOf(contact)) {
            std::string rows;
            for (const std::size_t row : loss.rows)
                rows += (rows.empty() ? "" : ", ") + toUtf8(fieldRows()[row].label);
            run_.lose(section, title, rows + ": " + loss.lost + ".");
        }
        run_.looseCharacters(section, title, card);
    }

    ArchiveRun& run_;
    SectionReport& report_;
    const std::string before_, goneBefore_;
    Pictures pictures_;
    PresentBlocks present_;
    std::vector<ContactDraft> table_;
};

}  // namespace

void archiveContacts(ArchiveRun& run, SectionReport& report) {
    const fs::path arriving = run.folder.workplace() / "pictures";
    PictureFolder pictures(console::textOf(arriving), /*overwrites=*/true);
    const std::optional<PhoneBook> book =
        run.readingTwice(report, [&] { return readPhoneBook(run.phones, run.phone, pictures); });
    if (!book) return;
    if (!book->missing.empty()) run.folder.requireRoom();
    report.arrived(book->contacts.size(), book->listed, book->missing);
    ContactsSection(run, report).write(*book);
    run.names.emplace(book->contacts);
    std::error_code ignored;
    fs::remove_all(arriving, ignored);
}

}  // namespace ovno2::host
