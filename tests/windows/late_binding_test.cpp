// IDispatch as script hosts and late-bound Basic use it.
#include "com/records.h"
#include "platform/win32/dispatch_object.h"
#include "windows/component_test.h"

namespace ovno2::windows_tests {
namespace {

using platform::win32::OleVariant;
using ::testing::ElementsAre;

// A VARIANT for the length of a test.
class Value {
  public:
    Value() = default;
    explicit Value(LONG number) {
        V_VT(get()) = VT_I4;
        V_I4(get()) = number;
    }
    explicit Value(TextView text) {
        V_VT(get()) = VT_BSTR;
        V_BSTR(get()) = com::newBstr(text);
    }
    // A script's variable that is passed by reference.
    explicit Value(Value& variable) {
        V_VT(get()) = VT_BYREF | VT_VARIANT;
        V_VARIANTREF(get()) = variable.get();
    }
    static Value leftOut() {
        Value value;
        V_VT(value.get()) = VT_ERROR;
        V_ERROR(value.get()) = DISP_E_PARAMNOTFOUND;
        return value;
    }
    Value(Value&& other) noexcept { std::swap(*get(), *other.get()); }
    VARIANT* get() { return value_.get(); }

  private:
    OleVariant value_;
};

class LateBindingTest : public ComponentTest {
  protected:
    DISPID id(const wchar_t* name) {
        std::wstring text = name;
        LPOLESTR names = text.data();
        DISPID found = DISPID_UNKNOWN;
        EXPECT_EQ(S_OK, object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &found)) << name;
        return found;
    }

    // Calls with the arguments in the order in which a script writes them; `names` = the parameters'
    // positions of the last ones, which are passed by name.
    template <class... Arguments>
    HRESULT invoke(const wchar_t* name, WORD kind, std::vector<DISPID> names, Arguments&&... arguments) {
        std::vector<VARIANT> list = {*arguments.get()...};
        std::reverse(list.begin(), list.end());
        std::reverse(names.begin(), names.end());
        DISPPARAMS parameters = {list.data(), names.data(), static_cast<UINT>(list.size()),
                                 static_cast<UINT>(names.size())};
        wrongArgument = 99;
        VariantClear(result.get());
        return object->Invoke(id(name), IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, result.get(),
                              nullptr, &wrongArgument);
    }
    template <class... Arguments>
    HRESULT call(const wchar_t* name, Arguments&&... arguments) {
        return invoke(name, DISPATCH_METHOD | DISPATCH_PROPERTYGET, {},
                      std::forward<Arguments>(arguments)...);
    }

    ComPointer<_covNo2> object = create();
    OleVariant result;
    UINT wrongArgument = 0;
};

TEST_F(LateBindingTest, MembersAndParametersAreFoundByName) {
    std::wstring names[] = {L"getconnecteddevices", L"MEDIUM", L"Types"};
    LPOLESTR texts[] = {names[0].data(), names[1].data(), names[2].data()};
    DISPID ids[3] = {};
    EXPECT_EQ(S_OK, object->GetIDsOfNames(IID_NULL, texts, 3, LOCALE_USER_DEFAULT, ids));
    EXPECT_EQ(6, ids[1]);
    EXPECT_EQ(5, ids[2]);
    names[1] = L"median";
    texts[1] = names[1].data();
    EXPECT_EQ(DISP_E_UNKNOWNNAME, object->GetIDsOfNames(IID_NULL, texts, 3, LOCALE_USER_DEFAULT, ids));
    EXPECT_EQ(DISPID_UNKNOWN, ids[1]);
    EXPECT_EQ(5, ids[2]);
    names[0] = L"GetConnected";
    texts[0] = names[0].data();
    EXPECT_EQ(DISP_E_UNKNOWNNAME, object->GetIDsOfNames(IID_NULL, texts, 1, LOCALE_USER_DEFAULT, ids));

    UINT count = 0;
    ComPointer<ITypeInfo> type;
    EXPECT_EQ(S_OK, object->GetTypeInfoCount(&count));
    EXPECT_EQ(1u, count);
    EXPECT_EQ(S_OK, object->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.out()));
    EXPECT_EQ(DISP_E_BADINDEX, object->GetTypeInfo(1, LOCALE_USER_DEFAULT, type.out()));
}

