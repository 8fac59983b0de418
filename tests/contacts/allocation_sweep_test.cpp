#include "common/failing_allocator.h"
#include "contacts/contacts_test.h"
#include "driver/progress_object.h"

namespace ovno2::Contacts {
namespace {

class AllocationSweep : public ContactsTest {
  protected:
    AllocationSweep() {
        clock().set({.year = 2008, .month = 7, .day = 1, .hour = 12});
        simulator.journal(false);
        addPhone({contactOf("01", {{{"id", 2}, {"text", "Anna with a long first name"}},
                                   {{"id", 256}, {"address", {"", "A street with a long name"}}}}),
                  contactOf("02", {{{"id", 2}, {"text", "Bob with a long first name"}}})});
    }
};

TEST_F(AllocationSweep, EveryAllocationOfAReadMayFail) {
    table = tableOf({1, 2, 3, 6, 45});
    ASSERT_EQ(2, read());
    const Text bob = values(2);
    long runs = 0;
    Long result = 0;
    // Counted from when the phone has been found, which is the second step of the progress.
    long fails = -1;
    int steps = 0;
    progressbar = std::make_shared<ProgressObject>([&](Long) {
        if (++steps == 2) allocationsLeft = fails;
    });
    const auto readOnce = [&] {
        fails = std::exchange(allocationsLeft, -1);
        steps = 0;
        items.clear();
        result = read();
    };
    failEveryAllocation(readOnce, [&](long n) {
        EXPECT_EQ(std::max(result, 0), items.hasElements() ? items.upperBound() : 0) << "allocation " << n;
        letGo();
        EXPECT_EQ("", simulator.leaks()) << "allocation " << n;
        items.clear();
        EXPECT_EQ(2, read()) << "after allocation " << n;
        EXPECT_EQ(bob, values(2));
        letGo();
        ++runs;
    });
    EXPECT_LT(30, runs);
}

}  // namespace
}  // namespace ovno2::Contacts
