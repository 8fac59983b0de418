// Windows' date and time in fields as the seam's.
#pragma once

#include <windows.h>

#include "platform/locale.h"

namespace ovno2::platform::win32 {

inline SystemTime fromNative(const SYSTEMTIME& time) {
    return {.year = time.wYear,
            .month = time.wMonth,
            .dayOfWeek = time.wDayOfWeek,
            .day = time.wDay,
            .hour = time.wHour,
            .minute = time.wMinute,
            .second = time.wSecond,
            .millisecond = time.wMilliseconds};
}

}  // namespace ovno2::platform::win32
