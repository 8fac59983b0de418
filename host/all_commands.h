// The commands of `ovphone`, in the order in which its help shows them.
#pragma once

#include "host/archive/commands.h"
#include "host/bluetooth/commands.h"
#include "host/calendar/commands.h"
#include "host/command_line.h"
#include "host/contacts/commands.h"
#include "host/files/commands.h"
#include "host/log/commands.h"
#include "host/messages/commands.h"
#include "host/overview.h"
#include "host/phones/commands.h"
#include "host/restore/commands.h"

namespace ovno2::host {

inline constexpr RegisterCommand* allCommands[] = {
    registerOverview, registerList,      registerContacts, registerMessages, registerNotes,
    registerCalendar, registerFiles,     registerArchive,  registerVerify,   registerRestore,
    registerMedia,    registerBluetooth, registerDoctor,   registerLog};

}  // namespace ovno2::host
