// The stores of an image, one JSON file a kind of content: reading one, and putting a changed one in its
// place.
//
// Items are taken out of the file one by one, so that a phone book of 100,000 contacts costs no more than its
// own size. No state. A damaged file is an ImageError.
#pragma once

#include "simulator/images/json_node.h"
#include "simulator/world/phone.h"

namespace ovno2::simulator {

// Reads the image's file of this kind into the phone; without such a file the phone has no such content.
void readContentImage(Phone& phone, ContentKind kind);

// Reads it again when the file is another one than last time. Under the image's lock.
void refreshContent(Phone& phone, ContentKind kind);

// Makes `store` what the phone holds, under the image's lock. In an image the pictures of contacts that are
// new go to files first, then the store's file is replaced, then the pictures nobody names any more go: a
// process killed at any moment leaves the old or the new store. Throws std::system_error, with the old one in
// place, when the image cannot be written.
void replaceContent(Phone& phone, ContentKind kind, std::shared_ptr<ContentStore> store);

// A store from values as its file has them; `image` is where the pictures are.
std::shared_ptr<ContentStore> readContent(ContentKind kind, const JsonNode& root,
                                          const std::filesystem::path& image);

}  // namespace ovno2::simulator
