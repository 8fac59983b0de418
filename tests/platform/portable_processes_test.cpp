#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common/executable_file.h"
#include "common/machine_test.h"
#include "common/soon.h"
#include "core/attempt.h"
#include "platform/environment_variable.h"
#include "platform/memory_file.h"
#include "platform/portable/paths.h"
#include "platform/portable/processes.h"
#include "platform/portable/spawn.h"
#include "platform/portable/version_resource.h"

namespace ovno2::platform::portable {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class PortableProcessesTest : public MachineTest {
  protected:
    PortableProcessesTest() { fs::create_directories(driveC); }

    fs::path writeProgram(const fs::path& file, const std::string& script) {
        writeContent(file, "#!/bin/sh\n" + script + "\n");
        fs::permissions(file, fs::perms::owner_all);
        return file;
    }

    std::string outputOf(TextView commandLine) {
        const auto command = processes().startCaptured(commandLine);
        if (!command) return "not started";
        std::string output;
        std::string piece;
        while (command->read(piece, 1000, 10000) == CapturedCommand::Outcome::data)
            output += piece;
        return output;
    }

    Long idOf(TextView path) {
        std::vector<ProcessEntry> entries;
        processes().listByStatus(entries);
        const auto found = std::ranges::find(entries, path, &ProcessEntry::path);
        return found == entries.end() ? 0 : found->id;
    }

    static std::size_t openDescriptors() {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
    }

    const fs::path driveC = folder.path() / "drives" / "c";
};

TEST_F(PortableProcessesTest, AStartedScriptIsListedUnderItsOwnPathAndEndedByName) {
    writeProgram(driveC / "Program Files/Nokia/ServiceLayer.exe", "sleep 60 & wait");
    constexpr TextView path = u"C:\\Program Files\\Nokia\\ServiceLayer.exe";
    ASSERT_EQ(noFailure, processes().start(path, /*show=*/2));
    ASSERT_TRUE(soon([&] { return idOf(path) != 0; }));

    std::vector<ProcessEntry> snapshot;
    const Long id = idOf(path);
    ASSERT_TRUE(processes().listBySnapshot(snapshot));
    EXPECT_EQ(u"\\Device\\HostDriveC\\Program Files\\Nokia\\ServiceLayer.exe",
              std::ranges::find(snapshot, id, &ProcessEntry::id)->path);

    EXPECT_THAT(outputOf(u"taskkill /F /IM SERVICELAYER.EXE"), HasSubstr("has been terminated"));
    EXPECT_TRUE(soon([&] { return idOf(path) == 0; }));
    EXPECT_THAT(outputOf(u"taskkill /F /IM ServiceLayer.exe"), HasSubstr("\"ServiceLayer.exe\" not found"));
}

TEST_F(PortableProcessesTest, NothingIsLeftToReapOrToCloseAfterCommands) {
    const std::size_t before = openDescriptors();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ("x\n", outputOf(u"echo x"));
        EXPECT_EQ(noFailure, processes().start(u"true", 2));
        EXPECT_EQ(fileNotFound, processes().start(u"C:\\no\\such program.exe", 2));
        EXPECT_TRUE(processes().startCaptured(u"sleep 3"));
    }
    EXPECT_EQ(before, openDescriptors());
    EXPECT_EQ(-1, waitpid(-1, nullptr, WNOHANG));
    EXPECT_EQ(ECHILD, errno);
    // A command has the standard streams and nothing else of ours; the listing itself opens the fourth.
    EXPECT_EQ("0\n1\n2\n3\n", outputOf(u"ls /proc/self/fd"));
}

TEST_F(PortableProcessesTest, ACommandLeftAloneGoesOnWithItsWork) {
    const fs::path done = folder.path() / "done";
    auto command = processes().startCaptured(u"cmd /c sleep 0.3; echo x > " + done.u16string());
    ASSERT_TRUE(command);
    std::string piece;
    EXPECT_EQ(CapturedCommand::Outcome::timedOut, command->read(piece, 100, 10));
    command.reset();
    EXPECT_TRUE(soon([&] { return fs::exists(done); }));
}

