#include "host/contacts/contact_import.h"

#include <algorithm>

#include "host/contacts/contact_files.h"
#include "host/contacts/contact_matching.h"
#include "host/contacts/field_table.h"

namespace ovno2::host {

namespace {

constexpr std::size_t largestPicture = std::size_t{16} << 20;

// Takes out of a file's contact what no phone takes.
std::vector<std::string> takeUnplaced(ContactDraft& card) {
    std::vector<std::string> unplaced = std::move(card.unplaced);
    std::vector<Text>& birthdays = card.values[rowOf(HostField::birthday)];
    std::erase_if(birthdays, [&](const Text& value) {
        const bool isNone = birthdayText(value).empty();
        if (isNone) unplaced.push_back("Birthday: " + toUtf8(value) + " (no date)");
        return isNone;
    });
    std::erase_if(card.pictures, [&](const ContactDraft::Picture& picture) {
        if (picture.bytes.size() > largestPicture) unplaced.emplace_back("Picture: larger than 16 MB");
        return picture.bytes.empty() || picture.bytes.size() > largestPicture;
    });
    for (; card.pictures.size() > 1; card.pictures.pop_back())
        unplaced.emplace_back("Picture: a second one");
    return unplaced;
}

// Values of the phone's other fields stay where they are and cannot be written elsewhere.
void nameOther(const ContactDraft& card, const ContactDraft* there, std::vector<std::string>& unplaced) {
    const std::size_t row = rowOf(HostField::other);
    for (const Text& value : card.values[row])
        if (!there || std::ranges::find(there->values[row], value) == there->values[row].end())
            unplaced.push_back(toUtf8(fieldRows()[row].label) + ": " + toUtf8(value));
}

}  // namespace

ContactImport planImport(std::vector<ContactDraft> cards, const ListedPhone& phone, const PhoneBook& book,
                         const PictureFolder& pictures) {
    std::vector<ContactDraft> there;
    there.reserve(book.contacts.size());
    for (const Contact& contact : book.contacts) {
        there.push_back(draftOf(contact, pictures));
        there.back().uid = exportedUid(phone.serial, contact.uid);
    }
    ContactImport import{.contacts = std::vector<ReportedContact>(cards.size()), .changes = {}};
    std::vector<ReportedContact>& reported = import.contacts;
    for (std::size_t i = 0; i < reported.size(); ++i) {
        reported[i].title = titleOf(cards[i]);
        reported[i].unplaced = takeUnplaced(cards[i]);
    }
    const std::vector<std::optional<ContactMatch>> matches = matchContacts(cards, there);
    for (std::size_t i = 0; i < reported.size(); ++i) {
        ContactDraft& card = cards[i];
        nameOther(card, matches[i] ? &there[matches[i]->contact] : nullptr, reported[i].unplaced);
        ContactChange change;
        change.title = reported[i].title;
        if (matches[i]) {
            change.kind = ContactChange::Kind::change;
            change.before = there[matches[i]->contact];
            change.after = merged(change.before, card, matches[i]->isByUid, reported[i].unplaced);
            if (contentOf(change.before) == contentOf(change.after)) continue;
            change.after.uid = book.contacts[matches[i]->contact].uid;
        } else {
            if (contentOf(card).empty()) change.failure = "It holds nothing that a phone keeps.";
            change.after = std::move(card);
            change.after.uid.clear();
        }
        reported[i].change = import.changes.size();
        import.changes.push_back(std::move(change));
    }
    return import;
}

}  // namespace ovno2::host
