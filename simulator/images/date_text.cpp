#include "simulator/images/date_text.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>

namespace ovno2::simulator {
namespace {

// The number in the digits of `text` from `at`, or -1.
int digits(std::string_view text, std::size_t at, std::size_t count) {
    int number = 0;
    for (std::size_t i = at; i < at + count; ++i) {
        if (text[i] < '0' || text[i] > '9') return -1;
        number = number * 10 + (text[i] - '0');
    }
    return number;
}

// A number of minutes with its sign, from the front of `text`; false when there is none.
bool takeMinutes(std::string_view& text, std::int32_t& minutes) {
    if (!text.starts_with('+') && !text.starts_with('-')) return false;
    const char* const first = text.data() + (text[0] == '+' ? 1 : 0);
    const char* const end = text.data() + text.size();
    const auto [behind, failed] = std::from_chars(first, end, minutes);
    if (failed != std::errc() || (text[0] == '+' && minutes < 0)) return false;
    text.remove_prefix(static_cast<std::size_t>(behind - text.data()));
    return true;
}

}  // namespace

bool isDate(const library::DateRecord& record) {
    const bool isTime = record.hour <= 23 && record.minute <= 59 && record.second <= 59;
    if (record.year > 9999 || record.month > 12 || record.day > 31 || !isTime) return false;
    if (record.month == 0 || record.day == 0) return true;
    // Without its year, the 29th of February is one.
    const std::chrono::year year(record.year == 0 ? 2000 : record.year);
    return (year / record.month / record.day).ok();
}

bool parseDate(std::string_view text, library::DateRecord& record) {
    const bool withTime = text.size() == 19;
    if ((text.size() != 10 && !withTime) || text[4] != '-' || text[7] != '-') return false;
    if (withTime && (text[10] != 'T' || text[13] != ':' || text[16] != ':')) return false;
    const int year = digits(text, 0, 4);
    const int month = digits(text, 5, 2);
    const int day = digits(text, 8, 2);
    const int hour = withTime ? digits(text, 11, 2) : 0;
    const int minute = withTime ? digits(text, 14, 2) : 0;
    const int second = withTime ? digits(text, 17, 2) : 0;
    if (std::min({year, month, day, hour, minute, second}) < 0) return false;
    record.year = static_cast<std::uint16_t>(year);
    record.month = static_cast<std::uint8_t>(month);
    record.day = static_cast<std::uint8_t>(day);
    record.hour = static_cast<std::uint8_t>(hour);
    record.minute = static_cast<std::uint8_t>(minute);
    record.second = static_cast<std::uint8_t>(second);
    return isDate(record);
}

std::string dateText(const library::DateRecord& record) {
    char text[40];
    std::snprintf(text, sizeof text, "%04u-%02u-%02u", record.year, record.month, record.day);
    std::string date = text;
    if (record.hour != 0 || record.minute != 0 || record.second != 0) {
        std::snprintf(text, sizeof text, "T%02u:%02u:%02u", record.hour, record.minute, record.second);
        date += text;
    }
    return date;
}

bool parseDateWithOffsets(std::string_view text, library::DateRecord& record) {
    const std::size_t date = std::min<std::size_t>(text.find('T') == 10 ? 19 : 10, text.size());
    if (!parseDate(text.substr(0, date), record)) return false;
    text.remove_prefix(date);
    if (text.empty()) return true;
    return takeMinutes(text, record.firstOffset) && takeMinutes(text, record.secondOffset) && text.empty();
}

std::string dateTextWithOffsets(const library::DateRecord& record) {
    std::string text = dateText(record);
    if (record.firstOffset == 0 && record.secondOffset == 0) return text;
    for (const std::int32_t offset : {record.firstOffset, record.secondOffset})
        text += (offset < 0 ? "" : "+") + std::to_string(offset);
    return text;
}

}  // namespace ovno2::simulator
