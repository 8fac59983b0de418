// Times in an archive: ISO 8601 in UTC, "2008-07-19T16:04:11Z".
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace ovno2::host {

std::string utcText(std::chrono::sys_seconds time);
// None for what is no such text.
std::optional<std::chrono::sys_seconds> utcTime(const std::string& text);

}  // namespace ovno2::host
