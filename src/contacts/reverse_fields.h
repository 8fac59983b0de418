// The way back from the host's field codes to the phone's contact field ids.
//
// The tables belong to the thread and are built at the first contact that is written.
#pragma once

#include <vector>

#include "base/types.h"
#include "library/library_records.h"

namespace ovno2::Contacts {

struct ReverseFields {
    // Host field code -> phone field id, first and second choice; 0 = no field of the phone's.
    std::vector<Long> FieldIdByCode;
    std::vector<Long> AltFieldIdByCode;

    // The first choice, else the second; 0 = none.
    library::Word idOf(Long code) const;
};

// The thread's tables, built when they are not yet. Throws as below.
const ReverseFields& reverseFields();

// Builds them anew for the library's version and the profile of the model given to `PhoneModel_`. Throws
// RuntimeFailure, and leaves them alone, when the library cannot tell its version: with the wrong tables
// values would go to the wrong fields.
void BuildReverseFieldTables(ReverseFields& tables);

}  // namespace ovno2::Contacts
