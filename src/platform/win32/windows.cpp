// Windows and messages on Windows: the real calls.
#include <array>
#include <vector>
#include <windows.h>

#include "base/values.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows_platform.h"

namespace ovno2::platform::win32 {

namespace {

constexpr std::uint32_t nullMessage = 0;
constexpr DWORD keysPatience = 1000;  // milliseconds that the active window is given to process keystrokes

HWND handleOf(Long window) {
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(window));
}

struct Search {
    TextView title;
    HWND equal = nullptr;
    HWND beginning = nullptr;
};

BOOL CALLBACK compareTitle(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<Search*>(parameter);
    if (!IsWindowVisible(window)) return TRUE;
    std::array<wchar_t, 512> buffer;
    const int length = GetWindowTextW(window, buffer.data(), static_cast<int>(buffer.size()));
    const TextView title(reinterpret_cast<const char16_t*>(buffer.data()), static_cast<std::size_t>(length));
    if (equalsIgnoringCase(title, search.title)) {
        search.equal = window;
        return FALSE;
    }
    if (!search.beginning && equalsIgnoringCase(title.substr(0, search.title.size()), search.title))
        search.beginning = window;
    return TRUE;
}

struct NamedKey {
    TextView name;
    WORD key;
};
constexpr std::array<NamedKey, 11> namedKeys = {{{u"ESC", VK_ESCAPE},
                                                 {u"ENTER", VK_RETURN},
                                                 {u"TAB", VK_TAB},
                                                 {u"BACKSPACE", VK_BACK},
                                                 {u"DELETE", VK_DELETE},
                                                 {u"HOME", VK_HOME},
                                                 {u"END", VK_END},
                                                 {u"UP", VK_UP},
                                                 {u"DOWN", VK_DOWN},
                                                 {u"LEFT", VK_LEFT},
                                                 {u"RIGHT", VK_RIGHT}}};

WORD keyNamed(TextView name) {
    for (const NamedKey& named : namedKeys)
        if (equalsIgnoringCase(named.name, name)) return named.key;
    return 0;
}

void addStroke(std::vector<INPUT>& input, WORD key, WORD character) {
    INPUT stroke = {};
    stroke.type = INPUT_KEYBOARD;
    stroke.ki.wVk = key;
    stroke.ki.wScan = character;
    stroke.ki.dwFlags = key ? 0 : KEYEVENTF_UNICODE;
    input.push_back(stroke);
    stroke.ki.dwFlags |= KEYEVENTF_KEYUP;
    input.push_back(stroke);
}

// False when a name in braces is not known.
bool readStrokes(TextView keys, std::vector<INPUT>& input) {
    while (!keys.empty()) {
        const std::size_t end = keys.front() == u'{' ? keys.find(u'}') : TextView::npos;
        if (end == TextView::npos) {
            addStroke(input, /*key=*/0, static_cast<WORD>(keys.front()));
            keys.remove_prefix(1);
            continue;
        }
        const WORD key = keyNamed(keys.substr(1, end - 1));
        if (key == 0) return false;
        addStroke(input, key, /*character=*/0);
        keys.remove_prefix(end + 1);
    }
    return true;
}

// A window procedure's address, or one of the system's handles for a procedure of the other character set.
bool isProcedure(Long procedure) {
    constexpr std::uint32_t procedureHandles = 0xFFFF0000u;
    const auto address = static_cast<std::uint32_t>(procedure);
    if ((address & procedureHandles) == procedureHandles) return true;
    constexpr DWORD executable =
        PAGE_EXECUTE | PAGE_EXECUTE_READ | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
    MEMORY_BASIC_INFORMATION memory;
    return VirtualQuery(reinterpret_cast<const void*>(static_cast<ULONG_PTR>(address)), &memory,
                        sizeof memory) == sizeof memory &&
           memory.State == MEM_COMMIT && (memory.Protect & executable) != 0;
}

class RealWindows : public Windows {
  public:
    bool isVisible(Long window) override { return IsWindowVisible(handleOf(window)) != FALSE; }

    Long send(Long window, std::uint32_t message, std::uint32_t first, std::uint32_t second,
              Long& answer) override {
        answer = 0;
        SetLastError(ERROR_SUCCESS);
        const LRESULT result =
            SendMessageA(handleOf(window), message, static_cast<WPARAM>(first), static_cast<LPARAM>(second));
        // A window's own procedure may leave any code behind; only a window that is not there counts.
        if (GetLastError() == ERROR_INVALID_WINDOW_HANDLE && !IsWindow(handleOf(window)))
            return invalidWindowHandle;
        answer = static_cast<Long>(result);
        return noFailure;
    }

    void processPendingMessages() override {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message == WM_QUIT) {
                // The host's own loop is to see it.
                PostQuitMessage(static_cast<int>(message.wParam));
                return;
            }
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }

    FailureNumber activate(TextView title) override {
        Search search;
        search.title = title;
        EnumWindows(compareTitle, reinterpret_cast<LPARAM>(&search));
        const HWND found = search.equal ? search.equal : search.beginning;
        if (!found) return invalidProcedureCall;
        SetForegroundWindow(found);
        return noFailure;
    }

    FailureNumber sendKeys(TextView keys) override {
        const HWND active = GetForegroundWindow();
        std::vector<INPUT> input;
        if (!active || !readStrokes(keys, input)) return invalidProcedureCall;
        if (SendInput(static_cast<UINT>(input.size()), input.data(), sizeof(INPUT)) != input.size())
            return permissionDenied;
        processPendingMessages();
        DWORD_PTR ignored = 0;
        SendMessageTimeoutW(active, nullMessage, 0, 0, SMTO_ABORTIFHUNG, keysPatience, &ignored);
        return noFailure;
    }

    FailureNumber callProcedure(Long procedure, Long first, Long second, Long third, Long fourth,
                                Long& answer) override {
        if (!isProcedure(procedure)) return invalidProcedureCall;
        const auto called = reinterpret_cast<WNDPROC>(static_cast<LONG_PTR>(procedure));
        answer = static_cast<Long>(CallWindowProcA(called, handleOf(first), static_cast<UINT>(second),
                                                   static_cast<WPARAM>(third), static_cast<LPARAM>(fourth)));
        return noFailure;
    }

    Long messageBox(TextView text, Long style) override {
        const Text shown(text);
        return MessageBoxW(GetActiveWindow(), wide(shown), L"ovNo2", static_cast<UINT>(style));
    }
};

}  // namespace

std::unique_ptr<Windows> makeWindows() {
    return std::make_unique<RealWindows>();
}

}  // namespace ovno2::platform::win32
