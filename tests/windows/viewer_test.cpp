// The log viewer as a user gets it, watching the component at work.
#include <algorithm>
#include <thread>

#include "common/machine_test.h"
#include "common/soon.h"
#include "windows/component_test.h"

namespace ovno2::windows_tests {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

std::wstring setting(const wchar_t* name) {
    wchar_t text[64] = {};
    DWORD bytes = sizeof text;
    RegGetValueW(HKEY_CURRENT_USER, L"Software\\Marrowind\\Orvanta\\Debug", name, RRF_RT_REG_SZ, nullptr,
                 text, &bytes);
    return text;
}

HWND viewerWindow() {
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(std::wcstol(setting(L"hWnd").c_str(), nullptr, 10)));
}

// What the list of the viewer's window shows.
std::ptrdiff_t linesShown() {
    constexpr UINT getItemCount = 0x1004;
    return SendMessageW(FindWindowExW(viewerWindow(), nullptr, L"SysListView32", nullptr), getItemCount, 0,
                        0);
}

class ViewerTest : public ComponentTest {
  protected:
    // Lists the phones on a thread of its own, which reads the log's switches anew.
    static void listPhones() {
        std::thread([] {
            CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
            EXPECT_EQ(1, DeviceLists().read(*create().get()));
            CoUninitialize();
        }).join();
    }
    std::string saved() const { return contentOf(path); }

    TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "saved.log";
    const std::wstring program = L"\"" + (windowsPath(OVNO2_DIST) / "ovviewer.exe").wstring() + L"\" ";
};

TEST_F(ViewerTest, ShowsAndSavesTheLinesOfAnotherProcessByEitherChannel) {
    simulator.addPhone(simulator.plainPhone(serial, "Jörgs 電話"));
    const std::pair<const wchar_t*, const wchar_t*> channels[] = {{L"chunks", L"2"}, {L"shared", L"3"}};
    for (const auto& [mode, number] : channels) {
        std::filesystem::remove(path);
        int status = -1;
        std::thread viewer([&, &mode = mode] {
            status = run(program + L"--mode " + mode + L" --level 4 --save \"" + path.wstring() + L"\"");
        });
        EXPECT_TRUE(soon([] { return setting(L"On") == L"1"; }) && IsWindowVisible(viewerWindow()));
        EXPECT_EQ(number, setting(L"Mode"));
        std::string said;
        EXPECT_EQ(1, run(program, &said));
        EXPECT_THAT(said, HasSubstr("running already"));
        listPhones();
        EXPECT_TRUE(soon([&] { return saved().find("</DMApiTerminate>") != std::string::npos; })) << saved();
        const std::string lines = saved();
        EXPECT_THAT(lines, StartsWith("[ovNo2] remote Debug on, Level: 4\r\n"));
        EXPECT_THAT(lines, HasSubstr("]   Jörgs ??\r\n"));
        EXPECT_TRUE(soon([&] { return linesShown() >= std::count(lines.begin(), lines.end(), '\n'); }));
        // As the user closes it.
        PostMessageW(viewerWindow(), WM_CLOSE, 0, 0);
        viewer.join();
        EXPECT_EQ(0, status);
        for (const wchar_t* value : {L"hWnd", L"On", L"Mode", L"Level"})
            EXPECT_EQ(L"", setting(value)) << value;
    }
}

}  // namespace
}  // namespace ovno2::windows_tests