TEST_F(LateBindingTest, ArgumentsMayBeLeftOutOrNamed) {
    Value number(4), text(u"x");
    // Connect(medium, Medium2, [Phone], [Id], [Dicsonnect])
    EXPECT_EQ(S_OK, call(L"Connect", number, number));
    EXPECT_EQ(VT_I4, V_VT(result.get()));
    EXPECT_EQ(S_OK, call(L"Connect", number, number, Value::leftOut(), text));
    EXPECT_EQ(S_OK, invoke(L"Connect", DISPATCH_METHOD, {3, 1}, number, text, number));
    EXPECT_EQ(S_OK, invoke(L"GetAllUids", DISPATCH_METHOD, {1, 0}, Value(), Value(7)));
    EXPECT_EQ(0, V_I4(result.get()));
    // Numbers come in the script's own type.
    EXPECT_EQ(S_OK, call(L"Connect", Value(u" 4 "), number, text, text, Value(u"True")));
}

TEST_F(LateBindingTest, PropertiesTakeTheirValueAndNothingElse) {
    Value text(u"Besprechung"), number(1);
    EXPECT_EQ(S_OK, invoke(L"Meeting_", DISPATCH_PROPERTYPUT, {DISPID_PROPERTYPUT}, text));
    EXPECT_EQ(S_OK, invoke(L"GetAllFields_", DISPATCH_PROPERTYPUT, {DISPID_PROPERTYPUT}, number));
    EXPECT_EQ(S_OK, invoke(L"Meeting_", DISPATCH_PROPERTYPUT, {DISPID_PROPERTYPUT}, number));
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, call(L"Meeting_"));
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(L"Init", DISPATCH_PROPERTYPUT, {DISPID_PROPERTYPUT}, number));
    EXPECT_EQ(DISP_E_BADPARAMCOUNT,
              invoke(L"Meeting_", DISPATCH_PROPERTYPUT, {DISPID_PROPERTYPUT}, text, number));
}

TEST_F(LateBindingTest, WrongCountsNamesAndTypesGiveTheStandardErrors) {
    Value number(1), text(u"x"), date;
    OwnedSafeArray texts(newTexts({u"a"}));
    V_VT(date.get()) = VT_ARRAY | VT_BSTR;
    V_ARRAY(date.get()) = texts.get();

    EXPECT_EQ(DISP_E_BADPARAMCOUNT, call(L"Init", number));
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, call(L"Connect", number));
    EXPECT_EQ(DISP_E_PARAMNOTOPTIONAL, call(L"Connect", number, Value::leftOut()));
    EXPECT_EQ(DISP_E_PARAMNOTFOUND, invoke(L"Connect", DISPATCH_METHOD, {9}, number, number, text));
    EXPECT_EQ(0u, wrongArgument);
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, invoke(L"Connect", DISPATCH_METHOD, {0}, number, number, text));
    EXPECT_EQ(DISP_E_TYPEMISMATCH, call(L"Connect", text, number));
    EXPECT_EQ(1u, wrongArgument);
    EXPECT_EQ(DISP_E_TYPEMISMATCH, call(L"Connect", number, date));
    EXPECT_EQ(0u, wrongArgument);
    EXPECT_EQ(DISP_E_TYPEMISMATCH, call(L"GetAllUids", number, text));
    EXPECT_EQ(DISP_E_TYPEMISMATCH, call(L"DeleteFile", date));
    // Neither a text nor a record is a progress control.
    EXPECT_EQ(DISP_E_TYPEMISMATCH, call(L"NokiaGetDataItems", text, text, number, Value(), text));
    EXPECT_EQ(DISP_E_TYPEMISMATCH, call(L"WriteCalendarItem", text, text, text, Value(), number, Value()));

    DISPPARAMS none = {};
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, object->Invoke(4711, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                                    &none, nullptr, nullptr, nullptr));
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE, object->Invoke(1, __uuidof(IDispatch), LOCALE_USER_DEFAULT,
                                                      DISPATCH_METHOD, &none, nullptr, nullptr, nullptr));
    V_VT(date.get()) = VT_EMPTY;
}

