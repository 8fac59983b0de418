// The phone's files in an archive, as files.json lists them, and where the next ones go.
//
// A file keeps its place in all runs, and no file gets the place of another, whether the phone still has that
// or not.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/files/local_name.h"
#include "host/files/phone_files.h"

namespace ovno2::host {

struct SavedVersion {
    std::string file;  // in the archive
    std::uint64_t size = 0;
    std::string changed;  // UTC; empty = the phone told none
};

struct SavedFile {
    SavedVersion latest;  // of a folder its place alone; empty when it was never saved
    bool isFolder = false;
    std::vector<SavedVersion> replaced;  // earlier ones
    std::string goneSince;               // empty = it was on the phone in the last run
    std::string line;                    // its object as it stands
    bool isSeen = false;                 // the phone has it now
};

class SavedFiles {
  public:
    SavedFiles() = default;
    // From the bytes of files.json. Throws CommandFailure for what is none; `name` is what messages call it.
    SavedFiles(const std::string& bytes, const std::string& name);

    // By the path on the phone, UTF-8; null = never seen.
    SavedFile* find(const std::string& phonePath);
    std::map<std::string, SavedFile>& all() { return files_; }

    // Where an entry of the phone goes, `folder` being where its folder went.
    std::string placeFor(const PhoneEntry& entry, const std::string& folder);

  private:
    LocalNames& namesIn(const std::string& folder);

    std::map<std::string, SavedFile> files_;             // by path on the phone
    std::unordered_map<std::string, LocalNames> names_;  // given out, by folder
};

}  // namespace ovno2::host
