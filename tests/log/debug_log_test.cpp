#include "log/debug_log.h"

#include <gmock/gmock.h>
#include <thread>

#include "common/machine_test.h"
#include "core/attempt.h"
#include "pc/ansi.h"
#include "platform/portable/registry.h"

namespace ovno2 {
namespace {

using platform::currentUser;
using platform::localMachine;

struct Place {
    Long hive;
    TextView key, name;
};
constexpr TextView hostKey = u"Software\\Marrowind\\Orvanta";
constexpr TextView hostDebugKey = u"Software\\Marrowind\\Orvanta\\Debug";
constexpr TextView debugKey = u"Software\\Tessaline\\Debug";
constexpr Place on = {currentUser, debugKey, u"On"}, machineOn = {localMachine, debugKey, u"On"};
constexpr Place file = {currentUser, debugKey, u"DebugFile"},
                hostFile = {localMachine, hostKey, u"DebugFile"};
constexpr Place machineFile = {localMachine, debugKey, u"DebugFile"};
constexpr Place level = {currentUser, debugKey, u"Level"}, machineLevel = {localMachine, debugKey, u"Level"};
constexpr Place viewerLevel = {currentUser, hostDebugKey, u"Level"};
constexpr Place preliminaryLevel = {currentUser, hostKey, u"DebugLevel"};

class DiagnosticLog : public MachineTest {
  protected:
    // A text file in the test's folder, as the registry names it.
    Text pathOf(const std::string& name) const {
        return u"Z:" + replaceAll((folder.path() / name).u16string(), u"/", u"\\");
    }
    std::string contents(const std::string& name = "log.txt") const {
        return contentOf(folder.path() / name);
    }
    void set(const Place& place, TextView text) { setRegistryText(place.hive, place.key, place.name, text); }
    // Starts with a file, past the line that tells the level.
    void startWithFile(TextView number = u"4") {
        set(on, u"1");
        set(file, pathOf("log.txt"));
        set(level, number);
        DebugLog::DebugInit();
        std::filesystem::remove(folder.path() / "log.txt");
    }
};

TEST_F(DiagnosticLog, EachKindOfLineHasItsMarksItsTagAndItsIndent) {
    startWithFile();
    DebugWrite(u"GetDevices", routineEntry);
    DebugWrite(u"DMApiTerminate", 5);
    DebugWrite(u"Łódź für 5 €");
    {
        const RoutineLog inner(u"Inner");
        DebugWrite(u"e", -2);
    }
    stateOf<LogFront>().writer->writeLine(u"hello", plainLine, 0, u"TW: ");
    DebugWrite(u"GetDevices", routineExit);
    DebugWrite(u"unbalanced", routineExit);
    DebugLine(u"v:", decimal{5}, spacedDecimal{5}, hex{0x80100014});
    for (int i = 0; i < 50; ++i)
        DebugWrite(u"r", routineEntry);
    EXPECT_EQ(0u, contents().find("[ovNo2] <GetDevices>_\r\n"
                                  "[ovNo2]  DMApiTerminate 5\r\n"
                                  "[ovNo2]  L\xF3\x64z f\xFCr 5 \x80\r\n"
                                  "[ovNo2]  <Inner>_\r\n"
                                  "[ovNo2]   e-2\r\n"
                                  "[ovNo2]  </Inner>\r\n"
                                  "TW:  hello\r\n"
                                  "[ovNo2] </GetDevices>\r\n"
                                  "[ovNo2] </unbalanced>\r\n"
                                  "[ovNo2] v:5 580100014\r\n"
                                  "[ovNo2] <r>_\r\n[ovNo2]  <r>_\r\n"));
    DebugWrite(u"deep");
    DebugWrite(u"r", routineEntry);
    DebugWrite(u"reset");
    EXPECT_THAT(contents(), testing::HasSubstr("[ovNo2] " + std::string(50, ' ') + "deep\r\n"));
    EXPECT_THAT(contents(), testing::EndsWith("\r\n[ovNo2] reset\r\n")) << "51 routines are a fault of ours";
}

TEST_F(DiagnosticLog, ThePendingFailureGetsALineOfItsOwnAndIsGone) {
    startWithFile();
    attempt([] { throw RuntimeFailure(fileNotFound, u"File not found: ConnAPI"); });
    DebugWrite(u"r", routineEntry);
    raisePending(entryPointMissing);
    DebugWrite(u"next");
    DebugWrite(u"last");
    EXPECT_EQ(
        "[ovNo2]  53:File not found: ConnAPI\r\n[ovNo2] <r>_\r\n"
        "[ovNo2]   453:Can't find DLL entry point\r\n[ovNo2]  next\r\n[ovNo2]  last\r\n",
        contents());
}

TEST_F(DiagnosticLog, SettingsComeFromTheFirstPlaceThatHasThem) {
    constexpr Long nothing = -1;
    struct Case {
        const char* what;
        std::vector<std::pair<Place, Text>> settings;
        bool enabled;
        Long level, told;  // in effect; in the first line of the file
    };
    const Text log = pathOf("log.txt"), other = pathOf("other.txt"), yes = u"1";
    for (const Case& c :
         {Case{"nothing", {}, false, 0, nothing}, Case{"a file alone", {{file, log}}, false, 0, nothing},
          Case{"the switch alone", {{on, yes}}, true, 0, nothing},
          Case{"the machine's switch", {{machineOn, yes}, {file, log}}, false, 0, nothing},
          Case{"a negative switch", {{on, u"-1"}, {file, log}}, false, 0, nothing},
          Case{"the user's file", {{on, yes}, {file, log}, {hostFile, other}}, true, 0, 0},
          Case{"the host's file", {{on, yes}, {hostFile, log}, {machineFile, other}}, true, 0, 0},
          Case{"the machine's file", {{on, yes}, {machineFile, log}}, true, 0, 0},
          Case{"a level that only switches on",
               {{on, yes}, {preliminaryLevel, u"31"}, {file, log}},
               true,
               0,
               0},
          Case{"four bits", {{on, yes}, {viewerLevel, u"21"}, {level, u"3"}, {file, log}}, true, 5, 5},
          Case{"the user's", {{on, yes}, {level, u"3"}, {machineLevel, u"7"}, {file, log}}, true, 3, 3},
          Case{"no bits", {{on, yes}, {viewerLevel, u"16"}, {level, u"3"}, {file, log}}, true, 3, 3},
          Case{"all the machine's bits", {{on, yes}, {machineLevel, u"23"}, {file, log}}, true, 7, 23},
          Case{"-1 writes nothing", {{on, yes}, {level, u"-1"}, {file, log}}, true, 15, nothing},
          Case{"too large",
               {{on, yes}, {level, u"99999999999"}, {machineLevel, u"2"}, {file, log}},
               true,
               2,
               2}}) {
        SCOPED_TRACE(c.what);
        resetThreadState();
        usePlatform(machine);
        std::filesystem::remove(folder.path() / "registry.reg");
        std::filesystem::remove(folder.path() / "log.txt");
        for (const auto& [place, text] : c.settings)
            set(place, text);
        DebugLog::DebugInit();
        EXPECT_EQ(c.enabled, logIsOn());
        EXPECT_EQ(c.level, stateOf<LogFront>().level);
        const std::string failure = c.settings.size() == 4 && c.told == 2 ? "[ovNo2]  6:Overflow\r\n" : "";
        const std::string line = "[ovNo2] remote Debug on, Level: " + std::to_string(c.told) + "\r\n";
        EXPECT_EQ(c.told == nothing ? "" : failure + line, contents());
    }
}

TEST_F(DiagnosticLog, OnlyALevelThatKeepsItsBitsSwitchesTimestampsOn) {
    clock().set({.year = 2008, .month = 8, .day = 1, .hour = 10, .second = 2, .millisecond = 250});
    startWithFile(u"18");
    raisePending(fileNotFound);
    DebugWrite(u"r", routineEntry);
    EXPECT_EQ("[ovNo2]  53:File not found\r\n36002.25: [ovNo2] <r>_\r\n", contents());
    EXPECT_EQ(2, stateOf<LogFront>().level);
}

TEST_F(DiagnosticLog, EveryBlockOfCallsWhileOffLooksAtTheSwitchesOnce) {
    DebugLog::DebugInit();
    auto& registry = static_cast<platform::portable::PortableRegistry&>(machine.registry());
    int reads = 0;
    registry.interfere = [&](auto operation) {
        if (operation == platform::portable::PortableRegistry::Operation::open) ++reads;
        return platform::registryOk;
    };
    const auto write = [](int count) {
        for (int i = 0; i < count; ++i)
            DebugWrite(u"x");
    };
    raisePending(fileNotFound);
    write(254);
    EXPECT_EQ(0, reads);
    EXPECT_EQ(fileNotFound, pendingFailure().number) << "while the log is off a failure stays pending";
    write(1);
    EXPECT_EQ(2, reads) << "both switches, and nothing else";
    write(255);
    EXPECT_EQ(2, reads);
    registry.interfere = nullptr;
    clearPendingFailure();

    set(on, u"1");
    set(file, pathOf("log.txt"));
    write(1);
    EXPECT_EQ("[ovNo2] remote Debug on, Level: 0\r\n", contents()) << "without the line that looked";
    write(1);
    EXPECT_THAT(contents(), testing::EndsWith("\r\n[ovNo2] x\r\n"));

    set(file, pathOf("other.txt"));
    DebugLog::DebugInit();
    write(1);
    EXPECT_EQ("", contents("other.txt")) << "settings are read once";
}

TEST_F(DiagnosticLog, AFileThatCannotBeWrittenCostsOnlyItsLines) {
    startWithFile();
    std::filesystem::create_directory(folder.path() / "log.txt");
    DebugWrite(u"lost", routineEntry);
    EXPECT_EQ(noFailure, pendingFailure().number);
    std::filesystem::remove(folder.path() / "log.txt");
    // Others may hold any number of files open while a line is written.
    platform::OpenFile* held = nullptr;
    for (Long number = 1; number <= 3; ++number)
        ASSERT_EQ(noFailure,
                  machine.files().open(number, pathOf("held"), platform::FileAccess::append, held));
    DebugWrite(u"kept");
    EXPECT_EQ("[ovNo2]  kept\r\n", contents());
}

TEST_F(DiagnosticLog, AThreadLogsOnlyOnceItIsConnected) {
    startWithFile();
    std::thread([&] {
        usePlatform(machine);
        DebugWrite(u"not connected");
        EXPECT_FALSE(logIsOn());
        DebugLog::DebugInit();
        DebugWrite(u"other", routineEntry);
    }).join();
    DebugWrite(u"same indent as before");
    EXPECT_EQ("[ovNo2] remote Debug on, Level: 4\r\n[ovNo2] <other>_\r\n[ovNo2] same indent as before\r\n",
              contents());
}

}  // namespace
}  // namespace ovno2
