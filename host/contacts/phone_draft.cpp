#include "host/contacts/phone_draft.h"

#include <fstream>
#include <iterator>

#include "host/contacts/field_families.h"
#include "host/output/console.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

constexpr Long codeColumn = 4;

// What kind of image begins like this.
std::string extensionOf(std::string_view bytes, const fs::path& file) {
    using namespace std::string_view_literals;
    if (bytes.starts_with("\xFF\xD8\xFF"sv)) return "jpg";
    if (bytes.starts_with("\x89PNG"sv)) return "png";
    if (bytes.starts_with("GIF8"sv)) return "gif";
    if (bytes.starts_with("BM"sv)) return "bmp";
    const std::string named = console::textOf(file.extension());
    return named.empty() ? named : named.substr(1);
}

// The entry of one value: a tab would end it.
Text entryOf(const FieldRow& row, const Text& value) {
    if (row.code == HostField::birthday) return birthdayText(value);
    Text entry = value.find(u'\t') == Text::npos ? value : replaceAll(value, u"\t", u"\\t");
    std::ranges::replace(entry, u'\0', u' ');
    return entry;
}

// The phone's categories are written as one entry, at least `count` of them.
Text categoriesOf(const std::vector<Text>& values, std::size_t count) {
    Text entry;
    for (std::size_t i = 0; i < std::max(values.size(), count); ++i)
        entry.append(i == 0 ? u"" : u";")
            .append(i < values.size() ? entryOf(fieldRows()[0], values[i]) : Text());
    return entry;
}

bool isAddress(std::size_t row) {
    return writtenTogether(row).size() == addressParts;
}

// Written whether it changes or not: the driver writes names and birthdays anew each time, and takes tables
// without towns for those of old hosts, which do not keep addresses apart.
bool isAlwaysWritten(const FieldRow& row) {
    return row.code == HostField::formalName || row.code == HostField::birthday ||
           row.code == HostField::homeTown || row.code == HostField::workTown;
}

bool isWritten(const FieldRow& row) {
    return row.code != HostField::other && row.code != HostField::picture;
}

bool differTogether(const ContactDraft& before, const ContactDraft& after, std::size_t row) {
    return std::ranges::any_of(writtenTogether(row),
                               [&](std::size_t one) { return before.values[one] != after.values[one]; });
}

ContactDraft emptyDraft() {
    ContactDraft contact;
    contact.values.resize(fieldRows().size());
    return contact;
}

std::vector<Text> valuesTogether(const ContactDraft& contact, std::size_t row) {
    std::vector<Text> values;
    for (const std::size_t one : writtenTogether(row))
        std::ranges::copy(contact.values[one], std::back_inserter(values));
    return values;
}

// The values of a row, `count` of them at least: empty ones empty what the phone has there.
template <class Rows>
void addRow(Rows& rows, std::size_t i, const std::vector<Text>& values, std::size_t count) {
    const FieldRow& row = fieldRows()[i];
    if (row.code == HostField::categories) {
        if (std::max(values.size(), count) != 0) rows.emplace_back(row.code, categoriesOf(values, count));
        return;
    }
    for (std::size_t n = 0; n < std::max(values.size(), count); ++n)
        rows.emplace_back(row.code, n < values.size() ? entryOf(row, values[n]) : Text());
}

// How many addresses of one kind there are.
std::size_t addressCount(const ContactDraft& contact, std::size_t row) {
    std::size_t count = 0;
    for (const std::size_t part : writtenTogether(row))
        count = std::max(count, contact.values[part].size());
    return count;
}

}  // namespace

// All addresses as general ones, in the order in which old software has handed them out.
void DraftWriter::addAddresses(Rows& rows, const ContactDraft& before, const ContactDraft& after) const {
    const auto together = [](const ContactDraft& contact) {
        std::array<std::vector<Text>, addressParts> all;
        for (auto kind = addressKinds().rbegin(); kind != addressKinds().rend(); ++kind) {
            const std::size_t count = addressCount(contact, kind->front());
            for (std::size_t part = 0; part < addressParts; ++part) {
                std::vector<Text> values = contact.values[(*kind)[part]];
                values.resize(count);
                std::ranges::move(values, std::back_inserter(all[part]));
            }
        }
        return all;
    };
    const auto old = together(before), wanted = together(after);
    if (old == wanted) return;
    for (std::size_t part = 0; part < addressParts; ++part)
        addRow(rows, addressKinds().back()[part], wanted[part], old[part].size());
}

ContactDraft draftOf(const Contact& contact, const PictureFolder& pictures) {
    return draftOf(contact, pictures.filesOf(contact));
}