TEST_F(PortableProcessesTest, AProgramIsFoundByPathByRegistryAndInTheSearchPath) {
    writeProgram(driveC / "Tools/show.exe", "printf '%s|' \"$@\"");
    const fs::path inPath = writeProgram(folder.path() / "bin/found-in-path", "echo path");
    setRegistryText(currentUser, u"Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\registered.exe",
                    u"", u"\"C:\\Tools\\show.exe\"");
    const EnvironmentVariable path("PATH", inPath.parent_path().string() + ":relative::/usr/bin:/bin");
    using Row = std::pair<TextView, std::string>;
    for (const auto& [line, output] :
         {Row{u"C:\\Tools\\show.exe a b", "a|b|"},
          Row{u"c:/tools/../Tools/show a", "not started"},  // names on a drive are taken as they are written
          Row{u"C:\\Tools\\show 1", "1|"},
          Row{u"\"C:\\Tools\\show.exe\" \"a b\"  c\\\\\"d e\"f \"\" \\\"g", "a b|c\\d ef||\"g|"},
          Row{u"registered 5", "5|"}, Row{u"Registered.exe 5", "5|"}, Row{u"found-in-path", "path\n"},
          Row{u"  \tfound-in-path.exe", "path\n"}, Row{u"\"", "not started"},
          Row{u"cmd /c \"C:\\Tools\\show.exe\" x", "x|"}, Row{u"cmd /q /k echo a && echo b", "a\nb\n"},
          Row{u"cmd /c start echo a", ""}, Row{u"cmd", ""}, Row{u"D:\\show.exe", "not started"}})
        EXPECT_EQ(output, outputOf(line)) << std::string(line.begin(), line.end());
}

TEST_F(PortableProcessesTest, TheShellStartsProgramsAndHandsTheRestToTheDesktop) {
    const auto open = [&](TextView file, TextView parameters = u"") {
        return processes().shellExecute(u"open", file, parameters, /*show=*/1);
    };
    // The one line that a program leaves behind.
    const auto lineOf = [](const fs::path& file) {
        EXPECT_TRUE(soon([&] { return fs::exists(file) && fs::file_size(file) > 0; }));
        std::string line;
        std::getline(std::ifstream(file), line);
        return line;
    };
    const fs::path mark = folder.path() / "mark", opened = folder.path() / "opened";
    writeProgram(driveC / "start.exe", "echo \"$1\" > " + mark.string());
    EXPECT_LT(32, open(u"C:\\start.exe", u"\"a b\""));
    EXPECT_EQ("a b", lineOf(mark));

    writeContent(driveC / "document.txt", "text");
    writeContent(driveC / "broken.exe", "MZ");
    fs::permissions(driveC / "broken.exe", fs::perms::owner_all);
    EXPECT_EQ(11, open(u"C:\\broken.exe"));
    EXPECT_EQ(2, open(u""));
    const EnvironmentVariable path("PATH", "/nowhere");
    for (const TextView file : {u"C:\\document.txt", u"C:\\", u"https://example.org/"})
        EXPECT_EQ(31, open(file));
    writeProgram(folder.path() / "bin/xdg-open", "echo \"$1\" > " + opened.string());
    const EnvironmentVariable withOpener("PATH", (folder.path() / "bin").string());
    EXPECT_LT(32, open(u"\"C:\\document.txt\""));
    EXPECT_EQ((driveC / "document.txt").string(), lineOf(opened));
}

