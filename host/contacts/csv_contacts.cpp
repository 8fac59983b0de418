#include "host/contacts/csv_contacts.h"

#include <charconv>
#include <optional>

#include "host/contacts/field_names.h"
#include "host/contacts/field_table.h"
#include "host/formats/charset.h"
#include "host/formats/csv.h"

namespace ovno2::host {

namespace {

constexpr std::string_view uidHeading = "uid";
constexpr char countMark = '#';

struct Column {
    std::string heading;
    std::optional<std::size_t> row;  // none = no field's
    bool isUid = false;
};

// "mobile2#3" is the third value of the row "mobile2".
Column columnOf(const std::string& heading) {
    std::string name = heading;
    if (const std::size_t place = name.rfind(countMark); place != std::string::npos) {
        int number = 0;
        const char* const end = name.data() + name.size();
        if (std::from_chars(name.data() + place + 1, end, number).ptr == end && number > 0)
            name.resize(place);
    }
    Column column{heading, rowNamed(name), heading == uidHeading};
    if (column.row && fieldRows()[*column.row].code == HostField::picture) column.row.reset();
    return column;
}

Text trimmed(TextView text) {
    const auto isBlank = [](char16_t unit) { return unit <= u' '; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return Text(text);
}

}  // namespace

CsvContacts readCsvContacts(std::string_view bytes, std::string_view file) {
    CsvContacts read;
    CsvReader reader(bytes);
    std::vector<std::string> values;
    const auto problem = [&](const std::string& what) {
        read.problems.push_back(std::string(file) + ":" + std::to_string(reader.line()) + ": " + what);
    };
    if (!reader.next(values)) return read;
    std::vector<Column> columns;
    bool isAnyKnown = false;
    for (const std::string& heading : values) {
        columns.push_back(columnOf(heading));
        isAnyKnown |= columns.back().row.has_value() || columns.back().isUid;
    }
    if (!isAnyKnown) {
        problem("none of the headings is a field's, such as \"firstName\" or \"mobile\".");
        return read;
    }
    while (reader.next(values)) {
        if (reader.isUnclosed()) {
            problem("a quote is opened here and never closed; what follows is not read.");
            break;
        }
        ContactDraft contact;
        contact.values.resize(fieldRows().size());
        bool isEmpty = true;
        for (std::size_t i = 0; i < values.size(); ++i) {
            const Text value = trimmed(fromUnknownCharset(values[i]));
            if (value.empty()) continue;
            isEmpty = false;
            if (i >= columns.size()) {
                problem("more values than headings; \"" + toUtf8(value) + "\" is left out.");
            } else if (const Column& column = columns[i]; column.isUid) {
                contact.uid = value;
            } else if (!column.row) {
                contact.unplaced.push_back(column.heading + ": " + toUtf8(value));
            } else if (std::vector<Text>& row = contact.values[*column.row];
                       fieldRows()[*column.row].holds == Holds::one && !row.empty()) {
                contact.unplaced.push_back(column.heading + ": a second value, " + toUtf8(value));
            } else {
                row.push_back(value);
            }
        }
        if (!isEmpty) read.contacts.push_back(std::move(contact));
    }
    return read;
}

std::string writeCsvContacts(std::span<const ContactDraft> contacts) {
    std::vector<std::size_t> counts(fieldRows().size());
    for (const ContactDraft& contact : contacts)
        for (std::size_t row = 0; row < counts.size(); ++row)
            counts[row] = std::max(counts[row], contact.values[row].size());
    std::string text = "\xEF\xBB\xBF";
    std::vector<std::string> values;
    for (std::size_t row = 0; row < counts.size(); ++row)
        for (std::size_t n = 0; n < counts[row]; ++n)
            values.push_back(std::string(fieldRows()[row].key) +
                             (n == 0 ? "" : countMark + std::to_string(n + 1)));
    values.emplace_back(uidHeading);
    addCsvRecord(text, values);
    for (const ContactDraft& contact : contacts) {
        values.clear();
        for (std::size_t row = 0; row < counts.size(); ++row)
            for (std::size_t n = 0; n < counts[row]; ++n)
                values.push_back(n < contact.values[row].size() ? toUtf8(contact.values[row][n])
                                                                : std::string());
        values.push_back(toUtf8(contact.uid));
        addCsvRecord(text, values);
    }
    return text;
}

}  // namespace ovno2::host
