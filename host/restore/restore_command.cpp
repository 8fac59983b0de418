// `ovphone restore`: what was saved goes back to a phone.
#include <CLI/CLI.hpp>
#include <memory>

#include "host/restore/commands.h"
#include "host/restore/restoration.h"

namespace ovno2::host {

void registerRestore(CLI::App& app, Context& context) {
    struct Options : RestoreCommandOptions {
        std::string source;
    };
    const auto options = std::make_shared<Options>();
    CLI::App& command =
        addCommand(app, "restore", "Put what was saved on a phone; what is there stays", context,
                   [&context, options] { restore(context, options->source, options->source, *options); });
    command
        .add_option("SOURCE", options->source, "an archive, a .vcf or .ics file, or a folder with such files")
        ->type_name("")
        ->required();
    addRestoreOptions(command, context, *options);
    addPhoneOption(command, context);
    command.footer(
        R"(What the phone has already is known by its content and skipped; what it has in another form stays as it is and is
named, unless --force is given. Nothing that only the phone has is ever taken away. Of a damaged archive what is damaged
is named, and the rest is restored.

Examples:
  ovphone restore --dry-run nokia-n95             what is new, equal, different, impossible
  ovphone restore --phone 6230i nokia-n95
  ovphone restore --only contacts,calendar nokia-n95
  ovphone restore book.vcf                        a single file)");
}

}  // namespace ovno2::host
