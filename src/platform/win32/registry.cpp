// The registry on Windows: the wide calls, so that every character a value holds arrives.
#include <algorithm>
#include <cstring>
#include <windows.h>

#include "platform/missing_keys.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows_platform.h"

namespace ovno2::platform::win32 {

namespace {

constexpr REGSAM read64BitView = KEY_QUERY_VALUE | KEY_WOW64_64KEY;

bool isTextType(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

// No exception crosses the seam.
template <class Operation>
Long guarded(Operation&& operation) noexcept {
    try {
        return operation();
    } catch (...) {
        return registryOutOfMemory;
    }
}

// Only the predefined handles are taken; any other number might be a handle of somebody else.
bool isHive(Long hive) {
    return (static_cast<std::uint32_t>(hive) & 0xFFFFFFF0u) == 0x80000000u;
}

HKEY handleOf(Long hive) {
    return reinterpret_cast<HKEY>(static_cast<LONG_PTR>(hive));
}

class WindowsKey : public RegistryKey {
  public:
    WindowsKey() = default;
    ~WindowsKey() override {
        if (key_) RegCloseKey(key_);
    }
    WindowsKey(const WindowsKey&) = delete;
    WindowsKey& operator=(const WindowsKey&) = delete;
    HKEY* slot() { return &key_; }

    Long read(TextView name, RegistryValue& value) override {
        return guarded([&] {
            const Text valueName(name);
            DWORD type = 0;
            // Most values fit; a longer one tells its size, and may have grown when it is asked again.
            DWORD size = 64;
            std::string data;
            LSTATUS result = ERROR_MORE_DATA;
            while (result == ERROR_MORE_DATA) {
                data.resize(size);
                result = RegQueryValueExW(key_, wide(valueName), nullptr, &type,
                                          reinterpret_cast<BYTE*>(data.data()), &size);
            }
            if (result != ERROR_SUCCESS) return static_cast<Long>(result);
            data.resize(size);
            RegistryValue found;
            found.type = static_cast<Long>(type);
            if (isTextType(type)) {
                found.text.resize(size / sizeof(char16_t));
                std::memcpy(found.text.data(), data.data(), found.text.size() * sizeof(char16_t));
            } else if (type == REG_DWORD) {
                std::memcpy(&found.number, data.data(), std::min(data.size(), sizeof found.number));
            } else {
                found.bytes = std::move(data);
            }
            value = std::move(found);
            return registryOk;
        });
    }

    Long write(TextView name, const RegistryValue& value) override {
        return guarded([&] {
            const Text valueName(name);
            const auto type = static_cast<DWORD>(value.type);
            const void* data = value.bytes.data();
            std::size_t size = value.bytes.size();
            if (isTextType(type)) {
                data = value.text.data();
                size = value.text.size() * sizeof(char16_t);
            } else if (type == REG_DWORD) {
                data = &value.number;
                size = sizeof value.number;
            }
            return static_cast<Long>(RegSetValueExW(
                key_, wide(valueName), 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size)));
        });
    }

    Long remove(TextView name) override {
        return guarded([&] {
            const Text valueName(name);
            return static_cast<Long>(RegDeleteValueW(key_, wide(valueName)));
        });
    }

  private:
    HKEY key_ = nullptr;
};

class WindowsRegistry : public Registry {
  public:
    Long open(Long hive, TextView path, bool view64, std::unique_ptr<RegistryKey>& key) override {
        return guarded([&] {
            if (!isHive(hive)) return registryInvalidHandle;
            if (missing_.contain(hive, path, view64, moment)) return registryNotFound;
            const Text keyPath(path);
            auto opened = std::make_unique<WindowsKey>();
            const LSTATUS result = RegOpenKeyExW(handleOf(hive), wide(keyPath), 0,
                                                 view64 ? read64BitView : KEY_READ, opened->slot());
            if (result == ERROR_SUCCESS) key = std::move(opened);
            if (result == ERROR_FILE_NOT_FOUND) missing_.add(hive, path, view64);
            return static_cast<Long>(result);
        });
    }

    Long create(Long hive, TextView path, std::unique_ptr<RegistryKey>& key) override {
        return guarded([&] {
            if (!isHive(hive)) return registryInvalidHandle;
            const Text keyPath(path);
            auto opened = std::make_unique<WindowsKey>();
            const LSTATUS result =
                RegCreateKeyExW(handleOf(hive), wide(keyPath), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                KEY_READ | KEY_WRITE, nullptr, opened->slot(), nullptr);
            if (result != ERROR_SUCCESS) return static_cast<Long>(result);
            missing_.clear();
            key = std::move(opened);
            return registryOk;
        });
    }

    Text profileString(TextView section, TextView key, TextView path, std::size_t capacity) override {
        if (capacity == 0) return {};
        const Text sectionName(section), keyName(key), file(path);
        Text value(capacity, u'\0');
        value.resize(GetPrivateProfileStringW(wide(sectionName), wide(keyName), L"", wide(value),
                                              static_cast<DWORD>(capacity), wide(file)));
        return value;
    }

  private:
    // How long a missing key is taken to be missing still: a person who makes one does not notice it.
    static constexpr std::chrono::milliseconds moment{1};
    MissingKeys missing_;
};

}  // namespace

std::unique_ptr<Registry> makeRegistry() {
    return std::make_unique<WindowsRegistry>();
}

}  // namespace ovno2::platform::win32
