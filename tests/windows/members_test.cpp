// All fifty slots, called early-bound.
#include "windows/component_test.h"

namespace ovno2::windows_tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using MembersTest = ComponentTest;

TEST_F(MembersTest, TheFrameAndItsSettingsAnswer) {
    const ComPointer<_covNo2> object = create();
    LONG result = -1;
    EXPECT_EQ(S_OK, object->Init(&result));
    EXPECT_EQ(0, result);

    OwnedSafeArray names(newTexts({u"high", u"normal"}, /*lowerBound=*/1));
    EXPECT_EQ(S_OK, object->SetPriorities_(names.address()));
    VARIANT nothing;
    V_VT(&nothing) = VT_I4;
    EXPECT_EQ(S_OK, object->SetStatuses_(names.address(), &nothing));
    EXPECT_EQ(VT_EMPTY, V_VT(&nothing));
    EXPECT_THAT(textsOf(names), ElementsAre(u"high", u"normal"));

    using Put = HRESULT (STDMETHODCALLTYPE _covNo2::*)(BSTR*);
    for (const Put put :
         {&_covNo2::put_Meeting_, &_covNo2::put_Bithday_, &_covNo2::put_Call_, &_covNo2::put_Reminder_,
          &_covNo2::put_Task_, &_covNo2::put_Minute_, &_covNo2::put_Hour_, &_covNo2::put_Day_,
          &_covNo2::put_Note_, &_covNo2::put_PhoneModel_}) {
        TextVariable word(u"wörd");
        EXPECT_EQ(S_OK, (object.get()->*put)(word.address()));
        EXPECT_EQ(u"wörd", word.text());
        EXPECT_EQ(S_OK, (object.get()->*put)(nullptr));
    }
    LONG on = 1;
    EXPECT_EQ(S_OK, object->put_GetAllFields_(&on));
    EXPECT_EQ(S_OK, object->put_AddTimeOffset_(&on));
    EXPECT_EQ(1, on);

    float version = 0;
    EXPECT_EQ(S_OK, object->GetApiVersion(&version));
    EXPECT_GT(version, 0);
    EXPECT_EQ(S_OK, object->GetPCSuiteVersion(&version));
    EXPECT_EQ(0, version);
    VARIANT_BOOL found = 7;
    EXPECT_EQ(S_OK, object->CheckIfNokiaSDKIsThere(VARIANT_FALSE, &found));
    EXPECT_TRUE(found == VARIANT_TRUE || found == VARIANT_FALSE);

    EXPECT_EQ(S_OK, object->DMApiTerminate_());
    EXPECT_EQ(S_OK, object->EndFS(&result));
    EXPECT_EQ(0, result);
    EXPECT_EQ(S_OK, object->CleanUp(&result));
    EXPECT_EQ(0, result);
    EXPECT_EQ(S_OK, object->Init(/*result=*/nullptr));
}

TEST_F(MembersTest, ThePhonesAndTheirFilesAnswer) {
    addTwoContacts();
    const ComPointer<_covNo2> object = create();
    LONG result = -1;
    EXPECT_EQ(S_OK, object->GetConnections(&result));
    EXPECT_GE(result, 0);
    EXPECT_EQ(S_OK, object->Connect(8, -1, nullptr, nullptr, VARIANT_FALSE, &result));

    OwnedSafeArray models, media, serials, addresses, names, types, states;
    EXPECT_EQ(S_OK, object->GetConnectedDevices(models.address(), media.address(), serials.address(),
                                                addresses.address(), names.address(), types.address(), -1,
                                                &result));
    EXPECT_EQ(1, result);
    EXPECT_THAT(textsOf(models), ElementsAre(u"Nokia N95"));
    EXPECT_THAT(textsOf(serials), ElementsAre(u"356300010000017"));
    EXPECT_THAT(numbersOf(media), ElementsAre(8));
    EXPECT_THAT(numbersOf(types), ElementsAre(65));

    EXPECT_EQ(S_OK, object->MediaSearchBT(models.address(), addresses.address(), serials.address(),
                                          states.address(), 1, &result));
    TextVariable address(u"02:00:00:00:00:01");
    EXPECT_EQ(S_OK, object->ChangeDeviceTrustedState(address.address(), 3, nullptr, &result));

    TextVariable model(u"Nokia N95");
    OwnedSafeArray list;
    const Bstr root(u"/");
    EXPECT_EQ(S_OK, object->GetDirContents(model.address(), list.address(), root.get(), &result));
    EXPECT_EQ(u"Nokia N95", model.text());
    // A phone without files: every operation says so in its result.
    const struct {
        const char* name;
        HRESULT (STDMETHODCALLTYPE _covNo2::*two)(BSTR*, BSTR*, LONG*);
        HRESULT (STDMETHODCALLTYPE _covNo2::*one)(BSTR*, LONG*);
    } operations[] = {
        {"GetFile", &_covNo2::GetFile, nullptr},           {"PutFile", &_covNo2::PutFile, nullptr},
        {"RenameFile", &_covNo2::RenameFile, nullptr},     {"DeleteFile", nullptr, &_covNo2::DeleteFile},
        {"RenameFolder", &_covNo2::RenameFolder, nullptr}, {"CreateFolder", nullptr, &_covNo2::CreateFolder},
        {"DeleteFolder", nullptr, &_covNo2::DeleteFolder},
    };
    for (const auto& [name, two, one] : operations) {
        TextVariable first(u"root/E:/none/none.txt"), second(u"none");
        result = 1;
        EXPECT_EQ(S_OK, two ? (object.get()->*two)(first.address(), second.address(), &result)
                            : (object.get()->*one)(first.address(), &result));
        EXPECT_LT(result, 1) << name;
    }
    EXPECT_EQ(S_OK, object->EndFS(&result));
}

