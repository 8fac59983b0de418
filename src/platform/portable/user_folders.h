// The user's folders on the portable machine: those of the desktop's conventions (XDG), and on drive C, when
// the machine has one, the system's.
#pragma once

#include "platform/portable/machine.h"

namespace ovno2::platform::portable {

// By the number that the module's platform gives each; empty for one that the machine does not have.
Text userFolder(const Machine& machine, Long id);

}  // namespace ovno2::platform::portable
