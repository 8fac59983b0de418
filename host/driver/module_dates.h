// Dates as the module hands them over: texts in the user's form.
#pragma once

#include <chrono>
#include <optional>

#include "host/output/text.h"

namespace ovno2::host {

// The minutes that the module takes off for local time, at all times of the year.
std::chrono::minutes timeBias();

// The time of a file, whose text is local time by `bias`; none where it is no time that a file here can have.
std::optional<std::chrono::sys_seconds> timeOf(TextView text, std::chrono::minutes bias);

// The time as clocks here showed it then, in the user's form.
Text localText(std::chrono::sys_seconds time);

}  // namespace ovno2::host
