#include "devices/discovery.h"

#include <fstream>
#include <gmock/gmock.h>

#include "common/executable_file.h"
#include "common/machine_test.h"
#include "common/recording_log.h"
#include "platform/portable/windows.h"

namespace ovno2 {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

using Versions = std::map<std::string, platform::FileVersion>;

constexpr TextView vendorKey = u"SOFTWARE\\Nokia";
constexpr TextView suiteKey = u"SOFTWARE\\Nokia\\PCSuite";
constexpr TextView oviKey = u"SOFTWARE\\Nokia\\Nokia Ovi Suite";
constexpr TextView nokiaSuiteKey = u"SOFTWARE\\Nokia\\Nokia Suite";
constexpr TextView libraryKey = u"SOFTWARE\\PC Connectivity Solution";
constexpr TextView runKey = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";

platform::FileVersion fileVersion(std::uint16_t major, std::uint16_t minor, std::uint16_t build = 0) {
    return {.file = {major, minor, build, 0}, .product = {}};
}

class DiscoveryTest : public MachineTest {
  protected:
    DiscoveryTest() {
        std::filesystem::create_directories(driveC);
        clock().set({.year = 2008, .month = 7, .day = 1});
        processes().running.emplace();
        processes().onStart = [this](TextView commandLine, Long show) {
            started.push_back(toUtf8(commandLine) + " (" + std::to_string(show) + ")");
            return startFailure;
        };
    }

    platform::portable::PortableWindows& windows() {
        return static_cast<platform::portable::PortableWindows&>(machine.windows());
    }

    void set(TextView key, TextView name, TextView text) {
        setRegistryText(platform::localMachine, key, name, text);
    }
    void setClass(TextView key, TextView text) { setRegistryText(platform::classesRoot, key, u"", text); }
    // A program on drive C.
    void install(const std::string& file, const platform::FileVersion& version) {
        std::filesystem::create_directories((driveC / file).parent_path());
        std::ofstream(driveC / file, std::ios::binary) << makeExecutable(version);
    }
    void run(Text path) { processes().running->push_back({.id = 7, .path = std::move(path), .handle = 0}); }

    // Checks and keeps the lines of the check itself; those of the routines it calls are left out.
    bool check(bool startit) {
        RecordingLog log;
        const bool result = Discovery::CheckIfNokiaSDKIsThere(startit, suiteVersion);
        lines.clear();
        int depth = 0;
        for (const std::string& line : log.lines) {
            if (line.ends_with('>')) --depth;
            if (depth <= 1 && line.find_first_of("<>") == std::string::npos) lines.push_back(line);
            if (line.starts_with('<')) ++depth;
        }
        return result;
    }

    Long addCallback(Long answer) {
        return windows().registerProcedure([this, answer](Long request, Long number, Long style, Long text) {
            callbacks.push_back({request, number, style, text});
            return answer;
        });
    }

