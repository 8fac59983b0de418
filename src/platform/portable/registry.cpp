#include "platform/portable/registry.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <new>
#include <sstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "base/values.h"
#include "platform/portable/ini_text.h"
#include "platform/portable/native_file.h"
#include "platform/portable/spawn.h"
#include "platform/portable/system_values.h"

namespace ovno2::platform::portable {

namespace {

constexpr Long invalidParameter = 87;
constexpr Long writeFault = 29;
constexpr Long noSpaceLeft = 112;

constexpr std::chrono::milliseconds lockPatience(5000);
constexpr std::chrono::milliseconds lockPause(5);

TextView upToNul(TextView name) {
    return name.substr(0, name.find(u'\0'));
}

bool startsWithKey(TextView path, TextView key) {
    return equalsIgnoringCase(path.substr(0, key.size()), key) &&
           (path.size() == key.size() || path[key.size()] == u'\\');
}

// The full paths under which a 32-bit program, or with `view64` a 64-bit one, finds a key; the first that
// exists counts, and the last is where a new key goes.
std::vector<Text> candidates(Long hive, TextView path, bool view64) {
    constexpr TextView software = u"Software";
    constexpr TextView classes = u"Software\\Classes";
    constexpr TextView redirected = u"Software\\Wow6432Node";
    const auto machinePath = [](TextView below) { return Text(u"HKEY_LOCAL_MACHINE\\").append(below); };
    const auto behind = [&](TextView key) { return Text(path.substr(std::min(key.size(), path.size()))); };

    std::vector<Text> paths;
    const auto addClasses = [&](const Text& rest) {
        if (!view64) {
            paths.push_back(machinePath(u"Software\\Classes\\Wow6432Node") + rest);
            paths.push_back(machinePath(u"Software\\Wow6432Node\\Classes") + rest);
        }
        paths.push_back(machinePath(classes) + rest);
    };
    switch (hive) {
        case classesRoot: {
            const Text rest = path.empty() ? Text() : Text(u"\\").append(path);
            if (!view64) paths.push_back(u"HKEY_CURRENT_USER\\Software\\Classes\\Wow6432Node" + rest);
            paths.push_back(u"HKEY_CURRENT_USER\\Software\\Classes" + rest);
            addClasses(rest);
            break;
        }
        case currentUser:
            paths.push_back(Text(u"HKEY_CURRENT_USER\\").append(path));
            break;
        case localMachine:
            if (startsWithKey(path, classes)) {
                addClasses(behind(classes));
            } else {
                if (!view64 && startsWithKey(path, software) && !startsWithKey(path, redirected))
                    paths.push_back(machinePath(redirected) + behind(software));
                paths.push_back(machinePath(path));
            }
            break;
        default:
            break;
    }
    return paths;
}

Long resultOf(int error) {
    switch (error) {
        case 0:
            return registryOk;
        case EACCES:
        case EPERM:
        case EROFS:
            return registryAccessDenied;
        case ENOSPC:
        case EDQUOT:
            return noSpaceLeft;
        case ENOMEM:
            return registryOutOfMemory;
        default:
            return writeFault;
    }
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

bool writeAll(int file, const std::string& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t count = write(file, bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

// Held while the file is read, changed and replaced; other processes' writers wait for it.
Descriptor lockForWriting(const std::filesystem::path& path) {
    Descriptor lock(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, newFileMode));
    const auto end = std::chrono::steady_clock::now() + lockPatience;
    while (lock && flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || std::chrono::steady_clock::now() >= end) return {};
        std::this_thread::sleep_for(lockPause);
    }
    return lock;
}

}  // namespace

// A key names its place in the file; what stands there is looked up at each use.
class PortableRegistry::Key : public RegistryKey {
  public:
    Key(PortableRegistry& registry, Text path, bool writable)
        : registry_(registry), path_(std::move(path)), writable_(writable) {}

