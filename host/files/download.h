// Copying files and folders from the phone.
//
// A file arrives in a folder of its own inside the target folder and is moved to its place when it is whole,
// with the phone's time. Nothing is ever written outside the target folder, whatever the phone calls its
// files (see local_name.h); a file whose name no path can hold is not fetched.
#pragma once

#include <filesystem>
#include <set>

#include "host/files/fetcher.h"
#include "host/files/file_report.h"
#include "host/files/local_name.h"

namespace ovno2::host {

class Download {
  public:
    // `target` is an absolute path. Throws CommandFailure for a folder that the module cannot write to, or
    // that cannot be made; with `isTrial` nothing is made or copied, and everything else as if it were.
    Download(const PhoneFiles& phone, std::filesystem::path target, bool overwrite, bool isTrial);

    // Adds a file, or a folder with all that is in it.
    void add(const PhoneEntry& entry);
    // Adds a file that gets a name of the user's choice here.
    void add(const PhoneEntry& file, const std::filesystem::path& name);

    std::uint64_t totalBytes() const;
    void announce(FileReport& report) const;

    // Copies all that was added. Throws BrokenOff.
    void run(FileReport& report, TransferProgress& progress);
    // Lets go of what is on its way.
    void drop() { fetcher_.drop(); }

  private:
    struct Item {
        PhoneEntry entry;
        std::filesystem::path local;  // its place
        bool madeUp = false;          // the phone's name could not be kept
    };

    void addChildren(const PhoneEntry& folder, const std::filesystem::path& local);
    void place(const PhoneEntry& entry, const std::filesystem::path& folder, LocalNames& names);
    void makeFolder(const Item& item, FileReport& report);
    FileResult copy(const Item& item, TransferProgress& progress);
    void bring(const Item& item, FileResult& result);

    const PhoneFiles& phone_;
    std::filesystem::path target_;
    bool overwrite_;
    bool isTrial_;
    std::set<Text> added_;  // paths
    LocalNames topNames_;
    std::vector<Item> items_;                     // folders before what is in them
    std::vector<std::filesystem::path> missing_;  // folders that could not be made: what is in them fails too
    Fetcher fetcher_;
};

}  // namespace ovno2::host
