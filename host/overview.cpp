#include "host/overview.h"

#include <CLI/CLI.hpp>

#include "host/calendar/calendar_output.h"
#include "host/calendar/calendar_store.h"
#include "host/contacts/contact_output.h"
#include "host/contacts/contact_values.h"
#include "host/contacts/phone_book.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/phones/attached_phones.h"
#include "host/phones/phone_output.h"

namespace ovno2::host {

namespace {

// The month in which most happens, so that there is something to see. Gives what is missing.
std::vector<std::string> showMonth(const AttachedPhones& phones, const ListedPhone& phone) {
    try {
        const PhoneCalendars list = readCalendars(phones, phone);
        const std::optional<std::chrono::year_month> month = busiestMonth(list.entries);
        if (month) {
            constexpr std::size_t pageWidth = 120;
            const std::size_t width = console::outputIsTerminal() ? console::terminalWidth() : pageWidth;
            write("\nCalendar of " + titleOf(phone) + ": " + std::to_string(list.entries.size()) +
                  " entries. " + asMonth(*month, occurrencesIn(list.entries, monthPeriod(*month)), width));
        }
        return list.missing;
    } catch (const CommandFailure& failure) {
        remark("ovphone: no calendar: " + failure.message);
        return {};
    }
}

void showOverview(const Context& context) {
    PictureFolder pictures;
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen();
    if (!context.asJson()) {
        write("Attached phones\n\n");
        showPhones(phones.all(), /*asJson=*/false);
    }
    PhoneBook book = readPhoneBook(phones, phone, pictures);
    std::vector<std::string> calendarMissing;
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
        calendarMissing = showMonth(phones, phone);
    }
    phones.requireAllListed();
    requireWhole(book);
    requireWhole(calendarMissing);
}

}  // namespace

void registerOverview(CLI::App& app, Context& context) {
    setAction(app, context, [&context] { showOverview(context); });
    addPhoneCommandOptions(app, context);
}

}  // namespace ovno2::host
