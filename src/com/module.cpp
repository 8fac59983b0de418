#include "com/module.h"

#include <atomic>

namespace ovno2::com {

namespace {

std::atomic<long> locks = 0;

}  // namespace

void lockModule() noexcept {
    ++locks;
}

void unlockModule() noexcept {
    --locks;
}

bool moduleIsLocked() noexcept {
    return locks != 0;
}

}  // namespace ovno2::com
