#include "content/vendor_service.h"

#include "core/current_platform.h"
#include "library/library.h"
#include "pc/capture_dos.h"

namespace ovno2::Content {

bool serviceIsStuck(Long result) {
    return library::is(result, library::connectionLost) || library::is(result, library::serviceFailed);
}

void endVendorService() {
    constexpr Long timeoutSeconds = 30;
    CaptureDos::ExecuteCommand(u"taskkill /F /IM ServiceLayer.exe", /*doNotWait=*/false, timeoutSeconds);
    currentPlatform().clock().sleep(200);
}

}  // namespace ovno2::Content
