// Any bytes as a calendar file: each entry that comes of them reads back as it was from a file in both forms,
// and its dates can be asked for.
#include <cstdlib>

#include "host/calendar/ical_reader.h"
#include "host/calendar/ical_writer.h"
#include "host/calendar/recurrence.h"
#include "host/calendar/single_entries.h"

using namespace ovno2;
using namespace ovno2::host;

namespace {

bool isSame(const CalendarEntry& a, const CalendarEntry& b) {
    return a.kind == b.kind && a.start == b.start && a.end == b.end && a.due == b.due &&
           a.alarm.substr(0, 10) == b.alarm.substr(0, 10) && a.rule == b.rule &&
           a.exceptions == b.exceptions && a.birthYear == b.birthYear && a.priority == b.priority &&
           a.isDone == b.isDone;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const CalendarFile file = readCalendarFile(bytes, "f");
    constexpr std::chrono::local_days until(std::chrono::year(2012) / 1 / 1);
    for (const CalendarEntry& entry : file.entries) {
        datesOf(entry, u"2000-01-01", u"2001-01-01");
        if (entry.wideRule && singleEntries(entry, until).entries.size() > mostSingleEntries) std::abort();
    }
    for (const CalendarForm form : {CalendarForm::iCalendar, CalendarForm::vCalendar}) {
        const CalendarText written = writeCalendarFile(file.entries, form);
        const CalendarFile again = readCalendarFile(written.text, "f");
        if (again.entries.size() != file.entries.size()) std::abort();
        for (std::size_t i = 0; i < file.entries.size(); ++i)
            if (!isSame(file.entries[i], again.entries[i])) std::abort();
    }
    return 0;
}
