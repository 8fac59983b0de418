// Writing one row of the host's grid into the session. No state of its own; see calendar_session.h.
#pragma once

#include "base/host_array.h"
#include "calendar/cal_item.h"
#include "platform/automation.h"

namespace ovno2::Calendar {

// Writes row `indexingrid` of `CalGrid` (grid_row.h) to the entry that `elemcal.ItemUid` names, by its UID or
// a number of one to three digits, or as a new one where that is empty or unknown. A calendar's name in the
// row moves the entry there. An entry that the row does not change is not written. A new entry's temporary id
// comes back in `ItemUid`.
//
// 0 written, or unchanged; -1 to -5 what `beginWriting` gives, -1 also when there was no memory for a value
// or an entry cannot hold it; else the library's status. Nothing is thrown.
Long WriteCalItem(const Text& model, const Text& phoneId, CalItem& elemcal,
                  const platform::ObjectPointer& CalGrid, Long indexingrid, const TextTable& MobileCalFields);

}  // namespace ovno2::Calendar
