// The registry natively: `registry.reg` in the profile folder, a standard .reg file.
//
// The file is read when its stamp has changed and kept in memory otherwise, so that a read costs one look at
// the file. Writers take turns through `registry.lock`, read what others wrote, and put a whole new file in
// the old one's place. The module is a 32-bit program: where the file holds a key's Wow6432Node counterpart,
// as an export from a 64-bit machine does, the 32-bit view is that counterpart.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/missing_keys.h"
#include "platform/portable/machine.h"
#include "platform/portable/registry_file.h"

namespace ovno2::platform::portable {

class PortableRegistry : public Registry {
  public:
    explicit PortableRegistry(Machine& machine);

    Long open(Long hive, TextView path, bool view64, std::unique_ptr<RegistryKey>& key) override;
    Long create(Long hive, TextView path, std::unique_ptr<RegistryKey>& key) override;
    Text profileString(TextView section, TextView key, TextView path, std::size_t capacity) override;

    // The file as it stands now; the same object as long as it does not change.
    std::shared_ptr<const RegistryFile> current();

    // How long a look at the file, or for a key, is taken to hold; 0 = every use looks again. The module asks
    // for its log's switches all the time, and a person who changes them does not notice a millisecond.
    std::chrono::nanoseconds trustsFileFor{0};

    enum class Operation { open, create, read, write, remove };
    // For tests: called before each operation; another result than registryOk is that operation's result.
    std::function<Long(Operation)> interfere;
    // For tests: a file that need not outlive a power failure is not waited for.
    bool waitsForDisk = true;

  private:
    class Key;
    using Edit = std::function<Long(RegistryFile&)>;  // registryOk = the file changed and is to be written

    // What tells one state of the file from another; all zero when there is no file.
    struct Stamp {
        std::uint64_t device = 0, inode = 0, size = 0, modified = 0, changed = 0;
        bool operator==(const Stamp&) const = default;
    };

    Long interference(Operation operation) { return interfere ? interfere(operation) : registryOk; }
    Stamp stampOnDisk() const;
    std::shared_ptr<RegistryFile> load(bool& readable);
    void complain(const std::string& message);
    Long update(const Edit& edit);
    Long replaceFile(const std::string& bytes);

    Machine& machine_;
    std::filesystem::path path_;
    MissingKeys missing_;
    std::mutex mutex_;  // guards what follows
    std::shared_ptr<const RegistryFile> file_;
    Stamp stamp_;  // of the file that `file_` was read from
    std::chrono::steady_clock::time_point lookedAt_;
    std::set<std::string> complaints_;  // made already
};

}  // namespace ovno2::platform::portable
