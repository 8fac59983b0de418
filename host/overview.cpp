#include "host/overview.h"

#include <CLI/CLI.hpp>

#include "host/contacts/contact_output.h"
#include "host/contacts/phone_book.h"
#include "host/output/command_output.h"
#include "host/phones/attached_phones.h"
#include "host/phones/phone_output.h"

namespace ovno2::host {

namespace {

void showOverview(const Context& context) {
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen();
    if (!context.asJson()) {
        write("Attached phones\n\n");
        showPhones(phones.all(), /*asJson=*/false);
    }
    const std::vector<Contact> book = readPhoneBook(phones.driver(), phone, PictureFolder());
    if (context.asJson()) {
        write("{\"phones\": " + phonesAsJson(phones.all()) + ",\n\"contacts\": ");
        writeContactsAsJson(book, /*pictures=*/false, write);
        write("}\n");
        return;
    }
    write("\nPhone book of " + titleOf(phone) + ": " + std::to_string(book.size()) + " contacts\n\n");
    constexpr std::size_t pageWidth = 120;
    if (!book.empty())
        writeTable(contactsAsTable(book, /*pictures=*/false), pageWidth,
                   "\"ovphone contacts\" into a file, or --format json,");
}

}  // namespace

void registerOverview(CLI::App& app, Context& context) {
    setAction(app, context, [&context] { showOverview(context); });
    addCommonOptions(app, context);
    addPhoneOption(app, context);
}

}  // namespace ovno2::host
