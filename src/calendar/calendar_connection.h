// The connection to the phone's calendar. Its state stands in calendar_state.h; nothing here throws.
#pragma once

#include "content/connection.h"

namespace ovno2::Calendar {

Content::Connection& connection();

// Opens the calendar connection to the phone with that serial number unless it is open, and reads the time
// zone's biases: 0, 0x80100023 when the library says so, -1 for every other failure.
Long CheckCalendarConnection(const Text& serial);
// The same, once more after 0x80100023.
Long CheckCalendarConnectionTwice(const Text& serial);

// Closes the calendar connection and the calendar write session on it. Always 0.
Long CloseCalendarConnection();

// The platform of the phone with that serial number, a tNokiaPhoneType; asked once for a model.
Long phonePlatform(const Text& model, const Text& serial);

}  // namespace ovno2::Calendar
