#include "platform/portable/libraries.h"

#include <dlfcn.h>
#include <vector>

#include "base/values.h"

namespace ovno2::platform::portable {

namespace {

namespace fs = std::filesystem;

class SharedObject : public Library {
  public:
    SharedObject(void* handle, const std::set<std::string, std::less<>>& missing)
        : handle_(handle), missing_(missing) {}
    ~SharedObject() override { dlclose(handle_); }
    SharedObject(const SharedObject&) = delete;
    SharedObject& operator=(const SharedObject&) = delete;

    void* symbol(const char* name) override {
        return missing_.contains(name) ? nullptr : dlsym(handle_, name);
    }

  private:
    void* handle_;
    const std::set<std::string, std::less<>>& missing_;  // the machine's, which outlives every library
};

fs::path programFolder() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path();
}

}  // namespace

std::unique_ptr<Library> PortableLibraries::load(TextView name) {
    if (missingLibraries.count(Text(name)) != 0) return nullptr;
    std::vector<fs::path> folders;
    if (!folder_.empty()) {
        folders = {folder_};
    } else {
        std::unique_ptr<RegistryKey> key;
        RegistryValue value;
        if (machine_.registry().open(localMachine, u"SOFTWARE\\PC Connectivity Solution", /*view64=*/false,
                                     key) == registryOk &&
            key->read(u"PlatformPath", value) == registryOk) {
            folders.emplace_back(replaceAll(removeAll(value.text, u'\0'), u"\\", u"/"));
        }
        folders.push_back(programFolder());
    }
    const fs::path file = u"lib" + Text(name) + u".so";
    for (const fs::path& folder : folders)
        if (void* handle = dlopen((folder / file).c_str(), RTLD_NOW | RTLD_LOCAL))
            return std::make_unique<SharedObject>(handle, missingFunctions);
    return nullptr;
}

Text PortableLibraries::moduleFolder() {
    return (moduleFolderOverride.empty() ? programFolder() : moduleFolderOverride).u16string();
}

std::unique_ptr<Libraries> makeLibraries(Machine& machine) {
    return std::make_unique<PortableLibraries>(machine);
}

}  // namespace ovno2::platform::portable
