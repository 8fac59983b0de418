// `ovphone list`
#include <CLI/CLI.hpp>

#include "host/phones/attached_phones.h"
#include "host/phones/commands.h"
#include "host/phones/phone_output.h"

namespace ovno2::host {

void registerList(CLI::App& app, Context& context) {
    CLI::App& list =
        addCommand(app, "list", "Show the attached phones, one line a connection", context, [&context] {
            const AttachedPhones phones(context);
            showPhones(phones.all(), context.asJson());
            phones.requireAllListed();
        });
    list.footer(R"(Examples:
  ovphone list
  ovphone list --format json                     for a program)");
    addCommonOptions(list, context);
}

}  // namespace ovno2::host
