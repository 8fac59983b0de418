#include "pc/registry_access.h"

#include <fstream>

#include "base/text_pairs.h"
#include "base/utf8.h"
#include "common/machine_test.h"
#include "core/attempt.h"
#include "platform/portable/registry.h"

namespace ovno2 {
namespace {

using platform::currentUser;
using platform::RegistryKey;
using platform::portable::PortableRegistry;
using Operation = PortableRegistry::Operation;

constexpr TextView key = u"Software\\Test";

class RegistryAccess : public MachineTest {
  protected:
    Text get(TextView name) { return Registry::GetRegValue(currentUser, key, name); }
    bool set(TextView name, TextView value, Long type, bool keepZero = false) {
        return Registry::SetRegValue(currentUser, key, name, value, type, keepZero);
    }
    PortableRegistry& registry() { return static_cast<PortableRegistry&>(machine.registry()); }
};

TEST_F(RegistryAccess, EveryTypeCrossesAsText) {
    std::unique_ptr<RegistryKey> opened;
    ASSERT_EQ(0, machine.registry().create(currentUser, key, opened));
    struct Row {
        platform::RegistryValue stored;
        Text text;
    };
    const Row cases[] = {
        {{.type = 1, .text = Text(u"abc\0", 4), .bytes = {}, .number = 0}, u"abc"},
        {{.type = 2, .text = Text(u"%X%\0\0", 5), .bytes = {}, .number = 0}, Text(u"%X%\0", 4)},
        {{.type = 7, .text = Text(u"a\0b\0\0", 5), .bytes = {}, .number = 0}, Text(u"a\0b\0", 4)},
        {{.type = 3, .text = {}, .bytes = std::string("A\0\xE4\x80", 4), .number = 0}, Text(u"A\0ä€", 4)},
        {{.type = 4, .text = {}, .bytes = {}, .number = 300}, u"300"},
        {{.type = 4, .text = {}, .bytes = {}, .number = 0xFFFFFFC4}, u"-60"},
        {{.type = 11, .text = {}, .bytes = "12345678", .number = 0}, u""},
    };
    for (const auto& [stored, text] : cases) {
        ASSERT_EQ(0, opened->write(u"v", stored));
        EXPECT_EQ(text, get(u"v")) << "one NUL is cut, not two; type " << stored.type;
    }
    Text text = u"old";
    EXPECT_EQ(-1, Registry::RegQueryValueText(*opened, u"v", text));
    EXPECT_EQ(u"", text);
    ASSERT_EQ(0, opened->write(u"v", cases[0].stored));
    EXPECT_EQ(0, Registry::RegQueryValueText(*opened, u"v", text));
    EXPECT_EQ(Text(u"abc\0", 4), text) << "the stored NUL belongs to it";
    EXPECT_EQ(2, Registry::RegQueryValueText(*opened, u"missing", text));
    EXPECT_EQ(u"", Registry::GetRegValue(currentUser, u"Software\\Missing", u"x"));
    EXPECT_EQ(u"", Registry::GetRegValue(17, key, u"v"));
}

TEST_F(RegistryAccess, SettingSaysWhetherTheValueReadsBackAsGiven) {
    using Row = std::tuple<TextView, Long, bool, bool, TextView>;
    for (const auto& [value, type, keepZero, result, readBack] :
         {Row{u"new", 1, false, true, u"new"}, Row{u"%A%", 2, false, true, u"%A%"},
          Row{u"a", 7, false, true, u"a"}, Row{u"", 1, false, true, u""},
          Row{u"Zoë 電話", 1, false, true, u"Zoë 電話"}, Row{u"300", 4, false, true, u"300"},
          Row{u"-60", 4, false, true, u"-60"}, Row{u"0", 4, false, false, u""},
          Row{u"0", 4, true, true, u"0"}, Row{u"7.9", 4, false, false, u"7"},
          Row{u"-7.1", 4, false, false, u"-8"}, Row{u"12abc", 4, false, false, u"12"},
          Row{u"abc", 4, false, false, u""}, Row{u"9999999999", 4, false, false, u"old"},
          Row{u"x", 3, false, false, u"old"}, Row{u"x", 11, false, false, u"old"}}) {
        set(u"v", u"old", 1);
        EXPECT_EQ(result, set(u"v", value, type, keepZero)) << toUtf8(value) << " " << type;
        EXPECT_EQ(readBack, get(u"v")) << toUtf8(value) << " " << type;
        clearPendingFailure();
    }
}

TEST_F(RegistryAccess, ALeadingBackslashIsDroppedInTheCallersPathToo) {
    Text path = u"\\Software\\Test";
    EXPECT_TRUE(Registry::SetRegValue(currentUser, path, u"v", u"1", 1));
    EXPECT_EQ(key, path);
    EXPECT_EQ(u"1", get(u"v"));
    EXPECT_TRUE(Registry::SetRegValue(currentUser, TextView(u"\\Software\\Test"), u"v", u"2", 1));
    EXPECT_EQ(u"2", get(u"v"));
    path = u"\\";
    EXPECT_FALSE(Registry::SetRegValue(currentUser, path, u"v", u"", 1));
    EXPECT_EQ(u"", path);
}

TEST_F(RegistryAccess, ANumberThatCannotBeStoredIsDeletedAndStoredOnceMore) {
    ASSERT_TRUE(set(u"v", u"5", 4));
    std::vector<Operation> calls;
    int failures = 1;
    registry().interfere = [&](Operation operation) {
        calls.push_back(operation);
        return operation == Operation::write && failures-- > 0 ? Long{29} : platform::registryOk;
    };
    EXPECT_TRUE(set(u"v", u"6", 4));
    EXPECT_EQ((std::vector{Operation::create, Operation::write, Operation::remove, Operation::write,
                           Operation::open, Operation::read}),
              calls);
    failures = 2;
    EXPECT_FALSE(set(u"v", u"7", 4));
    EXPECT_EQ(u"", get(u"v"));
}

TEST_F(RegistryAccess, AnyRefusedCallGivesFalseOrNothing) {
    ASSERT_TRUE(set(u"v", u"old", 1));
    for (const Operation refused : {Operation::create, Operation::write, Operation::open, Operation::read}) {
        registry().interfere = [&](Operation operation) {
            return operation == refused ? platform::registryAccessDenied : platform::registryOk;
        };
        EXPECT_FALSE(set(u"v", u"new", 1));
        registry().interfere = nullptr;
        ASSERT_TRUE(set(u"v", u"old", 1));
    }
    registry().interfere = [](Operation) -> Long { throw std::bad_alloc(); };
    EXPECT_EQ(u"", get(u"v"));
    EXPECT_FALSE(set(u"v", u"new", 1));
    registry().interfere = nullptr;
    EXPECT_EQ(u"old", get(u"v"));
}

TEST_F(RegistryAccess, AProfileValueHasAtMost511Characters) {
    std::ofstream(folder.path() / "defaults.ini")
        << "[Nokia 6300]\nType=S40\nSameAs=" << std::string(600, 'x');
    const Text path = u"Z:" + replaceAll((folder.path() / "defaults.ini").u16string(), u"/", u"\\");
    for (const auto& [name, value] : pairsOf(u"Type=S40|NFax=|SameAs=" + Text(511, u'x')))
        EXPECT_EQ(value, Registry::GetIniValue(u"Nokia 6300", name, path));
    EXPECT_EQ(u"", Registry::GetIniValue(u"Nokia 6300", u"Type", path + u"x"));
}

}  // namespace
}  // namespace ovno2
