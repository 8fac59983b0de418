#include "pc/file_info.h"

#include "core/attempt.h"
#include "core/current_platform.h"

namespace ovno2::GetFileInfo_ {

Text FileVersionText(TextView path, bool preferProductVersion) {
    Text text;
    attempt([&] {
        platform::FileVersion version;
        if (!currentPlatform().processes().fileVersion(path, version)) return;
        const auto& product = version.product;
        const bool productIsFull = product[1] != 0 || product[2] != 0 || product[3] != 0;
        Text parts[4];
        for (std::size_t i = 0; i < 4; ++i) {
            const bool fromProduct = preferProductVersion && productIsFull && product[i] != 0;
            parts[i] = decimalText(Long{fromProduct ? product[i] : version.file[i]});
        }
        text = join(parts, u'.');
    });
    return text;
}

}  // namespace ovno2::GetFileInfo_
