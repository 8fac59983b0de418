#include "common/machine_test.h"
#include "pc/registry_access.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace ovno2 {
namespace {

using platform::currentUser;

constexpr TextView key = u"Software\\Test";

class WatchedValue : public MachineTest {
  protected:
    void deleteKey() {
#ifdef _WIN32
        ASSERT_EQ(ERROR_SUCCESS, RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\Test"));
#else
        std::filesystem::remove(folder.path() / "registry.reg");
#endif
    }
    Registry::WatchedValue value{currentUser, key, u"On"};
};

TEST_F(WatchedValue, FollowsItsKeyThroughEveryState) {
    EXPECT_EQ(u"", value.text()) << "no key";
    setRegistryText(currentUser, key, u"Other", u"x");
    EXPECT_EQ(u"", value.text()) << "a key without the value";
    setRegistryText(currentUser, key, u"On", u"1");
    EXPECT_EQ(u"1", value.text());
    const Text longText(300, u'7');
    setRegistryText(currentUser, key, u"On", longText);
    EXPECT_EQ(longText, value.text());
    deleteKey();
    EXPECT_EQ(u"", value.text());
    setRegistryNumber(currentUser, key, u"On", 2);
    EXPECT_EQ(u"2", value.text()) << "another key at the same place";
    deleteKey();
    setRegistryText(currentUser, key, u"On", u"3");
    EXPECT_EQ(u"3", value.text()) << "another one, nobody having looked in between";
    value.close();
    EXPECT_EQ(u"3", value.text());
}

#ifndef _WIN32
TEST_F(WatchedValue, OpensItsKeyOnceAndAgainWhenItCannotBeRead) {
    using platform::portable::PortableRegistry;
    using Operation = PortableRegistry::Operation;
    setRegistryText(currentUser, key, u"On", u"1");
    std::vector<Operation> calls;
    Long result = platform::registryOk;
    static_cast<PortableRegistry&>(machine.registry()).interfere = [&](Operation operation) {
        calls.push_back(operation);
        return operation == Operation::read ? std::exchange(result, platform::registryOk)
                                            : platform::registryOk;
    };
    EXPECT_EQ(u"1", value.text());
    EXPECT_EQ(u"1", value.text());
    EXPECT_EQ((std::vector{Operation::open, Operation::read, Operation::read}), calls);
    calls.clear();
    result = platform::registryAccessDenied;
    EXPECT_EQ(u"1", value.text());
    EXPECT_EQ((std::vector{Operation::read, Operation::open, Operation::read}), calls);
}
#endif

}  // namespace
}  // namespace ovno2
