// The log viewer as a user gets it, watching the component at work.
#include <algorithm>
#include <fstream>
#include <iterator>
#include <thread>

#include "common/machine_test.h"
#include "common/soon.h"
#include "windows/component_test.h"

namespace ovno2::windows_tests {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr wchar_t debugKey[] = L"Software\\Marrowind\\Orvanta\\Debug";

std::wstring setting(const wchar_t* name) {
    wchar_t text[64] = {};
    DWORD bytes = sizeof text;
    RegGetValueW(HKEY_CURRENT_USER, debugKey, name, RRF_RT_REG_SZ, nullptr, text, &bytes);
    return text;
}

class Viewer {
  public:
    explicit Viewer(const std::wstring& options) {
        std::wstring line = L"\"" + (windowsPath(OVNO2_DIST) / "ovviewer.exe").wstring() + L"\" " + options;
        STARTUPINFOW start = {};
        start.cb = sizeof start;
        CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process_);
    }
    ~Viewer() {
        TerminateProcess(process_.hProcess, 1);
        WaitForSingleObject(process_.hProcess, INFINITE);
        CloseHandle(process_.hProcess);
        CloseHandle(process_.hThread);
    }
    Viewer(const Viewer&) = delete;
    Viewer& operator=(const Viewer&) = delete;

    static HWND window() {
        return reinterpret_cast<HWND>(
            static_cast<LONG_PTR>(std::wcstol(setting(L"hWnd").c_str(), nullptr, 10)));
    }
    bool isThere() const {
        return soon([] { return setting(L"On") == L"1"; }) && IsWindowVisible(window());
    }
    // As the user closes it; gives its exit status.
    DWORD close() const {
        PostMessageW(window(), WM_CLOSE, 0, 0);
        DWORD status = STILL_ACTIVE;
        soon([&] { return GetExitCodeProcess(process_.hProcess, &status) && status != STILL_ACTIVE; });
        return status;
    }

  private:
    PROCESS_INFORMATION process_ = {};
};

class ViewerTest : public ComponentTest {
  protected:
    // Lists the phones on a thread that reads the log's switches anew.
    void list() {
        std::thread([] {
            CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
            {
                const ComPointer<_covNo2> object = create();
                OwnedSafeArray models, media, serials, addresses, names, types;
                LONG result = 0;
                EXPECT_EQ(S_OK, object->GetConnectedDevices(models.address(), media.address(),
                                                            serials.address(), addresses.address(),
                                                            names.address(), types.address(), -1, &result));
                EXPECT_EQ(1, result);
            }
            CoUninitialize();
        }).join();
    }
    std::string saved() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::wstring options(const std::wstring& mode) const {
        return L"--mode " + mode + L" --level 4 --save \"" + path.wstring() + L"\"";
    }
    // What the list of the viewer's window shows.
    static std::size_t linesShown() {
        const HWND list = FindWindowExW(Viewer::window(), nullptr, L"SysListView32", nullptr);
        constexpr UINT getItemCount = 0x1004;
        return static_cast<std::size_t>(SendMessageW(list, getItemCount, 0, 0));
    }

    TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "saved.log";
};

TEST_F(ViewerTest, ShowsAndSavesTheLinesOfAnotherProcessByEitherChannel) {
    simulator.addPhone(simulator.plainPhone(serial, "Jörgs 電話"));
    const std::pair<const wchar_t*, const wchar_t*> channels[] = {{L"chunks", L"2"}, {L"shared", L"3"}};
    for (const auto& [mode, number] : channels) {
        std::filesystem::remove(path);
        const Viewer viewer(options(mode));
        ASSERT_TRUE(viewer.isThere());
        EXPECT_EQ(number, setting(L"Mode"));
        list();
        EXPECT_TRUE(soon([&] { return saved().find("</DMApiTerminate>") != std::string::npos; })) << saved();
        EXPECT_THAT(saved(), StartsWith("[ovNo2] remote Debug on, Level: 4\r\n"));
        EXPECT_THAT(saved(), HasSubstr("]   Jörgs ??\r\n"));
        const std::string lines = saved();
        const auto count = static_cast<std::size_t>(std::count(lines.begin(), lines.end(), '\n'));
        EXPECT_TRUE(soon([&] { return linesShown() >= count; })) << linesShown();
        EXPECT_EQ(0u, viewer.close());
        for (const wchar_t* value : {L"hWnd", L"On", L"Mode", L"Level"})
            EXPECT_EQ(L"", setting(value)) << value;
    }
}

TEST_F(ViewerTest, OnlyTheChosenRoutineIsSaved) {
    addPhone();
    const Viewer viewer(options(L"shared") + L" --routine GetDevices");
    ASSERT_TRUE(viewer.isThere());
    list();
    EXPECT_TRUE(soon([&] { return saved().find("</GetDevices>") != std::string::npos; })) << saved();
    EXPECT_THAT(saved(), Not(HasSubstr("DMApiTerminate")));
    EXPECT_EQ(0u, viewer.close());
}

TEST_F(ViewerTest, ASecondViewerLeavesTheFirstAlone) {
    const Viewer viewer(options(L"chunks"));
    ASSERT_TRUE(viewer.isThere());
    const std::wstring window = setting(L"hWnd");
    std::string said;
    EXPECT_EQ(1, run(L"\"" + (windowsPath(OVNO2_DIST) / "ovviewer.exe").wstring() + L"\"", &said));
    EXPECT_THAT(said, HasSubstr("running already"));
    EXPECT_EQ(window, setting(L"hWnd"));
    EXPECT_EQ(0u, viewer.close());
}

}  // namespace
}  // namespace ovno2::windows_tests
