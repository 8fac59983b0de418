// The pictures of contacts as files of an image. No state.
#pragma once

#include <filesystem>
#include <set>

#include "simulator/world/content_store.h"

namespace ovno2::simulator {

using PictureFiles = std::set<std::filesystem::path>;  // names inside the image

// The files that the contacts of a phone book name.
PictureFiles picturesOf(const ContentStore& contacts);

// Moves the bytes of pictures that are not in files yet into the image; `written` are the names of all of
// them.
void writeNewPictures(const std::filesystem::path& image, ContentStore& contacts, PictureFiles& written);

void removePictures(const std::filesystem::path& image, const PictureFiles& files, const PictureFiles& kept);

}  // namespace ovno2::simulator
