// What Invoke and GetIDsOfNames refuse, and how. What they let through is told in members_test.cpp.
#include <algorithm>
#include <gtest/gtest.h>

#include "com/class_factory.h"
#include "host/driver/com_client.h"
#include "platform/win32/dispatch_object.h"

namespace ovno2 {
namespace {

using platform::win32::OleVariant;

class LateBinding : public ::testing::Test {
  protected:
    LateBinding() {
        com::classFactory().CreateInstance(nullptr, __uuidof(_covNo2), object.outAny());
        V_I4(four.get()) = 4;
        V_VT(four.get()) = VT_I4;
        V_BSTR(text.get()) = com::newBstr(u"x");
        V_VT(text.get()) = VT_BSTR;
        V_ERROR(leftOut.get()) = DISP_E_PARAMNOTFOUND;
        V_VT(leftOut.get()) = VT_ERROR;
        V_ARRAY(array.get()) = SafeArrayCreateVector(VT_BSTR, /*lLbound=*/0, /*cElements=*/1);
        V_VT(array.get()) = VT_ARRAY | VT_BSTR;
    }
    HRESULT ids(std::vector<std::wstring> names, DISPID* found) {
        std::vector<LPOLESTR> texts;
        for (std::wstring& name : names)
            texts.push_back(name.data());
        return object->GetIDsOfNames(IID_NULL, texts.data(), static_cast<UINT>(texts.size()),
                                     LOCALE_USER_DEFAULT, found);
    }

