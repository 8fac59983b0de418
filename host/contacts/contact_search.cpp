#include "host/contacts/contact_search.h"

#include <algorithm>

#include "host/contacts/contact_values.h"
#include "host/output/folding.h"
#include "host/phones/phone_choice.h"

namespace ovno2::host {

namespace {

template <class Matches>
std::vector<Contact> contactsThat(const std::vector<Contact>& contacts, Matches matches) {
    std::vector<Contact> found;
    std::ranges::copy_if(contacts, std::back_inserter(found), matches);
    return found;
}

bool isDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

Text digitsOf(TextView text) {
    Text digits;
    std::ranges::copy_if(text, std::back_inserter(digits), isDigit);
    return digits;
}

// The digits to look for; empty where the text is no number or has too few.
Text numberIn(TextView text) {
    constexpr std::size_t fewest = 3;
    const bool isNumber = std::ranges::all_of(text, [](char16_t unit) {
        return isDigit(unit) || TextView(u"+-/(). ").find(unit) != TextView::npos;
    });
    Text digits = isNumber ? digitsOf(text) : Text();
    if (digits.starts_with(u'0')) digits.erase(0, 1);
    return digits.size() < fewest ? Text() : digits;
}

}  // namespace

std::vector<Contact> contactsNamed(const std::vector<Contact>& contacts, TextView wanted) {
    const Text name = folded(wanted);
    std::vector<Contact> found =
        contactsThat(contacts, [&](const Contact& contact) { return folded(nameOf(contact)) == name; });
    if (!found.empty()) return found;
    return contactsThat(
        contacts, [&](const Contact& contact) { return folded(nameOf(contact)).find(name) != Text::npos; });
}

std::vector<Contact> contactsHolding(const std::vector<Contact>& contacts, TextView wanted) {
    const Text text = folded(wanted), number = numberIn(wanted);
    const auto holds = [&](const Text& value) {
        return folded(value).find(text) != Text::npos ||
               (!number.empty() && digitsOf(value).find(number) != Text::npos);
    };
    return contactsThat(contacts, [&](const Contact& contact) {
        const std::vector<Text> values = valuesOf(contact);
        return std::ranges::any_of(values, holds) || holds(nameOf(values));
    });
}

std::vector<Text> namesNear(const std::vector<Contact>& contacts, TextView wanted, std::size_t count) {
    std::vector<Text> names;
    names.reserve(contacts.size());
    for (const Contact& contact : contacts)
        names.push_back(nameOf(contact));
    return nearestNames(wanted, names, count);
}

}  // namespace ovno2::host