TEST_F(PortableProcessesTest, UserFoldersFollowTheDesktopAndSystemFoldersDriveC) {
    const EnvironmentVariable home("HOME", "/home/anna");
    const EnvironmentVariable config("XDG_CONFIG_HOME", (folder.path() / "config").string());
    const EnvironmentVariable cache("XDG_CACHE_HOME", "not absolute");
    unsetenv("XDG_DATA_HOME");
    fs::create_directory(folder.path() / "config");
    std::ofstream(folder.path() / "config/user-dirs.dirs")
        << "# written by the desktop\nXDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\nXDG_DOCUMENTS_DIR=\"$HOME/\"\n"
           "XDG_PICTURES_DIR=\"/media/Bilder\"\nXDG_MUSIC_DIR=nonsense\n";
    using Row = std::pair<Long, Text>;
    for (const auto& [id, path] :
         {Row{0, u"Z:\\home\\anna\\Schreibtisch"}, Row{5, u"Z:\\home\\anna"},
          Row{13, u"Z:\\home\\anna\\Music"}, Row{26, windowsPath(machine, folder.path() / "config")},
          Row{28, u"Z:\\home\\anna\\.local\\share"}, Row{32, u"Z:\\home\\anna\\.cache"},
          Row{35, u"C:\\ProgramData"}, Row{38, u"C:\\Program Files"}, Row{39, u"Z:\\media\\Bilder"},
          Row{40, u"Z:\\home\\anna"}, Row{6, u""}})
        EXPECT_EQ(path, processes().specialFolder(id)) << id;
    EXPECT_EQ(u"/home/anna", processes().environment(u"home"));
    EXPECT_EQ(u"C:\\Windows", processes().environment(u"WinDir"));
    fs::remove(driveC);
    EXPECT_EQ(u"", processes().specialFolder(38));
    EXPECT_EQ(u"", processes().environment(u"windir"));
}

TEST_F(PortableProcessesTest, PathsMapBothWays) {
    for (const auto& [windows, native] : {std::pair<TextView, fs::path>{u"Z:\\usr\\bin", "/usr/bin"},
                                          {u"z:/usr", "/usr"},
                                          {u"C:\\a\\b.txt", driveC / "a/b.txt"},
                                          {u"\\\\?\\C:\\a", driveC / "a"},
                                          {u"C:", driveC / ""}})
        EXPECT_EQ(native, nativePath(machine, windows)) << std::string(windows.begin(), windows.end());
    for (const auto& [native, windows] : {std::pair<fs::path, TextView>{driveC / "a/b.txt", u"C:\\a\\b.txt"},
                                          {driveC, u"C:\\"},
                                          {"/usr/bin", u"Z:\\usr\\bin"},
                                          {"/", u"Z:\\"}})
        EXPECT_EQ(windows, windowsPath(machine, native));
}

TEST_F(PortableProcessesTest, TheShellMakesFolders) {
    const ObjectPointer shell = machine.automation().create(u"shell.application");
    const Variant root = Text(u"C:\\");
    const ObjectPointer drive = std::get<ObjectPointer>(shell->call(u"NameSpace", {&root, 1}));
    const auto make = [&](const Variant& name) {
        return attempt([&] { drive->call(u"NewFolder", {&name, 1}); });
    };
    EXPECT_EQ(noFailure, make(Text(u"new")));
    EXPECT_TRUE(fs::is_directory(driveC / "new"));
    EXPECT_EQ(pathAccessError, make(Text(u"new")));
    EXPECT_EQ(static_cast<Long>(0x800700CEu), make(Text(300, u'x')));
    EXPECT_EQ(typeMismatch, make(Long{1}));
}

TEST(VersionResource, ADamagedFileIsNeverTrusted) {
    constexpr FileVersion written = {.file = {1, 2, 3, 4}, .product = {5, 6, 7, 8}};
    const std::string whole = makeExecutable(written);
    const std::size_t needed = whole.find_last_not_of('\0') + 1;
    for (std::size_t length = 0; length < whole.size(); ++length) {
        MemoryFile file(std::string_view(whole).substr(0, length));
        FileVersion version;
        const bool read = readVersionResource(file, version);
        EXPECT_TRUE(!read || length + 4 >= needed) << length;  // the record's last words may be cut off
    }
    for (std::size_t at = 0; at < needed; ++at) {
        for (const char damage : {'\0', '\x7F', '\xFF'}) {
            std::string damaged = whole;
            damaged[at] = damage;
            MemoryFile file(damaged);
            FileVersion version;
            readVersionResource(file, version);
        }
    }
}

}  // namespace
}  // namespace ovno2::platform::portable
