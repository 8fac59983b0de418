// The host's record of a calendar entry, as far as the module fills it.
#pragma once

#include "base/types.h"

namespace ovno2 {

// One entry. The record's other members are the host's own.
struct CalItem {
    Long ItemNumber = 0;  // the phone's number of the entry
    Text VCalText;        // a VEVENT or VTODO block
    Text VCalTextRead;    // `VCalText` as it stood when reading finished
    Long ItemKind = 0;    // 1 = event, 2 = to-do
    Text ItemUid;         // two upper-case hexadecimal digits per byte, or the phone's number
};

}  // namespace ovno2
