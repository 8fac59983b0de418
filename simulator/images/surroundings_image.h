// bluetooth.json and media.json of a phones folder: what belongs to no single phone. No state.
#pragma once

#include <filesystem>
#include <vector>

#include "simulator/images/json_node.h"
#include "simulator/world/world.h"

namespace ovno2::simulator {

// Without the file: nothing is found, all four media are on.
std::vector<FoundDevice> readBluetooth(const std::filesystem::path& folder);
std::vector<Medium> readMedia(const std::filesystem::path& folder);

// From the parsed file, for tests that build a world in memory.
std::vector<FoundDevice> readBluetooth(const JsonNode& root);
std::vector<Medium> readMedia(const JsonNode& root);

// Under the folder's lock: reads again which devices are paired, as another process may have left them.
void refreshBluetooth(World& world);

// Under the folder's lock: the file, anew, durably.
void writeBluetooth(const std::filesystem::path& folder, const std::vector<FoundDevice>& found);
void writeMedia(const std::filesystem::path& folder, const std::vector<Medium>& media);

}  // namespace ovno2::simulator
