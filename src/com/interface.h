// The COM headers and the interface as its type library describes it, without the macros that rename its
// members.
#pragma once

// clang-format off
#include <windows.h>
#include <ole2.h>
#include <oleauto.h>
#undef DeleteFile
#include <ovNo2.h>
// clang-format on
