// What tools that read the type libraries see.
#include "com/records.h"
#include "windows/component_test.h"

namespace ovno2::windows_tests {
namespace {

const GUID ownLibrary = {0x33441530, 0x64DE, 0x47C5, {0xAC, 0x65, 0x63, 0x5E, 0xFF, 0x42, 0x63, 0xA2}};
const GUID recordLibrary = {0x02BB06A9, 0x5380, 0x435B, {0xB9, 0x32, 0x59, 0xE8, 0xB8, 0x5D, 0xC6, 0xBF}};

ComPointer<ITypeLib> registeredLibrary(const GUID& id) {
    ComPointer<ITypeLib> library;
    EXPECT_EQ(S_OK, LoadRegTypeLib(id, 1, 0, LOCALE_NEUTRAL, library.out()));
    return library;
}

// The interface with its slots.
ComPointer<ITypeInfo> slotType() {
    ComPointer<ITypeInfo> dispatch, slots;
    HREFTYPE reference = 0;
    EXPECT_EQ(S_OK, registeredLibrary(ownLibrary)->GetTypeInfoOfGuid(__uuidof(_covNo2), dispatch.out()));
    EXPECT_EQ(S_OK, dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference));
    EXPECT_EQ(S_OK, dispatch->GetRefTypeInfo(reference, slots.out()));
    return slots;
}

struct Described {
    Text name;
    WORD kind;
    Text defaults;  // one a parameter: "-" required, "?" optional, else the default value
};

Described describe(ITypeInfo& type, UINT index) {
    FUNCDESC* function = nullptr;
    BSTR name = nullptr;
    EXPECT_EQ(S_OK, type.GetFuncDesc(index, &function));
    EXPECT_EQ(S_OK, type.GetDocumentation(function->memid, &name, nullptr, nullptr, nullptr));
    EXPECT_EQ(static_cast<SHORT>((7 + index) * sizeof(void*)), function->oVft) << index;
    Described described{textOf(name), static_cast<WORD>(function->invkind), {}};
    SysFreeString(name);
    for (SHORT i = 0; i < function->cParams; ++i) {
        const PARAMDESC& parameter = function->lprgelemdescParam[i].paramdesc;
        if ((parameter.wParamFlags & PARAMFLAG_FRETVAL) != 0) continue;
        if ((parameter.wParamFlags & PARAMFLAG_FHASDEFAULT) != 0) {
            VARIANT text;
            VariantInit(&text);
            EXPECT_EQ(S_OK, VariantChangeType(&text, &parameter.pparamdescex->varDefaultValue,
                                              VARIANT_ALPHABOOL, VT_BSTR));
            described.defaults += textOf(V_BSTR(&text)) + u' ';
            VariantClear(&text);
        } else {
            described.defaults += (parameter.wParamFlags & PARAMFLAG_FOPT) != 0 ? u"? " : u"- ";
        }
    }
    if (!described.defaults.empty()) described.defaults.pop_back();
    type.ReleaseFuncDesc(function);
    return described;
}

TEST(TypeLibraries, TheFiftyMembersStandInTheirOrderWithTheirDefaults) {
    constexpr WORD method = INVOKE_FUNC;
    constexpr WORD put = INVOKE_PROPERTYPUT;
    const Described members[] = {
        {u"Init", method, u""},
        {u"CleanUp", method, u""},
        {u"SetPriorities_", method, u"-"},
        {u"SetStatuses_", method, u"-"},
        {u"Meeting_", put, u"-"},
        {u"Bithday_", put, u"-"},
        {u"Call_", put, u"-"},
        {u"Reminder_", put, u"-"},
        {u"Task_", put, u"-"},
        {u"Minute_", put, u"-"},
        {u"Hour_", put, u"-"},
        {u"Day_", put, u"-"},
        {u"Note_", put, u"-"},
        {u"GetAllFields_", put, u"-"},
        {u"AddTimeOffset_", put, u"-"},
        {u"PhoneModel_", put, u"-"},
        {u"CheckIfNokiaSDKIsThere", method, u"True"},
        {u"LaunchPCSuite2IfRequired", method, u"-"},
        {u"GetConnections", method, u""},
        {u"Connect", method, u"- - ? ? False"},
        {u"GetConnectedDevices", method, u"- - - - - - -1"},
        {u"NokiaGetAddressBookItems", method, u"- - - - - - ? ? ?"},
        {u"DeleteAddressBookItem", method, u"- - -"},
        {u"WriteAddressBookItem", method, u"- - - - - False False 0 0"},
        {u"EndWriteSession", method, u"- - - False"},
        {u"GetAllUids", method, u"- -"},
        {u"GetApiVersion", method, u""},
        {u"RenameCalender", method, u"- - - -"},
        {u"CreateCalender", method, u"- - -"},
        {u"DeleteCalender", method, u"- - -"},
        {u"GetCalendarFolders", method, u"- - - -"},
        {u"NokiaGetCalendarItems", method, u"- - - - -"},
        {u"DeleteCalendarItem", method, u"- - -"},
        {u"WriteCalendarItem", method, u"- - - - - -"},
        {u"NokiaGetDataItems", method, u"- - - - ? ?"},
        {u"WriteDataItem", method, u"- - -"},
        {u"DeleteDataItem", method, u"- - -"},
        {u"MediaSearchBT", method, u"- - - - 200"},
        {u"ChangeDeviceTrustedState", method, u"- 3 ?"},
        {u"DMApiTerminate_", method, u""},
        {u"GetDirContents", method, u"- - /"},
        {u"EndFS", method, u""},
        {u"GetFile", method, u"- -"},
        {u"PutFile", method, u"- -"},
        {u"RenameFile", method, u"- -"},
        {u"DeleteFile", method, u"-"},
        {u"RenameFolder", method, u"- -"},
        {u"CreateFolder", method, u"-"},
        {u"DeleteFolder", method, u"-"},
        {u"GetPCSuiteVersion", method, u""},
    };
    const ComPointer<ITypeInfo> slots = slotType();
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(S_OK, slots->GetTypeAttr(&attributes));
    EXPECT_EQ(std::size(members), attributes->cFuncs);
    slots->ReleaseTypeAttr(attributes);
    for (UINT i = 0; i < std::size(members); ++i) {
        const Described described = describe(*slots.get(), i);
        EXPECT_EQ(members[i].name, described.name);
        EXPECT_EQ(members[i].kind, described.kind) << i;
        EXPECT_EQ(members[i].defaults, described.defaults) << i;
    }
}

TEST(TypeLibraries, TheRecordsHaveTheirNamedMembersInPlace) {
    const struct {
        const GUID& record;
        ULONG size;
        std::vector<std::pair<const wchar_t*, std::size_t>> members;  // with their offsets
    } records[] = {
        {com::guidOfAdrItem,
         68,
         {{L"Location", 20}, {L"FieldValues", 32}, {L"FieldValuesAsRead", 36}, {L"Uid", 60}}},
        {com::guidOfCalItem,
         48,
         {{L"ItemNumber", 0}, {L"VCalText", 4}, {L"VCalTextRead", 8}, {L"ItemKind", 24}, {L"ItemUid", 32}}},
        {com::guidOfDirItem,
         28,
         {{L"DisplayName", 0},
          {L"Name", 4},
          {L"FullName", 8},
          {L"Size", 12},
          {L"DateText", 16},
          {L"Flags", 20}}},
    };
    for (const auto& [record, size, members] : records) {
        ComPointer<IRecordInfo> information;
        ASSERT_EQ(S_OK,
                  GetRecordInfoFromGuids(recordLibrary, 1, 0, LOCALE_NEUTRAL, record, information.out()));
        ULONG actual = 0;
        EXPECT_EQ(S_OK, information->GetSize(&actual));
        EXPECT_EQ(size, actual);
        std::vector<char> block(size);
        for (const auto& [name, offset] : members) {
            VARIANT value;
            VariantInit(&value);
            void* data = nullptr;
            EXPECT_EQ(S_OK, information->GetFieldNoCopy(block.data(), name, &value, &data));
            EXPECT_EQ(static_cast<void*>(block.data() + offset), V_BYREF(&value)) << name;
        }
    }
}

TEST(TypeLibraries, TheEnumerationsHaveTheirValues) {
    const struct {
        const wchar_t* name;
        LONG value;
    } constants[] = {{L"eMediaUnknown", 0},     {L"eMediaCable", 1},
                     {L"eMediaBT", 2},          {L"eMediaIR", 4},
                     {L"eMediaUSB", 8},         {L"eMediaUSBDrive", 16},
                     {L"eNokiaPhoneType", 0},   {L"eNokiaPhoneS40", 1},
                     {L"eNokiaPhoneS40_2", 2},  {L"eNokiaPhoneS40_3", 3},
                     {L"eNokiaPhoneS40_4", 5},  {L"eNokiaPhoneS40_8", 9},
                     {L"eNokiaPhoneS60", 60},   {L"eNokiaPhoneS60_2", 62},
                     {L"eNokiaPhoneS60_3", 63}, {L"eNokiaPhoneS60_3_FP1", 64},
                     {L"eNokiaPhoneS60_6", 66}, {L"eNokiaPhoneS80", 80}};
    const ComPointer<ITypeLib> library = registeredLibrary(ownLibrary);
    for (const auto& [name, value] : constants) {
        ComPointer<ITypeInfo> type;
        MEMBERID member = 0;
        USHORT found = 1;
        std::wstring asked = name;
        ASSERT_EQ(S_OK, library->FindName(asked.data(), 0, type.out(), &member, &found));
        ASSERT_EQ(1, found) << name;
        TYPEATTR* attributes = nullptr;
        type->GetTypeAttr(&attributes);
        for (UINT i = 0; i < attributes->cVars; ++i) {
            VARDESC* variable = nullptr;
            type->GetVarDesc(i, &variable);
            if (variable->memid == member) {
                EXPECT_EQ(value, V_I4(variable->lpvarValue)) << name;
            }
            type->ReleaseVarDesc(variable);
        }
        type->ReleaseTypeAttr(attributes);
    }
}

}  // namespace
}  // namespace ovno2::windows_tests
