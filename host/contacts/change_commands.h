// The commands of `ovphone contacts` that write: to the phone, or a file of all contacts. Each registers
// itself below `contacts`.
#pragma once

#include "host/command/command.h"
#include "host/contacts/change_report.h"

namespace ovno2::host {

void registerImport(CLI::App& contacts, Context& context);
void registerExport(CLI::App& contacts, Context& context);
void registerAdd(CLI::App& contacts, Context& context);
void registerEdit(CLI::App& contacts, Context& context);
void registerRemove(CLI::App& contacts, Context& context);

// What those have in common that change a phone.
struct ChangeOptions {
    bool dryRun = false;
    bool verbose = false;
    bool acceptsLosses = false;
};
void addChangeOptions(CLI::App& command, Context& context, ChangeOptions& options);

// The phone that is to be changed, and what it has.
struct ChangedPhone {
    explicit ChangedPhone(const Context& context);

    PictureFolder pictures;
    AttachedPhones phones;
    const ListedPhone& phone;
    PhoneBook book;
};

// Carries the changes out, unless it is a trial, and reports on all contacts. Throws CommandFailure when any
// of it failed.
void carryOut(ChangedPhone& changed, std::vector<ContactChange>& changes,
              std::span<const ReportedContact> contacts, const Context& context, const ChangeOptions& wanted);

}  // namespace ovno2::host
