// Guarded reads by a fault handler of our own: a read that faults comes back as "cannot be read".
//
// The handler is installed once for the process and passes on every fault that is not a guarded read's.
#include <atomic>
#include <csetjmp>
#include <csignal>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/portable/machine.h"

namespace ovno2::platform::portable {

namespace {

thread_local sigjmp_buf* activeGuard = nullptr;
struct sigaction previousSegv;
struct sigaction previousBus;

void onFault(int signal, siginfo_t* info, void* context) {
    if (activeGuard) siglongjmp(*activeGuard, 1);
    const struct sigaction& previous = signal == SIGBUS ? previousBus : previousSegv;
    if ((previous.sa_flags & SA_SIGINFO) != 0 && previous.sa_sigaction) {
        previous.sa_sigaction(signal, info, context);
    } else if (previous.sa_handler != SIG_DFL && previous.sa_handler != SIG_IGN) {
        previous.sa_handler(signal);
    } else {
        sigaction(signal, &previous, nullptr);  // the instruction faults again and ends the process
    }
}

void installFaultHandler() {
    struct sigaction action = {};
    action.sa_sigaction = onFault;
    action.sa_flags = SA_SIGINFO | SA_NODEFER | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    sigaction(SIGSEGV, &action, &previousSegv);
    sigaction(SIGBUS, &action, &previousBus);
}

// Runs `body` with faults caught; false when one happened. The body must hold no resources.
template <class Body>
[[gnu::noinline]] bool guarded(const Body& body) {
    sigjmp_buf guard;
    if (sigsetjmp(guard, /*savemask=*/0) != 0) {
        activeGuard = nullptr;
        return false;
    }
    activeGuard = &guard;
    std::atomic_signal_fence(std::memory_order_seq_cst);
    body();
    std::atomic_signal_fence(std::memory_order_seq_cst);
    activeGuard = nullptr;
    return true;
}

// A wild pointer may be odd, and may point into memory that the address sanitizer keeps to itself: read it
// bytewise and unwatched.
__attribute__((no_sanitize("address", "undefined"))) void copyUnwatched(const volatile unsigned char* from,
                                                                        std::size_t size, unsigned char* to) {
    std::size_t i = 0;
    if (reinterpret_cast<std::uintptr_t>(from) % 8 == 0) {
        for (; i + 8 <= size; i += 8) {
            const std::uint64_t word = *reinterpret_cast<const volatile std::uint64_t*>(from + i);
            std::memcpy(to + i, &word, 8);
        }
    }
    for (; i < size; ++i)
        to[i] = from[i];
}

__attribute__((no_sanitize("address", "undefined"))) Long lengthUnwatched(const volatile unsigned char* text,
                                                                          Long limit) {
    if (reinterpret_cast<std::uintptr_t>(text) % 2 == 0) {
        const auto* units = reinterpret_cast<const volatile std::uint16_t*>(text);
        Long n = 0;
        while (n < limit && units[n] != 0)
            ++n;
        return n;
    }
    for (Long n = 0; n < limit; ++n)
        if ((text[2 * n] | text[2 * n + 1]) == 0) return n;
    return limit;
}

__attribute__((no_sanitize("address", "undefined"))) void touchPages(const volatile unsigned char* from,
                                                                     std::size_t size, std::size_t page) {
    for (std::size_t i = 0; i < size; i += page)
        static_cast<void>(from[i]);
    static_cast<void>(from[size - 1]);
}

class GuardedMemory : public Memory {
  public:
    GuardedMemory() {
        static const bool installed = (installFaultHandler(), true);
        static_cast<void>(installed);
    }

    bool read(const void* from, std::size_t size, void* to) override {
        if (size == 0) return true;
        return guarded([=] {
            copyUnwatched(static_cast<const unsigned char*>(from), size, static_cast<unsigned char*>(to));
        });
    }

    bool readable(const void* from, std::size_t size) override {
        if (size == 0) return true;
        if (reinterpret_cast<std::uintptr_t>(from) + size < size) return false;
        const std::size_t page = pageSize_;
        return guarded([=] { touchPages(static_cast<const unsigned char*>(from), size, page); });
    }

    Long textLength(const char16_t* text, Long limit) override {
        volatile Long length = -1;
        volatile Long* result = &length;
        const bool whole =
            guarded([=] { *result = lengthUnwatched(reinterpret_cast<const unsigned char*>(text), limit); });
        return whole ? length : -1;
    }

    void* allocateLow(std::size_t size) override {
        void* block = mmap(nullptr, wholePages(size), PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_32BIT, /*fd=*/-1, /*offset=*/0);
        return block == MAP_FAILED ? nullptr : block;
    }

    void freeLow(void* block, std::size_t size) override {
        if (block) munmap(block, wholePages(size));
    }

  private:
    std::size_t wholePages(std::size_t size) const { return (size + pageSize_ - 1) / pageSize_ * pageSize_; }

    std::size_t pageSize_ = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
};

}  // namespace

std::unique_ptr<Memory> makeMemory(Machine&) {
    return std::make_unique<GuardedMemory>();
}

}  // namespace ovno2::platform::portable
