// Bluetooth phones: searching for them, pairing with them, and marking them as trusted.
//
// Both routines work on the device-management session, which they open when it is closed and leave open. They
// keep nothing on the thread: a passkey is known for the length of one call and never logged.
#pragma once

#include "base/host_array.h"
#include "library/library_records.h"
#include "platform_native/call.h"

namespace ovno2::Bluetooth {

// What `ChangeDeviceTrustedStateSub` is asked to do; bit values.
inline constexpr Long pair = 1;
inline constexpr Long trust = 2;

// Switches Bluetooth on and searches; `timeout` is the library's. 0 done, -1 no session, -2 the search
// failed. The arrays get an entry a phone, from index 0: name, address, device number as decimal text and the
// library's state. They stay as they are when no phone is found, and when the result is not 0.
Long MediaSearchBT(TextArray& models, TextArray& addresses, TextArray& deviceIds, LongArray& states,
                   Long timeout);

// The progress function of a search: the host's windows live on. The library may call it on any thread.
library::Status OVNO2_CALLED_BY_LIBRARY CallBackMediaSearchBT(library::Word, library::Word) noexcept;

// Pairs with the phone at `address`, marks it as trusted, or both. Blanks and "!" in the address do not
// count; what follows its first 17 characters is a number that takes the place of `what`: bit value 1 = pair,
// 4 = do not trust. The result is the library's last status, -1 when nothing was attempted, -2 when the phone
// refused to pair, -9 when the address asks for pairing and there is no passkey.
Long ChangeDeviceTrustedStateSub(const Text& address, Long what, const Text& passkey);

}  // namespace ovno2::Bluetooth