    host::ComPointer<_covNo2> object;
    OleVariant four, text, leftOut, empty, array;
};

TEST_F(LateBinding, FindsMembersAndParametersByName) {
    DISPID found[3] = {};
    EXPECT_EQ(S_OK, ids({L"getconnecteddevices", L"MEDIUM", L"Types"}, found));
    EXPECT_EQ(6, found[1]);
    EXPECT_EQ(5, found[2]);
    EXPECT_EQ(DISP_E_UNKNOWNNAME, ids({L"GetConnectedDevices", L"median", L"Types"}, found));
    EXPECT_EQ(DISPID_UNKNOWN, found[1]);
    EXPECT_EQ(5, found[2]);
    EXPECT_EQ(DISP_E_UNKNOWNNAME, ids({L"GetConnected"}, found));

    UINT count = 0;
    host::ComPointer<ITypeInfo> type;
    EXPECT_EQ(S_OK, object->GetTypeInfoCount(&count));
    EXPECT_EQ(1u, count);
    EXPECT_EQ(S_OK, object->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.out()));
    EXPECT_EQ(DISP_E_BADINDEX, object->GetTypeInfo(1, LOCALE_USER_DEFAULT, type.out()));
}

TEST_F(LateBinding, NamesTheArgumentThatIsWrong) {
    constexpr WORD method = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
    constexpr WORD put = DISPATCH_PROPERTYPUT;
    constexpr UINT none = 99;  // no argument is named as the wrong one
    constexpr DISPID putValue = DISPID_PROPERTYPUT;
    const struct {
        const wchar_t* member;
        WORD kind;
        std::vector<DISPID> names;  // of the last arguments
        std::vector<OleVariant*> arguments;
        HRESULT result;
        UINT wrongArgument;
    } calls[] = {
        // Connect(medium, Medium2, [Phone], [Id], [Dicsonnect])
        {L"Connect", method, {}, {&four, &four, &leftOut, &text}, S_OK, none},
        {L"Connect", method, {3, 1}, {&four, &text, &four}, S_OK, none},
        {L"GetAllUids", method, {1, 0}, {&empty, &four}, S_OK, none},
        {L"Meeting_", put, {putValue}, {&four}, S_OK, none},
        {L"Meeting_", method, {}, {}, DISP_E_MEMBERNOTFOUND, none},
        {L"Meeting_", put, {putValue}, {&text, &four}, DISP_E_BADPARAMCOUNT, none},
        {L"Init", put, {putValue}, {&four}, DISP_E_MEMBERNOTFOUND, none},
        {L"Init", method, {}, {&four}, DISP_E_BADPARAMCOUNT, none},
        {L"Connect", method, {}, {&four}, DISP_E_BADPARAMCOUNT, none},
        {L"Connect", method, {}, {&four, &leftOut}, DISP_E_PARAMNOTOPTIONAL, 0},
        {L"Connect", method, {9}, {&four, &four, &text}, DISP_E_PARAMNOTFOUND, 0},
        {L"Connect", method, {0}, {&four, &four, &text}, DISP_E_BADPARAMCOUNT, none},
        {L"Connect", method, {}, {&text, &four}, DISP_E_TYPEMISMATCH, 1},
        {L"Connect", method, {}, {&four, &array}, DISP_E_TYPEMISMATCH, 0},
        {L"GetAllUids", method, {}, {&four, &text}, DISP_E_TYPEMISMATCH, 0},
        {L"DeleteFile", method, {}, {&array}, DISP_E_TYPEMISMATCH, 0},
        // Neither a text nor a record is a progress control.
        {L"NokiaGetDataItems", method, {}, {&text, &text, &four, &empty, &text}, DISP_E_TYPEMISMATCH, 0},
        {L"WriteCalendarItem",
         method,
         {},
         {&text, &text, &text, &empty, &four, &empty},
         DISP_E_TYPEMISMATCH,
         3},
    };
    for (auto [member, kind, names, arguments, expected, wrong] : calls) {
        SCOPED_TRACE(member);
        std::vector<VARIANT> list;
        for (OleVariant* const argument : arguments)
            list.insert(list.begin(), *argument->get());
        std::reverse(names.begin(), names.end());
        DISPPARAMS parameters = {list.data(), names.data(), static_cast<UINT>(list.size()),
                                 static_cast<UINT>(names.size())};
        DISPID id = 0;
        UINT wrongArgument = none;
        EXPECT_EQ(S_OK, ids({member}, &id));
        EXPECT_EQ(expected, object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, nullptr,
                                           nullptr, &wrongArgument));
        EXPECT_EQ(wrong, wrongArgument);
    }
    DISPPARAMS nothing = {};
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, object->Invoke(4711, IID_NULL, LOCALE_USER_DEFAULT, method, &nothing,
                                                    nullptr, nullptr, nullptr));
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE, object->Invoke(1, __uuidof(IDispatch), LOCALE_USER_DEFAULT, method,
                                                      &nothing, nullptr, nullptr, nullptr));
}

TEST_F(LateBinding, FillsAnArrayOfFixedShapeAsFarAsItGoes) {
    OleVariant variable;
    V_ARRAY(variable.get()) = SafeArrayCreateVector(VT_VARIANT, /*lLbound=*/0, /*cElements=*/2);
    V_VT(variable.get()) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(variable.get())->fFeatures |= FADF_FIXEDSIZE;
    VARIANT arguments[2] = {{}, *four.get()};
    V_VT(&arguments[0]) = VT_BYREF | VT_VARIANT;
    V_VARIANTREF(&arguments[0]) = variable.get();
    DISPPARAMS parameters = {arguments, nullptr, 2, 0};
    DISPID id = 0;
    EXPECT_EQ(S_OK, ids({L"GetAllUids"}, &id));
    // The member adds a third element.
    EXPECT_EQ(S_OK, object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, nullptr,
                                   nullptr, nullptr));
    SAFEARRAY* const kept = V_ARRAY(variable.get());
    EXPECT_EQ(2u, kept->rgsabound[0].cElements);
    EXPECT_EQ(VT_BSTR, V_VT(&static_cast<VARIANT*>(kept->pvData)[1]));
    kept->fFeatures &= static_cast<USHORT>(~FADF_FIXEDSIZE);
}

}  // namespace
}  // namespace ovno2
