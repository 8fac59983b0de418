// Texts as people compare them: "muller" is "Müller".
#pragma once

#include "host/output/text.h"

namespace ovno2::host {

// Small letters without accents, for sorting and searching. Of letters outside the Latin ones only the case
// goes, and marks of their own after a letter.
Text folded(TextView text);

}  // namespace ovno2::host
