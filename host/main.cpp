#include "host/archive/commands.h"
#include "host/bluetooth/commands.h"
#include "host/calendar/commands.h"
#include "host/command_line.h"
#include "host/contacts/commands.h"
#include "host/files/commands.h"
#include "host/log/commands.h"
#include "host/messages/commands.h"
#include "host/output/console.h"
#include "host/overview.h"
#include "host/phones/commands.h"

int main(int argc, char** argv) {
    using namespace ovno2::host;
    console::useLargePages();
    constexpr RegisterCommand* commands[] = {
        registerOverview,  registerList,   registerContacts, registerMessages, registerNotes,
        registerCalendar,  registerFiles,  registerArchive,  registerVerify,   registerMedia,
        registerBluetooth, registerDoctor, registerLog};
    return runCommandLine(console::arguments(argc, argv), commands);
}
