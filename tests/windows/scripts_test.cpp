// The component under the system's script hosts, with the bundled phones.
#include "windows/component_test.h"

namespace ovno2::windows_tests {
namespace {

using ::testing::HasSubstr;

class ScriptsTest : public ::testing::Test {
  protected:
    ScriptsTest() { SetEnvironmentVariableW(L"OVNO2_PHONES", windowsPath(BUNDLED_PHONES).c_str()); }
    ~ScriptsTest() override { SetEnvironmentVariableW(L"OVNO2_PHONES", nullptr); }

    // What the script prints.
    static std::string output(const std::filesystem::path& script) {
        std::string printed;
        EXPECT_EQ(0, run(L"cscript //nologo \"" + script.wstring() + L"\"", &printed)) << printed;
        return printed;
    }
    static std::filesystem::path script(const char* name) { return windowsPath(SCRIPTS) / name; }
};

TEST_F(ScriptsTest, TheDocumentedScriptListsThePhones) {
    EXPECT_EQ(
        "Nokia N95\t356300010000017\tNokia N95\n"
        "Nokia N95\t356300010000017\tAnna's phone\n"
        "Nokia 6230i\t356300020000026\t6230i (USB Device)\n"
        "Samsung SGH-D600\t356300030000032\t\n"
        "Nokia 6300\t356300040000048\tNokia 6300 USB Device\n"
        "Nokia E65\t356300050000052\tToms E65\n",
        output(windowsPath(OVNO2_DIST) / "list-phones.vbs"));
}

TEST_F(ScriptsTest, JScriptGetsItsArraysFilled) {
    const std::string printed = output(script("phones.js"));
    EXPECT_THAT(
        printed,
        HasSubstr("content access 50\nsuite 0\nresult 5\nNokia N95|8|356300010000017|Nokia N95|63\n"));
    EXPECT_THAT(printed, HasSubstr("\nNokia E65|2|356300050000052|Toms E65|63\nerror 5\n"));
}

TEST_F(ScriptsTest, AScriptsProgressControlIsAdvanced) {
    const std::string printed = output(script("progress.vbs"));
    int contacts = 0;
    int steps = 0;
    ASSERT_EQ(2, sscanf(printed.c_str(), "contacts %d\nsteps %d", &contacts, &steps)) << printed;
    EXPECT_GT(contacts, 0);
    EXPECT_EQ(contacts + 50 + 4, steps);
}

}  // namespace
}  // namespace ovno2::windows_tests
