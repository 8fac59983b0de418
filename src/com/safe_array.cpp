#include "com/safe_array.h"

#include "platform/win32/com_pointer.h"

namespace ovno2::com {

VARTYPE elementType(SAFEARRAY* array) {
    VARTYPE type = VT_EMPTY;
    if (FAILED(SafeArrayGetVartype(array, &type))) {
        // Arrays made without a type tell at least what their elements are not.
        constexpr USHORT others = FADF_BSTR | FADF_UNKNOWN | FADF_DISPATCH | FADF_VARIANT | FADF_RECORD;
        const bool number = (array->fFeatures & others) == 0 && array->cbElements == sizeof(LONG);
        return number ? VARTYPE{VT_I4} : VARTYPE{VT_EMPTY};
    }
    switch (type) {
        case VT_INT:
        case VT_UI4:
        case VT_UINT:
            return VT_I4;
        default:
            return type;
    }
}

bool sameElementType(SAFEARRAY* a, SAFEARRAY* b) {
    if (elementType(a) != elementType(b) || a->cbElements != b->cbElements) return false;
    if ((a->fFeatures & FADF_RECORD) == 0) return (b->fFeatures & FADF_RECORD) == 0;
    platform::win32::ComPointer<IRecordInfo> first, second;
    return SUCCEEDED(SafeArrayGetRecordInfo(a, first.out())) &&
           SUCCEEDED(SafeArrayGetRecordInfo(b, second.out())) && first->IsMatchingType(second.get());
}

std::size_t elementCount(const SAFEARRAY* array) {
    if (array->cDims == 0) return 0;
    std::size_t count = 1;
    for (USHORT i = 0; i < array->cDims; ++i)
        count *= array->rgsabound[i].cElements;
    return count;
}

bool mayBeReplaced(const SAFEARRAY* array) {
    constexpr USHORT fixed = FADF_AUTO | FADF_STATIC | FADF_EMBEDDED | FADF_FIXEDSIZE;
    return !array || (array->cLocks == 0 && (array->fFeatures & fixed) == 0);
}

}  // namespace ovno2::com
