// Console commands run with their output captured.
//
// The last command and its output stay on the thread for a repeat. Contact and calendar reading end the
// vendor's service through it. Nothing here throws.
#pragma once

#include "base/types.h"

namespace ovno2::CaptureDos {

// Runs `command` in a hidden window and returns what it wrote to its standard output and error: as text of
// the ANSI code page, or of UTF-16 when the second byte shows it, with the console code page's umlauts
// repaired. Reads until the command closes its output or `timeoutSeconds` have passed, whichever is first;
// 0 takes only what is there at once, and a command still running after that is left alone. An empty
// `command` repeats the last one. Empty when nothing was written, the command could not be started, or
// `doNotWait` is set.
Text ExecuteCommand(TextView command, bool doNotWait, Long timeoutSeconds);

}  // namespace ovno2::CaptureDos
