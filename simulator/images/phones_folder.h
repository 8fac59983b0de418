// A whole phones folder: the images in it and what surrounds them.
//
// No state. A damaged image or file is left out and told in the world's `imageErrors`, one line each.
#pragma once

#include <filesystem>

#include "simulator/world/world.h"

namespace ovno2::simulator {

// Adds the folder's phones in their order. The first folder also gives the found devices and the media.
void loadPhones(World& world, const std::filesystem::path& folder);

}  // namespace ovno2::simulator
