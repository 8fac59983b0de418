// files/ and files.json of an image. No state; a damaged files.json is an ImageError.
#pragma once

#include "simulator/world/file_settings.h"
#include "simulator/world/phone.h"

namespace ovno2::simulator {

// Fills `phone.files`; without a folder `files` the phone has no file system.
void readFilesImage(Phone& phone);

// Writes the settings back, in full and durably.
void writeFilesJson(const std::filesystem::path& image, const FileSettings& settings);

}  // namespace ovno2::simulator
