// The folder of an archive, as the run sees it that writes into it.
//
// Every file comes to its place whole, by a rename, and for the user alone; one that holds the same bytes
// already stays untouched, and none goes but those that `remove` names. While a run works, a mark says so;
// `finish` writes the manifest and takes the mark away. A run that is killed leaves the mark, and the next
// one goes on from what is there. One run at a time.
//
// Paths are relative, UTF-8, with "/" between the parts. Everything here throws CommandFailure where the
// folder cannot be read or written: a run that finds no room ends at once.
#pragma once

#include <chrono>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "host/driver/driver.h"
#include "host/formats/sha256.h"
#include "host/output/incoming.h"

namespace ovno2::host {

class ArchiveFolder {
  public:
    // A new folder, an empty one, or this phone's archive; anything else is refused. `isTrial`: nothing is
    // made or written, and everything else as if it were.
    ArchiveFolder(const std::string& name, const ListedPhone& phone, std::chrono::sys_seconds now,
                  bool isTrial);

    const std::filesystem::path& path() const { return path_; }
    bool isTrial() const { return isTrial_; }
    // When the run began that did not end; empty when there was none.
    const std::string& interruptedRun() const { return interruptedRun_; }
    // A private folder for what is on its way; of a trial outside the archive.
    const std::filesystem::path& workplace() const { return workplace_->path(); }
    std::filesystem::path placeOf(const std::string& path) const;

    // What an earlier run wrote; none where there is no such file.
    std::optional<std::string> read(const std::string& path) const;
    // What the manifest of the last whole run says of a file.
    std::optional<Digest> digestBefore(const std::string& path) const;

    void put(const std::string& path, std::string_view bytes);
    // A folder and those above it, each for the user alone and none of them a link.
    void makeFolder(const std::string& path);
    // Puts a file that lies in the workplace to its place; what is there goes.
    void place(const std::filesystem::path& file, const std::string& path, const Digest& digest);
    // A file that is there stays as it is.
    void keep(const std::string& path, const Digest& digest);
    // Moves a file of the archive to another place, which is free.
    void move(const std::string& from, const std::string& to, const Digest& digest);
    // A file that an earlier run wrote and whose contents stand elsewhere now.
    void remove(const std::string& path);
    // Paths below a folder that the manifest of the last whole run has and this run has not touched.
    std::vector<std::string> untouchedBelow(const std::string& folder) const;

    // Fails when not even a small file finds room.
    void requireRoom() const;

    // Writes the manifest. What is in it from earlier runs and is not there any more is given back. The mark
    // stays unless the run `isOver`.
    std::vector<std::string> finish(bool isOver);

    std::size_t filesWritten() const { return written_; }
    std::size_t filesInAll() const { return now_.size(); }

  private:
    friend class ArchiveOutput;

    void require(const ListedPhone& phone);
    void mark(const ListedPhone& phone, std::chrono::sys_seconds now);
    void adopt();
    [[noreturn]] void fail(const std::string& path, const std::string& why) const;

    std::string name_;  // as the user gave it
    std::filesystem::path path_;
    bool isTrial_;
    std::unique_ptr<Incoming> workplace_;
    std::string interruptedRun_;
    std::map<std::string, Digest> before_;
    std::map<std::string, Digest> now_;
    std::set<std::string> folders_;  // seen to be folders of ours
    std::size_t written_ = 0;
    std::size_t outputs_ = 0;  // opened so far
};

// A file of the archive that is written in pieces.
class ArchiveOutput {
  public:
    ArchiveOutput(ArchiveFolder& folder, std::string path);
    ~ArchiveOutput();
    ArchiveOutput(const ArchiveOutput&) = delete;
    ArchiveOutput& operator=(const ArchiveOutput&) = delete;

    void write(std::string_view bytes);
    void finish();  // it is in its place now

  private:
    ArchiveFolder& folder_;
    std::string path_;
    std::filesystem::path file_;
    std::ofstream stream_;
    Sha256 hash_;
    std::uint64_t size_ = 0;
};

}  // namespace ovno2::host
