#include "common/windows_machine.h"

#include <windows.h>

namespace ovno2 {

namespace {

constexpr wchar_t ownRegistry[] = L"Software\\ovNo2 tests";

class ChosenLibrary : public platform::Library {
  public:
    ChosenLibrary(HMODULE module, const std::set<std::string, std::less<>>& missing)
        : module_(module), missing_(missing) {}
    ~ChosenLibrary() override { FreeLibrary(module_); }
    void* symbol(const char* name) override {
        return missing_.contains(name) ? nullptr : reinterpret_cast<void*>(GetProcAddress(module_, name));
    }

  private:
    HMODULE module_;
    const std::set<std::string, std::less<>>& missing_;  // the machine's, which outlives every library
};

constexpr struct {
    LCTYPE type;
    const wchar_t* format;
} portableFormats[] = {{LOCALE_SSHORTDATE, L"dd.MM.yyyy"}, {LOCALE_STIMEFORMAT, L"HH:mm:ss"}};

// Shows the process an empty key in the place of a predefined one.
void replaceHive(HKEY hive, const wchar_t* name) {
    HKEY key = nullptr;
    RegCreateKeyW(HKEY_CURRENT_USER, (std::wstring(ownRegistry) + L'\\' + name).c_str(), &key);
    RegOverridePredefKey(hive, key);
    RegCloseKey(key);
}

void removeOwnRegistry() {
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, ownRegistry);
}

}  // namespace

std::unique_ptr<platform::Library> ChosenLibraries::load(TextView name) {
    if (missingLibraries.count(Text(name)) != 0) return nullptr;
    const std::filesystem::path file = std::filesystem::absolute(folder_) / (Text(name) + u".dll");
    HMODULE const module = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    return module ? std::make_unique<ChosenLibrary>(module, missingFunctions) : nullptr;
}

platform::SystemTime ChosenClock::localTime() {
    if (!stoppedAt_) return native_.localTime();
    constexpr std::chrono::seconds epoch(11'644'473'600);  // from 1601, where file times begin, to 1970
    const std::chrono::milliseconds since1601 = stoppedAt_->time_since_epoch() + epoch;
    platform::SystemTime time;
    native_.fileTimeToSystemTime(static_cast<std::uint64_t>(since1601.count()) * 10'000, time);
    return time;
}

Single ChosenClock::secondsSinceMidnight() {
    if (!stoppedAt_) return native_.secondsSinceMidnight();
    const auto time = *stoppedAt_ - std::chrono::floor<std::chrono::days>(*stoppedAt_);
    return static_cast<Single>(static_cast<double>(time.count()) / 1000);
}

void ChosenClock::sleep(std::uint32_t milliseconds) {
    if (!stoppedAt_) return native_.sleep(milliseconds);
    sleeps_.push_back(milliseconds);
    *stoppedAt_ += std::chrono::milliseconds(milliseconds);
}

void ChosenClock::set(const platform::SystemTime& local) {
    stoppedAt_ = std::chrono::local_days(std::chrono::year(local.year) / local.month / local.day) +
                 std::chrono::hours(local.hour) + std::chrono::minutes(local.minute) +
                 std::chrono::seconds(local.second) + std::chrono::milliseconds(local.millisecond);
    sleeps_.clear();
}

void ChosenClock::advance(std::chrono::milliseconds time) {
    if (stoppedAt_) *stoppedAt_ += time;
}

WindowsMachine::WindowsMachine(const std::filesystem::path&) {
    removeOwnRegistry();
    for (std::size_t i = 0; i < std::size(portableFormats); ++i) {
        wchar_t format[80] = {};
        GetLocaleInfoW(LOCALE_USER_DEFAULT, portableFormats[i].type, format, std::size(format));
        formats_[i] = format;
        SetLocaleInfoW(LOCALE_USER_DEFAULT, portableFormats[i].type, portableFormats[i].format);
    }
    // The user's part last: both lie in it.
    replaceHive(HKEY_LOCAL_MACHINE, L"machine");
    replaceHive(HKEY_CURRENT_USER, L"user");
}

WindowsMachine::~WindowsMachine() {
    removeOwnRegistry();
    for (std::size_t i = 0; i < std::size(portableFormats); ++i)
        SetLocaleInfoW(LOCALE_USER_DEFAULT, portableFormats[i].type, formats_[i].c_str());
}

void* pageBeforeNothing() {
    constexpr std::size_t page = 4096;
    void* const pages = VirtualAlloc(nullptr, 2 * page, MEM_RESERVE, PAGE_READWRITE);
    return VirtualAlloc(pages, page, MEM_COMMIT, PAGE_READWRITE);
}

}  // namespace ovno2
