// The user's locale and time zone on Windows.
#include "platform/win32/system_time.h"
#include "platform/win32/windows_platform.h"

namespace ovno2::platform::win32 {

namespace {

constexpr int longestItem = 255;  // characters, the terminating NUL included

Text textUpToNul(const wchar_t* text, std::size_t limit) {
    Text result;
    for (std::size_t i = 0; i < limit && text[i] != L'\0'; ++i)
        result.push_back(static_cast<char16_t>(text[i]));
    return result;
}

class WindowsLocale : public Locale {
  public:
    Text item(LocaleItem item) override {
        wchar_t buffer[longestItem] = {};
        const int length =
            GetLocaleInfoW(LOCALE_USER_DEFAULT, static_cast<LCTYPE>(item), buffer, longestItem);
        return length < 2 ? Text() : textUpToNul(buffer, longestItem);
    }

    bool timeZone(TimeZoneInformation& zone) override {
        TIME_ZONE_INFORMATION native;
        if (GetTimeZoneInformation(&native) == TIME_ZONE_ID_INVALID) return false;
        zone = {.bias = native.Bias,
                .standardName = textUpToNul(native.StandardName, std::size(native.StandardName)),
                .standardDate = fromNative(native.StandardDate),
                .standardBias = native.StandardBias,
                .daylightName = textUpToNul(native.DaylightName, std::size(native.DaylightName)),
                .daylightDate = fromNative(native.DaylightDate),
                .daylightBias = native.DaylightBias};
        return true;
    }
};

}  // namespace

std::unique_ptr<Locale> makeLocale() {
    return std::make_unique<WindowsLocale>();
}

}  // namespace ovno2::platform::win32
