#include "host/messages/phone_number.h"

#include <algorithm>
#include <optional>

#include "host/contacts/contact_values.h"
#include "host/contacts/field_table.h"
#include "host/output/folding.h"

namespace ovno2::host {

namespace {

constexpr std::size_t significantDigits = 7;

struct Number {
    Text digits;  // without what stands for "abroad" or "another place"
    bool isWorldwide = false;
    bool isNational = false;  // begins with the 0 of another place
};

std::optional<Number> numberOf(TextView text) {
    Number number;
    bool begun = false;
    for (const char16_t unit : text) {
        if (unit >= u'0' && unit <= u'9') {
            number.digits += unit;
            begun = true;
        } else if (unit == u'+' && !begun) {
            number.isWorldwide = begun = true;
        } else if (TextView(u" -/().\u00A0").find(unit) == TextView::npos) {
            return std::nullopt;
        }
    }
    if (number.digits.empty()) return std::nullopt;
    if (!number.isWorldwide && number.digits.starts_with(u"00")) {
        number.isWorldwide = true;
        number.digits.erase(0, 2);
    } else if (!number.isWorldwide && number.digits.starts_with(u'0')) {
        number.isNational = true;
        number.digits.erase(0, 1);
    }
    return number;
}

bool sameDigits(const Number& a, const Number& b) {
    constexpr std::size_t longestCountryCode = 3;
    const auto withinCountry = [](const Number& world, const Number& nation) {
        const std::size_t more = world.digits.size() - nation.digits.size();
        return world.digits.size() > nation.digits.size() && more <= longestCountryCode &&
               nation.digits.size() >= significantDigits && world.digits.ends_with(nation.digits);
    };
    if (a.isWorldwide == b.isWorldwide) return a.digits == b.digits && a.isNational == b.isNational;
    return a.isWorldwide ? withinCountry(a, b) : withinCountry(b, a);
}

}  // namespace

bool sameNumber(TextView a, TextView b) {
    const std::optional<Number> first = numberOf(a), second = numberOf(b);
    if (!first || !second) return equalsIgnoringCase(a, b);
    return sameDigits(*first, *second);
}

Text numberKey(TextView address) {
    const std::optional<Number> number = numberOf(address);
    if (!number) return lowerCase(address);
    const Text& digits = number->digits;
    return digits.size() <= significantDigits ? digits : digits.substr(digits.size() - significantDigits);
}

NameBook::NameBook(const std::vector<Contact>& contacts) {
    constexpr Long codes[] = {HostField::mobile,    HostField::mobile2,    HostField::phone,
                              HostField::phone2,    HostField::homePhone,  HostField::homePhone2,
                              HostField::workPhone, HostField::workPhone2, HostField::email,
                              HostField::email2};
    for (const Contact& contact : contacts) {
        const Text name = host::nameOf(contact);
        if (name.empty()) continue;
        forEachValue(contact.values, [&](std::size_t i, TextView value) {
            const FieldRow& row = fieldRows()[i];
            if (std::ranges::find(codes, row.code) == std::end(codes)) return;
            const Text decoded = decodedValue(value);
            forEachPart(row, decoded, [&](TextView part) {
                const bool isMobile = row.code == HostField::mobile || row.code == HostField::mobile2;
                entries_[numberKey(part)].push_back({Text(part), name, isMobile});
            });
        });
    }
}

Text NameBook::nameOf(TextView address) const {
    const auto found = entries_.find(numberKey(address));
    if (found == entries_.end()) return {};
    for (const Entry& entry : found->second)
        if (sameNumber(entry.address, address)) return entry.name;
    return {};
}

std::vector<Text> NameBook::mobilesOf(TextView name) const {
    const Text wanted = folded(name);
    std::vector<Text> numbers;
    for (const auto& [key, entries] : entries_)
        for (const Entry& entry : entries)
            if (entry.isMobile && folded(entry.name) == wanted) numbers.push_back(entry.address);
    return numbers;
}

}  // namespace ovno2::host
