// A phone's files as the commands see them: entries with their paths, found by what the user typed.
//
// Everything goes through the driver, as any host application would do it. Functions throw CommandFailure
// with a message for the user when the phone does not answer.
#pragma once

#include <functional>
#include <optional>

#include "host/driver/driver.h"

namespace ovno2::host {

struct PhoneEntry : FolderEntry {
    Text path;  // "E:/Images/beach.jpg"; empty = the phone itself

    bool isPhone() const { return path.empty(); }
    bool isDrive() const { return isFolder && !isPhone() && path.find(u'/') == Text::npos; }
};

// A path of this form as the module takes it.
Text modulePath(TextView path);
Text folderOf(TextView path);  // "E:/Images" of "E:/Images/beach.jpg"; empty = the phone itself

class PhoneFiles {
  public:
    // Throws CommandFailure when the module would work on another phone of the same model.
    PhoneFiles(PhoneDriver& driver, const std::vector<ListedPhone>& phones, const ListedPhone& phone);
    ~PhoneFiles() { driver_.endFiles(); }
    PhoneFiles(const PhoneFiles&) = delete;
    PhoneFiles& operator=(const PhoneFiles&) = delete;

    PhoneDriver& driver() const { return driver_; }
    std::string phoneTitle() const;

    // The folders, then the files, in the phone's order.
    std::vector<PhoneEntry> list(const Text& folder) const;
    std::optional<std::vector<PhoneEntry>> tryToList(const Text& folder) const;  // none when that fails

    // What a typed path means: one entry, or all that its wildcards match. Throws CommandFailure when that is
    // nothing.
    std::vector<PhoneEntry> find(const std::string& typed) const;
    // The one entry that a path without wildcards means.
    PhoneEntry findOne(const std::string& typed) const;

    // Calls `visit` for everything below a folder: first with an entry, then, for a folder, with what is in
    // it. `depth` counts from 0 in the folder itself. Entries that no path can name are not gone into.
    using Visitor = std::function<void(const PhoneEntry& entry, std::size_t depth, bool isLast)>;
    void walk(const PhoneEntry& folder, const Visitor& visit) const;
    bool isIncomplete() const { return incomplete_; }

  private:
    std::vector<PhoneEntry> matching(const PhoneEntry& folder, const Text& part,
                                     const std::string& typed) const;

    PhoneDriver& driver_;
    const ListedPhone& phone_;
    mutable bool incomplete_ = false;
};

}  // namespace ovno2::host
