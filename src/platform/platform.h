// The seam between the core and the machine it runs on: one object that hands out the families of operations.
//
// Texts at the seam are UTF-16, sizes are bytes unless said otherwise, no native type crosses it. Two
// implementations exist: platform/win32 (the real calls) and platform/portable (a small real machine of its
// own).
#pragma once

#include "platform/automation.h"
#include "platform/code_pages.h"
#include "platform/files.h"
#include "platform/libraries.h"
#include "platform/locale.h"
#include "platform/memory.h"
#include "platform/processes.h"
#include "platform/registry.h"
#include "platform/windows.h"

namespace ovno2::platform {

class Platform {
  public:
    virtual ~Platform() = default;
    virtual Registry& registry() = 0;
    virtual Files& files() = 0;
    virtual SharedMemory& sharedMemory() = 0;
    virtual Processes& processes() = 0;
    virtual Windows& windows() = 0;
    virtual Locale& locale() = 0;
    virtual Clock& clock() = 0;
    virtual CodePages& codePages() = 0;
    virtual Memory& memory() = 0;
    virtual Libraries& libraries() = 0;
    virtual Automation& automation() = 0;
};

// The platform of this build, made at first use; shared by all threads of the process.
Platform& nativePlatform();

}  // namespace ovno2::platform