    const std::filesystem::path driveC = folder.path() / "drives" / "c";
    Single suiteVersion = 0;
    std::vector<std::string> lines;
    std::vector<std::string> started;
    FailureNumber startFailure = noFailure;
    std::vector<std::array<Long, 4>> callbacks;
};

// The newest product that is told of somewhere decides, and each place has rules of its own.
TEST_F(DiscoveryTest, TheVersionComesFromTheFirstPlaceThatKnowsIt) {
    const std::map<Text, std::pair<TextView, TextView>> places = {
        {u"build", {vendorKey, u"PCSuiteBuildNumber"}}, {u"ovi", {oviKey, u"OviSuiteBuildNumber"}},
        {u"suite", {nokiaSuiteKey, u"BuildNumber"}},    {u"folder", {suiteKey, u"ApplicationPath1"}},
        {u"library", {libraryKey, u"PlatformPath"}},    {u"tray", {runKey, u"PCSuiteTrayApplication"}},
        {u"other", {runKey, u"Nokia Tray Application"}}};
    struct Case {
        TextView registry;
        std::string file;  // a program on drive C, and its version
        std::vector<std::uint16_t> fileVersion;
        Single before, version;
        std::string lines;  // the last ones
    };
    const std::string none = "ApplicationPath1:|PlatformPath:|PCSuiteTrayApplication:|False";
    const Case cases[] = {
        {u"build=7.1.180.94", "", {}, 0, 7.1F, "v0: 7.1.180.94|True"},
        {u"ovi=4.1", "", {}, 0, 6.1F, "OVI: 4.1|v0: 6.1|True"},
        {u"suite=4.5.9", "", {}, 0, 6.5F, "OVI: 4.5.9|v0: 6.5|True"},
        {u"build=6|suite=1", "", {}, 0, 0, none},
        {u"ovi=2.1.1.1", "", {}, 0, 0, "OVI: 2.1.1.1|" + none},
        {u"", "Program Files/Nokia/Nokia PC Suite 7/PCSuite.exe", {7, 1}, 0, 7.1F, "v0a: 7.1.0.0|True"},
        {u"folder=C:\\Suite", "Suite/PCSuite.exe", {7, 0}, 0, 0, "|v1: |False"},
        {u"library=C:\\PCS", "PCS/ConnAPI.dll", {5, 1}, 0, 5.1F, " 1:C:\\PCS|ConnApivers:5.1.9.4|True"},
        {u"library=C:\\PCS", "PCS/ConnAPI.dll", {5, 1}, 6, 6, ":C:\\PCS|PCSuiteTrayApplication:|True"},
        {u"library=C:\\gone\\", "", {}, 3, 0, "ConnApivers:|False"},
        {u"tray=rem C:\\Tools\\Tray.exe -auto", "Tools/Tray.exe", {1, 2}, 0, 6.2F, "v1: 1.2.0.0|True"},
        {u"tray=REM C:\\a.exe\\b.EXE /x", "a.exe/b.EXE", {1, 9}, 0, 6.9F, "v1: 1.9.0.0|True"},
        {u"tray=C:\\Tools\\tray.com /x", "Tools/tray.com", {2, 5}, 0, 2.5F, "v1: 2.5.0.0|False"},
        {u"tray=C:\\tray v2.0 tool", "tray v2.0 tool", {6, 0}, 0, 6, "v1: 6.0.0.0|True"},
        {u"folder=C:\\S|tray=C:\\gone.exe", "S/LaunchApplication.exe", {1, 0}, 0, 6, "v1: 1.0.0.0|True"},
        {u"folder=C:\\S|tray=C:\\gone.exe", "", {}, 0, 0, "|v1: |False"},
        {u"folder=C:\\S", "S/ConnectionManager.exe", {2, 5}, 0, 6.5F, "v1: 2.5.0.0|True"},
        {u"folder=C:\\S", "S/ConnectionManager.exe", {1, 2}, 0, 6.2F, "v1: 1.2.0.0|True"},
        {u"folder=C:\\S", "S/ConnectionManager.exe", {3, 0}, 0, 7, "v1: 3.0.0.0|True"},
        {u"folder=C:\\S", "S/ConnectionManager.exe", {3, 5}, 0, 3.5F, "v1: 3.5.0.0|False"},
        {u"folder=C:\\S", "S/TrayApplication.exe", {2, 5}, 0, 2.5F, "v1: 2.5.0.0|False"},
        {u"folder=C:\\S|build=5.9", "S/ConnectionManager.exe", {1, 2}, 0, 5.9F, "v1a: 5.9|False"},
        {u"other=C:\\tray.exe", "tray.exe", {6, 3}, 0, 6.3F, "v2: 6.3.0.0|True"},
        {u"other=C:\\tray.exe -auto", "tray.exe", {6, 3}, 0, 0, "v2: |False"},
    };
    for (const Case& c : cases) {
        std::filesystem::remove_all(driveC);
        std::filesystem::create_directories(driveC);
        if (!c.file.empty()) {
            platform::FileVersion version = fileVersion(c.fileVersion[0], c.fileVersion[1]);
            if (c.file.ends_with("dll")) version = platform::FileVersion{{9, 9, 9, 9}, {5, 1, 0, 4}};
            install(c.file, version);
        }
        for (const auto& [place, name] : places)
            set(name.first, name.second, u"");
        for (const Text& entry : split(c.registry, u'|'))
            if (const std::size_t sign = entry.find(u'='); sign != Text::npos) {
                const auto& [key, name] = places.at(entry.substr(0, sign));
                set(key, name, entry.substr(sign + 1));
            }
        suiteVersion = c.before;
        EXPECT_EQ(c.lines.ends_with("True"), check(/*startit=*/false)) << c.lines;
        EXPECT_FLOAT_EQ(c.version, suiteVersion) << c.lines;
        std::string all;
        for (const std::string& line : lines)
            all += "|" + line;
        EXPECT_TRUE(all.ends_with(c.lines)) << all;
    }
}

TEST_F(DiscoveryTest, TheBuildTextIsKeptUntilAnotherIsFound) {
    set(nokiaSuiteKey, u"BuildNumber", u"1");
    check(false);
    EXPECT_EQ(u"", Discovery::SuiteBuildText());
    Text kept;
    for (const TextView build : {u"2.1", u"", u"4.5.9", u""}) {
        set(nokiaSuiteKey, u"BuildNumber", build);
        check(false);
        EXPECT_EQ(build.empty() ? kept : build, Discovery::SuiteBuildText());
        kept = Discovery::SuiteBuildText();
    }
}

TEST_F(DiscoveryTest, ASuiteThatRunsIsNotStartedAgain) {
    setClass(u"NclTray.ActiveAppState\\CLSID", u"{1}");
    setClass(u"CLSID\\{1}\\LocalServer32", u"C:\\NclTray.exe");
    for (const TextView program : {u"NCLTRAY.exe", u"ConnectionManager.exe", u"PcSync2.exe"}) {
        processes().running->clear();
        run(u"C:\\Nokia\\" + Text(program));
        EXPECT_FALSE(check(true));
        EXPECT_FALSE(check(false));
    }
    EXPECT_EQ(1, Discovery::LaunchPCSuite2IfRequired(addCallback(6)));
    EXPECT_TRUE(callbacks.empty());
    EXPECT_TRUE(clock().sleeps().empty());
    EXPECT_THAT(started, ElementsAre());
    // What ran is judged by the version all the same, and the products are logged.
    suiteVersion = 6;
    set(u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\{BCB8B85E-E28A-424F-AE81-A7553DAA32A4}",
        u"DisplayName", u"Second");
    set(vendorKey, u"PCSUITE4X", u"4");
    EXPECT_TRUE(check(false));
    EXPECT_THAT(lines, ElementsAre("ApplicationPath1:", "PlatformPath:", "PCSuiteTrayApplication:", "Second",
                                   "4", "True"));
    set(u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\{C1BBDCDD-8F08-4DE6-BA11-E7B14F7E129B}",
        u"DisplayName", u"First");
    check(false);
    EXPECT_THAT(lines, Contains("First"));
    EXPECT_THAT(lines, Not(Contains("Second")));
    set(vendorKey, u"PCSuiteBuildNumber", u"7.1");
    EXPECT_TRUE(check(true));
    EXPECT_EQ("v0: 7.1", lines.front());
    EXPECT_EQ("True", lines.back());
}

TEST_F(DiscoveryTest, TheTrayProgramIsStartedByTheWayThatIsThere) {
    EXPECT_FALSE(check(true));  // nothing to start: the sync program is tried
    EXPECT_THAT(lines, Contains("NokiaConnect 3"));
    EXPECT_THAT(started, ElementsAre());
    setClass(u"NclTray.ActiveAppState.1\\CLSID", u"{1}");
    check(true);
    EXPECT_THAT(started, ElementsAre());  // the server's command line is missing
    setClass(u"CLSID\\{1}\\LocalServer32", u"\"C:\\Nokia\\NclTray.exe\" -s");
    startFailure = fileNotFound;
    EXPECT_FALSE(check(true));
    EXPECT_THAT(started, ElementsAre("\"C:\\Nokia\\NclTray.exe\" -s (2)"));
    setClass(u"NclTray.ActiveAppState\\CLSID", u"{2}");
    setClass(u"CLSID\\{2}\\LocalServer32", u"C:\\two.exe");
    check(true);
    EXPECT_EQ("C:\\two.exe (2)", started.back());
    setClass(u"TypeLib\\{20761014-A291-4715-BC9E-3FA88D403A19}\\1.0\\0\\win32",
             u"C:\\T\\ConnectionManager.tlb");
    check(true);
    EXPECT_EQ(3u, started.size());
    install("T/TrayApplication.tlb", fileVersion(1, 0));
    check(true);
    EXPECT_EQ(3u, started.size());
}

TEST_F(DiscoveryTest, AMissingSyncProgramIsTheHostsToTell) {
    set(suiteKey, u"ApplicationPath1", u"C:\\Suite");  // no separator is added
    install("Suite/PcSync2.exe", fileVersion(1, 0));
    RecordingLog log;
    EXPECT_EQ(-2, Discovery::LaunchPCSuite2IfRequired(0));
    EXPECT_THAT(log.lines, Contains("NokiaConnect 3"));
    EXPECT_EQ(-1, Discovery::LaunchPCSuite2IfRequired(addCallback(2)));
    EXPECT_EQ(-2, Discovery::LaunchPCSuite2IfRequired(addCallback(6)));
    EXPECT_EQ(-2, Discovery::LaunchPCSuite2IfRequired(12345));  // no such function
    EXPECT_THAT(callbacks,
                ElementsAre(std::array<Long, 4>{0, 154, 48, 0}, std::array<Long, 4>{0, 154, 48, 0}));
    EXPECT_THAT(started, ElementsAre());
}

TEST_F(DiscoveryTest, TheSyncProgramIsStartedAndItsDialogWaitedForAndDismissedInEveryPass) {
    set(suiteKey, u"ApplicationPath1", u"C:\\Nokia Suite\\");
    install("Nokia Suite/PcSync2.exe", fileVersion(1, 0));
    startFailure = permissionDenied;  // whether it came up is the next check's to see
    EXPECT_EQ(1, Discovery::LaunchPCSuite2IfRequired(addCallback(0)));
    EXPECT_THAT(started, ElementsAre("C:\\Nokia Suite\\PcSync2.exe /NoDialog (2)"));
    std::vector<std::array<Long, 4>> expected(52, {3, 0, 0, 0});
    expected[0] = {1, 75, 0, 0};
    EXPECT_EQ(expected, callbacks);
    std::vector<std::uint32_t> sleeps(51, 50);
    sleeps.push_back(1000);
    EXPECT_EQ(sleeps, clock().sleeps());
    EXPECT_EQ(invalidProcedureCall, pendingFailure().number);  // the last pass found no window

    std::atomic<int> escapes = 0;
    platform::portable::WindowEndpoint dialog(folder.path(), u"Nokia PC Sync - Anna's phone",
                                              {.message = {}, .activated = {}, .keys = [&](TextView keys) {
                                                   if (keys == u"{Esc}") ++escapes;
                                               }});
    dialog.serveInBackground();
    RecordingLog log;
    EXPECT_EQ(1, Discovery::LaunchPCSuite2IfRequired(0));
    EXPECT_THAT(log.lines, Contains("NokiaConnect 2"));
    EXPECT_EQ(51, escapes);
    EXPECT_EQ(noFailure, pendingFailure().number);  // that of the start is forgotten in the first pass
}

TEST_F(DiscoveryTest, TheVersionAloneIsReadByRulesOfItsOwn) {
    struct Case {
        Text build, driver;
        platform::FileVersion library;  // all zero: none
        Single version;
    };
    const Case cases[] = {
        {u"", u"", {.file = {9}, .product = {7, 0, 8, 0}}, 7.8F},
        {u"", u"", {.file = {9}, .product = {3, 2, 14, 0}}, 3.2F},
        {u"", u"", fileVersion(12, 34, 5), 12.3F},
        {u"", u"", fileVersion(5, 0, 27), 5.2F},
        {u"7.1.180", u"", fileVersion(5, 1), 7.1F},
        {u"6", u"7.25", fileVersion(5, 1), 7.25F},
        {u"7.5", u"7.1", {}, 7.5F},
        {u"6", u"7", {}, 0},
        {u"6", u"7", fileVersion(6, 85), 6.8F},
    };
    set(libraryKey, u"PlatformPath", u"C:\\PCS");
    for (const Case& c : cases) {
        set(vendorKey, u"PCSuiteBuildNumber", c.build);
        set(u"SOFTWARE\\PC Connectivity Solution\\Configurations\\Nokia", u"CableDriverVersion", c.driver);
        std::filesystem::remove_all(driveC);
        std::filesystem::create_directories(driveC);
        if (c.library.file[0] != 0) install("PCS/ConnAPI.dll", c.library);
        EXPECT_FLOAT_EQ(c.version, Discovery::GetPCSuiteVersion());
    }
}

}  // namespace
}  // namespace ovno2
