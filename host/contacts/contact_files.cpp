#include "host/contacts/contact_files.h"

#include <cstdint>

#include "host/contacts/csv_contacts.h"
#include "host/contacts/vcard_reader.h"
#include "host/formats/charset.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/input_file.h"
#include "host/output/output_file.h"

namespace ovno2::host {

namespace {

constexpr const char* standardStream = "-";

std::string formatOf(const ContactFileOptions& wanted) {
    if (!wanted.as.empty()) return wanted.as;
    const std::string extension =
        toUtf8(lowerCase(fromUtf8(console::textOf(console::pathOf(wanted.file).extension()))));
    if (extension == ".vcf" || extension == ".vcard") return "vcf";
    if (extension == ".csv") return "csv";
    return {};
}

bool beginsLikeACard(std::string_view bytes) {
    constexpr std::string_view begin = "BEGIN:VCARD";
    const std::size_t place = std::min(bytes.find_first_not_of(" \t\r\n"), bytes.size());
    return equalsIgnoringCase(fromUtf8(bytes.substr(place, begin.size())), fromUtf8(begin));
}

std::string written(std::span<const ContactDraft> contacts, const ContactFileOptions& wanted) {
    if (formatOf(wanted) == "csv") return writeCsvContacts(contacts);
    std::string cards;
    for (const ContactDraft& contact : contacts)
        cards += writeCard(contact, wanted.version);
    return cards;
}

}  // namespace

ContactFile readContactFile(const ContactFileOptions& wanted) {
    const std::string file = readInputFile(wanted.file);
    const auto bytes = withoutMark(file);
    std::string format = formatOf(wanted);
    if (format.empty()) format = beginsLikeACard(bytes) ? "vcf" : "csv";
    const std::string name = inputName(wanted.file);
    if (format == "csv") {
        CsvContacts read = readCsvContacts(bytes, name);
        return {std::move(read.contacts), std::move(read.problems)};
    }
    CardFile read = readCards(bytes, name);
    return {std::move(read.contacts), std::move(read.problems)};
}

bool takesPictures(const ContactFileOptions& wanted) {
    return formatOf(wanted) != "csv";
}

void writeContactFile(std::span<const ContactDraft> contacts, const ContactFileOptions& wanted) {
    if (wanted.file != standardStream && formatOf(wanted).empty())
        throw CommandFailure{
            wrongUsage,
            "\"" + wanted.file + "\" ends neither in .vcf nor in .csv; --as says what it is to be."};
    OutputFile file(wanted.file, wanted.force);
    file.write(written(contacts, wanted));
    file.finish();
}

// The phone's serial number does not stand in it: files travel. It is the FNV-1a number of that.
Text exportedUid(TextView serial, TextView uid) {
    if (uid.empty()) return {};
    std::uint32_t number = 2166136261;
    for (const char16_t unit : serial)
        number = (number ^ unit) * 16777619;
    return u"ovphone-" + hexText(number) + u"-" + Text(uid);
}

}  // namespace ovno2::host
