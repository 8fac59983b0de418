#include "host/contacts/contact_content.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <string_view>

#include "host/contacts/contact_values.h"
#include "host/contacts/field_families.h"
#include "host/output/display_width.h"

namespace ovno2::host {

namespace {

constexpr Long numbers[] = {HostField::mobile, HostField::phone, HostField::homePhone, HostField::workPhone,
                            HostField::email};

// A family's values come back from one row of several values when any of its rows holds several.
const FieldRow& splittingRow(std::size_t row) {
    for (const std::size_t other : writtenTogether(row))
        if (fieldRows()[other].holds == Holds::several) return fieldRows()[other];
    return fieldRows()[row];
}

Text asReadBack(const FieldRow& row, TextView value) {
    Text text = value.find(u'\r') == TextView::npos ? Text(value) : replaceAll(value, u"\r\n", u"\n");
    std::ranges::replace(text, u'\u00A4', u' ');
    std::ranges::replace(text, u'\0', u' ');
    if (row.code == HostField::lastName) std::ranges::replace(text, u';', u',');
    if (text.find(u'=') != Text::npos) text = replaceAll(text, u"=40", u"@");
    if (text.find(u'\\') != Text::npos) text = decodedValue(text);
    if (row.code == HostField::birthday) text = birthdayReadBack(text);
    const auto isBlank = [](char16_t unit) { return unit <= u' '; };
    while (!text.empty() && isBlank(text.back()))
        text.pop_back();
    text.erase(text.begin(), std::ranges::find_if_not(text, isBlank));
    return text;
}

}  // namespace

ContactContent contentOf(const ContactDraft& contact) {
    ContactContent content;
    const std::size_t rows = std::min(contact.values.size(), fieldRows().size());
    for (std::size_t i = 0; i < rows; ++i) {
        const FieldRow& row = fieldRows()[i];
        if (row.code == HostField::other || row.code == HostField::picture || contact.values[i].empty())
            continue;
        const FieldRow& splitting = splittingRow(i);
        for (const Text& value : contact.values[i])
            forEachPart(splitting, value, [&](TextView part) {
                if (Text text = asReadBack(row, part); !text.empty())
                    content.emplace_back(familyOf(i), std::move(text));
            });
    }
    for (const ContactDraft::Picture& picture : contact.pictures) {
        const std::string_view bytes = picture.bytes;
        const auto number = static_cast<std::uint32_t>(std::hash<std::string_view>()(bytes));
        content.emplace_back(rowOf(HostField::picture),
                             decimalText(static_cast<Long>(bytes.size())) + u"-" + hexText(number));
    }
    std::ranges::sort(content);
    content.erase(std::unique(content.begin(), content.end()), content.end());
    return content;
}

ContactContent lacking(const ContactContent& wanted, const ContactContent& there) {
    ContactContent missing;
    std::ranges::set_difference(wanted, there, std::back_inserter(missing));
    return missing;
}

bool contradict(const ContactContent& a, const ContactContent& b) {
    for (const auto& [family, value] : a) {
        if (!isSingle(family) || family == rowOf(HostField::formalName)) continue;
        const auto other = std::ranges::lower_bound(b, family, {}, &ContactContent::value_type::first);
        if (other != b.end() && other->first == family &&
            !std::ranges::binary_search(b, std::pair(family, value)))
            return true;
    }
    return false;
}

bool shareNumber(const ContactContent& a, const ContactContent& b) {
    return std::ranges::any_of(a, [&](const auto& one) {
        return std::ranges::find(numbers, fieldRows()[one.first].code) != std::end(numbers) &&
               std::ranges::binary_search(b, one);
    });
}

std::string labelsOf(const ContactContent& content) {
    std::string labels;
    for (std::size_t i = 0; i < content.size(); ++i)
        if (i == 0 || content[i - 1].first != content[i].first)
            labels += (labels.empty() ? "" : ", ") + toUtf8(fieldRows()[content[i].first].label);
    return labels;
}

Text nameOf(const ContactDraft& contact) {
    std::vector<Text> values(fieldRows().size());
    for (std::size_t i = 0; i < std::min(values.size(), contact.values.size()); ++i)
        if (!contact.values[i].empty()) values[i] = contact.values[i].front();
    return nameOf(values);
}

std::string titleOf(const ContactDraft& contact) {
    if (const Text name = nameOf(contact); !name.empty()) return toUtf8(singleLine(name));
    for (const std::vector<Text>& values : contact.values)
        for (const Text& value : values)
            if (!value.empty()) return toUtf8(singleLine(value));
    return "a contact without a name";
}

}  // namespace ovno2::host
