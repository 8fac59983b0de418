// A contact outside a phone: what a file's card or row holds, or what a phone's contact becomes on its way to
// a file. Readers and writers of all formats and the commands that write to a phone meet here.
#pragma once

#include <string>
#include <vector>

#include "host/output/text.h"

namespace ovno2::host {

struct ContactDraft {
    struct Picture {
        std::string bytes;      // the image file itself
        std::string extension;  // what kind of image: "jpg", "png", "gif", "bmp"; empty = not known
    };

    // One list a row of fieldRows(), in its order, of single values without blanks around them; rows that
    // hold one value have at most one. Birthdays are ISO 8601 dates ("1975-04-12"). The picture's row is
    // empty: pictures stand below.
    std::vector<std::vector<Text>> values;
    std::vector<Picture> pictures;
    Text uid;  // what the file calls it; empty = nothing
    // What the source had and no row can hold, for people: "ROLE", "X-JABBER: two values, one kept". UTF-8.
    std::vector<std::string> unplaced;
};

}  // namespace ovno2::host