    Long read(TextView name, RegistryValue& value) override {
        return guarded([&] {
            if (const Long result = registry_.interference(Operation::read)) return result;
            const std::shared_ptr<const RegistryFile> file = registry_.current();
            if (const RegistryValue* found = file->find(path_, upToNul(name))) {
                value = RegistryValue(*found);
                return registryOk;
            }
            if (!registry_.machine_.answersFromSystem()) return registryNotFound;
            std::optional<RegistryValue> answer = systemRegistryValue(path_, upToNul(name));
            if (!answer) return registryNotFound;
            value = std::move(*answer);
            return registryOk;
        });
    }
    Long write(TextView name, const RegistryValue& value) override {
        return guarded([&] {
            if (const Long result = registry_.interference(Operation::write)) return result;
            if (!writable_) return registryAccessDenied;
            name = upToNul(name);
            if (name.find_first_of(u"\r\n") != TextView::npos) return invalidParameter;
            return registry_.update([&](RegistryFile& file) {
                file.set(path_, name, value);
                return registryOk;
            });
        });
    }
    Long remove(TextView name) override {
        return guarded([&] {
            if (const Long result = registry_.interference(Operation::remove)) return result;
            if (!writable_) return registryAccessDenied;
            return registry_.update([&](RegistryFile& file) {
                return file.remove(path_, upToNul(name)) ? registryOk : registryNotFound;
            });
        });
    }

