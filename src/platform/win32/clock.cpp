// The clock on Windows: the real one.
#include "platform/win32/system_time.h"
#include "platform/win32/windows_platform.h"

namespace ovno2::platform::win32 {

namespace {

class WindowsClock : public Clock {
  public:
    SystemTime localTime() override {
        SYSTEMTIME now;
        GetLocalTime(&now);
        return fromNative(now);
    }

    Single secondsSinceMidnight() override {
        const SystemTime now = localTime();
        return static_cast<Single>(now.hour * 3600 + now.minute * 60 + now.second +
                                   static_cast<double>(now.millisecond) / 1000);
    }

    void sleep(std::uint32_t milliseconds) override { Sleep(milliseconds); }

    bool fileTimeToSystemTime(std::uint64_t fileTime, SystemTime& time) override {
        const FILETIME native = {.dwLowDateTime = static_cast<DWORD>(fileTime),
                                 .dwHighDateTime = static_cast<DWORD>(fileTime >> 32)};
        SYSTEMTIME fields;
        if (!FileTimeToSystemTime(&native, &fields)) return false;
        time = fromNative(fields);
        return true;
    }
};

}  // namespace

std::unique_ptr<Clock> makeClock() {
    return std::make_unique<WindowsClock>();
}

}  // namespace ovno2::platform::win32
