#include "host/contacts/contact_output.h"

#include <cstring>

#include "host/contacts/field_table.h"
#include "host/output/console.h"
#include "host/output/json.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

bool isCollection(Long code) {
    return code == code::categories || code == code::other;
}

Text valueAsText(Long code, const Text& value) {
    if (!isCollection(code)) return value;
    Text list;
    for (const TextView part : splitCollected(code, value))
        list.append(list.empty() ? u"" : u"; ").append(part);
    return list;
}

// What a value shows, in `text` where it is not the value as it stands; empty = it is left out.
TextView shownValue(Long code, TextView value, bool pictures, Text& text) {
    if (code == code::picture) {
        text.clear();
        if (pictures) text = fromUtf8(console::textOf(pathOfModuleText(value)));
        return text;
    }
    // Nearly no value has a "\\", and that is said quickly.
    if (!std::memchr(value.data(), '\\', value.size() * sizeof(char16_t))) return value;
    return text = decodedValue(value);
}

void writeCollected(JsonLine& line, const FieldRow& row, TextView value) {
    const std::vector<TextView> parts = splitCollected(row.code, value);
    if (parts.empty()) return;
    line.key(row.key);
    line.StartArray();
    for (const TextView part : parts)
        line.text(part);
    line.EndArray();
}

Text fullName(const std::vector<Text>& values) {
    const Text& first = values[rowOf(code::firstName)];
    const Text& last = values[rowOf(code::lastName)];
    if (!first.empty() && !last.empty()) return first + u' ' + last;
    if (!first.empty() || !last.empty()) return first + last;
    for (const Long code : {code::formalName, code::nickname, code::company})
        if (const Text& name = values[rowOf(code)]; !name.empty()) return name;
    return {};
}

}  // namespace

void writeContactsAsJson(std::span<const Contact> contacts, bool pictures,
                         const std::function<void(std::string_view)>& write) {
    JsonLines lines(write);
    Text text;
    for (const Contact& contact : contacts) {
        JsonLine& line = lines.next();
        line.StartObject();
        forEachValue(contact.values, [&](std::size_t i, TextView value) {
            const FieldRow& row = fieldRows()[i];
            value = shownValue(row.code, value, pictures, text);
            if (isCollection(row.code))
                writeCollected(line, row, value);
            else if (!value.empty())
                line.member(row.key, value);
        });
        line.member("location", TextView(contact.location));
        line.member("uid", TextView(contact.uid));
        line.EndObject();
    }
    lines.end();
}

Table contactsAsTable(std::span<const Contact> contacts, bool pictures) {
    std::vector<std::vector<Text>> records;
    std::vector<bool> used(fieldRows().size());
    for (const Contact& contact : contacts) {
        std::vector<Text> values(used.size());
        forEachValue(contact.values, [&](std::size_t i, TextView value) {
            Text text;
            values[i] = shownValue(fieldRows()[i].code, value, pictures, text);
        });
        const Text name = fullName(values);
        // What already stands in the name column is not said twice.
        if (values[rowOf(code::formalName)] == name) values[rowOf(code::formalName)].clear();
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = valueAsText(fieldRows()[i].code, values[i]);
            if (!values[i].empty()) used[i] = true;
        }
        values.insert(values.begin(), name);
        records.push_back(std::move(values));
    }
    used[rowOf(code::firstName)] = used[rowOf(code::lastName)] = false;

    std::vector<Text> headings = {u"Name"};
    for (std::size_t i = 0; i < used.size(); ++i)
        if (used[i]) headings.emplace_back(fieldRows()[i].label);
    Table table(headings);
    for (std::vector<Text>& values : records) {
        std::vector<Text> cells = {std::move(values[0])};
        for (std::size_t i = 0; i < used.size(); ++i)
            if (used[i]) cells.push_back(std::move(values[i + 1]));
        table.addRow(std::move(cells));
    }
    return table;
}

}  // namespace ovno2::host
