#include "host/contacts/change_commands.h"

#include <CLI/CLI.hpp>

#include "host/contacts/field_families.h"
#include "host/output/command_output.h"
#include "host/output/exit_status.h"

namespace ovno2::host {

namespace {

// What an address on the phone may have and its record here does not is lost when the address is written.
void nameWhatIsLost(std::span<const ContactChange> changes) {
    for (const ContactChange& change : changes) {
        if (change.kind != ContactChange::Kind::change) continue;
        for (const AddressRows& kind : addressKinds()) {
            const auto has = [&](std::size_t row) { return !change.before.values[row].empty(); };
            const auto differs = [&](std::size_t row) {
                return change.before.values[row] != change.after.values[row];
            };
            if (std::ranges::any_of(kind, has) && std::ranges::any_of(kind, differs))
                remark(
                    "ovphone: " + change.title +
                    ": the address is written anew; a post box or an addition that the phone may have in it "
                    "is lost.");
        }
    }
}

}  // namespace

void addChangeOptions(CLI::App& command, Context& context, ChangeOptions& options) {
    addPhoneCommandOptions(command, context);
    command.add_flag("-n,--dry-run", options.dryRun, "only say what would be done");
    command.add_flag("-v,--verbose", options.verbose, "name every contact");
    command.add_flag("--accept-losses", options.acceptsLosses,
                     "change a contact although the phone's old software drops its notes and categories");
}

ChangedPhone::ChangedPhone(const Context& context)
    : phones(context), phone(phones.chosen(Purpose::change)), book(readPhoneBook(phones, phone, pictures)) {}

void carryOut(ChangedPhone& changed, std::vector<ContactChange>& changes,
              std::span<const ReportedContact> contacts, const Context& context,
              const ChangeOptions& wanted) {
    const ReportOptions reported{context.asJson(), wanted.dryRun, wanted.verbose};
    nameWhatIsLost(changes);
    if (!wanted.dryRun) {
        try {
            ContactWriting(changed.phones, changed.phone, changed.pictures, changed.book,
                           {.acceptsLosses = wanted.acceptsLosses})
                .carryOut(changes);
        } catch (const CommandFailure& failure) {
            if (!context.asJson()) throw;
            for (ContactChange& change : changes)
                if (change.isDone()) change.failure = failure.message;
            reportChanges(contacts, changes, reported);
            throw;
        }
    }
    reportChanges(contacts, changes, reported);
    if (std::ranges::any_of(changes, [](const ContactChange& change) { return !change.isDone(); }))
        throw CommandFailure{failed, {}};
}

}  // namespace ovno2::host
