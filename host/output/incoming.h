// The folder in which files and pictures from the phone arrive before they are moved to their places.
//
// Each program has one of its own, which only the user can read, so that two that copy into one folder never
// meet. It goes with the object; natively also when the program is killed. Elsewhere the next program that
// copies into the same folder takes away what a killed one has left there, and leaves alone what belongs to
// one that still runs.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "host/output/incoming_owner.h"

namespace ovno2::host {

class Incoming {
  public:
    // What all such folders are called, with something of their own behind it.
    static constexpr const char* prefix = ".ovphone-incoming-";

    // Makes one in `folder`. Throws std::filesystem::filesystem_error.
    explicit Incoming(const std::filesystem::path& folder);
    // One that only one program at a time can have in `folder`; null while another has it. Throws
    // std::filesystem::filesystem_error.
    static std::unique_ptr<Incoming> alone(const std::filesystem::path& folder);
    ~Incoming();
    Incoming(const Incoming&) = delete;
    Incoming& operator=(const Incoming&) = delete;

    const std::filesystem::path& path() const { return path_; }
    void clear() const;
    // The one file that has arrived; empty when none has, or more than one.
    std::filesystem::path arrived() const;

    // Moves `file` to its place; false when something is there and `overwrite` is not set. Throws
    // std::filesystem::filesystem_error.
    static bool move(const std::filesystem::path& file, const std::filesystem::path& place, bool overwrite);

  private:
    Incoming(std::filesystem::path path, std::unique_ptr<IncomingOwner> owner)
        : path_(std::move(path)), owner_(std::move(owner)) {}

    std::filesystem::path path_;
    std::unique_ptr<IncomingOwner> owner_;
};

}  // namespace ovno2::host
