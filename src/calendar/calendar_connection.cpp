#include "calendar/calendar_connection.h"

#include "calendar/calendar_state.h"
#include "content/sessions.h"
#include "devices/devices.h"
#include "library/library_memory.h"

namespace ovno2::Calendar {

namespace {

using library::signature::targetCalendar;

constexpr Long notOpened = -1;

Long openCalendar(const Text& serial) {
    DebugWrite(u" 1");
    DebugLine(u"'", serial, u"'");
    const library::LibraryString text(serial);
    const library::Answer opened = connection().openOver(Content::anyMedium, targetCalendar, text.get());
    DebugLine(hex{opened.status}, spacedDecimal{static_cast<Long>(Content::anyMedium)},
              spacedDecimal{static_cast<Long>(targetCalendar)}, u" ", hex{connection().handle});
    if (opened.succeeded()) return 0;
    return library::is(opened.status, library::contentAccessDenied) ? opened.status : notOpened;
}

}  // namespace

Content::Connection& connection() {
    return state().connection;
}

Long CheckCalendarConnection(const Text& serial) {
    const RoutineLog log(u"CheckCalendarConnection");
    Content::Connection& calendar = connection();
    Long result = notOpened;
    if (serial != calendar.serial) {
        CloseCalendarConnection();
        attempt([&] { calendar.serial = serial; });
    }
    if (calendar.handle != 0) {
        DebugWrite(u" 2");
        result = 0;
    } else {
        result = openCalendar(serial);
    }
    Content::refreshTimeBiases();
    DebugLine(hex{result});
    return result;
}

Long CheckCalendarConnectionTwice(const Text& serial) {
    const Long status = CheckCalendarConnection(serial);
    return library::is(status, library::contentAccessDenied) ? CheckCalendarConnection(serial) : status;
}

Long CloseCalendarConnection() {
    const RoutineLog log(u"CloseCalendarConnection");
    State* const state = existingStateOf<State>();
    if (!state) return 0;
    DebugLine(hex{state->connection.close()});
    return 0;
}

Long phonePlatform(const Text& model, const Text& serial) {
    State& calendar = state();
    if (model == calendar.platformModel && serial == calendar.platformSerial &&
        calendar.platform != eNokiaPhoneType)
        return calendar.platform;
    attempt([&] {
        calendar.platform = Devices::GetPhoneType(serial);
        calendar.platformModel = model;
        calendar.platformSerial = serial;
    });
    return calendar.platform;
}

}  // namespace ovno2::Calendar
