// The viewer's window: a real one on Windows, natively an endpoint whose lines go to standard output.
//
// One source a platform (window_portable.cpp, window_win32.cpp).
#pragma once

#include "host/viewer/viewer_options.h"

namespace ovno2::host {

// Owns the window and publishes it until the user ends it. The program's exit status.
int showLog(const ViewerOptions& options);

// Says what the command line is answered with, or what went wrong, where the user looks.
void say(const std::string& text, bool isError);

}  // namespace ovno2::host
