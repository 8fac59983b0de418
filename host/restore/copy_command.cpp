// `ovphone copy`: from one attached phone to another. The first is saved in a private folder, which goes with
// the command; what can be restored from an archive can be copied.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>

#include "host/archive/archiving.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/incoming.h"
#include "host/phones/attached_phones.h"
#include "host/restore/commands.h"
#include "host/restore/restoration.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

struct CopyOptions : RestoreCommandOptions {
    std::string from, to;
};

// One of the attached phones, by a name that no other has. The module works on one phone at a time, so each
// is opened by itself later.
struct NamedPhone {
    NamedPhone(const Context& context, const std::string& name) : own(context) {
        own.phone = name;
        const AttachedPhones phones(own);
        const ListedPhone& phone = phones.chosen(Purpose::change);
        title = titleOf(phone);
        if (!phone.serial.empty()) own.phone = toUtf8(phone.serial);
    }

    Context own;
    std::string title;
};

void copyPhone(const Context& context, const CopyOptions& wanted) {
    const NamedPhone from(context, wanted.from), to(context, wanted.to);
    if (from.own.phone == to.own.phone)
        throw CommandFailure{wrongUsage, "--from and --to name the same phone, " + from.title + "."};
    const Incoming workplace(fs::temp_directory_path());
    const std::string folder = console::textOf(workplace.path() / "phone");
    remark("(" + from.title + " is read first, into a private folder of this computer.)");
    std::vector<std::string> only = wanted.only;
    if (only.empty()) only = {"contacts", "calendar", "notes", "files"};
    if (wanted.only.empty() && wanted.messages) only.emplace_back("messages");
    const std::vector<std::string> missing = savePhone(from.own, {.folder = folder, .only = only});
    restore(to.own, {folder, from.title, missing}, wanted);
}

}  // namespace

void registerCopy(CLI::App& app, Context& context) {
    const auto options = std::make_shared<CopyOptions>();
    CLI::App& command = addCommand(app, "copy", "Carry what one phone holds to another; what is there stays",
                                   context, [&context, options] { copyPhone(context, *options); });
    command
        .add_option("--from", options->from,
                    "the phone to read: model, name or serial number, or a part of it")
        ->type_name("PHONE")
        ->required();
    command.add_option("--to", options->to, "the phone to write to")->type_name("PHONE")->required();
    addRestoreOptions(command, context, *options);
    command.footer(
        R"(Both phones are attached. The rules are those of "ovphone restore": nothing is taken away on the second phone, and
what it has in another form stays, unless --force is given. The first phone is only read.

Examples:
  ovphone copy --from N95 --to 6230i --dry-run    what is new there, equal, different, impossible
  ovphone copy --from N95 --to 6230i
  ovphone copy --from N95 --to E65 --only contacts)");
}

}  // namespace ovno2::host
