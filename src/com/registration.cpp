#include "com/registration.h"

#include <olectl.h>
#include <vector>

#include "base/values.h"
#include "com/type_libraries.h"
#include "platform/win32/module_path.h"
#include "platform/win32/wide.h"

namespace ovno2::com {

namespace {

using platform::win32::wide;

constexpr TextView programName = u"ovNo2.covNo2";
constexpr TextView classId = u"{1234C60C-EE2D-4622-A3A1-6DCF6EA5CE5B}";
constexpr TextView interfaceId = u"{2E629A31-EEC4-42A5-83A3-D8BA74A94CE7}";
constexpr TextView libraryId = u"{33441530-64DE-47C5-AC65-635EFF4263A2}";
constexpr TextView recordLibraryId = u"{02BB06A9-5380-435B-B932-59E8B85DC6BF}";
constexpr TextView version = u"1.0";
// The system's own proxy, which reads the type library.
constexpr TextView typeLibraryProxy = u"{00020424-0000-0000-C000-000000000046}";

constexpr TextView classes = u"Software\\Classes";

// A text value of a key below `classes`; the empty name is the key's default value.
struct Entry {
    Text key;
    Text name;
    Text value;
};

Text join(std::initializer_list<TextView> parts) {
    Text path;
    for (const TextView part : parts) {
        if (!path.empty()) path += u'\\';
        path.append(part);
    }
    return path;
}

void addTypeLibrary(std::vector<Entry>& entries, TextView id, TextView description, int resource) {
    const Text key = join({u"TypeLib", id, version});
    const Text path = platform::win32::modulePath();
    entries.push_back({key, {}, Text(description)});
    entries.push_back({join({key, u"0", u"win32"}), {}, typeLibraryPath(resource)});
    entries.push_back({join({key, u"FLAGS"}), {}, u"0"});
    entries.push_back({join({key, u"HELPDIR"}), {}, path.substr(0, path.find_last_of(u'\\'))});
}

std::vector<Entry> entriesOfModule() {
    const Text classKey = join({u"CLSID", classId});
    const Text interfaceKey = join({u"Interface", interfaceId});
    std::vector<Entry> entries = {
        {classKey, {}, Text(programName)},
        {join({classKey, u"InprocServer32"}), {}, platform::win32::modulePath()},
        {join({classKey, u"InprocServer32"}), u"ThreadingModel", u"Apartment"},
        {join({classKey, u"ProgID"}), {}, Text(programName)},
        {join({classKey, u"Programmable"}), {}, {}},
        {join({classKey, u"TypeLib"}), {}, Text(libraryId)},
        {join({classKey, u"Version"}), {}, Text(version)},
        {Text(programName), {}, Text(programName)},
        {join({programName, u"CLSID"}), {}, Text(classId)},
        {interfaceKey, {}, u"_covNo2"},
        {join({interfaceKey, u"ProxyStubClsid"}), {}, Text(typeLibraryProxy)},
        {join({interfaceKey, u"ProxyStubClsid32"}), {}, Text(typeLibraryProxy)},
        {join({interfaceKey, u"TypeLib"}), {}, Text(libraryId)},
        {join({interfaceKey, u"TypeLib"}), u"Version", Text(version)},
    };
    addTypeLibrary(entries, libraryId, u"Phone driver", ownLibrary);
    addTypeLibrary(entries, recordLibraryId, u"Records shared with the phone driver", recordLibrary);
    return entries;
}

class Key {
  public:
    ~Key() {
        if (key_) RegCloseKey(key_);
    }
    Key() = default;
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    HKEY get() const { return key_; }
    HKEY* out() { return &key_; }

  private:
    HKEY key_ = nullptr;
};

LSTATUS write(HKEY hive, const Entry& entry) {
    Key key;
    const LSTATUS status =
        RegCreateKeyExW(hive, wide(join({classes, entry.key})), 0, nullptr, REG_OPTION_NON_VOLATILE,
                        KEY_SET_VALUE, nullptr, key.out(), nullptr);
    if (status != ERROR_SUCCESS) return status;
    return RegSetValueExW(key.get(), wide(entry.name), 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(wide(entry.value)),
                          static_cast<DWORD>((entry.value.size() + 1) * sizeof(wchar_t)));
}

bool isEmpty(HKEY hive, const Text& path) {
    Key key;
    DWORD keys = 0;
    DWORD values = 0;
    return RegOpenKeyExW(hive, wide(path), 0, KEY_READ, key.out()) == ERROR_SUCCESS &&
           RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values, nullptr,
                            nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
           keys == 0 && values == 0;
}

// Removes the entry's value, then its key and those above it as far as they are empty.
LSTATUS remove(HKEY hive, const Entry& entry) {
    Text path = join({classes, entry.key});
    {
        Key key;
        LSTATUS status = RegOpenKeyExW(hive, wide(path), 0, KEY_SET_VALUE, key.out());
        if (status == ERROR_SUCCESS) status = RegDeleteValueW(key.get(), wide(entry.name));
        if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) return status;
    }
    for (; path.size() > classes.size() && isEmpty(hive, path); path.resize(path.find_last_of(u'\\')))
        if (const LSTATUS status = RegDeleteKeyW(hive, wide(path)); status != ERROR_SUCCESS) return status;
    return ERROR_SUCCESS;
}

LSTATUS removeAll(HKEY hive, const std::vector<Entry>& entries) {
    LSTATUS first = ERROR_SUCCESS;
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry)
        if (const LSTATUS status = remove(hive, *entry); first == ERROR_SUCCESS) first = status;
    return first;
}

LSTATUS writeAll(HKEY hive) {
    const std::vector<Entry> entries = entriesOfModule();
    for (const Entry& entry : entries) {
        const LSTATUS status = write(hive, entry);
        if (status == ERROR_SUCCESS) continue;
        ovno2::com::removeAll(hive, entries);
        return status;
    }
    return ERROR_SUCCESS;
}

// Whether the class is registered here with the file that holds this code.
bool isRegistered(HKEY hive) {
    const Text own = platform::win32::modulePath();
    Text registered(own.size() + 1, u'\0');
    auto bytes = static_cast<DWORD>(registered.size() * sizeof(wchar_t));
    if (RegGetValueW(hive, wide(join({classes, u"CLSID", classId, u"InprocServer32"})), nullptr,
                     RRF_RT_REG_SZ, nullptr, wide(registered), &bytes) != ERROR_SUCCESS)
        return false;
    return equalsIgnoringCase(registered.substr(0, registered.find(u'\0')), own);
}

template <class Body>
HRESULT shielded(Body&& body) noexcept {
    try {
        return body() == ERROR_SUCCESS ? S_OK : SELFREG_E_CLASS;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace

HRESULT registerModule() noexcept {
    return shielded([] {
        const LSTATUS status = writeAll(HKEY_LOCAL_MACHINE);
        return status == ERROR_ACCESS_DENIED ? writeAll(HKEY_CURRENT_USER) : status;
    });
}

HRESULT registerModuleForUser() noexcept {
    return shielded([] { return writeAll(HKEY_CURRENT_USER); });
}

HRESULT unregisterModule() noexcept {
    return shielded([] {
        LSTATUS first = ERROR_SUCCESS;
        for (HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
            if (!isRegistered(hive)) continue;
            const LSTATUS status = ovno2::com::removeAll(hive, entriesOfModule());
            if (first == ERROR_SUCCESS) first = status;
        }
        return first;
    });
}

}  // namespace ovno2::com
