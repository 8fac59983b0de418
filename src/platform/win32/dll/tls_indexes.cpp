// Gives back, when a DLL is unloaded, every thread-local index that its image has taken.
//
// The compiler's run-time library keeps the index that it takes with the first exception on a thread, and a
// process has little more than a thousand of them: a host that loads and unloads the DLL again and again
// would run out. The words of the import table are defined here, so that all calls of the image, those of its
// static libraries too, come this way. Linked as an object file into each DLL; a program needs none of it.
#include <array>
#include <atomic>
#include <windows.h>

namespace ovno2::platform::win32 {

namespace {

constexpr std::size_t mostIndexes = 64 + 1024;  // TLS_MINIMUM_AVAILABLE and the expansion slots
std::array<std::atomic<bool>, mostIndexes> taken;

template <class Function>
Function systemCall(const char* name) {
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name)));
}

DWORD WINAPI takeIndex() {
    const DWORD index = systemCall<DWORD(WINAPI*)()>("TlsAlloc")();
    if (index < mostIndexes) taken[index] = true;
    return index;
}

BOOL WINAPI giveIndexBack(DWORD index) {
    if (index < mostIndexes) taken[index] = false;
    return systemCall<BOOL(WINAPI*)(DWORD)>("TlsFree")(index);
}

struct LastOfTheImage {
    ~LastOfTheImage() {
        for (DWORD index = 0; index < mostIndexes; ++index)
            if (taken[index]) giveIndexBack(index);
    }
};

// What is made first is destroyed last, when nothing of the image throws any more.
[[gnu::init_priority(101)]] LastOfTheImage lastOfTheImage;

}  // namespace

extern "C" {
extern DWORD(WINAPI* const ovno2TlsAlloc)() asm("__imp__TlsAlloc@0");
extern BOOL(WINAPI* const ovno2TlsFree)(DWORD) asm("__imp__TlsFree@4");
DWORD(WINAPI* const ovno2TlsAlloc)() = takeIndex;
BOOL(WINAPI* const ovno2TlsFree)(DWORD) = giveIndexBack;
}

}  // namespace ovno2::platform::win32
