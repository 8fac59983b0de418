// The commands that find phones with Bluetooth and make them known to this computer.
#pragma once

#include "host/command/command.h"

namespace ovno2::host {

void registerBluetooth(CLI::App& app, Context& context);

}  // namespace ovno2::host
