// Brings single files of the phone to this computer, each into an incoming folder of its own (see
// incoming.h), and sees to it that what has come is what was asked for.
#pragma once

#include <memory>

#include "host/files/phone_files.h"
#include "host/output/incoming.h"

namespace ovno2::host {

#ifdef _WIN32
inline constexpr bool isWindows = true;
#else
inline constexpr bool isWindows = false;
#endif

// Why the module cannot fetch a file of that name to this computer; null when it can. `onWindows` tells whose
// rules hold.
const char* fetchingObstacle(TextView name, bool onWindows);

// Why the driver cannot write to a folder of that path; empty when it can. UTF-8.
std::string arrivalObstacle(const std::filesystem::path& folder);

// Whether a file here has the size and, as far as memory cards keep it, the time of the phone's.
bool hasSizeAndTime(const std::filesystem::path& file, const PhoneEntry& entry);

class Fetcher {
  public:
    // The incoming folder lies in `folder`; it is made for the first file.
    Fetcher(const PhoneFiles& phone, std::filesystem::path folder)
        : phone_(phone), folder_(std::move(folder)) {}

    // `file` becomes where the file has arrived, whole and with the phone's time, until the next one is
    // fetched. Gives what went wrong, if anything. Throws BrokenOff, std::filesystem::filesystem_error.
    std::string fetch(const PhoneEntry& entry, std::filesystem::path& file);

    void drop() { incoming_.reset(); }

  private:
    const PhoneFiles& phone_;
    std::filesystem::path folder_;
    std::unique_ptr<Incoming> incoming_;  // null until a file is fetched
};

}  // namespace ovno2::host
