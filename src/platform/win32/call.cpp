#include "platform_native/call.h"

namespace ovno2::platform {

// Pushes eight zero words and below them the `count` words, enters the callee with the stack aligned as
// compilers expect it, and returns what it returned; `removed` = the bytes it took off the stack.
extern "C" std::uint32_t ovno2EnterCallee(void* function, const std::uint32_t* words, std::size_t count,
                                          int* removed);

asm(R"(
    .text
    .globl  _ovno2EnterCallee
_ovno2EnterCallee:
    pushl   %ebp
    movl    %esp, %ebp
    pushl   %ebx
    pushl   %esi
    pushl   %edi
    movl    16(%ebp), %ecx
    leal    32(,%ecx,4), %eax
    subl    %eax, %esp
    andl    $-16, %esp
    cld
    movl    12(%ebp), %esi
    movl    %esp, %edi
    rep movsl
    movl    $8, %ecx
    xorl    %eax, %eax
    rep stosl
    movl    %esp, %ebx
    call    *8(%ebp)
    movl    %esp, %ecx
    subl    %ebx, %ecx
    movl    20(%ebp), %edx
    movl    %ecx, (%edx)
    leal    -12(%ebp), %esp
    popl    %edi
    popl    %esi
    popl    %ebx
    popl    %ebp
    ret
)");

std::uint32_t callWithWords(void* function, const std::uint32_t* words, std::size_t count,
                            ArgumentMismatch& mismatch) {
    int removed = 0;
    const std::uint32_t result = ovno2EnterCallee(function, words, count, &removed);
    mismatch = removed == 0 ? 0 : removed - static_cast<int>(count * sizeof(std::uint32_t));
    return result;
}

}  // namespace ovno2::platform
