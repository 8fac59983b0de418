// Calling a library function natively: the platform's default convention, arguments as they are.
#pragma once

// The convention of a function of ours that the library calls.
#define OVNO2_CALLED_BY_LIBRARY

namespace ovno2::platform {

// The bytes of arguments the callee removed beyond or short of what was pushed; the native convention leaves
// them to the caller, so here it is always 0. On 32-bit Windows it tells that the library expects another
// number of arguments.
using ArgumentMismatch = int;

template <class Signature>
struct NativeCall;

template <class Result, class... Parameters>
struct NativeCall<Result(Parameters...)> {
    static Result call(void* function, ArgumentMismatch& mismatch, Parameters... arguments) {
        mismatch = 0;
        return reinterpret_cast<Result (*)(Parameters...)>(function)(arguments...);
    }
};

}  // namespace ovno2::platform
