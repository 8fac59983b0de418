#include "host/calendar/recurrence_names.h"

#include <charconv>

namespace ovno2::host {

namespace {

constexpr std::string_view names[] = {"MO", "TU", "WE", "TH", "FR", "SA", "SU"};

}  // namespace

std::string_view weekdayName(int day) {
    return names[day];
}

std::optional<int> weekdayNamed(std::string_view name) {
    for (int day = 0; day < 7; ++day)
        if (names[day] == name) return day;
    return std::nullopt;
}

int weekdayNumber(std::chrono::local_days date) {
    return static_cast<int>((std::chrono::weekday(date) - std::chrono::Monday).count());
}

int positionOf(std::chrono::local_days date) {
    const std::chrono::year_month_day fields(date);
    return (static_cast<int>(static_cast<unsigned>(fields.day())) - 1) / 7 + 1;
}

std::vector<std::string_view> wordsOf(std::string_view text, char separator) {
    std::vector<std::string_view> words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        if (end > 0) words.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

std::optional<Long> numberOf(std::string_view text) {
    Long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < 0) return std::nullopt;
    return number;
}

}  // namespace ovno2::host
