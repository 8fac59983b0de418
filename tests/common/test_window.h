// A visible window that somebody else than the test's thread owns and that answers messages, on either
// platform.
#pragma once

#include <functional>

#include "core/current_platform.h"

#ifdef _WIN32
#include <future>
#include <thread>
#include <windows.h>
#else
#include "platform/portable/machine.h"
#include "platform/portable/window_endpoint.h"
#endif

namespace ovno2 {

using MessageHandler = std::function<Long(std::uint32_t message, std::uint32_t first, std::uint32_t second)>;

#ifdef _WIN32

// Lives on a thread of its own, which runs its message loop.
class TestWindow {
  public:
    // `handler` answers the messages from `WM_USER` on.
    TestWindow(Text title, MessageHandler handler) : handler_(std::move(handler)) {
        std::promise<HWND> made;
        std::future<HWND> window = made.get_future();
        thread_ = std::thread([this, title = std::move(title), &made] { run(title, made); });
        window_ = window.get();
    }
    ~TestWindow() {
        PostMessageW(window_, WM_CLOSE, 0, 0);
        thread_.join();
    }
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    Long number() const { return static_cast<Long>(reinterpret_cast<LONG_PTR>(window_)); }
    void hide() { ShowWindow(window_, SW_HIDE); }

  private:
    static LRESULT CALLBACK answer(HWND window, UINT message, WPARAM first, LPARAM second) {
        auto* self = reinterpret_cast<TestWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (self && message >= WM_USER)
            return self->handler_(message, static_cast<std::uint32_t>(first),
                                  static_cast<std::uint32_t>(second));
        if (message == WM_DESTROY) PostQuitMessage(0);
        return DefWindowProcW(window, message, first, second);
    }
    void run(const Text& title, std::promise<HWND>& made) {
        WNDCLASSW type = {};
        type.lpfnWndProc = answer;
        type.lpszClassName = L"ovNo2 test window";
        RegisterClassW(&type);
        const HWND window =
            CreateWindowExW(0, type.lpszClassName, reinterpret_cast<const wchar_t*>(title.c_str()),
                            WS_OVERLAPPEDWINDOW, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        ShowWindow(window, SW_SHOWNA);
        made.set_value(window);
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0)
            DispatchMessageW(&message);
    }

    MessageHandler handler_;
    HWND window_ = nullptr;
    std::thread thread_;
};

#else

class TestWindow {
  public:
    TestWindow(Text title, MessageHandler handler)
        : endpoint_(dynamic_cast<platform::portable::Machine&>(currentPlatform()).profileFolder(),
                    std::move(title), {.message = std::move(handler), .activated = {}, .keys = {}}) {
        endpoint_.serveInBackground();
    }
    Long number() const { return endpoint_.number(); }
    void hide() { endpoint_.setVisible(false); }

  private:
    platform::portable::WindowEndpoint endpoint_;
};

#endif

}  // namespace ovno2
