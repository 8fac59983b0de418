// Copying files and folders to the phone.
//
// The phone gives every file the time of its arrival. A file that is there with the same size, and was not
// changed here after it came to the phone, is equal; with `overwrite` only one with the same time as well.
// Files that begin like a text in UTF-16 or with a UTF-8 mark go to the phone as text in the system's code
// page: that is how the phone driver sends texts.
#pragma once

#include <filesystem>
#include <map>

#include "host/files/file_report.h"

namespace ovno2::host {

class Upload {
  public:
    Upload(const PhoneFiles& phone, PhoneEntry target, bool overwrite)
        : phone_(phone), target_(std::move(target)), overwrite_(overwrite) {}

    // Adds a file, or a folder with all that is in it; an absolute path.
    void add(const std::filesystem::path& local);
    std::uint64_t totalBytes() const { return total_; }

    // Copies all that was added. Throws ConnectionLost.
    void run(FileReport& report, TransferProgress& progress);

  private:
    struct Folder {
        std::filesystem::path local;  // empty for the top, which holds what was added
        std::vector<std::filesystem::path> files;
        std::vector<Folder> folders;
        std::vector<std::filesystem::path> others;  // neither file nor folder
    };
    using Entries = std::map<Text, PhoneEntry>;  // by name in lower case

    void fill(Folder& folder);
    void copyFolder(const Folder& folder, const Text& path, bool isNew);
    bool makeFolder(const std::filesystem::path& local, Entries& there, Text& actual);
    FileResult copyFile(const std::filesystem::path& local, const Text& folder, Entries& there, bool& sent);
    void check(const Text& folder, std::vector<FileResult>& sent);
    void leaveOut(const Folder& folder, const Text& path);

    const PhoneFiles& phone_;
    PhoneEntry target_;
    bool overwrite_;
    Folder top_;
    std::uint64_t total_ = 0;
    FileReport* report_ = nullptr;
    TransferProgress* progress_ = nullptr;
};

}  // namespace ovno2::host
