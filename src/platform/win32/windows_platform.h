// The seam on 32-bit Windows: each family in a file of its own, no state beyond what the platform itself
// keeps.
#pragma once

#include <memory>

#include "platform/platform.h"

namespace ovno2::platform::win32 {

std::unique_ptr<Registry> makeRegistry();
std::unique_ptr<Files> makeFiles();
std::unique_ptr<SharedMemory> makeSharedMemory();
std::unique_ptr<Processes> makeProcesses();
std::unique_ptr<Windows> makeWindows();
std::unique_ptr<Locale> makeLocale();
std::unique_ptr<Clock> makeClock();
std::unique_ptr<CodePages> makeCodePages();
std::unique_ptr<Memory> makeMemory();
std::unique_ptr<Libraries> makeLibraries();
std::unique_ptr<Automation> makeAutomation();

}  // namespace ovno2::platform::win32
