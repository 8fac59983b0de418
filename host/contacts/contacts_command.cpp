// `ovphone contacts`
#include <CLI/CLI.hpp>

#include "host/contacts/commands.h"
#include "host/contacts/contact_output.h"
#include "host/contacts/phone_book.h"
#include "host/output/command_output.h"
#include "host/phones/attached_phones.h"

namespace ovno2::host {

namespace {

void showContacts(const Context& context, const std::string& pictures) {
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen();
    const std::vector<Contact> book = readPhoneBook(phones.driver(), phone, PictureFolder(pictures));
    if (context.asJson())
        writeContactsAsJson(book, !pictures.empty(), write);
    else if (book.empty())
        note("The phone book is empty.");
    else
        writeTable(contactsAsTable(book, !pictures.empty()));
}

}  // namespace

void registerContacts(CLI::App& app, Context& context) {
    const auto pictures = std::make_shared<std::string>();
    CLI::App& contacts = addCommand(app, "contacts", "Show the phone book of a phone", context,
                                    [&context, pictures] { showContacts(context, *pictures); });
    addCommonOptions(contacts, context);
    addPhoneOption(contacts, context);
    contacts
        .add_option("--pictures", *pictures,
                    "write the contacts' pictures to this folder, which is made when it is missing")
        ->type_name("DIR");
}

}  // namespace ovno2::host
