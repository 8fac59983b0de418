// Whether an archive is as it was written.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "host/files/transfer_progress.h"

namespace ovno2::host {

struct Verification {
    enum class Trouble { missing, changed, extra, unreadable, wrongLine };
    struct Finding {
        Trouble trouble;
        std::string path;     // in the archive; empty of a line of the manifest
        std::string message;  // for people; UTF-8
    };

    std::vector<Finding> findings;  // those of the manifest first, then by path
    std::size_t listed = 0;         // files of the manifest
    std::size_t intact = 0;         // of them
    std::uint64_t bytes = 0;        // of the intact ones
    bool isUnfinished = false;      // a run into it has begun and not ended

    bool isWhole() const { return findings.empty() && !isUnfinished; }
};

const char* nameOf(Verification::Trouble trouble);

// Reads every file that the manifest names, none outside the folder and none through a link. Throws
// CommandFailure for what is no archive.
Verification verifyArchive(const std::filesystem::path& folder, bool showsProgress);

}  // namespace ovno2::host
