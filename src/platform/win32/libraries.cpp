// Libraries by name, as the platform looks for them; then in the folder where the connectivity software says
// it is.
#include <windows.h>

#include "platform/win32/module_path.h"
#include "platform/win32/search_path.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows_platform.h"

namespace ovno2::platform::win32 {

namespace {

class LoadedLibrary : public Library {
  public:
    explicit LoadedLibrary(HMODULE module) : module_(module) {}
    ~LoadedLibrary() override { FreeLibrary(module_); }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    void* symbol(const char* name) override { return reinterpret_cast<void*>(GetProcAddress(module_, name)); }

  private:
    HMODULE module_;
};

}  // namespace

Text modulePath() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&modulePath), &module);
    Text path(MAX_PATH, u'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(module, wide(path), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(2 * path.size());
    }
}

namespace {

class WindowsLibraries : public Libraries {
  public:
    std::unique_ptr<Library> load(TextView name) override {
        HMODULE module = nullptr;
        GetModuleHandleExW(/*dwFlags=*/0, wide(Text(name)), &module);  // one that the process has counts
        if (!module) module = loadFrom(isBareName(name) ? findNamed(name, L".dll") : Text(name));
        if (!module) {
            const Text folder = connectivityFolder();
            if (!folder.empty()) module = loadFrom(folder + u"\\" + Text(name) + u".dll");
        }
        if (!module) return nullptr;
        try {
            return std::make_unique<LoadedLibrary>(module);
        } catch (...) {
            FreeLibrary(module);
            throw;
        }
    }

    Text moduleFolder() override {
        const Text path = modulePath();
        return path.substr(0, path.find_last_of(u'\\'));
    }

    Text moduleName() override {
        const Text path = modulePath();
        const Text file = path.substr(path.find_last_of(u'\\') + 1);
        return file.substr(0, file.find_last_of(u'.'));
    }

  private:
    // Its own folder is searched for what it needs in turn.
    static HMODULE loadFrom(const Text& path) {
        return path.empty() ? nullptr
                            : LoadLibraryExW(wide(path), /*hFile=*/nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    }
    // Without a trailing separator; empty when no connectivity software is installed.
    static Text connectivityFolder() {
        std::unique_ptr<RegistryKey> key;
        RegistryValue value;
        Registry& registry = nativePlatform().registry();
        if (registry.open(localMachine, u"SOFTWARE\\PC Connectivity Solution", /*view64=*/false, key) !=
                registryOk ||
            key->read(u"PlatformPath", value) != registryOk)
            return {};
        Text folder = value.text.substr(0, value.text.find(u'\0'));
        while (!folder.empty() && (folder.back() == u'\\' || folder.back() == u'/'))
            folder.pop_back();
        return folder;
    }
};

}  // namespace

std::unique_ptr<Libraries> makeLibraries() {
    return std::make_unique<WindowsLibraries>();
}

}  // namespace ovno2::platform::win32
