// A machine with simulated phones attached: the module loads the simulator under the vendor's names, the
// journal is on, and whatever a test leaves handed out is a leak.
#pragma once

#include "common/machine_test.h"
#include "common/recording_log.h"
#include "simulator/control/control.h"

#ifndef _WIN32
#include "platform/portable/libraries.h"
#endif

namespace ovno2 {

class PhoneTest : public MachineTest {
  protected:
    PhoneTest() {
        simulator.reset();
        simulator.journal(true);
        libraries().searchOnlyIn(OVNO2_SIMULATOR_FOLDER);
        setRegistryText(platform::localMachine, u"SOFTWARE\\PC Connectivity Solution", u"PlatformPath",
                        u"C:\\none");
    }
    ~PhoneTest() override { EXPECT_EQ("", simulator.leaks()); }

#ifdef _WIN32
    ChosenLibraries& libraries() {
        return machine.libraries();
    }
#else
    platform::portable::PortableLibraries& libraries() {
        return static_cast<platform::portable::PortableLibraries&>(machine.libraries());
    }
#endif

    // The journal's calls since the last look, without arguments and status: "DAOpenCA", "CAGetIDList", ...
    std::vector<std::string> calls() {
        std::vector<std::string> names;
        for (const std::string& line : simulator.readJournal())
            names.push_back(line.substr(0, line.find('(')));
        return names;
    }

    simulator::Control simulator;
};

}  // namespace ovno2
