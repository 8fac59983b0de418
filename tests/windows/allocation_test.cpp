// The component's code in this program, with every allocation failing in turn.
#include "com/class_factory.h"
#include "com/records.h"
#include "common/failing_allocator.h"
#include "windows/component_test.h"

namespace ovno2::windows_tests {
namespace {

// The test's own preparations do not fail.
class Unharmed {
  public:
    Unharmed() : left_(std::exchange(allocationsLeft, -1)) {}
    ~Unharmed() { allocationsLeft = left_; }
    Unharmed(const Unharmed&) = delete;
    Unharmed& operator=(const Unharmed&) = delete;

  private:
    long left_;
};

class AllocationTest : public ComponentTest {
  protected:
    static HRESULT createHere(ComPointer<_covNo2>& object) {
        return com::classFactory().CreateInstance(nullptr, __uuidof(_covNo2), object.outAny());
    }
};

TEST_F(AllocationTest, CreatingAnObjectGivesItWholeOrOutOfMemory) {
    HRESULT result = S_OK;
    ComPointer<_covNo2> object;
    long refused = 0;
    failEveryAllocation([&] { result = createHere(object); },
                        [&](long n) {
                            if (result != S_OK) {
                                EXPECT_EQ(E_OUTOFMEMORY, result) << "allocation " << n;
                                EXPECT_FALSE(object);
                                ++refused;
                            }
                            object.reset();
                            resetThreadState();
                        });
    // What fails inside Init shows in the members' results.
    EXPECT_GE(refused, 2);
    EXPECT_EQ(S_OK, createHere(object));
}

TEST_F(AllocationTest, AListThatRunsOutOfMemoryGivesAResultAndWholeArrays) {
    addPhone();
    ComPointer<_covNo2> object;
    ASSERT_EQ(S_OK, createHere(object));
    OwnedSafeArray arrays[6];
    LONG result = 0;
    const auto list = [&] {
        for (OwnedSafeArray& array : arrays)
            array.reset();
        const HRESULT called = object->GetConnectedDevices(
            arrays[0].address(), arrays[1].address(), arrays[2].address(), arrays[3].address(),
            arrays[4].address(), arrays[5].address(), -1, &result);
        const Unharmed unharmed;
        EXPECT_EQ(S_OK, called);
    };
    long runs = 0;
    failEveryAllocation(list, [&](long n) {
        ++runs;
        EXPECT_LE(result, 1) << "allocation " << n;
        list();
        EXPECT_EQ(1, result);
        EXPECT_EQ(u"356300010000017", textsOf(arrays[2]).at(0)) << "after allocation " << n;
    });
    EXPECT_LT(20, runs);
}

TEST_F(AllocationTest, AReadThatRunsOutOfMemoryKeepsTheHostsRecords) {
    addTwoContacts();
    ComPointer<_covNo2> object;
    ASSERT_EQ(S_OK, createHere(object));
    const OwnedSafeArray table(host::newTable(tableOf({1, 2, 3})));
    OwnedSafeArray items;
    LONG result = 0;
    const auto read = [&] {
        ComPointer<IRecordInfo> information;
        SAFEARRAYBOUND bound = {2, 0};
        SAFEARRAY* fields = table.get();
        OwnedSafeArray groups;
        BSTR model = nullptr;
        BSTR phone = nullptr;
        HRESULT called = S_OK;
        {
            const Unharmed unharmed;
            *information.out() = com::recordInformation(com::guidOfAdrItem);
            items.reset(SafeArrayCreateEx(VT_RECORD, 1, &bound, information.get()));
            slotsOf<tAdrItem>(items)[1].Host2 = 22;
            model = com::newBstr(u"Nokia N95");
            phone = com::newBstr(u"356300010000017");
        }
        called = object->NokiaGetAddressBookItems(&model, &phone, nullptr, items.address(), &fields,
                                                  groups.address(), nullptr, nullptr, nullptr, &result);
        const Unharmed unharmed;
        EXPECT_EQ(S_OK, called);
        SysFreeString(model);
        SysFreeString(phone);
    };
    long runs = 0;
    failEveryAllocation(read, [&](long n) {
        ++runs;
        ASSERT_GE(slotsOf<tAdrItem>(items).size(), 2u);
        EXPECT_EQ(22, slotsOf<tAdrItem>(items)[1].Host2) << "allocation " << n;
        read();
        EXPECT_EQ(3, result) << "after allocation " << n;
        EXPECT_EQ(u"0A02", textOf(slotsOf<tAdrItem>(items)[3].Uid));
    });
    EXPECT_LT(40, runs);
}

TEST_F(AllocationTest, ALateBoundCallThatRunsOutOfMemoryGivesItsResultAllTheSame) {
    addPhone();
    ComPointer<_covNo2> object;
    ASSERT_EQ(S_OK, createHere(object));
    constexpr DISPID getConnectedDevices = 21;
    VARIANT variables[6];
    VARIANT arguments[6];
    VARIANT result;
    VariantInit(&result);
    const auto list = [&] {
        for (std::size_t i = 0; i < std::size(variables); ++i) {
            VariantInit(&variables[i]);
            V_VT(&arguments[i]) = VT_BYREF | VT_VARIANT;
            V_VARIANTREF(&arguments[i]) = &variables[i];
        }
        DISPPARAMS parameters = {arguments, nullptr, 6, 0};
        const HRESULT called = object->Invoke(getConnectedDevices, IID_NULL, LOCALE_USER_DEFAULT,
                                              DISPATCH_METHOD, &parameters, &result, nullptr, nullptr);
        const Unharmed unharmed;
        EXPECT_EQ(S_OK, called);
        for (VARIANT& variable : variables) {
            EXPECT_TRUE(V_VT(&variable) == VT_EMPTY || V_VT(&variable) == (VT_ARRAY | VT_VARIANT));
            VariantClear(&variable);
        }
    };
    list();  // the member table is made once
    failEveryAllocation(list, [&](long n) {
        EXPECT_EQ(VT_I4, V_VT(&result));
        EXPECT_LE(V_I4(&result), 1) << "allocation " << n;
        list();
        EXPECT_EQ(1, V_I4(&result)) << "after allocation " << n;
    });
}

}  // namespace
}  // namespace ovno2::windows_tests
