// Reading phone images: phone.json with its stores, and whole folders of images.
//
// No state. A damaged image is an ImageError; readPhones collects them and goes on with the next image.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "simulator/images/json_node.h"
#include "simulator/world/phone.h"

namespace ovno2::simulator {

// One image folder.
std::shared_ptr<Phone> readPhoneImage(const std::filesystem::path& image);

// The identity part alone, as phone.json or a test gives it.
std::shared_ptr<Phone> readIdentity(const JsonNode& root);

// The images below a phones folder in the order the phones are reported; what is wrong with the others goes
// to `errors`, one line each.
std::vector<std::shared_ptr<Phone>> readPhones(const std::filesystem::path& folder,
                                               std::vector<std::string>& errors);

// "recordSizes" of phone.json; members that are absent keep their value.
void readRecordSizes(const JsonNode& node, RecordSizes& sizes);

// "usb", "bluetooth", "cable" or "infrared".
Word readMedium(const JsonNode& node);

// A status with the top bit set.
Status readStatus(const JsonNode& node);

}  // namespace ovno2::simulator
