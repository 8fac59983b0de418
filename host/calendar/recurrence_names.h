// What the forms of rules share: the names of weekdays, positions in a month, lists of words.
#pragma once

#include <chrono>
#include <map>
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

// "2TU", "-1SU", "MO": the position is 0 where none stands.
struct NamedDay {
    Long position = 0;
    bool fromEnd = false;
    int weekday = 0;
};
std::optional<NamedDay> namedDay(std::string_view word);

// ASCII letters.
std::string upperCased(std::string_view text);

// "FREQ=DAILY;COUNT=3" by the names of its parts, all in upper case. Says what is wrong, for people; empty =
// nothing.
using RuleParts = std::map<std::string, std::string, std::less<>>;
std::string readRuleParts(std::string_view text, RuleParts& parts);

}  // namespace ovno2::host