TEST_F(LateBindingTest, AScriptsVariablesGetArraysOfVariants) {
    addPhone();
    Value models, media, serials, addresses, names, types;
    // One variable holds an array already, another one is of a fixed shape.
    OwnedSafeArray before(SafeArrayCreateVector(VT_VARIANT, 0, 3));
    V_VT(serials.get()) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(serials.get()) = before.release();
    V_VT(types.get()) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(types.get()) = SafeArrayCreateVector(VT_VARIANT, 0, 2);
    V_ARRAY(types.get())->fFeatures |= FADF_FIXEDSIZE;

    ASSERT_EQ(S_OK, call(L"GetConnectedDevices", Value(models), Value(media), Value(serials),
                         Value(addresses), Value(names), Value(types)));
    EXPECT_EQ(1, V_I4(result.get()));
    ASSERT_EQ(VT_ARRAY | VT_VARIANT, V_VT(models.get()));
    ASSERT_EQ(1u, V_ARRAY(models.get())->rgsabound[0].cElements);
    const auto* const model = static_cast<const VARIANT*>(V_ARRAY(models.get())->pvData);
    EXPECT_EQ(VT_BSTR, V_VT(model));
    EXPECT_EQ(u"Nokia N95", textOf(V_BSTR(model)));
    ASSERT_EQ(1u, V_ARRAY(serials.get())->rgsabound[0].cElements);
    const auto* const type = static_cast<const VARIANT*>(V_ARRAY(types.get())->pvData);
    ASSERT_EQ(2u, V_ARRAY(types.get())->rgsabound[0].cElements);
    EXPECT_EQ(65, V_I4(&type[0]));
    EXPECT_EQ(VT_EMPTY, V_VT(&type[1]));
    V_ARRAY(types.get())->fFeatures &= static_cast<USHORT>(~FADF_FIXEDSIZE);
}

TEST_F(LateBindingTest, WithoutPhonesAScriptGetsArraysItCanAskForTheirBounds) {
    Value models, other[5];
    V_VT(models.get()) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(models.get()) = SafeArrayCreateVector(VT_VARIANT, 0, 1);
    ASSERT_EQ(S_OK, call(L"GetConnectedDevices", Value(models), Value(other[0]), Value(other[1]),
                         Value(other[2]), Value(other[3]), Value(other[4])));
    ASSERT_EQ(VT_ARRAY | VT_VARIANT, V_VT(models.get()));
    LONG upper = 0;
    EXPECT_EQ(S_OK, SafeArrayGetUBound(V_ARRAY(models.get()), 1, &upper));
    EXPECT_EQ(-1, upper);
}

TEST_F(LateBindingTest, TypedVariablesAreWrittenDirectly) {
    addTwoContacts();
    BSTR model = com::newBstr(u"Nokia N95");
    OwnedSafeArray items, groups;
    OwnedSafeArray table(host::newTable(tableOf({1, 2})));
    Value arguments[6];
    V_VT(arguments[0].get()) = VT_BYREF | VT_BSTR;
    V_BSTRREF(arguments[0].get()) = &model;
    V_VT(arguments[3].get()) = VT_BYREF | VT_ARRAY | VT_RECORD;
    V_ARRAYREF(arguments[3].get()) = items.address();
    V_VT(arguments[4].get()) = VT_BYREF | VT_ARRAY | VT_BSTR;
    V_ARRAYREF(arguments[4].get()) = table.address();
    V_VT(arguments[5].get()) = VT_BYREF | VT_ARRAY | VT_BSTR;
    V_ARRAYREF(arguments[5].get()) = groups.address();
    Value phone{TextView(u"356300010000017")};
    ASSERT_EQ(S_OK, call(L"NokiaGetAddressBookItems", arguments[0], phone, Value(u""), arguments[3],
                         arguments[4], arguments[5]));
    EXPECT_EQ(2, V_I4(result.get()));
    EXPECT_EQ(3u, slotsOf<tAdrItem>(items).size());
    SysFreeString(model);

    // An untyped variable gets the records as well.
    Value records;
    ASSERT_EQ(S_OK, call(L"NokiaGetAddressBookItems", Value(u"Nokia N95"), phone, Value(u""), Value(records),
                         arguments[4], arguments[5]));
    EXPECT_EQ(2, V_I4(result.get()));
    ASSERT_EQ(VT_ARRAY | VT_RECORD, V_VT(records.get()));
    EXPECT_EQ(3u, V_ARRAY(records.get())->rgsabound[0].cElements);
}

}  // namespace
}  // namespace ovno2::windows_tests
