// `ovphone list`
#include <CLI/CLI.hpp>

#include "host/phones/attached_phones.h"
#include "host/phones/commands.h"
#include "host/phones/phone_output.h"

namespace ovno2::host {

void registerList(CLI::App& app, Context& context) {
    CLI::App& list = addCommand(app, "list", "Show the attached phones, one line a connection", context,
                                [&context] { showPhones(AttachedPhones(context).all(), context.asJson()); });
    addCommonOptions(list, context);
}

}  // namespace ovno2::host
