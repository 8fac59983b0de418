// What a phone said that it has, beside what arrived of it.
#pragma once

#include "host/phones/attached_phones.h"

namespace ovno2::host {

// What the phone named, from the steps of the progress control: each folder that it lists is announced by a
// jump, one step says that its items follow, the same number of steps belongs to each of them.
class ListedItems {
  public:
    explicit ListedItems(std::size_t stepsOfAnItem) : stepsOfAnItem_(stepsOfAnItem) {}

    void advanceTo(Long value);
    bool anyFolder() const { return !folders_.empty(); }
    std::size_t notOpened() const;
    // In the last so many folders: the driver may have begun anew, with all folders again.
    std::size_t count(std::size_t folders = static_cast<std::size_t>(-1)) const;

  private:
    std::size_t stepsOfAnItem_;
    Long value_ = 0;
    std::vector<std::size_t> folders_;
};

bool isAttached(PhoneDriver& driver, const ListedPhone& phone);

// What the user can do when not all arrived; begins with a blank. UTF-8.
std::string whatToDo(PhoneDriver& driver, const ListedPhone& phone);

// Told where a second read of the same did not give the same; `items` names it: "messages of Nokia N95".
// UTF-8.
std::string changedBetweenReads(const std::string& items);

// To be called once what has arrived is written: tells what is missing and throws CommandFailure for it.
void requireWhole(const std::vector<std::string>& missing);

}  // namespace ovno2::host
