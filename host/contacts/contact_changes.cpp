#include "host/contacts/contact_changes.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/driver/result_messages.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/display_width.h"
#include "host/output/exit_status.h"
#include "host/output/progress.h"

namespace ovno2::host {

namespace {

// After so many contacts in a row that the phone refused for one reason it is not asked for more: when it is
// to commit a single one, or hand one out; and when it is to take one into a session, which costs little.
constexpr std::size_t mostRefusals = 3;
constexpr std::size_t mostRefusalsInSession = 20;
// Results above are of steps that come before the contact: no session can begin.
constexpr Long lastStepResult = -10;

// The newest software that knows one kind of address only, and no notes when it writes.
constexpr long lastOldVersion = 32;

constexpr const char* lossMessage =
    "stays as it is: the phone's software is too old to write its notes and categories back, which would be "
    "lost. --accept-losses writes it all the same.";

constexpr const char* unreadMessage = "stays as it is: the phone did not hand it out again. Retry.";

ContactContent gone(const ContactChange& change, const ContactContent& wanted) {
    return lacking(contentOf(change.before), wanted);
}

}  // namespace

ContactWriting::ContactWriting(const AttachedPhones& phones, const ListedPhone& phone,
                               PictureFolder& pictures, const PhoneBook& book, const WritingOptions& wanted)
    : phones_(phones),
      phone_(phone),
      pictures_(pictures),
      wanted_(wanted),
      writer_(pictures.path(), std::lround(phones.driver().software().contentVersion) <= lastOldVersion),
      interruption_({.tick = [] {}, .end = [this] { note("ovphone: Interrupted. " + whatIsWritten()); }}) {
    for (const Contact& contact : book.contacts)
        before_.insert(contact.uid);
}

std::string ContactWriting::whatIsWritten() const {
    const std::string title = titleOf(phone_);
    if (isCommitting_)
        return "Whether " + title + " has taken the changes is not known; give the command again to see.";
    if (committed_ == 0) return "Nothing was written to " + title + ".";
    return std::to_string(committed_) + " changes were written to " + title +
           " and not looked at; give the command again to see.";
}

void ContactWriting::carryOut(std::vector<ContactChange>& changes) {
    if (changes.empty()) return;
    std::vector<ContactChange*> all;
    all.reserve(changes.size());
    for (ContactChange& change : changes)
        all.push_back(&change);
    writeAll(all);
    if (committed_ == 0) return;
    if (const std::vector<ContactChange*> again = check(all); !again.empty()) {
        writeAll(again);
        check(again);
    }
}

// In halves as long as a half is refused as a whole.
void ContactWriting::writeAll(Changes changes) {
    std::vector<ContactChange*> left;
    std::ranges::copy_if(changes, std::back_inserter(left), [](auto* change) { return change->isDone(); });
    if (left.empty()) return;
    if (refusals_ >= mostRefusals) {
        for (ContactChange* const change : left)
            change->failure = refusal_;
        return;
    }
    if (writeSession(left)) {
        refusals_ = 0;
        return;
    }
    std::erase_if(left, [](const auto* change) { return !change->isDone(); });
    if (left.empty()) return;
    if (left.size() == 1) {
        left.front()->failure = refusal_;
        ++refusals_;
        return;
    }
    const Changes rest(left);
    writeAll(rest.first(rest.size() / 2));
    writeAll(rest.subspan(rest.size() / 2));
}

// False when the phone did not take the session; what it refused one by one has its failure.
bool ContactWriting::writeSession(Changes changes) {
    std::vector<ContactChange*> written;
    std::string last;
    std::size_t inARow = 0;
    ProgressBar progress("the contacts of " + titleOf(phone_), console::errorIsTerminal() && !isQuiet(),
                         "Writing");
    Long value = ProgressBar::announcement;
    progress.advanceTo(value);
    for (ContactChange* const change : changes) {
        endIfAsked();
        progress.advanceTo(++value);
        if (taints_ >= mostRefusals && change->kind == ContactChange::Kind::change) {
            change->failure = unreadMessage;
            continue;
        }
        if (inARow >= mostRefusalsInSession) {
            change->failure = last;
            continue;
        }
        const Long result = writeOne(*change);
        if (std::exchange(isTainted_, false)) {
            ++taints_;
            drop();
            std::vector<ContactChange*> left;
            std::ranges::copy_if(changes, std::back_inserter(left), [](auto* one) { return one->isDone(); });
            return left.empty() || writeSession(left);
        }
        if (result >= 0) {
            inARow = 0;
            if (change->isDone()) written.push_back(change);
            continue;
        }
        const Operation operation =
            change->kind == ContactChange::Kind::remove ? Operation::deleteContact : Operation::writeContact;
        change->failure = resultMessage(operation, result, titleOf(phone_), change->title);
        if (!isAttached())
            giveUp("The connection to " + titleOf(phone_) +
                   " was lost. Attach it again and repeat the command.");
        inARow = change->failure == last ? inARow + 1 : 1;
        if (result > lastStepResult && operation == Operation::writeContact) inARow = mostRefusalsInSession;
        last = change->failure;
    }
    endIfAsked();
    if (!written.empty()) return commit(written);
    drop();
    return true;
}

// A commit that failed is looked at: the phone may have taken it and its answer be lost.
bool ContactWriting::commit(Changes written) {
    std::vector<AddedItem> added;
    isCommitting_ = true;
    const Long result =
        interruption_.whileAsking([&] { return phones_.driver().endContacts(/*commit=*/true, added); });
    if (result != 0) {
        if (!isAttached())
            throw CommandFailure{failed,
                                 "The connection to " + titleOf(phone_) + " was lost. " + whatIsWritten()};
        drop();
        Now now = look();
        if (!hasArrived(*written.back(), now)) {
            isCommitting_ = false;
            refusal_ = titleOf(phone_) + " did not take it; its memory may be full. " +
                       resultMessage(Operation::endContacts, result, titleOf(phone_));
            return false;
        }
    }
    isCommitting_ = false;
    committed_ += written.size();
    std::map<Text, Text> uids;
    for (AddedItem& contact : added)
        uids[contact.temporaryId] = contact.uid;
    for (const ContactChange* const change : written)
        if (const auto id = ids_.find(change); id != ids_.end()) id->second = uids[id->second];
    return true;
}

// Ends the session without a change.
void ContactWriting::drop() {
    std::vector<AddedItem> none;
    interruption_.whileAsking([&] { return phones_.driver().endContacts(/*commit=*/false, none); });
}

Long ContactWriting::write(const WrittenContact& contact, ContactChange& change, Text& id) {
    const LossQuestion ask = [&](const Text&) {
        if (wanted_.acceptsLosses) return LossAnswer::write;
        change.failure = lossMessage;
        return LossAnswer::leaveOut;
    };
    return interruption_.whileAsking(
        [&] { return phones_.driver().writeContact(phone_, contact.fields, contact.values, id, ask); });
}

Long ContactWriting::writeOne(ContactChange& change) {
    Text id = change.after.uid;
    try {
        switch (change.kind) {
            case ContactChange::Kind::remove:
                return interruption_.whileAsking([&] { return phones_.driver().deleteContact(phone_, id); });
            case ContactChange::Kind::add: {
                const Long result = write(writer_.added(change.after), change, id);
                if (result == 0) ids_[&change] = id;
                return result;
            }
            default:
                break;
        }
        const Long result =
            write(writer_.changed(change.before, change.after, change.isSecondTry), change, id);
        // The driver writes a contact that it cannot read as a new one, which would have only what changes.
        if (result == 0 && id != change.after.uid) {
            change.failure = unreadMessage;
            isTainted_ = true;
        }
        return result;
    } catch (const PictureNotWritten& failure) {
        change.failure = failure.why;
        return 0;
    }
}

bool ContactWriting::isAttached() const {
    std::vector<ListedPhone> attached;
    return phones_.driver().listPhones(attached) >= 0 &&
           std::ranges::any_of(attached,
                               [&](const ListedPhone& other) { return other.serial == phone_.serial; });
}

void ContactWriting::giveUp(const std::string& why) {
    drop();
    throw CommandFailure{failed, why + " " + whatIsWritten()};
}

void ContactWriting::endIfAsked() {
    if (interruption_.signal() == 0) return;
    drop();
    throw CommandFailure{128 + interruption_.signal(), "Interrupted. " + whatIsWritten()};
}

ContactWriting::Now ContactWriting::look() {
    PhoneBook book;
    try {
        book = interruption_.whileAsking([&] { return readPhoneBook(phones_, phone_, pictures_); });
    } catch (const CommandFailure& failure) {
        throw CommandFailure{failed, failure.message + "\n" + whatIsWritten()};
    }
    for (const std::string& message : book.missing)
        note("ovphone: " + message);
    Now now{.isWhole = book.contacts.size() == book.listed, .byUid = {}, .added = {}, .byContent = {}};
    for (const Contact& contact : book.contacts) {
        now.byUid.emplace(contact.uid, draftOf(contact, pictures_));
        if (!before_.contains(contact.uid)) now.added.push_back(contact.uid);
    }
    return now;
}

// A new contact whose uid was not told is known by what it holds.
const ContactDraft* ContactWriting::find(const ContactChange& change, Now& now) const {
    const auto id = ids_.find(&change);
    auto there = now.byUid.find(id == ids_.end() ? change.after.uid : id->second);
    if (there == now.byUid.end() && change.kind == ContactChange::Kind::add) {
        for (const Text& uid : std::exchange(now.added, {}))
            now.byContent.emplace(contentOf(now.byUid.at(uid)), uid);
        const auto equal = now.byContent.find(contentOf(change.after));
        if (equal == now.byContent.end()) return nullptr;
        there = now.byUid.find(equal->second);
        now.byContent.erase(equal);
    }
    return there == now.byUid.end() ? nullptr : &there->second;
}

bool ContactWriting::hasArrived(const ContactChange& change, Now& now) const {
    const ContactDraft* const there = find(change, now);
    if (change.kind == ContactChange::Kind::remove) return !there;
    return there && holdsAll(contentOf(*there), contentOf(change.after));
}

// Gives those that are to be tried in another way.
std::vector<ContactChange*> ContactWriting::check(Changes changes) {
    Now now = look();
    std::vector<ContactChange*> again;
    for (ContactChange* const change : changes) {
        const bool wasSecondTry = change->isSecondTry;
        if (change->isDone()) checkOne(*change, find(*change, now), now.isWhole);
        if (change->isSecondTry && !wasSecondTry) again.push_back(change);
    }
    return again;
}

void ContactWriting::checkOne(ContactChange& change, const ContactDraft* now, bool isWhole) const {
    const std::string title = titleOf(phone_);
    if (!now && !isWhole) {
        change.failure = "It was written; whether " + title +
                         " has it is not known, since not all of its contacts could be read.";
        return;
    }
    if (change.kind == ContactChange::Kind::remove) {
        if (now) change.failure = title + " still has it.";
        return;
    }
    if (!now) {
        change.failure = "It was written, but " + title + " does not have it.";
        return;
    }
    const ContactContent wanted = contentOf(change.after), there = contentOf(*now);
    const ContactContent missing = lacking(wanted, there);
    if (!missing.empty()) {
        change.failure =
            title + " did not keep all of it; missing or different there: " + labelsOf(missing) + ".";
        return;
    }
    ContactContent stayed;
    for (const auto& value : gone(change, wanted))
        if (std::ranges::binary_search(there, value)) stayed.push_back(value);
    if (stayed.empty()) return;
    if (!change.isSecondTry) {
        change.before = *now;
        change.isSecondTry = true;
        return;
    }
    change.failure = "The new values were written, but " + title +
                     " also keeps old ones, in fields that cannot be changed from here: " + labelsOf(stayed) +
                     ". To be rid of them, remove the contact and add it again.";
}

}  // namespace ovno2::host
