// What hangs on the threads of the process. No `thread_local`: the module may be unloaded while threads that
// used it live on, and what hangs on those must go with it.
//
// The loader tells of a thread's end, and of the module's, through a callback in the image; that works in a
// program as in a DLL.
#include "platform/thread_storage.h"

#include <array>
#include <atomic>
#include <new>
#include <utility>
#include <windows.h>

namespace ovno2::platform {

namespace {

struct Slot {
    ThreadStorage storage;
    Slot* next = nullptr;
};

SRWLOCK lock = SRWLOCK_INIT;
Slot* slots = nullptr;  // of all threads
std::atomic<DWORD> index = TLS_OUT_OF_INDEXES;
std::atomic<bool> unloaded = false;

class Locked {
  public:
    Locked() { AcquireSRWLockExclusive(&lock); }
    ~Locked() { ReleaseSRWLockExclusive(&lock); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
};

void unlink(const Slot* slot) {
    const Locked locked;
    for (Slot** link = &slots; *link; link = &(*link)->next) {
        if (*link != slot) continue;
        *link = slot->next;
        return;
    }
}

// For threads that first come here when there is no memory: what failed has to be kept somewhere.
std::array<Slot, 8> spares;
std::array<bool, 8> spareUsed{};

// Null when there is neither memory nor a spare.
Slot* makeSlot() {
    if (auto* slot = new (std::nothrow) Slot()) return slot;
    const Locked locked;
    for (std::size_t i = 0; i < spares.size(); ++i)
        if (!std::exchange(spareUsed[i], true)) return &spares[i];
    return nullptr;
}

void giveBack(Slot* slot) {
    const Locked locked;
    for (std::size_t i = 0; i < spares.size(); ++i) {
        if (slot != &spares[i]) continue;
        spares[i] = {};
        spareUsed[i] = false;
        return;
    }
    delete slot;
}

// Runs on the thread that owns the slot, or on the one that unloads the module: what is released finds its
// own slot as the current one.
void releaseSlot(Slot* slot) {
    TlsSetValue(index, slot);
    while (slot->storage.value) {
        void* const value = slot->storage.value;
        slot->storage.release(value);
        if (slot->storage.value == value) slot->storage.value = nullptr;
    }
    unlink(slot);
    giveBack(slot);
    TlsSetValue(index, nullptr);
}

void endThread() {
    if (index == TLS_OUT_OF_INDEXES) return;
    if (auto* slot = static_cast<Slot*>(TlsGetValue(index))) releaseSlot(slot);
}

void unloadModule() {
    if (index != TLS_OUT_OF_INDEXES) {
        endThread();
        while (slots)
            releaseSlot(slots);
        TlsFree(index);
        index = TLS_OUT_OF_INDEXES;
    }
    unloaded = true;
}

void NTAPI onLoaderEvent(PVOID, DWORD reason, PVOID processEnds) {
    if (reason == DLL_THREAD_DETACH) endThread();
    // When the process ends, other libraries may be gone already and the system takes everything back.
    if (reason == DLL_PROCESS_DETACH && !processEnds) unloadModule();
}

}  // namespace

// The loader calls every entry of this section.
extern "C" {
[[gnu::section(".CRT$XLG"), gnu::used]] PIMAGE_TLS_CALLBACK ovno2LoaderEvents = onLoaderEvent;
}

ThreadStorage& threadStorage() {
    if (unloaded) {
        // What is destroyed last of all asks whether there is something left.
        static ThreadStorage nothing;
        return nothing;
    }
    if (index != TLS_OUT_OF_INDEXES)
        if (auto* slot = static_cast<Slot*>(TlsGetValue(index))) return slot->storage;
    auto* const slot = makeSlot();
    if (!slot) throw std::bad_alloc();
    {
        const Locked locked;
        if (index == TLS_OUT_OF_INDEXES) index = TlsAlloc();
        if (index != TLS_OUT_OF_INDEXES && TlsSetValue(index, slot)) {
            slot->next = slots;
            slots = slot;
            return slot->storage;
        }
    }
    giveBack(slot);
    throw std::bad_alloc();
}

}  // namespace ovno2::platform
