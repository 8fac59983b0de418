// `ovphone contacts` and its commands.
#include <CLI/CLI.hpp>
#include <memory>

#include "host/contacts/change_commands.h"
#include "host/contacts/commands.h"
#include "host/contacts/contact_output.h"
#include "host/contacts/contact_search.h"
#include "host/contacts/contact_values.h"
#include "host/contacts/field_table.h"
#include "host/contacts/phone_book.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/phones/attached_phones.h"

namespace ovno2::host {

namespace {

struct ContactsOptions {
    std::string pictures;            // the folder they go to
    bool force = false;              // over pictures that are there
    bool verbose = false;            // with what the records could not hold
    std::vector<std::string> words;  // a name, or what is looked for
};

constexpr std::size_t pageWidth = 120;  // where there is no terminal

// What `show` shows, in the order of names.
void showCards(const std::vector<Contact>& contacts, const ContactsOptions& wanted) {
    const std::size_t width = console::outputIsTerminal() ? console::terminalWidth() : pageWidth;
    for (std::size_t i = 0; i < contacts.size(); ++i)
        write((i == 0 ? "" : "\n") + asCard(contacts[i], width, wanted.verbose));
}

void showTable(const std::vector<Contact>& contacts, const ContactsOptions& wanted) {
    writeTable(contactsAsTable(contacts), pageWidth, "\"ovphone contacts show\" or --format json");
    if (!wanted.verbose) return;
    std::vector<std::size_t> concerned(fieldRows().size());
    for (const Contact& contact : contacts)
        for (const Loss& loss : lossesOf(contact))
            for (const std::size_t row : loss.rows)
                ++concerned[row];
    write("\nWhat the phone may have had and its records here cannot hold:\n");
    Table losses({u"Field", u"Contacts", u"Lost"});
    for (std::size_t row = 0; row < concerned.size(); ++row)
        if (concerned[row] != 0)
            losses.addRow({fieldRows()[row].label, decimalText(static_cast<Long>(concerned[row])),
                           fromUtf8(fieldRows()[row].lost)});
    writeTable(losses, pageWidth);
}

std::string wordsOf(const ContactsOptions& wanted) {
    std::string text;
    for (const std::string& word : wanted.words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

std::vector<Contact> everyone(const std::vector<Contact>& contacts, const ContactsOptions&) {
    return contacts;
}

std::vector<Contact> named(const std::vector<Contact>& contacts, const ContactsOptions& wanted) {
    const std::string name = wordsOf(wanted);
    if (wanted.words.empty()) return contacts;
    std::vector<Contact> found = contactsNamed(contacts, fromUtf8(name));
    if (!found.empty()) return found;
    std::string message = "No contact is called \"" + name + "\".";
    const std::vector<Text> near = namesNear(contacts, fromUtf8(name), 1);
    message += near.empty() ? " \"ovphone contacts find\" looks into everything that contacts hold."
                            : " Did you mean \"" + toUtf8(near[0]) + "\"?";
    throw CommandFailure{failed, message};
}

std::vector<Contact> holding(const std::vector<Contact>& contacts, const ContactsOptions& wanted) {
    std::vector<Contact> found = contactsHolding(contacts, fromUtf8(wordsOf(wanted)));
    if (found.empty()) throw CommandFailure{failed, "No contact holds \"" + wordsOf(wanted) + "\"."};
    return found;
}

using Choose = std::vector<Contact> (*)(const std::vector<Contact>&, const ContactsOptions&);
using Show = void (*)(const std::vector<Contact>&, const ContactsOptions&);

void run(const Context& context, const ContactsOptions& wanted, Choose choose, Show show) {
    PictureFolder pictures(wanted.pictures, wanted.force);
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen();
    PhoneBook book = readPhoneBook(phones, phone, pictures);
    try {
        if (choose != everyone) book.contacts = choose(book.contacts, wanted);
    } catch (const CommandFailure& failure) {
        // Whether anybody is called so is not known when some are missing.
        note("ovphone: " + failure.message);
        requireWhole(book);
        throw CommandFailure{failed, {}};
    }
    if (context.asJson()) {
        writeContactsAsJson(book.contacts, wanted.verbose, writeData);
    } else if (book.contacts.empty()) {
        if (book.listed == 0) note("The phone book is empty.");
    } else {
        sortByName(book.contacts);
        show(book.contacts, wanted);
    }
    requireWhole(book);
}

}  // namespace

void registerContacts(CLI::App& app, Context& context) {
    const auto options = std::make_shared<ContactsOptions>();
    const auto running = [&context, options](Choose choose, Show show) {
        return [&context, options, choose, show] { run(context, *options, choose, show); };
    };
    const auto addOptions = [&](CLI::App& command) {
        addPhoneCommandOptions(command, context);
        command
            .add_option("--pictures", options->pictures,
                        "write the contacts' pictures to this folder, which is made when it is missing")
            ->type_name("DIR");
        command.add_flag("-f,--force", options->force, "overwrite pictures that are there and differ");
        command.add_flag("-v,--verbose", options->verbose, "say what a record here cannot hold");
    };
    CLI::App& contacts =
        addCommand(app, "contacts",
                   "Show the phone book of a phone, look someone up in it, change it, import and export it",
                   context, running(everyone, showTable));
    contacts.require_subcommand(0, 1);
    addOptions(contacts);
    contacts.footer(R"(Examples:
  ovphone contacts                               everyone, by name, in a table that fits the page
  ovphone contacts --phone 6230i                 ... of another phone
  ovphone contacts show > book.txt               everyone in full
  ovphone contacts --pictures photos --format json > book.json
                                                 everything, for a program)");
    CLI::App& show = addCommand(contacts, "show", "Show one person, or everyone, in full", context,
                                running(named, showCards));
    show.add_option("NAME", options->words, "a name or a part of it (default: everyone)")->type_name("");
    addOptions(show);
    show.footer(R"(Examples:
  ovphone contacts show Anna Müller
  ovphone contacts show muller                   case and accents do not matter
  ovphone contacts show > book.txt               everyone)");
    CLI::App& find = addCommand(contacts, "find", "Find contacts by anything that they hold", context,
                                running(holding, showTable));
    find.add_option("TEXT", options->words, "a part of a name, a number, an address ...")
        ->type_name("")
        ->required();
    addOptions(find);
    find.footer(R"(Examples:
  ovphone contacts find berlin                   in any field; case and accents do not matter
  ovphone contacts find 0171 39                  of numbers only the digits count)");
    for (const auto registerCommand :
         {registerAdd, registerEdit, registerRemove, registerImport, registerExport})
        registerCommand(contacts, context);
}

}  // namespace ovno2::host
