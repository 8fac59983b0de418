#include "com/type_libraries.h"

#include "platform/win32/module_path.h"
#include "platform/win32/wide.h"

namespace ovno2::com {

Text typeLibraryPath(int resource) {
    return platform::win32::modulePath() + u'\\' + static_cast<char16_t>(u'0' + resource);
}

ComPointer<ITypeInfo> typeInformation(int resource, const GUID& type) noexcept {
    ComPointer<ITypeLib> library;
    ComPointer<ITypeInfo> information;
    try {
        if (SUCCEEDED(
                LoadTypeLibEx(platform::win32::wide(typeLibraryPath(resource)), REGKIND_NONE, library.out())))
            library->GetTypeInfoOfGuid(type, information.out());
    } catch (...) {
        // Without memory there is no type information.
    }
    return information;
}

}  // namespace ovno2::com
