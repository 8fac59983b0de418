#include "host/calendar/recurrence_names.h"

#include <algorithm>
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

std::optional<NamedDay> namedDay(std::string_view word) {
    NamedDay day;
    if (word.size() < 2) return std::nullopt;
    const std::optional<int> weekday = weekdayNamed(word.substr(word.size() - 2));
    if (!weekday) return std::nullopt;
    day.weekday = *weekday;
    word.remove_suffix(2);
    if (word.empty()) return day;
    day.fromEnd = word.front() == '-';
    if (word.front() == '-' || word.front() == '+') word.remove_prefix(1);
    const std::optional<Long> position = numberOf(word);
    if (!position || *position == 0) return std::nullopt;
    day.position = *position;
    return day;
}

std::string upperCased(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return result;
}

std::string readRuleParts(std::string_view text, RuleParts& parts) {
    const std::string whole = upperCased(text);
    for (const std::string_view part : wordsOf(whole, ';')) {
        const std::size_t mark = part.find('=');
        if (mark == std::string_view::npos) return std::string(part) + " is no part of a rule";
        if (!parts.emplace(part.substr(0, mark), part.substr(mark + 1)).second)
            return std::string(part.substr(0, mark)) + " stands there twice";
    }
    return {};
}

}  // namespace ovno2::host
