#include "host/files/files_output.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "host/files/transfer_progress.h"
#include "host/output/display_width.h"
#include "host/output/json.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

std::string isoTime(std::chrono::sys_seconds time) {
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(time - day);
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text.data();
}

// What an object says of an entry itself.
template <class Json>
void writeMembers(Json& json, const PhoneEntry& entry) {
    json.member("path", entry.path);
    json.member("name", entry.name);
    json.member("kind", entry.isDrive() ? "drive" : entry.isFolder ? "folder" : "file");
    if (!entry.label.empty()) json.member("label", entry.label);
    if (!entry.isFolder) json.member("size", entry.size);
    if (entry.changed) json.member("changed", isoTime(*entry.changed).c_str());
    if (entry.isReadOnly) json.member("readOnly", true);
    if (entry.isSpecial) json.member("special", true);
}

Text notesOn(const PhoneEntry& entry) {
    Text notes = entry.label;
    if (entry.isReadOnly) notes += notes.empty() ? u"read-only" : u", read-only";
    if (entry.isSpecial) notes += notes.empty() ? u"system" : u", system";
    return notes;
}

std::string counted(std::size_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string titleOf(const PhoneFiles& phone, const PhoneEntry& top) {
    std::string title = top.isPhone() ? phone.phoneTitle() : toUtf8(singleLine(top.path));
    if (!top.label.empty()) title += " (" + toUtf8(singleLine(top.label)) + ")";
    return title;
}

}  // namespace

void writeEntry(JsonLine& line, const PhoneEntry& entry) {
    writeMembers(line, entry);
}

std::string entriesAsJson(std::span<const PhoneEntry> entries) {
    std::string text;
    JsonLines lines([&](std::string_view piece) { text += piece; });
    for (const PhoneEntry& entry : entries) {
        JsonLine& line = lines.next();
        line.StartObject();
        writeMembers(line, entry);
        line.EndObject();
    }
    lines.end();
    return text;
}

Table entriesAsTable(std::span<const PhoneEntry> entries, const Text& namedFrom, bool wholePaths) {
    std::size_t digits = 0;
    for (const PhoneEntry& entry : entries)
        digits = std::max(digits, std::to_string(entry.size).size());
    Table table({u"Name", Text(digits > 4 ? digits - 4 : 0, u' ') + u"Size", u"Changed", u"Notes"});
    digits = std::max<std::size_t>(digits, 4);
    for (const PhoneEntry& entry : entries) {
        Text name = entry.path;
        if (!wholePaths && !namedFrom.empty()) name.erase(0, namedFrom.size() + 1);
        const Text size = entry.isFolder ? Text() : fromUtf8(std::to_string(entry.size));
        table.addRow({entry.isFolder && !entry.isDrive() ? name + u"/" : name,
                      entry.isFolder ? Text() : Text(digits - size.size(), u' ') + size, entry.changedText,
                      notesOn(entry)});
    }
    return table;
}

std::string treeAsText(const PhoneFiles& phone, const PhoneEntry& top) {
    std::string text = titleOf(phone, top) + "\n";
    std::vector<bool> goesOn;  // whether a line leads on to another entry, by depth
    std::size_t folders = 0, files = 0;
    std::uint64_t bytes = top.size;
    if (!top.isFolder) return text;
    phone.walk(top, [&](const PhoneEntry& entry, std::size_t depth, bool isLast) {
        goesOn.resize(depth + 1);
        goesOn[depth] = !isLast;
        for (std::size_t i = 0; i < depth; ++i)
            text += goesOn[i] ? "│   " : "    ";
        text += (isLast ? "└── " : "├── ") + toUtf8(singleLine(entry.name));
        if (!entry.label.empty()) text += " (" + toUtf8(singleLine(entry.label)) + ")";
        if (!entry.isFolder) text += "  " + sizeText(entry.size);
        text += "\n";
        entry.isFolder ? ++folders : ++files;
        bytes += entry.size;
    });
    return text + "\n" + counted(folders, "folder", "folders") + ", " + counted(files, "file", "files") +
           ", " + sizeText(bytes) + "\n";
}

std::string treeAsJson(const PhoneFiles& phone, const PhoneEntry& top) {
    JsonDocument tree;
    std::size_t open = 0;  // folders that are not complete
    const auto begin = [&](const PhoneEntry& entry) {
        tree.StartObject();
        if (entry.isPhone())
            tree.member("phone", phone.phoneTitle());
        else
            writeMembers(tree, entry);
        if (!entry.isFolder) {
            tree.EndObject();
            return;
        }
        tree.key("entries");
        tree.StartArray();
        ++open;
    };
    const auto closeTo = [&](std::size_t depth) {
        for (; open > depth; --open) {
            tree.EndArray();
            tree.EndObject();
        }
    };
    begin(top);
    if (top.isFolder)
        phone.walk(top, [&](const PhoneEntry& entry, std::size_t depth, bool) {
            closeTo(depth + 1);
            begin(entry);
        });
    closeTo(0);
    return tree.finished();
}

}  // namespace ovno2::host
