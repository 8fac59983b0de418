// Programs and documents opened through the shell.
//
// Keeps no state of its own. Nothing here throws.
#pragma once

#include "base/types.h"

namespace ovno2::ShellExecute {

inline constexpr Long judgeOutcome = 1;  // option bit

// Opens `file` with `parameters` by `verb` (empty = "open") and the platform's window show value `show`.
// Returns the shell's value: 33 or more started, 0 to 32 failed. With `judgeOutcome` it returns 1 when the
// file was opened or its program runs now and did not before; -5 when the user refused the elevation that
// "runas" asks for; otherwise -1, after a last try through the command interpreter.
Long ShellEx(TextView file, TextView parameters, Long show, TextView verb, Long options);

}  // namespace ovno2::ShellExecute
