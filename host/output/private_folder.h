// A folder for one run of the program, which only the user can read and which goes with the program, also
// when a signal ends it. What a killed program left behind goes when the next one makes its folder in the
// same place.
//
// One source a platform (private_folder_posix.cpp, private_folder_win32.cpp). At most a few at a time.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace ovno2::host {

class PrivateFolder {
  public:
    // In `parent`; `error` says why there is none, and `path` is empty then.
    PrivateFolder(const std::filesystem::path& parent, std::error_code& error);
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

// What the sources of the platforms share: ".ovphone-PROCESS-NUMBER".
std::string privateFolderName(unsigned long process, unsigned number);
// The process that made a folder of that name; 0 when it is none.
unsigned long processOf(const std::string& folderName);

}  // namespace ovno2::host
