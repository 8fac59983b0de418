#include "host/contacts/contact_output.h"

#include <rapidjson/writer.h>

#include "host/contacts/field_table.h"
#include "host/output/console.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

bool isCollection(Long code) {
    return code == code::categories || code == code::other;
}

Text valueAsText(Long code, const Text& value) {
    if (!isCollection(code)) return value;
    Text list;
    for (const Text& part : splitCollected(code, value))
        list += (list.empty() ? u"" : u"; ") + part;
    return list;
}

// What a value shows, in `text` where it is not the value as it stands; empty = it is left out.
TextView shownValue(Long code, TextView value, bool pictures, Text& text) {
    if (code != code::picture) {
        if (value.find(u"\\t") == TextView::npos) return value;
        text = decodedValue(code, value);
    } else {
        text.clear();
        if (pictures && !value.empty())
            text = fromUtf8(console::textOf(pathOfModuleText(decodedValue(code, value))));
    }
    return text;
}

// Writes one contact after the other.
class ContactWriter {
  public:
    ContactWriter(bool pictures, const std::function<void(std::string_view)>& write)
        : pictures_(pictures), write_(write) {}

    void add(const Contact& contact) {
        writer_.Reset(output_);
        writer_.StartObject();
        const std::vector<TextView> values = splitValues(contact.values);
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (values[i].empty()) continue;
            const FieldRow& row = fieldRows()[i];
            const TextView text = shownValue(row.code, values[i], pictures_, text_);
            if (isCollection(row.code))
                member(row.key, splitCollected(row.code, text));
            else if (!text.empty())
                member(row.key, text);
        }
        member("location", contact.location);
        member("uid", contact.uid);
        writer_.EndObject();
    }
    void add(std::string_view text) {
        constexpr std::size_t pieceSize = 65536;
        if (output_.GetSize() >= pieceSize) flush();
        std::copy(text.begin(), text.end(), output_.Push(text.size()));
    }
    void flush() {
        write_({output_.GetString(), output_.GetSize()});
        output_.Clear();
    }

  private:
    void value(TextView text) {
        bytes_.clear();
        appendUtf8(bytes_, text);
        writer_.String(bytes_.data(), static_cast<rapidjson::SizeType>(bytes_.size()));
    }
    void member(const char* key, TextView text) {
        writer_.Key(key);
        value(text);
    }
    void member(const char* key, const std::vector<Text>& list) {
        if (list.empty()) return;
        writer_.Key(key);
        writer_.StartArray();
        for (const Text& part : list)
            value(part);
        writer_.EndArray();
    }

    const bool pictures_;
    const std::function<void(std::string_view)>& write_;
    rapidjson::StringBuffer output_;
    rapidjson::Writer<rapidjson::StringBuffer> writer_;
    Text text_;
    std::string bytes_;
};

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
    ContactWriter writer(pictures, write);
    writer.add("[");
    for (const Contact& contact : contacts) {
        writer.add(&contact == contacts.data() ? "\n" : ",\n");
        writer.add(contact);
    }
    writer.add(contacts.empty() ? "]\n" : "\n]\n");
    writer.flush();
}

Table contactsAsTable(std::span<const Contact> contacts, bool pictures) {
    std::vector<std::vector<Text>> records;
    std::vector<bool> used(fieldRows().size());
    for (const Contact& contact : contacts) {
        std::vector<Text> values;
        values.reserve(used.size() + 1);
        Text text;
        for (const TextView value : splitValues(contact.values))
            values.emplace_back(shownValue(fieldRows()[values.size()].code, value, pictures, text));
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
