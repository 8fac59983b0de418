#include "host/phones/arrival.h"

#include <algorithm>

#include "host/output/command_output.h"
#include "host/output/exit_status.h"

namespace ovno2::host {

void ListedItems::advanceTo(Long value) {
    constexpr Long announcement = 50;
    const Long step = value - value_;
    value_ = value;
    if (step >= announcement)
        folders_.push_back(0);
    else if (!folders_.empty())
        folders_.back() += static_cast<std::size_t>(step);
}

std::size_t ListedItems::notOpened() const {
    return static_cast<std::size_t>(std::ranges::count(folders_, 0U));
}

std::size_t ListedItems::count(std::size_t folders) const {
    std::size_t items = 0;
    for (std::size_t i = folders_.size() - std::min(folders, folders_.size()); i < folders_.size(); ++i)
        if (folders_[i] != 0) items += (folders_[i] - 1) / stepsOfAnItem_;
    return items;
}

bool isAttached(PhoneDriver& driver, const ListedPhone& phone) {
    std::vector<ListedPhone> attached;
    return driver.listPhones(attached) >= 0 && std::ranges::any_of(attached, [&](const ListedPhone& other) {
               return other.serial == phone.serial;
           });
}

std::string whatToDo(PhoneDriver& driver, const ListedPhone& phone) {
    if (!isAttached(driver, phone))
        return " The phone is no longer attached: attach it again and give the command again.";
    return " The phone is attached but did not hand out the others: another program may be working with it, "
           "or the connection was lost for a while. Close other phone programs, see to the cable or the "
           "reception, and give the command again; \"ovphone log on\" makes the log say what went wrong.";
}

std::string changedBetweenReads(const std::string& items) {
    return "The " + items +
           " changed between two reads, or one of them did not see them all. Give the command again, with no "
           "other program working with the phone.";
}

void requireWhole(const std::vector<std::string>& missing) {
    for (const std::string& message : missing)
        note("ovphone: " + message);
    if (!missing.empty()) throw CommandFailure{failed, {}};
}

}  // namespace ovno2::host
