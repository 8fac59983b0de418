// Contacts on their way to a phone.
#include <algorithm>

#include "host/contacts/contact_import.h"
#include "host/contacts/phone_book.h"
#include "host/output/command_output.h"
#include "host/restore/restore_part.h"

namespace ovno2::host {

namespace {

using State = RestoreItem::State;

class ContactsPart : public RestorePart {
  public:
    explicit ContactsPart(const RestoreTarget& target) : RestorePart(target.wanted), target_(target) {}

    const char* name() const override { return "contacts"; }

    void plan() override {
        book_ = readPhoneBook(target_.phones, target_.phone, pictures_);
        requireKnown(book_.missing);
        ContactImport import =
            planImport(std::move(target_.source.contacts), target_.phone, book_, pictures_);
        for (ReportedContact& contact : import.contacts) {
            RestoreItem item{.title = std::move(contact.title), .lost = std::move(contact.unplaced)};
            item.state = State::equal;
            if (contact.change != ReportedContact::none) {
                ContactChange& change = import.changes[contact.change];
                describe(change, item);
                if (isToBeWritten(item)) {
                    changes_.push_back(std::move(change));
                    places_.push_back(items_.size());
                }
            }
            items_.push_back(std::move(item));
        }
    }

    void carryOut() override {
        ContactWriting writing(target_.phones, target_.phone, pictures_, book_,
                               {.acceptsLosses = wanted_.acceptsLosses});
        writing.carryOut(changes_);
        for (std::size_t i = 0; i < changes_.size(); ++i) {
            RestoreItem& item = items_[places_[i]];
            item.failure = changes_[i].failure;
            item.isWritten = changes_[i].isDone();
        }
    }

  private:
    static void describe(const ContactChange& change, RestoreItem& item) {
        if (!change.isDone()) {
            item.state = State::impossible;
            item.why = change.failure;
        } else if (change.kind == ContactChange::Kind::add) {
            item.state = State::isNew;
        } else {
            item.state = State::different;
            const ContactContent before = contentOf(change.before), after = contentOf(change.after);
            ContactContent differs = lacking(after, before);
            std::ranges::move(lacking(before, after), std::back_inserter(differs));
            std::ranges::sort(differs);
            item.why = "other or missing on the phone: " + labelsOf(differs);
        }
    }

    const RestoreTarget& target_;
    PictureFolder pictures_;
    PhoneBook book_;
    std::vector<ContactChange> changes_;
    std::vector<std::size_t> places_;  // of their items
};

}  // namespace

std::unique_ptr<RestorePart> contactsPart(const RestoreTarget& target) {
    return std::make_unique<ContactsPart>(target);
}

}  // namespace ovno2::host
