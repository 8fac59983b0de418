#include "host/contacts/vcard_names.h"

#include <algorithm>
#include <chrono>
#include <set>

namespace ovno2::host {

namespace {

std::vector<TextView> wordsOf(TextView text) {
    std::vector<TextView> words;
    for (std::size_t place = 0; place < text.size();) {
        const std::size_t start = std::min(text.find_first_not_of(u" ,", place), text.size());
        place = std::min(text.find_first_of(u" ,", start), text.size());
        if (place > start) words.push_back(text.substr(start, place - start));
    }
    return words;
}

}  // namespace

TextView firstValue(const ContactDraft& contact, Long code) {
    const std::vector<Text>& values = contact.values[rowOf(code)];
    return values.empty() ? TextView() : TextView(values.front());
}

Text cardName(const ContactDraft& contact) {
    const Text first(firstValue(contact, HostField::firstName));
    const Text last(firstValue(contact, HostField::lastName));
    if (!first.empty() && !last.empty()) return first + u' ' + last;
    if (!first.empty() || !last.empty()) return first + last;
    for (const Long code : {HostField::nickname, HostField::company})
        if (const TextView name = firstValue(contact, code); !name.empty()) return Text(name);
    for (std::size_t row = 0; row < contact.values.size(); ++row)
        if (!contact.values[row].empty() && fieldRows()[row].code != HostField::formalName)
            return trimBlanks(TextView(contact.values[row].front())
                                  .substr(0, contact.values[row].front().find_first_of(u"\r\n")));
    return {};
}

bool saysMoreThanName(TextView formattedName, const ContactDraft& contact) {
    if (formattedName == cardName(contact)) return false;
    for (const Long code : {HostField::nickname, HostField::company})
        if (formattedName == firstValue(contact, code)) return false;
    std::set<TextView> known;
    for (const Long code : {HostField::firstName, HostField::lastName, HostField::title})
        for (const TextView word : wordsOf(firstValue(contact, code)))
            known.insert(word);
    return !std::ranges::all_of(wordsOf(formattedName), [&](TextView word) { return known.contains(word); });
}

bool isIsoDate(TextView text) {
    constexpr std::size_t yearDigits = 4, monthPlace = 5, dayPlace = 8, length = 10;
    if (text.size() != length || text[yearDigits] != u'-' || text[dayPlace - 1] != u'-') return false;
    for (std::size_t i = 0; i < length; ++i)
        if (i != yearDigits && i != dayPlace - 1 && (text[i] < u'0' || text[i] > u'9')) return false;
    const auto number = [&](std::size_t place, std::size_t digits) {
        return static_cast<unsigned>(numericLong(text.substr(place, digits)));
    };
    return std::chrono::year_month_day(std::chrono::year(static_cast<int>(number(0, yearDigits))),
                                       std::chrono::month(number(monthPlace, 2)),
                                       std::chrono::day(number(dayPlace, 2)))
        .ok();
}

}  // namespace ovno2::host
