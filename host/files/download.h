// Copying files and folders from the phone.
//
// A file first arrives in a folder of its own inside the target folder and is moved to its place when it is
// whole, with the phone's time. Nothing is ever written outside the target folder, whatever the phone calls
// its files (see local_name.h); a file whose name no path can hold is not fetched.
#pragma once

#include <filesystem>
#include <set>

#include "host/files/file_report.h"
#include "host/files/local_name.h"

namespace ovno2::host {

class Download {
  public:
    struct Item {
        PhoneEntry entry;
        std::filesystem::path local;  // its place
        bool madeUp = false;          // the phone's name could not be kept
    };

    // `target` is an absolute path. Throws CommandFailure for a folder that the module cannot write to.
    Download(const PhoneFiles& phone, std::filesystem::path target, bool overwrite);
    ~Download();
    Download(const Download&) = delete;
    Download& operator=(const Download&) = delete;

    // Adds a file, or a folder with all that is in it.
    void add(const PhoneEntry& entry);
    std::uint64_t totalBytes() const;

    // Copies all that was added. Throws ConnectionLost.
    void run(FileReport& report, TransferProgress& progress);

  private:
    class Incoming;

    void addChildren(const PhoneEntry& folder, const std::filesystem::path& local);
    void place(const PhoneEntry& entry, const std::filesystem::path& folder, LocalNames& names);
    FileResult copy(const Item& item, TransferProgress& progress);
    std::string fetch(const Item& item);

    const PhoneFiles& phone_;
    std::filesystem::path target_;
    bool overwrite_;
    std::set<Text> added_;  // paths
    LocalNames topNames_;
    std::vector<Item> items_;             // folders before what is in them
    std::unique_ptr<Incoming> incoming_;  // null until a file is fetched
};

// Why the module cannot fetch a file of that name to this computer; null when it can. `onWindows` tells whose
// rules hold.
const char* fetchingObstacle(TextView name, bool onWindows);

}  // namespace ovno2::host
