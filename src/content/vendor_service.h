// The vendor's background service, which sometimes has to be ended before a phone answers again.
#pragma once

#include "base/types.h"

namespace ovno2::Content {

// How often one read may end the service.
inline constexpr int mostServiceEnds = 3;

// True for the results of a read after which the service has to be ended.
bool serviceIsStuck(Long result);

// Ends the service, which starts afresh with the next call. Takes at least 200 ms; nothing is thrown.
void endVendorService();

}  // namespace ovno2::Content
