// Calling a library function on 32-bit Windows: arguments as 32-bit words, whatever the callee thinks of
// them.
//
// Spare zero words lie above the arguments and the stack pointer is restored afterwards, so that a library
// which expects another number of arguments, or leaves them to the caller, does no harm; the difference is
// reported.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

// The convention of a function of ours that the library calls.
#define OVNO2_CALLED_BY_LIBRARY __stdcall

namespace ovno2::platform {

// The bytes of arguments the callee removed beyond (positive) or short of (negative) what was pushed. 0 when
// it removed exactly those, and when it left all of them to its caller.
using ArgumentMismatch = int;

// Calls `function` with `count` words, the first on top of the stack.
std::uint32_t callWithWords(void* function, const std::uint32_t* words, std::size_t count,
                            ArgumentMismatch& mismatch);

template <class Signature>
struct NativeCall;

template <class Result, class... Parameters>
struct NativeCall<Result(Parameters...)> {
    static_assert(std::is_integral_v<Result> || std::is_pointer_v<Result>);
    static_assert(((std::is_integral_v<Parameters> || std::is_pointer_v<Parameters>)&&...));
    static_assert(sizeof(Result) == sizeof(std::uint32_t) &&
                  ((sizeof(Parameters) == sizeof(std::uint32_t)) && ...));

    static Result call(void* function, ArgumentMismatch& mismatch, Parameters... arguments) {
        const std::array<std::uint32_t, sizeof...(Parameters)> words = {toWord(arguments)...};
        const std::uint32_t result = callWithWords(function, words.data(), words.size(), mismatch);
        if constexpr (std::is_pointer_v<Result>)
            return reinterpret_cast<Result>(result);
        else
            return static_cast<Result>(result);
    }

  private:
    template <class Value>
    static std::uint32_t toWord(Value value) {
        if constexpr (std::is_pointer_v<Value>)
            return reinterpret_cast<std::uint32_t>(value);
        else
            return static_cast<std::uint32_t>(value);
    }
};

}  // namespace ovno2::platform
