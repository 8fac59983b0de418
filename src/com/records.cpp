#include "com/records.h"

#include "com/type_libraries.h"

namespace ovno2::com {

IRecordInfo* recordInformation(const GUID& record) {
    IRecordInfo* information = nullptr;
    const ComPointer<ITypeInfo> type = typeInformation(recordLibrary, record);
    if (type) GetRecordInfoFromTypeInfo(type.get(), &information);
    return information;
}

bool holdsRecords(SAFEARRAY* array, const GUID& record, std::size_t size) {
    ComPointer<IRecordInfo> information;
    if ((array->fFeatures & FADF_RECORD) == 0 || array->cbElements != size ||
        FAILED(SafeArrayGetRecordInfo(array, information.out())) || !information)
        return false;
    GUID type = {};
    return SUCCEEDED(information->GetGuid(&type)) && IsEqualGUID(type, record);
}

SAFEARRAY* createRecordArray(SAFEARRAY* array, const GUID& record, SAFEARRAYBOUND bound) {
    ComPointer<IRecordInfo> information;
    if (array)
        SafeArrayGetRecordInfo(array, information.out());
    else
        *information.out() = recordInformation(record);
    return information ? SafeArrayCreateEx(VT_RECORD, 1, &bound, information.get()) : nullptr;
}

}  // namespace ovno2::com
