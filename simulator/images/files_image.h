// files/ and files.json of an image. No state; a damaged files.json is an ImageError.
#pragma once

#include "simulator/world/file_settings.h"
#include "simulator/world/phone.h"

namespace ovno2::simulator {

// An entry that is about to get another name, as paths below `files`. files.json tells it while it is under
// way, so that what it says finds the entry by the one name or the other, whatever interrupts the rename.
struct RenameUnderWay {
    std::string from;
    std::string to;
};

// All of these under the image's lock.

// Fills `phone.files`; without a folder `files` the phone has no file system.
void readFilesImage(Phone& phone);

// Whether another process, or a hand, has changed something since. May be asked without the lock.
bool filesHaveChanged(const std::filesystem::path& image, const FileSettings& settings);

// Reads all of it again. Settings that cannot be read stay as they were, and an ImageError tells why.
void refreshFiles(const std::filesystem::path& image, FileSettings& settings);

// Makes this process's own change known to the others, and to itself.
void markFilesChanged(const std::filesystem::path& image, FileSettings& settings);

// Writes the settings back, in full and durably.
void writeFilesJson(const std::filesystem::path& image, const FileSettings& settings,
                    const std::optional<RenameUnderWay>& renaming = {});

}  // namespace ovno2::simulator
