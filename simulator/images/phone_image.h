// Reading a phone image: phone.json with its stores.
//
// No state. A damaged image is an ImageError.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "simulator/images/json_node.h"
#include "simulator/world/phone.h"

namespace ovno2::simulator {

// One image folder.
std::shared_ptr<Phone> readPhoneImage(const std::filesystem::path& image);

// The identity part alone, as phone.json or a test gives it. `folder` is what a connection is called when
// nothing else names the phone; without it, such a connection has no name.
std::shared_ptr<Phone> readIdentity(const JsonNode& root, std::u16string_view folder = {});

// What the phone holds, from its image, which no other process changes meanwhile; what a killed one has left
// is removed.
void readStores(Phone& phone, const std::filesystem::path& image);

// The value of "recordSizes"' member `name`, which must be one that the record can have.
Word readRecordSize(std::string_view name, const JsonNode& node);

// "usb", "bluetooth", "cable" or "infrared".
Word readMedium(const JsonNode& node);
const char* nameOfMedium(Word medium);  // the same text

// A status with the top bit set.
Status readStatus(const JsonNode& node);

}  // namespace ovno2::simulator
