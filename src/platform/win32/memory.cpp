// Guarded reads by an exception frame of our own on the reading thread: nothing is installed for the process,
// and a read costs little more than the copy itself.
#include <cstdint>
#include <cstdlib>
#include <windows.h>

#include "platform/win32/windows_platform.h"

namespace ovno2::platform::win32 {

namespace {

// A link of the thread's chain of exception frames, with the place where a read that failed goes on.
struct GuardFrame {
    GuardFrame* previous;
    void* handler;
    std::uint32_t resumeAt;
};

bool isReadFault(DWORD code) {
    return code == EXCEPTION_ACCESS_VIOLATION || code == EXCEPTION_IN_PAGE_ERROR ||
           code == STATUS_GUARD_PAGE_VIOLATION;
}

// Sends a failed read to its frame's `resumeAt` with the flag for "failed" in EDX; passes everything else on.
extern "C" EXCEPTION_DISPOSITION __cdecl ovno2OnGuardedFault(EXCEPTION_RECORD* exception, void* frame,
                                                             CONTEXT* context, void*) {
    constexpr DWORD unwinding = 0x02 | 0x04;
    if ((exception->ExceptionFlags & unwinding) != 0 || !isReadFault(exception->ExceptionCode))
        return ExceptionContinueSearch;
    if (exception->ExceptionCode == STATUS_GUARD_PAGE_VIOLATION) {
        // Another thread's stack grows by this mark, and touching it has taken it away.
        DWORD old = 0;
        VirtualProtect(reinterpret_cast<void*>(exception->ExceptionInformation[1]), 1,
                       PAGE_READWRITE | PAGE_GUARD, &old);
    }
    context->Eip = static_cast<GuardFrame*>(frame)->resumeAt;
    context->Edx = 1;
    return ExceptionContinueExecution;
}

// The reads below set up the frame, do the one instruction that may fault, and take the frame away again.
#define OVNO2_GUARD_ENTER                         \
    "movl $1f, 8(%[frame])\n\t"                   \
    "movl $_ovno2OnGuardedFault, 4(%[frame])\n\t" \
    "movl %%fs:0, %%edx\n\t"                      \
    "movl %%edx, (%[frame])\n\t"                  \
    "movl %[frame], %%fs:0\n\t"                   \
    "xorl %%edx, %%edx\n\t"
#define OVNO2_GUARD_LEAVE  \
    "1:\n\t"               \
    "pushl (%[frame])\n\t" \
    "popl %%fs:0\n\t"

bool guardedCopy(const void* from, std::size_t size, void* to) {
    GuardFrame frame;
    std::uint32_t failed = 0;
    asm volatile(OVNO2_GUARD_ENTER "rep movsb\n\t" OVNO2_GUARD_LEAVE
                 : "=&d"(failed), "+S"(from), "+D"(to), "+c"(size)
                 : [frame] "b"(&frame)
                 : "memory", "cc");
    return failed == 0;
}

bool guardedTouch(const void* from) {
    GuardFrame frame;
    std::uint32_t failed = 0;
    asm volatile(OVNO2_GUARD_ENTER "cmpb $0, (%[from])\n\t" OVNO2_GUARD_LEAVE
                 : "=&d"(failed)
                 : [frame] "b"(&frame), [from] "S"(from)
                 : "memory", "cc");
    return failed == 0;
}

// The units before the zero unit, `limit` (1 or more) when there is none among them, -1 when one could not be
// read.
Long guardedLength(const char16_t* text, Long limit) {
    GuardFrame frame;
    std::uint32_t failed = 0;
    std::uint32_t found = 0;
    auto left = static_cast<std::uint32_t>(limit);
    asm volatile(OVNO2_GUARD_ENTER "repne scasw\n\tsete %%al\n\t" OVNO2_GUARD_LEAVE
                 : "=&d"(failed), "+D"(text), "+c"(left), "+a"(found)
                 : [frame] "b"(&frame)
                 : "memory", "cc");
    if (failed != 0) return -1;
    const Long looked = limit - static_cast<Long>(left);
    return found != 0 ? looked - 1 : looked;
}

#undef OVNO2_GUARD_ENTER
#undef OVNO2_GUARD_LEAVE

class GuardedMemory : public Memory {
  public:
    bool read(const void* from, std::size_t size, void* to) override {
        return size == 0 || guardedCopy(from, size, to);
    }

    bool readable(const void* from, std::size_t size) override {
        if (size == 0) return true;
        const auto first = reinterpret_cast<std::uintptr_t>(from);
        if (first + (size - 1) < first) return false;
        constexpr std::uintptr_t page = 4096;
        for (std::uintptr_t place = first;;) {
            if (!guardedTouch(reinterpret_cast<const void*>(place))) return false;
            const std::uintptr_t next = (place | (page - 1)) + 1;
            if (next == 0 || next > first + (size - 1)) return true;
            place = next;
        }
    }

    bool readText(const char16_t* from, std::size_t limit, Text& to) override {
        to.clear();
        if (limit == 0) return true;
        const Long units = guardedLength(from, static_cast<Long>(limit));
        if (units < 0) return false;
        to.resize(static_cast<std::size_t>(units));
        if (guardedCopy(from, to.size() * sizeof(char16_t), to.data())) return true;
        to.clear();
        return false;
    }

    // Every address of a 32-bit process fits a library record.
    void* allocateLow(std::size_t size) override { return std::calloc(size == 0 ? 1 : size, 1); }
    void freeLow(void* block, std::size_t) override { std::free(block); }
};

}  // namespace

std::unique_ptr<Memory> makeMemory() {
    return std::make_unique<GuardedMemory>();
}

}  // namespace ovno2::platform::win32
