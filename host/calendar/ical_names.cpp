#include "host/calendar/ical_names.h"

#include <algorithm>

#include "host/calendar/recurrence_names.h"

namespace ovno2::host {

using namespace std::chrono;
using Kind = CalendarEntry::Kind;

std::optional<Kind> fileKindNamed(std::string_view name) {
    static constexpr struct {
        std::string_view name;
        Kind kind;
    } names[] = {
        {"MEETING", Kind::meeting},           {"APPOINTMENT", Kind::meeting}, {"CALL", Kind::call},
        {"PHONE CALL", Kind::call},           {"BIRTHDAY", Kind::birthday},   {"ANNIVERSARY", Kind::birthday},
        {"SPECIAL OCCASION", Kind::birthday}, {"NOTE", Kind::note},           {"MEMO", Kind::note},
        {"REMINDER", Kind::reminder},         {"OTHER", Kind::other},         {"TODO", Kind::toDo}};
    const auto* const found = std::ranges::find(names, name, [](const auto& one) { return one.name; });
    return found == std::end(names) ? std::nullopt : std::optional(found->kind);
}

std::string_view kindName(Kind kind) {
    constexpr std::string_view names[] = {"MEETING", "CALL", "BIRTHDAY", "NOTE", "REMINDER", "OTHER", "TODO"};
    return names[static_cast<std::size_t>(kind)];
}

std::string_view categoryOf(Kind kind) {
    constexpr std::string_view names[] = {"MEETING", "PHONE CALL", "ANNIVERSARY", "MEMO", "REMINDER", "", ""};
    return names[static_cast<std::size_t>(kind)];
}

std::optional<seconds> readDuration(std::string_view text) {
    const bool isBefore = text.starts_with('-');
    if (isBefore || text.starts_with('+')) text.remove_prefix(1);
    if (!text.starts_with('P') || text.size() < 3) return std::nullopt;
    text.remove_prefix(1);
    seconds whole{0};
    bool isTime = false;
    while (!text.empty()) {
        if (text.front() == 'T' && !isTime) {
            isTime = true;
            text.remove_prefix(1);
            continue;
        }
        const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
        const std::optional<Long> number = numberOf(text.substr(0, digits));
        constexpr Long most = 10'000'000;
        if (!number || *number > most || digits == text.size()) return std::nullopt;
        const char unit = text[digits];
        if (unit == 'W' && !isTime)
            whole += weeks(*number);
        else if (unit == 'D' && !isTime)
            whole += days(*number);
        else if (unit == 'H' && isTime)
            whole += hours(*number);
        else if (unit == 'M' && isTime)
            whole += minutes(*number);
        else if (unit == 'S' && isTime)
            whole += seconds(*number);
        else
            return std::nullopt;
        if (whole > days(3650)) return std::nullopt;
        text.remove_prefix(digits + 1);
    }
    return isBefore ? -whole : whole;
}

std::string durationText(seconds duration) {
    std::string text = duration < seconds(0) ? "-P" : "P";
    duration = abs(duration);
    const days whole = floor<days>(duration);
    if (whole > days(0)) text.append(std::to_string(whole.count())).append("D");
    const hh_mm_ss clock(duration - whole);
    if (duration - whole == seconds(0)) return whole > days(0) ? text : text.append("T0S");
    text.append("T");
    if (clock.hours() > hours(0)) text.append(std::to_string(clock.hours().count())).append("H");
    if (clock.minutes() > minutes(0)) text.append(std::to_string(clock.minutes().count())).append("M");
    if (clock.seconds() > seconds(0)) text.append(std::to_string(clock.seconds().count())).append("S");
    return text;
}

}  // namespace ovno2::host
