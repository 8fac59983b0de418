// What tools that read the registered type libraries see. The members stand in tests/com.
#include "base/utf8.h"
#include "base/values.h"
#include "windows/component_test.h"

namespace ovno2::windows_tests {
namespace {

// A type with its fields and their offsets, or its constants and their values; those named Host... are left
// out.
Text describe(ITypeLib& library, const wchar_t* name) {
    ComPointer<ITypeInfo> type;
    MEMBERID member = 0;
    USHORT found = 1;
    std::wstring asked = name;
    TYPEATTR* attributes = nullptr;
    EXPECT_EQ(S_OK, library.FindName(asked.data(), 0, type.out(), &member, &found));
    if (found == 0 || FAILED(type->GetTypeAttr(&attributes))) return {};
    Text all = decimalText(Long(attributes->cbSizeInstance));
    for (UINT i = 0; i < attributes->cVars; ++i) {
        VARDESC* variable = nullptr;
        BSTR text = nullptr;
        type->GetVarDesc(i, &variable);
        type->GetDocumentation(variable->memid, &text, nullptr, nullptr, nullptr);
        const Long value =
            variable->varkind == VAR_CONST ? Long{V_I4(variable->lpvarValue)} : Long(variable->oInst);
        if (!textOf(text).starts_with(u"Host")) all += u' ' + textOf(text) + u'=' + decimalText(value);
        SysFreeString(text);
        type->ReleaseVarDesc(variable);
    }
    type->ReleaseTypeAttr(attributes);
    return all;
}

TEST(TypeLibraries, RecordsAndEnumerationsHaveTheirNamedMembersInPlace) {
    const GUID own = {0x33441530, 0x64DE, 0x47C5, {0xAC, 0x65, 0x63, 0x5E, 0xFF, 0x42, 0x63, 0xA2}};
    const GUID records = {0x02BB06A9, 0x5380, 0x435B, {0xB9, 0x32, 0x59, 0xE8, 0xB8, 0x5D, 0xC6, 0xBF}};
    const struct {
        const GUID& library;
        const wchar_t* name;
        TextView expected;
    } types[] = {
        {records, L"tAdrItem", u"68 Location=20 FieldValues=32 FieldValuesAsRead=36 Uid=60"},
        {records, L"tCalItem", u"48 ItemNumber=0 VCalText=4 VCalTextRead=8 ItemKind=24 ItemUid=32"},
        {records, L"tDirItem", u"28 DisplayName=0 Name=4 FullName=8 Size=12 DateText=16 Flags=20"},
        {own, L"tMedia",
         u"4 eMediaUnknown=0 eMediaCable=1 eMediaBT=2 eMediaIR=4 eMediaUSB=8 eMediaUSBDrive=16"},
        {own, L"tNokiaPhoneType",
         u"4 eNokiaPhoneType=0 eNokiaPhoneS40=1 eNokiaPhoneS40_2=2 eNokiaPhoneS40_3=3 eNokiaPhoneS40_4=5 "
         u"eNokiaPhoneS40_5=6 eNokiaPhoneS40_6=7 eNokiaPhoneS40_7=8 eNokiaPhoneS40_8=9 eNokiaPhoneS60=60 "
         u"eNokiaPhoneS60_2=62 eNokiaPhoneS60_3=63 eNokiaPhoneS60_3_FP1=64 eNokiaPhoneS60_5=65 "
         u"eNokiaPhoneS60_6=66 eNokiaPhoneS80=80"},
    };
    for (const auto& [id, name, expected] : types) {
        ComPointer<ITypeLib> library;
        ASSERT_EQ(S_OK, LoadRegTypeLib(id, 1, 0, LOCALE_NEUTRAL, library.out()));
        EXPECT_EQ(toUtf8(expected), toUtf8(describe(*library.get(), name)));
    }
}

}  // namespace
}  // namespace ovno2::windows_tests
