// A phone's file system: the folder `files` of its image, seen the way the phone shows it.
//
// Paths come in the library's form: "\\C:\Images" from the root, or relative to a current folder. Names are
// found without regard to the case of ASCII letters; symbolic links are not seen. Every change starts from
// what is on disk, under the image's lock, is on disk when it returns, and leaves the old or the new state
// whatever interrupts it. Members throw Refused with the status for the caller. Keeps no state but the
// phone's FileSettings.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "simulator/world/file_settings.h"

namespace ovno2::simulator {

class FileStore {
  public:
    // A folder or file on the phone.
    struct Entry {
        std::string path;            // below `files`, "/" between its parts: "C/Images"; empty = the root
        std::filesystem::path disk;  // where it is
        bool isRoot() const { return path.empty(); }
        bool isDrive() const { return path.size() == 1; }
    };
    struct Facts {
        Word attributes = 0;
        std::uint64_t time = 0;  // file time, UTC
        std::uint64_t size = 0;
    };
    struct Listing {
        std::vector<Entry> folders;
        std::vector<Entry> files;
    };

    FileStore(std::filesystem::path imageFolder, std::shared_ptr<FileSettings> fileSettings);

    Entry root() const;
    Entry folder(const Entry& current, std::u16string_view path) const;  // must exist
    Entry file(const Entry& current, std::u16string_view name) const;    // must exist in `current`
    Entry folderIn(const Entry& current, std::u16string_view name) const;

    Listing list(const Entry& folder);  // both in the order of their names
    Facts facts(const Entry& entry) const;
    const Drive* drive(const Entry& entry) const;  // null unless the entry is a drive
    static std::u16string name(const Entry& entry);

    // With `cutAfter` the connection goes when so many bytes have arrived: nothing of them stays, and the
    // write is refused with connectionLost.
    void write(const Entry& current, std::u16string_view name, std::span<const char> bytes,
               std::optional<std::size_t> cutAfter = {});
    void renameFile(const Entry& current, std::u16string_view name, std::u16string_view newName);
    void renameFolder(const Entry& current, std::u16string_view name, std::u16string_view newName);
    void removeFile(const Entry& current, std::u16string_view name);
    void createFolder(const Entry& current, std::u16string_view name);
    void requireRemovable(const Entry& folder) const;
    void removeFolder(const Entry& current, std::u16string_view name);

  private:
    Entry child(const Entry& parent,
                std::u16string_view name) const;  // its disk path is empty when there is none
    void requireName(std::u16string_view name) const;
    void requireChangeable(const Entry& entry) const;
    Drive& driveOf(const Entry& entry) const;
    std::uint64_t usedOn(const Entry& entry) const;

    template <typename Body>
    void change(Body body);
    void refresh();                        // under the image's lock, as all below
    void describe(FileSettings next);      // files.json, and then the settings, become `next`
    void forget(const std::string& path);  // what files.json says about an entry that goes
    void rename(const Entry& entry, std::u16string_view newName);

    // The entries of the folder that was searched last, by their names in upper case. A change of the folder
    // that is not this store's own shows in its time.
    struct NameIndex {
        std::filesystem::path folder;
        std::filesystem::file_time_type time;
        std::unordered_map<std::string, std::string> names;
    };
    const NameIndex& indexOf(const Entry& folder) const;
    void learn(const Entry& folder, std::u16string_view name);  // made by this store

    std::filesystem::path image;
    std::shared_ptr<FileSettings> settings;
    mutable NameIndex index;
};

}  // namespace ovno2::simulator