ContactDraft draftOf(const Contact& contact, std::span<const fs::path> pictures) {
    ContactDraft draft;
    draft.values.resize(fieldRows().size());
    forEachValue(contact.values, [&](std::size_t i, TextView value) {
        const FieldRow& row = fieldRows()[i];
        if (row.code == HostField::picture) return;
        const bool hasTab = value.find(u'\\') != TextView::npos;
        const Text decoded = hasTab ? decodedValue(value) : Text();
        forEachPart(row, hasTab ? TextView(decoded) : value, [&](TextView part) {
            draft.values[i].push_back(row.code == HostField::birthday ? isoDate(part) : Text(part));
        });
    });
    for (const fs::path& file : pictures) {
        std::ifstream stream(file, std::ios::binary);
        std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        if (bytes.empty()) continue;
        std::string extension = extensionOf(bytes, file);
        draft.pictures.push_back({std::move(bytes), std::move(extension)});
    }
    draft.uid = contact.uid;
    return draft;
}

DraftWriter::DraftWriter(const std::string& folder, bool isOldSoftware)
    : picture_(console::pathOf(folder) / "picture-for-phone"), isOldSoftware_(isOldSoftware) {}

DraftWriter::~DraftWriter() {
    std::error_code ignored;
    fs::remove(picture_, ignored);
}

Text DraftWriter::pathOfPicture(const ContactDraft& contact) {
    if (contact.pictures.empty()) return {};
    const std::string& bytes = contact.pictures.front().bytes;
    std::ofstream stream(picture_, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream)
        throw PictureNotWritten{"Its picture could not be written to a temporary file. Is the disk full?"};
    return fromUtf8(console::textOf(picture_));
}

// Row 0 is a heading's, as in the table that contacts are read with.
WrittenContact DraftWriter::finished(const Rows& rows) {
    std::vector<Long> codes;
    codes.reserve(rows.size());
    Text values;
    for (const auto& [code, value] : rows) {
        codes.push_back(code);
        values.append(u"\t").append(value);
    }
    auto known = tables_.find(codes);
    if (known == tables_.end()) {
        std::vector<Text> cells{u"Code"};
        for (const Long code : codes)
            cells.push_back(decimalText(code));
        const std::size_t count = cells.size();
        known = tables_.emplace(std::move(codes), TextTable(std::move(cells), count, 1, codeColumn)).first;
    }
    return {known->second, std::move(values)};
}

WrittenContact DraftWriter::added(const ContactDraft& contact) {
    Rows rows;
    for (std::size_t i = 0; i < fieldRows().size(); ++i) {
        const FieldRow& row = fieldRows()[i];
        if (isAddress(i) && isOldSoftware_) continue;
        const std::size_t fewest = isAddress(i) ? addressCount(contact, i) : 0;
        if (isWritten(row))
            addRow(rows, i, contact.values[i],
                   isAlwaysWritten(row) ? std::max<std::size_t>(fewest, 1) : fewest);
    }
    if (isOldSoftware_) addAddresses(rows, emptyDraft(), contact);
    if (!contact.pictures.empty()) rows.emplace_back(HostField::picture, pathOfPicture(contact));
    return finished(rows);
}

WrittenContact DraftWriter::changed(const ContactDraft& before, const ContactDraft& after, bool gathers) {
    Rows rows;
    for (std::size_t i = 0; i < fieldRows().size(); ++i) {
        const FieldRow& row = fieldRows()[i];
        if (isAddress(i) && isOldSoftware_) continue;
        const bool differs = differTogether(before, after, i);
        if (!isWritten(row) || (!differs && !isAlwaysWritten(row))) continue;
        std::size_t fewest = std::max<std::size_t>(before.values[i].size(), isAlwaysWritten(row) ? 1 : 0);
        std::vector<Text> values = after.values[i];
        if (differs && isAddress(i)) {
            fewest = std::max(addressCount(before, i), addressCount(after, i));
        } else if (differs && gathers && writtenTogether(i).size() > 1) {
            fewest = valuesTogether(before, i).size();
            values = i == writtenTogether(i).front() ? valuesTogether(after, i) : std::vector<Text>();
        }
        addRow(rows, i, values, fewest);
    }
    if (isOldSoftware_) addAddresses(rows, before, after);
    const bool pictureStays = std::ranges::equal(
        before.pictures, after.pictures, {}, &ContactDraft::Picture::bytes, &ContactDraft::Picture::bytes);
    if (!pictureStays) rows.emplace_back(HostField::picture, pathOfPicture(after));
    return finished(rows);
}

}  // namespace ovno2::host