  private:
    PortableRegistry& registry_;
    Text path_;
    bool writable_;
};

PortableRegistry::PortableRegistry(Machine& machine)
    : machine_(machine),
      path_(machine.profileFolder() / "registry.reg"),
      file_(std::make_shared<const RegistryFile>()) {}

Long PortableRegistry::open(Long hive, TextView path, bool view64, std::unique_ptr<RegistryKey>& key) {
    return guarded([&] {
        if (const Long result = interference(Operation::open)) return result;
        if (missing_.contain(hive, path, view64, trustsFileFor)) return registryNotFound;
        const std::vector<Text> paths = candidates(hive, upToNul(path), view64);
        if (paths.empty()) return registryInvalidHandle;
        const std::shared_ptr<const RegistryFile> file = current();
        for (const Text& candidate : paths) {
            if (!file->hasKey(candidate) &&
                !(machine_.answersFromSystem() && systemHasRegistryKey(candidate)))
                continue;
            key = std::make_unique<Key>(*this, candidate, /*writable=*/false);
            return registryOk;
        }
        if (trustsFileFor.count() > 0) missing_.add(hive, path, view64);
        return registryNotFound;
    });
}

Long PortableRegistry::create(Long hive, TextView path, std::unique_ptr<RegistryKey>& key) {
    return guarded([&] {
        if (const Long result = interference(Operation::create)) return result;
        path = upToNul(path);
        if (path.find_first_of(u"\r\n") != TextView::npos) return invalidParameter;
        while (path.ends_with(u'\\'))
            path.remove_suffix(1);
        const std::vector<Text> paths = candidates(hive, path, /*view64=*/false);
        if (paths.empty()) return registryInvalidHandle;
        const std::shared_ptr<const RegistryFile> file = current();
        for (const Text& candidate : paths) {
            if (!file->hasKey(candidate)) continue;
            key = std::make_unique<Key>(*this, candidate, /*writable=*/true);
            return registryOk;
        }
        auto made = std::make_unique<Key>(*this, paths.back(), /*writable=*/true);
        const Long result = update([&](RegistryFile& fresh) {
            fresh.createKey(paths.back());
            return registryOk;
        });
        if (result == registryOk) key = std::move(made);
        return result;
    });
}

PortableRegistry::Stamp PortableRegistry::stampOnDisk() const {
    struct stat status {};
    if (stat(path_.c_str(), &status) != 0) return {};
    const auto nanoseconds = [](const timespec& time) {
        return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000u +
               static_cast<std::uint64_t>(time.tv_nsec);
    };
    return {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino),
            static_cast<std::uint64_t>(status.st_size), nanoseconds(status.st_mtim),
            nanoseconds(status.st_ctim)};
}

std::shared_ptr<const RegistryFile> PortableRegistry::current() {
    const std::lock_guard guard(mutex_);
    if (trustsFileFor.count() > 0) {
        const auto now = std::chrono::steady_clock::now();
        if (now - lookedAt_ < trustsFileFor) return file_;
        lookedAt_ = now;
    }
    // Taken before reading: a change in between is seen at the next look.
    const Stamp stamp = stampOnDisk();
    if (stamp == stamp_) return file_;
    bool readable = true;
    file_ = load(readable);
    stamp_ = stamp;
    return file_;
}

// The file as it stands; empty when there is none, or when it cannot be read.
std::shared_ptr<RegistryFile> PortableRegistry::load(bool& readable) {
    std::ifstream stream(path_, std::ios::binary);
    if (!stream) {
        readable = stampOnDisk() == Stamp();
        if (!readable) complain("cannot be read");
        return std::make_shared<RegistryFile>();
    }
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    auto file = std::make_shared<RegistryFile>(bytes.view());
    for (const RegistryFile::Damage& damage : file->damages())
        complain("line " + std::to_string(damage.line) + ": " + damage.reason);
    return file;
}

void PortableRegistry::complain(const std::string& message) {
    if (complaints_.insert(message).second)
        std::fprintf(stderr, "%s: %s; the rest is used\n", path_.c_str(), message.c_str());
}

Long PortableRegistry::update(const Edit& edit) {
    const std::lock_guard guard(mutex_);
    if (const int error = makeFolders(path_.parent_path())) return resultOf(error);
    std::filesystem::path lockPath = path_;
    const Descriptor lock = lockForWriting(lockPath.replace_extension(".lock"));
    if (!lock) return registryAccessDenied;
    bool readable = true;
    const std::shared_ptr<RegistryFile> file = load(readable);
    if (!readable) return registryAccessDenied;  // replacing it would lose what it holds
    if (const Long result = edit(*file)) return result;
    if (const Long result = replaceFile(file->bytes())) return result;
    file_ = file;
    stamp_ = stampOnDisk();
    missing_.clear();
    return registryOk;
}

// Beside the old file first, then in its place: whoever looks sees the old one or the new one.
Long PortableRegistry::replaceFile(const std::string& bytes) {
    std::error_code ignored;
    std::filesystem::path target =
        std::filesystem::canonical(path_, ignored);  // through a link, if it is one
    if (target.empty()) target = path_;
    const std::filesystem::path beside = target.string() + ".new";
    Descriptor file(::open(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, newFileMode));
    if (!file) return resultOf(errno);
    int error = 0;
    if (!writeAll(file.get(), bytes) || (waitsForDisk && fdatasync(file.get()) != 0)) error = errno;
    file.close();
    if (error == 0 && rename(beside.c_str(), target.c_str()) != 0) error = errno;
    if (error != 0) unlink(beside.c_str());
    return resultOf(error);
}

Text PortableRegistry::profileString(TextView section, TextView key, TextView path, std::size_t capacity) {
    std::unique_ptr<OpenFile> file;
    if (capacity == 0 || machine_.files().openWide(path, file) != noFailure) return {};
    std::string bytes;
    char chunk[4096];
    std::size_t got = 0;
    while (file->read(chunk, sizeof chunk, got) == noFailure && got > 0)
        bytes.append(chunk, got);
    Text contents;
    if (!decodeMarked(bytes, contents)) contents = machine_.codePages().fromAnsi(bytes);
    return iniValue(contents, section, key).substr(0, capacity - 1);
}

std::unique_ptr<Registry> makeRegistry(Machine& machine) {
    return std::make_unique<PortableRegistry>(machine);
}

}  // namespace ovno2::platform::portable
