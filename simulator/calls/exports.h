// How the libraries export their functions: plain C names, stdcall on 32-bit Windows, hidden otherwise.
#pragma once

#include <type_traits>

#include "library/library_calls.h"

#if defined(_WIN32)
#define SIMULATOR_EXPORT extern "C" __declspec(dllexport)
#define SIMULATOR_STDCALL __stdcall
// What ConnAPI offers to DAAPI alone, in C++.
#if defined(SIMULATOR_IS_CONNAPI)
#define SIMULATOR_SHARED __declspec(dllexport)
#else
#define SIMULATOR_SHARED __declspec(dllimport)
#endif
// The declarations state no calling convention, so there is nothing to compare with.
#define SIMULATOR_CHECK(name) static_assert(true)
#else
#define SIMULATOR_EXPORT extern "C" __attribute__((visibility("default")))
#define SIMULATOR_STDCALL
#define SIMULATOR_SHARED __attribute__((visibility("default")))
#define SIMULATOR_CHECK(name) static_assert(std::is_same_v<decltype(name), ovno2::library::signature::name>)
#endif
