// The commands on a phone's calendar. Those below `calendar` register themselves there.
#pragma once

#include "host/command/command.h"

namespace ovno2::host {

void registerCalendar(CLI::App& app, Context& context);

void registerCalendarFolders(CLI::App& calendar, Context& context);
void registerCalendarEdits(CLI::App& calendar, Context& context);
void registerCalendarImport(CLI::App& calendar, Context& context);
void registerCalendarExport(CLI::App& calendar, Context& context);

}  // namespace ovno2::host
