// The commands on phone books.
#pragma once

#include "host/command/command.h"

namespace ovno2::host {

void registerContacts(CLI::App& app, Context& context);

}  // namespace ovno2::host
