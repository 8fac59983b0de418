// What keeps the DLL loaded.
//
// Every object and every class factory reference holds a `ModuleLock`; the DLL may be unloaded when none is
// left.
#pragma once

namespace ovno2::com {

void lockModule() noexcept;
void unlockModule() noexcept;
bool moduleIsLocked() noexcept;

class ModuleLock {
  public:
    ModuleLock() noexcept { lockModule(); }
    ~ModuleLock() { unlockModule(); }
    ModuleLock(const ModuleLock&) = delete;
    ModuleLock& operator=(const ModuleLock&) = delete;
};

}  // namespace ovno2::com
