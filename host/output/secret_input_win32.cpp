#include <windows.h>

#include "host/output/command_output.h"
#include "host/output/secret_input.h"

namespace ovno2::host::console {

namespace {

HANDLE input() {
    return GetStdHandle(STD_INPUT_HANDLE);
}

DWORD modeBefore = 0;

// Ctrl-C and its like end the program on a thread of their own, after this.
BOOL WINAPI showTypingAgain(DWORD) {
    SetConsoleMode(input(), modeBefore);
    return FALSE;
}

// While it lives, the console shows nothing of what is typed.
class HiddenTyping {
  public:
    HiddenTyping() : isConsole_(GetConsoleMode(input(), &modeBefore) != 0) {
        if (!isConsole_) return;
        SetConsoleCtrlHandler(showTypingAgain, TRUE);
        SetConsoleMode(input(), modeBefore & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
    }
    ~HiddenTyping() {
        if (!isConsole_) return;
        SetConsoleMode(input(), modeBefore);
        SetConsoleCtrlHandler(showTypingAgain, FALSE);
        notePrompt("\n");
    }
    HiddenTyping(const HiddenTyping&) = delete;
    HiddenTyping& operator=(const HiddenTyping&) = delete;

  private:
    bool isConsole_;
};

}  // namespace

bool inputIsTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(input(), &mode) != 0;
}

std::optional<std::size_t> readSecret(const std::string& prompt, std::span<char> line) {
    const HiddenTyping hidden;
    if (inputIsTerminal()) notePrompt(prompt);
    std::size_t size = 0;
    for (bool any = false;; any = true) {
        char letter = 0;
        DWORD got = 0;
        if (!ReadFile(input(), &letter, 1, &got, nullptr) || got == 0) {
            if (!any) return std::nullopt;
            break;
        }
        if (letter == '\n') break;
        if (size < line.size()) line[size++] = letter;
    }
    if (size != 0 && line[size - 1] == '\r') --size;
    return size;
}

}  // namespace ovno2::host::console
