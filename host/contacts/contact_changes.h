// Changes of a phone's contacts: carried out in one session, which the phone keeps whole or not at all, and
// then looked at on the phone.
//
// Nothing is called done that was not found on the phone afterwards. A phone that does not take a session as
// a whole, because it runs full in the middle or refuses one of many, gets it in halves, so that all that
// fits arrives and the rest is named.
#pragma once

#include <map>
#include <set>

#include "host/contacts/contact_content.h"
#include "host/contacts/phone_book.h"
#include "host/contacts/phone_draft.h"
#include "host/output/interruption.h"

namespace ovno2::host {

struct ContactChange {
    enum class Kind { add, change, remove };

    Kind kind = Kind::add;
    std::string title;    // what messages call the contact; UTF-8
    ContactDraft before;  // as the phone has it; of a new one empty
    ContactDraft after;   // as it is to be; its uid is the phone's own, empty for a new one
    // What went wrong, for people; empty = done. UTF-8.
    std::string failure = {};
    // It was written, and values that were to go are still there: tried once more in another way.
    bool isSecondTry = false;

    bool isDone() const { return failure.empty(); }
};

struct WritingOptions {
    bool acceptsLosses = false;  // contacts are written although old software drops their notes
};

class ContactWriting {
  public:
    // `pictures` is the folder that `book` was read into; nothing that the phone has now is in `book` later.
    ContactWriting(const AttachedPhones& phones, const ListedPhone& phone, PictureFolder& pictures,
                   const PhoneBook& book, const WritingOptions& wanted);

    // Enters in each change what became of it. Throws CommandFailure when the user broke it off, or when what
    // became of them is not known.
    void carryOut(std::vector<ContactChange>& changes);

  private:
    using Changes = std::span<ContactChange* const>;

    void writeAll(Changes changes);
    bool writeSession(Changes changes);
    Long writeOne(ContactChange& change);
    Long write(const WrittenContact& contact, ContactChange& change, Text& id);
    bool commit(Changes written);
    void drop();
    [[noreturn]] void giveUp(const std::string& why);
    void endIfAsked();
    bool isAttached() const;
    // What the phone has now.
    struct Now {
        bool isWhole = true;
        std::map<Text, ContactDraft> byUid;
        std::vector<Text> added;                        // uids of those that were not there at first
        std::multimap<ContactContent, Text> byContent;  // of these, made when it is needed
    };
    Now look();
    const ContactDraft* find(const ContactChange& change, Now& now) const;
    bool hasArrived(const ContactChange& change, Now& now) const;
    std::vector<ContactChange*> check(Changes changes);
    void checkOne(ContactChange& change, const ContactDraft* now, bool isWhole) const;
    std::string whatIsWritten() const;

    const AttachedPhones& phones_;
    const ListedPhone& phone_;
    PictureFolder& pictures_;
    const WritingOptions wanted_;
    std::set<Text> before_;  // the uids that the phone had at first
    DraftWriter writer_;
    std::map<const ContactChange*, Text> ids_;  // of what this session has added: temporary, later for good
    std::size_t committed_ = 0;                 // changes that the phone has taken
    bool isCommitting_ = false;
    bool isTainted_ = false;  // the session holds what must not be committed
    std::size_t taints_ = 0;
    std::string refusal_;       // of the last single contact that could not be committed
    std::size_t refusals_ = 0;  // how often in a row
    Interruption interruption_;
};

}  // namespace ovno2::host
