// One kind of things on its way to a phone: what of it is new there, and what becomes of it.
//
// A part is planned first, which reads the phone and changes nothing, and then carried out. Nothing that the
// phone has goes; what is there in another form is changed only with `overwrites`.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/phones/attached_phones.h"
#include "host/restore/restore_source.h"

namespace ovno2::host {

struct RestoreItem {
    enum class State { isNew, equal, different, impossible };

    std::string title;  // UTF-8
    State state = State::isNew;
    std::string why = {};                // of one that is different or impossible; UTF-8
    std::vector<std::string> lost = {};  // what of it no phone takes
    // What went wrong when it was written; empty = nothing.
    std::string failure = {};
    bool isWritten = false;

    bool isOnPhone() const { return state == State::equal || isWritten; }
};

struct RestoreOptions {
    bool overwrites = false;
    bool acceptsLosses = false;
};

class RestorePart {
  public:
    virtual ~RestorePart() = default;

    virtual const char* name() const = 0;  // "contacts"
    // Throws CommandFailure when what the phone has cannot be known: then nothing is written of this kind.
    virtual void plan() = 0;
    // Writes what is new, and what is different when that is wanted, and looks at the phone afterwards.
    // Enters in the items what became of them, whatever it throws: CommandFailure when it was broken off.
    virtual void carryOut() = 0;

    const std::vector<RestoreItem>& items() const { return items_; }
    std::size_t count(RestoreItem::State state) const;
    bool isToBeWritten(const RestoreItem& item) const {
        return item.state == RestoreItem::State::isNew ||
               (item.state == RestoreItem::State::different && wanted_.overwrites);
    }
    // Makes failures of what is to be written and has not been.
    void giveUp(const std::string& why);
    // Why nothing of this kind could be planned; empty = it could. UTF-8.
    std::string planFailure;

  protected:
    explicit RestorePart(const RestoreOptions& wanted) : wanted_(wanted) {}

    const RestoreOptions& wanted_;
    std::vector<RestoreItem> items_;
};

// What all parts work on. It lives longer than they do.
struct RestoreTarget {
    const AttachedPhones& phones;
    const ListedPhone& phone;
    RestoreSource& source;
    const RestoreOptions& wanted;
};

// Each takes what it needs out of the source.
std::unique_ptr<RestorePart> contactsPart(const RestoreTarget& target);
std::unique_ptr<RestorePart> calendarPart(const RestoreTarget& target);
std::unique_ptr<RestorePart> notesPart(const RestoreTarget& target);
std::unique_ptr<RestorePart> messagesPart(const RestoreTarget& target);
std::unique_ptr<RestorePart> filesPart(const RestoreTarget& target);

// To be called with what the phone did not hand out: throws CommandFailure, since an item that could not be
// read would come a second time.
void requireKnown(const std::vector<std::string>& missing);

}  // namespace ovno2::host
