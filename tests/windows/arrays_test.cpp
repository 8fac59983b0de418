// Safe arrays of every kind of host, in and out.
#include "com/records.h"
#include "windows/component_test.h"

namespace ovno2::windows_tests {
namespace {

using ::testing::ElementsAre;

constexpr const char* secondSerial = "356300010000018";

class ArraysTest : public ComponentTest {
  protected:
    LONG list() { return lists.read(*object.get()); }
    void addTwoPhones() {
        simulator.addPhone(simulator.plainPhone(serial));
        simulator.addPhone(simulator.plainPhone(secondSerial));
    }
    static const SAFEARRAYBOUND& boundOf(const OwnedSafeArray& array) { return array.get()->rgsabound[0]; }
    // A host's contact records from `lowerBound` on, with something of its own in each.
    static SAFEARRAY* newContacts(ULONG count, LONG lowerBound) {
        ComPointer<IRecordInfo> information;
        *information.out() = com::recordInformation(com::guidOfAdrItem);
        SAFEARRAYBOUND bound = {count, lowerBound};
        SAFEARRAY* const array = SafeArrayCreateEx(VT_RECORD, 1, &bound, information.get());
        for (ULONG i = 0; i < count; ++i) {
            tAdrItem& record = static_cast<tAdrItem*>(array->pvData)[i];
            record.Host1 = static_cast<LONG>(100 + i);
            record.Host17 = static_cast<LONG>(1700 + i);
            record.Location = com::newBstr(u"the host's");
        }
        return array;
    }

    ComPointer<_covNo2> object = create();
    DeviceLists lists;
    OwnedSafeArray &models = lists.models, &media = lists.media, &serials = lists.serials,
                   &addresses = lists.addresses, &names = lists.names, &types = lists.types;
};

TEST_F(ArraysTest, ArraysWithElementsAndOtherLowerBoundsAreMadeAnew) {
    addTwoPhones();
    models.reset(newTexts({u"a", u"b", u"c", u"d"}, /*lowerBound=*/3));
    media.reset(SafeArrayCreateVector(VT_I4, 1, 2));
    EXPECT_EQ(2, list());
    EXPECT_THAT(textsOf(serials), ElementsAre(u"356300010000017", u"356300010000018"));
    EXPECT_THAT(numbersOf(types), ElementsAre(65, 65)) << "an array that was null";
    EXPECT_THAT(textsOf(models), ElementsAre(u"Nokia N95", u"Nokia N95"));
    EXPECT_EQ(0, boundOf(models).lLbound);
    EXPECT_THAT(numbersOf(media), ElementsAre(8, 8));
    EXPECT_EQ(0, boundOf(media).lLbound);

    // The same again changes nothing in the host's arrays.
    const void* const data = models.get()->pvData;
    const BSTR first = slotsOf<BSTR>(models)[0];
    EXPECT_EQ(2, list());
    EXPECT_EQ(data, models.get()->pvData);
    EXPECT_EQ(first, slotsOf<BSTR>(models)[0]);
}

TEST_F(ArraysTest, AnArrayThatMustKeepItsShapeGetsWhatFits) {
    addTwoPhones();
    serials.reset(newTexts({u"old"}));
    serials.get()->fFeatures |= FADF_FIXEDSIZE;
    names.reset(newTexts({u"1", u"2", u"3"}));
    SafeArrayLock(names.get());
    EXPECT_EQ(2, list());
    EXPECT_THAT(textsOf(serials), ElementsAre(u"356300010000017"));
    EXPECT_THAT(textsOf(names), ElementsAre(u"Nokia N95", u"Nokia N95", u"3"));
    serials.get()->fFeatures &= static_cast<USHORT>(~FADF_FIXEDSIZE);
    SafeArrayUnlock(names.get());
}

TEST_F(ArraysTest, ArraysOfOtherElementsGiveAFailureAndStayAsTheyAre) {
    addTwoContacts();
    addresses.reset(SafeArrayCreateVector(VT_R8, 0, 2));
    EXPECT_EQ(-1, list());
    EXPECT_FALSE(models);
    EXPECT_EQ(sizeof(double), addresses.get()->cbElements);
    addresses.reset();

    SAFEARRAYBOUND bounds[] = {{2, 0}, {2, 0}};
    models.reset(SafeArrayCreate(VT_BSTR, 2, bounds));
    EXPECT_EQ(-1, list());

    ComPointer<IRecordInfo> otherRecord;
    *otherRecord.out() = com::recordInformation(com::guidOfDirItem);
    OwnedSafeArray items(SafeArrayCreateEx(VT_RECORD, 1, bounds, otherRecord.get()));
    EXPECT_EQ(-1, readContacts(*object.get(), items));
    EXPECT_EQ(sizeof(tDirItem), items.get()->cbElements);
    // As large as the record, but nobody says that it is one.
    items.reset(SafeArrayCreateVector(VT_UI1, 0, 3 * sizeof(tAdrItem)));
    EXPECT_EQ(-1, readContacts(*object.get(), items));
}

TEST_F(ArraysTest, ContactsFillANullArrayAndAreAppendedToTheHostsWhoseMembersStay) {
    addTwoContacts();
    OwnedSafeArray items;
    EXPECT_EQ(2, readContacts(*object.get(), items));
    ASSERT_EQ(3u, slotsOf<tAdrItem>(items).size());
    ComPointer<IRecordInfo> information;
    GUID type = {};
    EXPECT_EQ(S_OK, SafeArrayGetRecordInfo(items.get(), information.out()));
    EXPECT_EQ(S_OK, information->GetGuid(&type));
    EXPECT_TRUE(IsEqualGUID(com::guidOfAdrItem, type));
    EXPECT_EQ(nullptr, slotsOf<tAdrItem>(items)[0].Uid);
    EXPECT_EQ(u"Jörg", textOf(slotsOf<tAdrItem>(items)[2].FieldValues).substr(0, 4));

    items.reset(newContacts(2, /*lowerBound=*/1));
    const BSTR location = slotsOf<tAdrItem>(items)[0].Location;
    EXPECT_EQ(4, readContacts(*object.get(), items));
    EXPECT_EQ(1, boundOf(items).lLbound);
    const std::span<tAdrItem> records = slotsOf<tAdrItem>(items);
    ASSERT_EQ(4u, records.size());
    EXPECT_EQ(100, records[0].Host1);
    EXPECT_EQ(1701, records[1].Host17);
    EXPECT_EQ(location, records[0].Location);
    EXPECT_EQ(0, records[2].Host1);
    EXPECT_EQ(u"0A01", textOf(records[2].Uid));
    EXPECT_EQ(u"0A02", textOf(records[3].Uid));
}

}  // namespace
}  // namespace ovno2::windows_tests
