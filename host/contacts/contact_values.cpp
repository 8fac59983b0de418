#include "host/contacts/contact_values.h"

#include <algorithm>

#include "host/contacts/field_table.h"
#include "host/output/folding.h"

namespace ovno2::host {

namespace {

void addPart(Text& list, TextView part) {
    list.append(list.empty() ? u"" : u"; ").append(part);
}

}  // namespace

std::vector<Text> valuesOf(const Contact& contact) {
    std::vector<Text> values(fieldRows().size());
    forEachValue(contact.values, [&](std::size_t i, TextView value) {
        const FieldRow& row = fieldRows()[i];
        if (row.code == HostField::picture) return;
        forEachPart(row, decodedValue(value), [&](TextView part) { addPart(values[i], part); });
    });
    for (const Text& picture : contact.pictures)
        addPart(values[rowOf(HostField::picture)], picture);
    return values;
}

Text nameOf(const std::vector<Text>& values) {
    const Text& first = values[rowOf(HostField::firstName)];
    const Text& last = values[rowOf(HostField::lastName)];
    if (!first.empty() && !last.empty()) return first + u' ' + last;
    if (!first.empty() || !last.empty()) return first + last;
    for (const Long code : {HostField::formalName, HostField::nickname, HostField::company})
        if (const Text& name = values[rowOf(code)]; !name.empty()) return name;
    return {};
}

Text nameOf(const Contact& contact) {
    return nameOf(valuesOf(contact));
}

std::string titleOf(const Contact& contact) {
    const std::vector<Text> values = valuesOf(contact);
    if (const Text name = nameOf(values); !name.empty()) return toUtf8(name);
    for (const Long code : {HostField::mobile, HostField::phone, HostField::homePhone, HostField::workPhone})
        if (const Text& number = values[rowOf(code)]; !number.empty()) return toUtf8(number);
    return toUtf8(contact.location);
}

void sortByName(std::vector<Contact>& contacts) {
    std::vector<std::pair<Text, std::size_t>> order;
    order.reserve(contacts.size());
    for (std::size_t i = 0; i < contacts.size(); ++i)
        order.emplace_back(folded(nameOf(contacts[i])), i);
    std::ranges::sort(order, [](const auto& a, const auto& b) {
        return std::tuple(a.first.empty(), TextView(a.first), a.second) <
               std::tuple(b.first.empty(), TextView(b.first), b.second);
    });
    std::vector<Contact> sorted;
    sorted.reserve(contacts.size());
    for (const auto& [name, place] : order)
        sorted.push_back(std::move(contacts[place]));
    contacts = std::move(sorted);
}

}  // namespace ovno2::host
