// `ovphone contacts import` and `export`: the phone book from and to files.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "host/contacts/change_commands.h"
#include "host/contacts/contact_files.h"
#include "host/contacts/contact_import.h"
#include "host/output/command_output.h"
#include "host/output/exit_status.h"

namespace ovno2::host {

namespace {

void importContacts(const Context& context, const ContactFileOptions& fileOptions,
                    const ChangeOptions& wanted) {
    ContactFile file = readContactFile(fileOptions);
    for (const std::string& problem : file.problems)
        note("ovphone: " + problem);
    if (file.contacts.empty()) throw CommandFailure{failed, "\"" + fileOptions.file + "\" holds no contact."};
    ChangedPhone changed(context);
    // A contact that could not be read would come a second time.
    if (!changed.book.missing.empty()) {
        note("ovphone: Nothing was written: what the phone has must be known first.");
        requireWhole(changed.book);
    }
    ContactImport import =
        planImport(std::move(file.contacts), changed.phone, changed.book, changed.pictures);
    const std::vector<ReportedContact>& reported = import.contacts;
    carryOut(changed, import.changes, reported, context, wanted);
    const auto incomplete = std::ranges::count_if(
        reported, [](const ReportedContact& contact) { return !contact.unplaced.empty(); });
    if (incomplete != 0)
        throw CommandFailure{failed,
                             std::to_string(incomplete) + " of " + std::to_string(reported.size()) +
                                 " contacts do not fit as a whole: what is named above has no place."};
    if (!file.problems.empty()) throw CommandFailure{failed, {}};
}

void exportContacts(const Context& context, const ContactFileOptions& wanted) {
    PictureFolder pictures;
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen();
    const PhoneBook book = readPhoneBook(phones, phone, pictures);
    std::vector<ContactDraft> contacts;
    contacts.reserve(book.contacts.size());
    std::size_t leftOut = 0;
    for (const Contact& contact : book.contacts) {
        contacts.push_back(draftOf(contact, pictures));
        contacts.back().uid = exportedUid(phone.serial, contact.uid);
        if (!takesPictures(wanted)) leftOut += contacts.back().pictures.size();
    }
    writeContactFile(contacts, wanted);
    if (wanted.file != "-")
        remark(std::to_string(contacts.size()) + " contacts written to \"" + wanted.file + "\".");
    if (leftOut != 0)
        note("ovphone: " + std::to_string(leftOut) +
             " pictures are not in the file: a table has no place for them. A file that ends in .vcf has.");
    requireWhole(book);
    if (leftOut != 0) throw CommandFailure{failed, {}};
}

void addFileOptions(CLI::App& command, ContactFileOptions& options, const char* description) {
    command.add_option("FILE", options.file, description)->type_name("")->required();
    command.add_option("--as", options.as, "what the file is, whatever its name says")
        ->type_name("vcf|csv")
        ->check(CLI::IsMember({"vcf", "csv"}).description(""));
}

}  // namespace

void registerImport(CLI::App& contacts, Context& context) {
    struct Options : ContactFileOptions, ChangeOptions {};
    const auto options = std::make_shared<Options>();
    CLI::App& command =
        addCommand(contacts, "import", "Put the contacts of a file on the phone; those that are there stay",
                   context, [&context, options] { importContacts(context, *options, *options); });
    addFileOptions(command, *options, "a .vcf or .csv file, or - for standard input");
    addChangeOptions(command, context, *options);
    command.footer(
        R"(A contact of the file that the phone has already gets what is new; nothing that only the phone has goes. The same
file imported again changes nothing.

Examples:
  ovphone contacts import --dry-run book.vcf     what would be done
  ovphone contacts import book.vcf
  ovphone contacts import addresses.csv          a table with headings such as firstName, mobile, email)");
}

void registerExport(CLI::App& contacts, Context& context) {
    const auto options = std::make_shared<ContactFileOptions>();
    CLI::App& command =
        addCommand(contacts, "export", "Write all contacts to a file that other programs read", context,
                   [&context, options] { exportContacts(context, *options); });
    addFileOptions(command, *options, "a .vcf or .csv file, or - for standard output");
    command
        .add_option_function<std::string>(
            "--card-version",
            [options](const std::string& version) {
                options->version = cardVersion(version).value_or(CardVersion::v30);
            },
            "of the cards: 2.1 for old phones, 3.0 (the default), or 4.0")
        ->type_name("2.1|3.0|4.0")
        ->check(CLI::IsMember({"2.1", "3.0", "4.0"}).description(""));
    addPhoneCommandOptions(command, context);
    command.add_flag("-f,--force", options->force, "overwrite a file that is there");
    command.footer(R"(Examples:
  ovphone contacts export book.vcf               cards, with pictures
  ovphone contacts export --card-version 2.1 book.vcf
  ovphone contacts export addresses.csv          a table for spreadsheets
  ovphone contacts export --as vcf - | less)");
}

}  // namespace ovno2::host
