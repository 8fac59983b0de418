#include "platform_native/last_error.h"

#include <windows.h>

namespace ovno2::platform {

void clearLastError() {
    SetLastError(ERROR_SUCCESS);
}

Long lastError() {
    return static_cast<Long>(GetLastError());
}

}  // namespace ovno2::platform
