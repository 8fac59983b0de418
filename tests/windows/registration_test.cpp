// What registering writes and unregistering takes away, by exports of the registry.
// clang-format off
#include "windows/component_test.h"
#include <sddl.h>
// clang-format on

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>

#include "base/utf8.h"
#include "base/values.h"
#include "common/file_content.h"

namespace ovno2::windows_tests {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr wchar_t classKey[] = L"Software\\Classes\\CLSID\\{1234C60C-EE2D-4622-A3A1-6DCF6EA5CE5B}";

class RegistrationTest : public ::testing::Test {
  protected:
    RegistrationTest() {
        // Every user's registry has this key; a new Wine prefix has not.
        HKEY key = nullptr;
        RegCreateKeyW(HKEY_CURRENT_USER, L"Software\\Classes", &key);
        RegCloseKey(key);
        unregister();
    }
    // The other tests need it.
    ~RegistrationTest() override {
        unregister();
        EXPECT_EQ(0, regsvr32(L""));
    }

    static int regsvr32(const std::wstring& options, const std::filesystem::path& file = componentPath()) {
        return run(L"regsvr32 /s " + options + L" \"" + file.wstring() + L"\"");
    }
    static void unregister() { EXPECT_EQ(0, regsvr32(L"/u")); }

    // Every value of a part of the registry as "key name=value"; a key also stands alone.
    using Export = std::set<std::string>;
    static Export exported(const wchar_t* root) {
        const std::filesystem::path file = std::filesystem::temp_directory_path() / "ovno2-export.reg";
        EXPECT_EQ(0, run(L"reg export " + std::wstring(root) + L" \"" + file.wstring() + L"\" /y"));
        std::istringstream lines(toUtf8(lowerCase(fromUtf16Bytes(contentOf(file)))));
        Export entries;
        std::string key;
        for (std::string line; std::getline(lines, line);) {
            std::erase(line, '\r');
            if (line.starts_with('[')) key = line;
            if (!line.empty()) entries.insert(line == key ? key : key + ' ' + line);
        }
        return entries;
    }
    static Export machine() { return exported(L"HKLM\\Software\\Classes"); }
    static Export user() { return exported(L"HKCU\\Software"); }

    // What one has that the other has not.
    static std::vector<std::string> beyond(const Export& more, const Export& less) {
        std::vector<std::string> difference;
        std::set_difference(more.begin(), more.end(), less.begin(), less.end(),
                            std::back_inserter(difference));
        return difference;
    }
    static void expectSame(const Export& expected, const Export& actual) {
        EXPECT_THAT(beyond(actual, expected), IsEmpty());
        EXPECT_THAT(beyond(expected, actual), IsEmpty());
    }

    template <class Look>
    static void expectOnlyTheUserGetsIt(const std::wstring& options, Look&& whileRegistered) {
        const Export before = machine(), userBefore = user();
        EXPECT_EQ(0, regsvr32(options));
        expectSame(before, machine());
        EXPECT_THAT(beyond(user(), userBefore), Contains(HasSubstr("\"threadingmodel\"=\"apartment\"")));
        whileRegistered();
        EXPECT_EQ(0, regsvr32(L"/u"));
        expectSame(userBefore, user());
    }

    static bool canBeCreated() {
        CLSID id;
        ComPointer<IDispatch> object;
        return SUCCEEDED(CLSIDFromProgID(L"ovNo2.covNo2", &id)) &&
               SUCCEEDED(
                   CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IDispatch), object.outAny()));
    }
};

TEST_F(RegistrationTest, UnregisteringRemovesExactlyWhatRegisteringWrote) {
    const Export before = machine();
    const Export userBefore = user();
    EXPECT_FALSE(canBeCreated());
    EXPECT_EQ(0, regsvr32(L""));
    EXPECT_TRUE(canBeCreated());
    const Export after = machine();
    const std::vector<std::string> added = beyond(after, before);
    for (const char* part :
         {"\\ovno2.covno2\\clsid] @=", "\\inprocserver32] \"threadingmodel\"=\"apartment\"",
          "lib\\{33441530-64de-47c5-ac65-635eff4263a2}\\1.0\\0\\win32] @=",
          "lib\\{02bb06a9-5380-435b-b932-59e8b85dc6bf}\\1.0\\0\\win32] @=",
          "interface\\{2e629a31-eec4-42a5-83a3-d8ba74a94ce7}\\proxystubclsid32] @="})
        EXPECT_THAT(added, Contains(HasSubstr(part)));
    EXPECT_THAT(beyond(before, after), IsEmpty());
    expectSame(userBefore, user());
    EXPECT_EQ(0, regsvr32(L""));
    expectSame(after, machine());

    EXPECT_EQ(0, regsvr32(L"/u"));
    expectSame(before, machine());
    EXPECT_EQ(0, regsvr32(L"/u"));
}

TEST_F(RegistrationTest, AUserMayRegisterForHimselfAlone) {
    expectOnlyTheUserGetsIt(L"/n /i:user", [] {
        // Not every system shows the user's classes to COM.
        HKEY program = nullptr;
        if (RegOpenKeyW(HKEY_CLASSES_ROOT, L"ovNo2.covNo2", &program) != ERROR_SUCCESS) return;
        EXPECT_TRUE(canBeCreated());
        RegCloseKey(program);
    });
}

TEST_F(RegistrationTest, WhereTheMachineIsRefusedTheUserGetsAllOfIt) {
    HKEY key = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyW(HKEY_LOCAL_MACHINE, classKey, &key));
    const auto allow = [&](const wchar_t* rights) {
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(rights, SDDL_REVISION_1, &descriptor,
                                                                         nullptr));
        EXPECT_EQ(ERROR_SUCCESS, RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, descriptor));
        LocalFree(descriptor);
    };
    allow(L"D:P(A;;KR;;;WD)");  // nobody may write below this key
    expectOnlyTheUserGetsIt(L"", [] {});
    allow(L"D:(A;;KA;;;WD)");
    RegCloseKey(key);
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteKeyW(HKEY_LOCAL_MACHINE, classKey));
}

TEST_F(RegistrationTest, AnotherCopysRegistrationStays) {
    EXPECT_EQ(0, regsvr32(L""));
    const std::filesystem::path copy = std::filesystem::temp_directory_path() / "ovNo2-copy.dll";
    std::filesystem::copy_file(componentPath(), copy, std::filesystem::copy_options::overwrite_existing);
    const Export before = machine();
    EXPECT_EQ(0, regsvr32(L"/u", copy));
    expectSame(before, machine());
    std::filesystem::remove(copy);
}

}  // namespace
}  // namespace ovno2::windows_tests
