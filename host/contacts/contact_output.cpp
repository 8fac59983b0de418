#include "host/contacts/contact_output.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "host/contacts/contact_values.h"
#include "host/contacts/field_table.h"
#include "host/output/json.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

// Nearly no value has a "\\", and that is said quickly.
TextView decoded(TextView value, Text& text) {
    if (!std::memchr(value.data(), '\\', value.size() * sizeof(char16_t))) return value;
    return text = decodedValue(value);
}

void writeSeveral(JsonLine& line, const FieldRow& row, TextView value) {
    const auto shown = [&](TextView part) {
        return row.code == HostField::birthday ? isoDate(part) : Text(part);
    };
    if (!mayHoldSeveral(row, value)) {
        line.key(row.key);
        line.listOf(row.code == HostField::birthday ? TextView(isoDate(value)) : value);
        return;
    }
    bool begun = false;
    forEachPart(row, value, [&](TextView part) {
        if (!begun) {
            line.key(row.key);
            line.StartArray();
            begun = true;
        }
        line.text(shown(part));
    });
    if (begun) line.EndArray();
}

void writeLosses(JsonLine& line, const Contact& contact) {
    const std::vector<Loss> losses = lossesOf(contact);
    if (losses.empty()) return;
    line.key("notes");
    line.StartArray();
    for (const Loss& loss : losses) {
        line.StartObject();
        line.key("fields");
        line.StartArray();
        for (const std::size_t row : loss.rows)
            line.key(fieldRows()[row].key);
        line.EndArray();
        line.member("lost", loss.lost);
        line.EndObject();
    }
    line.EndArray();
}

void writeMember(JsonLine& line, std::string_view name, const Text& value) {
    if (!value.empty()) line.member(name, TextView(value));
}

}  // namespace

void writeContactsAsJson(std::span<const Contact> contacts, bool notes,
                         const std::function<void(std::string_view)>& write) {
    JsonLines lines(write);
    Text text;
    for (const Contact& contact : contacts) {
        JsonLine& line = lines.next();
        line.StartObject();
        forEachValue(contact.values, [&](std::size_t i, TextView value) {
            const FieldRow& row = fieldRows()[i];
            if (row.code == HostField::picture) return;
            value = decoded(value, text);
            if (row.holds == Holds::several)
                writeSeveral(line, row, value);
            else
                line.member(row.key, value);
        });
        if (!contact.pictures.empty()) {
            line.key(fieldRows()[rowOf(HostField::picture)].key);
            line.StartArray();
            for (const Text& picture : contact.pictures)
                line.text(picture);
            line.EndArray();
        }
        writeMember(line, "location", contact.location);
        writeMember(line, "uid", contact.uid);
        if (notes) writeLosses(line, contact);
        line.EndObject();
    }
    lines.end();
}

void writeDraft(JsonLine& line, const ContactDraft& contact) {
    for (std::size_t i = 0; i < fieldRows().size(); ++i) {
        const std::vector<Text>& values = contact.values[i];
        if (values.empty()) continue;
        if (fieldRows()[i].holds == Holds::one) {
            line.member(fieldRows()[i].key, TextView(values.front()));
            continue;
        }
        line.key(fieldRows()[i].key);
        line.StartArray();
        for (const Text& value : values)
            line.text(value);
        line.EndArray();
    }
    writeMember(line, "uid", contact.uid);
}

Table contactsAsTable(std::span<const Contact> contacts) {
    std::vector<std::vector<Text>> records;
    std::vector<std::size_t> filled(fieldRows().size());
    records.reserve(contacts.size());
    for (const Contact& contact : contacts) {
        std::vector<Text> values = valuesOf(contact);
        const Text name = nameOf(values);
        // What already stands in the name column is not said twice.
        for (const Long code : {HostField::firstName, HostField::lastName, HostField::formalName})
            if (Text& value = values[rowOf(code)]; code != HostField::formalName || value == name)
                value.clear();
        for (std::size_t i = 0; i < values.size(); ++i)
            filled[i] += values[i].empty() ? 0 : 1;
        values.push_back(name);
        records.push_back(std::move(values));
    }
    std::vector<std::size_t> columns;
    for (std::size_t i = 0; i < filled.size(); ++i)
        if (filled[i] != 0) columns.push_back(i);
    // Long texts come last, since they would push the others out.
    const std::size_t firstLong = rowOf(HostField::note);
    std::ranges::stable_sort(columns, [&](std::size_t a, std::size_t b) {
        return std::pair(a >= firstLong, filled[b]) < std::pair(b >= firstLong, filled[a]);
    });

    std::vector<Text> headings = {u"Name"};
    for (const std::size_t column : columns)
        headings.emplace_back(fieldRows()[column].label);
    Table table(headings);
    for (std::vector<Text>& values : records) {
        std::vector<Text> cells = {std::move(values.back())};
        for (const std::size_t column : columns)
            cells.push_back(std::move(values[column]));
        table.addRow(std::move(cells));
    }
    return table;
}

std::vector<Loss> lossesOf(const Contact& contact) {
    std::vector<Loss> losses;
    forEachValue(contact.values, [&](std::size_t i, TextView) {
        const char* const lost = fieldRows()[i].lost;
        if (!lost) return;
        auto known =
            std::ranges::find_if(losses, [&](const Loss& loss) { return std::strcmp(loss.lost, lost) == 0; });
        if (known == losses.end()) known = losses.insert(losses.end(), {lost, {}});
        known->rows.push_back(i);
    });
    return losses;
}

}  // namespace ovno2::host
