// The host's address-book record, as far as the module fills it.
#pragma once

#include "base/types.h"

namespace ovno2 {

// One contact. The record's other members are the host's own.
struct AdrItem {
    Text Location;           // position on the phone, or the phone's own word for it, followed by " (SB)"
    Text FieldValues;        // one value per row of the field-definition table, joined by tabs
    Text FieldValuesAsRead;  // `FieldValues` as it stood when reading finished
    Text Uid;                // two upper-case hexadecimal digits per byte
};

}  // namespace ovno2
