// How a program holds its incoming folder, and how another sees that nobody does.
//
// One source a platform (incoming_owner_posix.cpp, incoming_owner_win32.cpp).
#pragma once

#include <filesystem>
#include <memory>

namespace ovno2::host {

class IncomingOwner {
  public:
    virtual ~IncomingOwner() = default;  // lets go of it

    // Makes the folder, for the user only, and holds it. Null when there is one of that name, or another
    // program has taken it away again. Throws std::filesystem::filesystem_error.
    static std::unique_ptr<IncomingOwner> make(const std::filesystem::path& folder);

    // Removes a folder that was left behind by a program that has ended; one that is held stays.
    static void removeAbandoned(const std::filesystem::path& folder);

    // Renames a file; false when `place` is taken.
    static bool moveToFreePlace(const std::filesystem::path& file, const std::filesystem::path& place);
};

}  // namespace ovno2::host
