#include "log/debug_log.h"

#include <fstream>
#include <gmock/gmock.h>
#include <thread>

#include "common/machine_test.h"
#include "core/attempt.h"
#include "pc/ansi.h"
#include "platform/portable/clock.h"
#include "platform/portable/files.h"
#include "platform/portable/registry.h"

namespace ovno2 {
namespace {

constexpr TextView hostKey = u"Software\\Marrowind\\Orvanta";
constexpr TextView hostDebugKey = u"Software\\Marrowind\\Orvanta\\Debug";
constexpr TextView debugKey = u"Software\\Tessaline\\Debug";

class DiagnosticLog : public MachineTest {
  protected:
    // A text file in the test's folder, as the registry names it.
    Text pathOf(const std::string& name) const {
        return u"Z:" + replaceAll((folder.path() / name).u16string(), u"/", u"\\");
    }
    std::string contents(const std::string& name = "log.txt") const {
        std::ifstream stream(folder.path() / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    void user(TextView key, TextView name, TextView text) {
        setRegistryText(platform::currentUser, key, name, text);
    }
    void machineWide(TextView key, TextView name, TextView text) {
        setRegistryText(platform::localMachine, key, name, text);
    }
    void start() {
        DebugLog::connect();
        DebugLog::DebugInit();
    }
    // Starts with a file, past the line that tells the level.
    void startWithFile(TextView level = u"4") {
        user(debugKey, u"On", u"1");
        user(debugKey, u"DebugFile", pathOf("log.txt"));
        user(debugKey, u"Level", level);
        start();
        std::filesystem::remove(folder.path() / "log.txt");
    }
};

TEST_F(DiagnosticLog, EachKindOfLineHasItsMarksAndItsIndent) {
    startWithFile();
    DebugWrite(u"GetDevices", routineEntry);
    DebugWrite(u"DMApiTerminate", 5);
    DebugWrite(u"Łódź für 5 €");
    {
        const RoutineLog inner(u"Inner");
        DebugWrite(u"e", -2);
    }
    DebugWrite(u"GetDevices", routineExit);
    DebugWrite(u"unbalanced", routineExit);
    DebugLine(u"v:", decimal{5}, spacedDecimal{5}, hex{0x80100014});
    EXPECT_EQ(
        "[ovNo2] <GetDevices>_\r\n"
        "[ovNo2]  DMApiTerminate 5\r\n"
        "[ovNo2]  L\xF3"
        "dz f\xFCr 5 \x80\r\n"
        "[ovNo2]  <Inner>_\r\n"
        "[ovNo2]   e-2\r\n"
        "[ovNo2]  </Inner>\r\n"
        "[ovNo2] </GetDevices>\r\n"
        "[ovNo2] </unbalanced>\r\n"
        "[ovNo2] v:5 580100014\r\n",
        contents());
}

TEST_F(DiagnosticLog, MoreThanFiftyOpenRoutinesResetTheIndent) {
    startWithFile();
    for (int i = 0; i < 50; ++i)
        DebugWrite(u"r", routineEntry);
    DebugWrite(u"deep");
    DebugWrite(u"r", routineEntry);
    DebugWrite(u"reset");
    EXPECT_THAT(contents(), testing::HasSubstr("[ovNo2] " + std::string(50, ' ') + "deep\r\n"));
    EXPECT_THAT(contents(), testing::EndsWith("\r\n[ovNo2] reset\r\n"));
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

TEST_F(DiagnosticLog, WhileTheLogIsOffAFailureStaysPending) {
    start();
    raisePending(fileNotFound);
    for (int i = 0; i < 1000; ++i)
        DebugWrite(u"off");
    EXPECT_EQ(fileNotFound, pendingFailure().number);
}

TEST_F(DiagnosticLog, SettingsComeFromTheFirstPlaceThatHasThem) {
    enum Hive { hkcu, hklm };
    struct Setting {
        Hive hive;
        TextView key, name, text;
    };
    struct Case {
        const char* what;
        std::vector<Setting> settings;
        bool enabled;
        Long level;
        const char* firstLine;  // of log.txt, with the tag left out
    };
    const Text file = pathOf("log.txt"), other = pathOf("other.txt");
    const Case cases[] = {
        {"nothing", {}, false, 0, ""},
        {"a file alone", {{hkcu, debugKey, u"DebugFile", file}}, false, 0, ""},
        {"the switch alone", {{hkcu, debugKey, u"On", u"1"}}, true, 0, ""},
        {"only the machine's switch",
         {{hklm, debugKey, u"On", u"1"}, {hkcu, debugKey, u"DebugFile", file}},
         false,
         0,
         ""},
        {"a negative switch",
         {{hkcu, debugKey, u"On", u"-1"}, {hkcu, debugKey, u"DebugFile", file}},
         false,
         0,
         ""},
        {"the user's file",
         {{hkcu, debugKey, u"On", u"1"},
          {hkcu, debugKey, u"DebugFile", file},
          {hklm, hostKey, u"DebugFile", other}},
         true,
         0,
         "remote Debug on, Level: 0"},
        {"the host's file",
         {{hkcu, debugKey, u"On", u"1"},
          {hklm, hostKey, u"DebugFile", file},
          {hklm, debugKey, u"DebugFile", other}},
         true,
         0,
         "remote Debug on, Level: 0"},
        {"the machine's file",
         {{hkcu, debugKey, u"On", u"1"}, {hklm, debugKey, u"DebugFile", file}},
         true,
         0,
         "remote Debug on, Level: 0"},
        {"the preliminary level only switches on",
         {{hkcu, debugKey, u"On", u"1"},
          {hkcu, hostKey, u"DebugLevel", u"31"},
          {hkcu, debugKey, u"DebugFile", file}},
         true,
         0,
         "remote Debug on, Level: 0"},
        {"the viewer's level keeps four bits",
         {{hkcu, debugKey, u"On", u"1"},
          {hkcu, hostDebugKey, u"Level", u"21"},
          {hkcu, debugKey, u"Level", u"3"},
          {hkcu, debugKey, u"DebugFile", file}},
         true,
         5,
         "remote Debug on, Level: 5"},
        {"the user's level",
         {{hkcu, debugKey, u"On", u"1"},
          {hkcu, hostDebugKey, u"Level", u"16"},
          {hkcu, debugKey, u"Level", u"3"},
          {hklm, debugKey, u"Level", u"7"},
          {hkcu, debugKey, u"DebugFile", file}},
         true,
         3,
         "remote Debug on, Level: 3"},
        {"the machine's level keeps all bits",
         {{hkcu, debugKey, u"On", u"1"},
          {hklm, debugKey, u"Level", u"23"},
          {hkcu, debugKey, u"DebugFile", file}},
         true,
         7,
         "remote Debug on, Level: 23"},
        {"level -1 writes nothing",
         {{hkcu, debugKey, u"On", u"1"},
          {hkcu, debugKey, u"Level", u"-1"},
          {hkcu, debugKey, u"DebugFile", file}},
         true,
         15,
         ""},
        {"a number that does not fit",
         {{hkcu, debugKey, u"On", u"1"},
          {hkcu, debugKey, u"Level", u"99999999999"},
          {hklm, debugKey, u"Level", u"2"},
          {hkcu, debugKey, u"DebugFile", file}},
         true,
         2,
         " 6:Overflow"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        resetThreadState();
        usePlatform(machine);
        std::filesystem::remove(folder.path() / "registry.reg");
        std::filesystem::remove(folder.path() / "log.txt");
        for (const Setting& setting : c.settings)
            (setting.hive == hkcu ? user(setting.key, setting.name, setting.text)
                                  : machineWide(setting.key, setting.name, setting.text));
        start();
        EXPECT_EQ(c.enabled, logIsOn());
        EXPECT_EQ(c.level, stateOf<LogFront>().level);
        const std::string lines = contents();
        EXPECT_EQ(*c.firstLine ? "[ovNo2] " + std::string(c.firstLine) : "",
                  lines.substr(0, lines.find('\r')));
    }
}

TEST_F(DiagnosticLog, OnlyALevelThatKeepsItsBitsSwitchesTimestampsOn) {
    auto& clock = static_cast<platform::portable::PortableClock&>(machine.clock());
    clock.set({.year = 2008,
               .month = 8,
               .dayOfWeek = 0,
               .day = 1,
               .hour = 10,
               .minute = 0,
               .second = 2,
               .millisecond = 250});
    startWithFile(u"18");
    raisePending(fileNotFound);
    DebugWrite(u"r", routineEntry);
    EXPECT_EQ("[ovNo2]  53:File not found\r\n36002.25: [ovNo2] <r>_\r\n", contents());
    EXPECT_EQ(2, stateOf<LogFront>().level);
}

TEST_F(DiagnosticLog, EveryBlockOfCallsWhileOffLooksAtTheSwitchesOnce) {
    start();
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
    write(254);
    EXPECT_EQ(0, reads);
    write(1);
    EXPECT_EQ(2, reads) << "both switches, and nothing else";
    write(255);
    EXPECT_EQ(2, reads);
    registry.interfere = nullptr;

    user(debugKey, u"On", u"1");
    user(debugKey, u"DebugFile", pathOf("log.txt"));
    write(1);
    EXPECT_EQ("[ovNo2] remote Debug on, Level: 0\r\n", contents())
        << "the line that looked is not written itself";
    write(1);
    EXPECT_THAT(contents(), testing::EndsWith("\r\n[ovNo2] x\r\n"));

    user(debugKey, u"DebugFile", pathOf("other.txt"));
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
    std::thread other([&] {
        usePlatform(machine);
        DebugWrite(u"not connected");
        EXPECT_FALSE(logIsOn());
        DebugLog::DebugInit();
        DebugWrite(u"other", routineEntry);
    });
    other.join();
    DebugWrite(u"same indent as before");
    EXPECT_EQ("[ovNo2] remote Debug on, Level: 4\r\n[ovNo2] <other>_\r\n[ovNo2] same indent as before\r\n",
              contents());
}

TEST_F(DiagnosticLog, TheTagIsTheModuleOfTheCallerWhereItGivesOne) {
    startWithFile();
    stateOf<LogFront>().writer->writeLine(u"hello", plainLine, 0, u"TW: ");
    EXPECT_EQ("TW: hello\r\n", contents());
}

}  // namespace
}  // namespace ovno2
