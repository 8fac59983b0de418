// Guarded reads by a fault handler of our own: a read that faults comes back as "cannot be read".
//
// The handler is installed once for the process and passes on every fault that is not a guarded read's.
#include <algorithm>
#include <array>
#include <atomic>
#include <csetjmp>
#include <csignal>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

#include "base/unit_blocks.h"
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

// Copies units up to the terminator or the limit; returns how many. Aligned texts go four units at a time,
// which reads nothing of a page that the text does not reach.
__attribute__((no_sanitize("address", "undefined"))) std::size_t copyTextUnwatched(
    const volatile unsigned char* text, std::size_t limit, char16_t* to) {
    std::size_t n = 0;
    if (reinterpret_cast<std::uintptr_t>(text) % 8 == 0) {
        for (; n + unitsPerBlock <= limit; n += unitsPerBlock) {
            const UnitBlock units = *reinterpret_cast<const volatile UnitBlock*>(text + 2 * n);
            if (hasUnit(units, u'\0')) break;
            std::memcpy(to + n, &units, sizeof units);
        }
    }
    for (; n < limit; ++n) {
        const auto unit = static_cast<char16_t>(text[2 * n] | text[2 * n + 1] << 8);
        if (unit == 0) break;
        to[n] = unit;
    }
    return n;
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

    bool readText(const char16_t* from, std::size_t limit, Text& to) override {
        to.clear();
        // Piece by piece over a buffer, so that nothing is made larger than the text is.
        std::array<char16_t, 256> piece;
        for (std::size_t done = 0; done < limit;) {
            const std::size_t wanted = std::min(piece.size(), limit - done);
            volatile std::size_t copied = 0;
            volatile std::size_t* const result = &copied;
            char16_t* const target = piece.data();
            const auto* const source = reinterpret_cast<const unsigned char*>(from + done);
            if (!guarded([=] { *result = copyTextUnwatched(source, wanted, target); })) {
                to.clear();
                return false;
            }
            to.append(target, copied);
            if (copied < wanted) return true;
            done += copied;
        }
        return true;
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