TEST_F(MembersTest, TheContentsAnswer) {
    addTwoContacts();
    const ComPointer<_covNo2> object = create();
    LONG result = -1;
    TextVariable model(u"Nokia N95"), phone(u"356300010000017"), text, other(u"x");
    const Bstr id(u"0A01");
    OwnedSafeArray table(host::newTable(tableOf({1, 2, 3}))), texts, moreTexts;
    IDispatch* none = nullptr;

    EXPECT_EQ(S_OK, object->GetAllUids(2, texts.address(), &result));
    EXPECT_EQ(0, result);
    EXPECT_FALSE(texts);
    EXPECT_EQ(S_OK, object->EndWriteSession(5, texts.address(), moreTexts.address(), VARIANT_TRUE, &result));
    EXPECT_EQ(0, result);
    EXPECT_EQ(S_OK,
              object->WriteAddressBookItem(model.address(), phone.address(), text.address(), other.address(),
                                           table.address(), VARIANT_TRUE, VARIANT_FALSE, 0, 0, &result));
    EXPECT_EQ(S_OK, object->DeleteAddressBookItem(model.address(), phone.address(), id.get(), &result));
    EXPECT_EQ(S_OK, object->EndWriteSession(1, texts.address(), moreTexts.address(), VARIANT_FALSE, &result));

    VARIANT code;
    VariantInit(&code);
    EXPECT_EQ(S_OK, object->RenameCalender(model.address(), phone.get(), id.get(), id.get(), &code));
    EXPECT_EQ(VT_I4, V_VT(&code));
    EXPECT_EQ(S_OK, object->CreateCalender(model.address(), phone.get(), id.get(), &code));
    EXPECT_EQ(VT_I4, V_VT(&code));
    EXPECT_EQ(S_OK, object->DeleteCalender(model.address(), phone.get(), id.get(), &code));
    EXPECT_EQ(VT_I4, V_VT(&code));
    EXPECT_EQ(S_OK, object->GetCalendarFolders(model.address(), phone.address(), texts.address(),
                                               moreTexts.address(), &result));
    OwnedSafeArray entries;
    EXPECT_EQ(S_OK, object->NokiaGetCalendarItems(model.address(), phone.address(), entries.address(),
                                                  table.address(), &none, &result));
    EXPECT_EQ(S_OK, object->DeleteCalendarItem(model.address(), phone.address(), id.get(), &result));
    tCalItem entry = {};
    entry.Host12 = 12;
    EXPECT_EQ(S_OK, object->WriteCalendarItem(model.address(), phone.address(), &entry, &none, 0,
                                              table.address(), &result));
    EXPECT_EQ(12, entry.Host12);
    SysFreeString(entry.ItemUid);

    LONG what = 3;
    EXPECT_EQ(S_OK, object->NokiaGetDataItems(model.address(), phone.address(), &what, texts.address(),
                                              nullptr, nullptr, &result));
    EXPECT_EQ(3, what);
    EXPECT_EQ(S_OK, object->WriteDataItem(model.address(), phone.address(), text.address(), &result));
    EXPECT_EQ(S_OK, object->DeleteDataItem(model.address(), phone.address(), id.get(), &result));
    EXPECT_EQ(u"Nokia N95", model.text());
}

TEST_F(MembersTest, AHostThatPassesNothingGetsAResult) {
    const ComPointer<_covNo2> object = create();
    LONG result = 5;
    EXPECT_EQ(S_OK,
              object->GetConnectedDevices(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, -1, &result));
    EXPECT_LT(result, 1);
    EXPECT_EQ(S_OK, object->NokiaGetAddressBookItems(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                     nullptr, nullptr, nullptr, &result));
    EXPECT_LT(result, 0);
    EXPECT_EQ(S_OK, object->WriteCalendarItem(nullptr, nullptr, nullptr, nullptr, 0, nullptr, &result));
    EXPECT_EQ(-1, result);
    EXPECT_EQ(S_OK, object->GetDirContents(nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(S_OK, object->LaunchPCSuite2IfRequired(nullptr, &result));
    EXPECT_EQ(-2, result);
}

LONG WINAPI cancel(LONG request, LONG number, LONG style, LONG text);
std::vector<LONG> heard;
LONG WINAPI cancel(LONG request, LONG number, LONG style, LONG text) {
    heard = {request, number, style, text};
    constexpr LONG cancelled = 2;
    return cancelled;
}

TEST_F(MembersTest, TheHostsFunctionIsCalledAndItsAnswerCounts) {
    const ComPointer<_covNo2> object = create();
    LONG procedure = reinterpret_cast<LONG>(&cancel);
    LONG result = 0;
    EXPECT_EQ(S_OK, object->LaunchPCSuite2IfRequired(&procedure, &result));
    EXPECT_EQ(-1, result);
    EXPECT_THAT(heard, ElementsAre(0, 154, 48, 0));
}

TEST_F(MembersTest, TheHostsProgressControlIsAdvanced) {
    addTwoContacts();
    const ComPointer<_covNo2> object = create();
    std::vector<Long> values;
    ComPointer<IDispatch> progress;
    *progress.out() = new host::ProgressControl([&](Long value) { values.push_back(value); });
    OwnedSafeArray items;
    EXPECT_EQ(2, readContacts(*object.get(), items, progress.get()));
    ASSERT_GE(values.size(), 3u);
    EXPECT_EQ(1, values.front());
    // The list of contacts counts 50, each contact 1.
    EXPECT_EQ(52 + values[values.size() - 4], values.back());
}

}  // namespace
}  // namespace ovno2::windows_tests
