#include "host/overview.h"

#include <CLI/CLI.hpp>

#include "host/contacts/contact_output.h"
#include "host/contacts/contact_values.h"
#include "host/contacts/phone_book.h"
#include "host/output/command_output.h"
#include "host/phones/attached_phones.h"
#include "host/phones/phone_output.h"

namespace ovno2::host {

namespace {

void showOverview(const Context& context) {
    PictureFolder pictures;
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen();
    if (!context.asJson()) {
        write("Attached phones\n\n");
        showPhones(phones.all(), /*asJson=*/false);
    }
    PhoneBook book = readPhoneBook(phones, phone, pictures);
    if (context.asJson()) {
        write("{\"phones\": " + phonesAsJson(phones.all()) +
              ",\n\"contactsListed\": " + std::to_string(book.listed) + ",\n\"contacts\": ");
        writeContactsAsJson(book.contacts, /*notes=*/false, writeData);
        write("}\n");
    } else {
        write("\nPhone book of " + titleOf(phone) + ": " + std::to_string(book.contacts.size()) +
              " contacts\n\n");
        sortByName(book.contacts);
        constexpr std::size_t pageWidth = 120;
        if (!book.contacts.empty())
            writeTable(contactsAsTable(book.contacts), pageWidth,
                       "\"ovphone contacts show\" or --format json");
    }
    phones.requireAllListed();
    requireWhole(book);
}

}  // namespace

void registerOverview(CLI::App& app, Context& context) {
    setAction(app, context, [&context] { showOverview(context); });
    addCommonOptions(app, context);
    addPhoneOption(app, context);
    addQuietOption(app);
}

}  // namespace ovno2::host
