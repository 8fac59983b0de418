// What the forms of rules share: the names of weekdays, positions in a month, lists of words.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/types.h"

namespace ovno2::host {

inline constexpr Long lastInterval = 255;  // what a phone counts to

// "MO" is 0 to "SU" 6.
std::string_view weekdayName(int day);
std::optional<int> weekdayNamed(std::string_view name);
int weekdayNumber(std::chrono::local_days date);  // Monday 0 to Sunday 6

// Whether it is the month's first, second ... of its weekday.
int positionOf(std::chrono::local_days date);

// Between `separator`s, without empty ones.
std::vector<std::string_view> wordsOf(std::string_view text, char separator);

// A number without a sign that fits a Long.
std::optional<Long> numberOf(std::string_view text);

}  // namespace ovno2::host
