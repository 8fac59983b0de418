// The viewer as a process of its own, watched by a program that logs: this one.
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/utf8.h"
#include "common/machine_test.h"
#include "common/soon.h"
#include "core/attempt.h"
#include "log/debug_log.h"
#include "pc/registry_access.h"

namespace ovno2 {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

constexpr TextView debugKey = u"Software\\Marrowind\\Orvanta\\Debug";
constexpr const char* values[] = {"hWnd", "On", "Mode", "Level"};

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class ViewerProcess {
  public:
    ViewerProcess(const fs::path& home, std::vector<std::string> options) : output_(home / "output") {
        fs::remove(output_);
        options.insert(options.begin(), OVVIEWER);
        std::vector<char*> arguments;
        for (std::string& option : options)
            arguments.push_back(option.data());
        arguments.push_back(nullptr);
        process_ = fork();
        if (process_ != 0) return;
        setenv("OVNO2_HOME", home.c_str(), /*overwrite=*/1);
        const int file = open(output_.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        dup2(file, STDOUT_FILENO);
        dup2(file, STDERR_FILENO);
        execv(OVVIEWER, arguments.data());
        _exit(127);
    }
    ~ViewerProcess() {
        if (process_ > 0) end(SIGKILL);
    }
    ViewerProcess(const ViewerProcess&) = delete;
    ViewerProcess& operator=(const ViewerProcess&) = delete;

    std::string output() const { return contentOf(output_); }
    // The exit status, or minus the signal that ended it.
    int end(int signal) {
        kill(process_, signal);
        return wait();
    }
    int wait() {
        int status = 0;
        waitpid(process_, &status, 0);
        process_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

  private:
    fs::path output_;
    pid_t process_ = 0;
};

class Ovviewer : public MachineTest {
  protected:
    std::string value(const char* name) {
        return toUtf8(Registry::GetRegValue(platform::currentUser, debugKey, fromUtf8(name)));
    }
    bool published() {
        return soon([this] { return value("On") == "1"; });
    }
    static void startLog() {
        DebugLog::connect();
        DebugLog::DebugInit();
    }
    static void logARead() {
        DebugWrite(u"GetDevices", routineEntry);
        DebugWrite(u"Read", routineEntry);
        DebugWrite(u"für 電話");
        DebugWrite(u"Read", routineExit);
        DebugWrite(u"GetDevices", routineExit);
    }
    static bool shows(const ViewerProcess& viewer, const std::string& text) {
        return soon([&] { return viewer.output().find(text) != std::string::npos; });
    }
};

TEST_F(Ovviewer, ShowsTheLinesOfAnotherProcessByEitherChannel) {
    struct {
        const char* mode;
        const char* number;
        const char* line;
    } const channels[] = {{"chunks", "2", "[ovNo2]   für ??\n"}, {"shared", "3", "[ovNo2]   für 電話\n"}};
    for (const auto& [mode, number, line] : channels) {
        resetThreadState();
        usePlatform(machine);
        ViewerProcess viewer(folder.path(), {"--mode", mode, "--level", "4"});
        ASSERT_TRUE(published()) << viewer.output();
        EXPECT_EQ(number, value("Mode"));
        startLog();
        ASSERT_TRUE(logIsOn());
        logARead();
        EXPECT_TRUE(shows(viewer, "</GetDevices>"));
        EXPECT_EQ(
            std::string("[ovNo2] remote Debug on, Level: 4\n[ovNo2] <GetDevices>_\n[ovNo2]  <Read>_\n") +
                line + "[ovNo2]  </Read>\n[ovNo2] </GetDevices>\n",
            viewer.output());
        EXPECT_EQ(0, viewer.end(SIGINT));
        for (const char* name : values)
            EXPECT_EQ("", value(name)) << name;
    }
}

TEST_F(Ovviewer, SavesWhatItShowsOfARoutine) {
    const fs::path saved = folder.path() / "saved.log";
    std::ofstream(saved) << "before\n";
    ViewerProcess viewer(folder.path(), {"--routine", "Read", "--save", saved.string()});
    ASSERT_TRUE(published()) << viewer.output();
    startLog();
    logARead();
    EXPECT_TRUE(shows(viewer, "</Read>"));
    EXPECT_EQ(0, viewer.end(SIGTERM));
    const std::string read = "[ovNo2]  <Read>_\n[ovNo2]   für 電話\n[ovNo2]  </Read>\n";
    EXPECT_EQ(read, viewer.output());
    EXPECT_EQ("before\n" + read, contentOf(saved));
}

TEST_F(Ovviewer, LinesArriveWhenTheSharedAreaCannotBeUsed) {
    const auto foreign = machine.sharedMemory().create(u"OVDebug", 64);
    ASSERT_TRUE(foreign);
    ViewerProcess viewer(folder.path(), {"--mode", "shared"});
    ASSERT_TRUE(published()) << viewer.output();
    startLog();
    logARead();
    EXPECT_TRUE(shows(viewer, "[ovNo2]   für ??\n"));
    EXPECT_THAT(viewer.output(), Not(HasSubstr("could not be read")));
}

TEST_F(Ovviewer, AViewerThatGoesInTheMiddleHarmsNeitherTheLogNorTheNextViewer) {
    for (const char* mode : {"chunks", "shared"}) {
        resetThreadState();
        usePlatform(machine);
        ViewerProcess viewer(folder.path(), {"--mode", mode, "--level", "3"});
        ASSERT_TRUE(soon([&] { return value("On") == "1" && value("Level") == "3"; })) << viewer.output();
        startLog();
        DebugWrite(u"GetDevices", routineEntry);
        EXPECT_TRUE(shows(viewer, "<GetDevices>_"));
        EXPECT_EQ(-SIGKILL, viewer.end(SIGKILL));
        for (int i = 0; i < 300; ++i) {
            raisePending(fileNotFound);
            DebugWrite(u"lost");
            EXPECT_EQ(noFailure, pendingFailure().number);
        }
        EXPECT_EQ("1", value("On"));  // left behind

        const std::string abandoned = value("hWnd");
        ViewerProcess next(folder.path(), {});
        EXPECT_TRUE(soon([&] { return value("hWnd") != abandoned && value("On") == "1"; })) << next.output();
        EXPECT_EQ(0, next.end(SIGTERM));
        for (const char* name : values)
            EXPECT_EQ("", value(name)) << name;
    }
}

TEST_F(Ovviewer, ASecondViewerSaysThatOneIsRunning) {
    ViewerProcess viewer(folder.path(), {"--mode", "chunks"});
    ASSERT_TRUE(published()) << viewer.output();
    const std::string window = value("hWnd");
    ViewerProcess second(folder.path(), {});
    EXPECT_EQ(1, second.wait());
    EXPECT_THAT(second.output(), HasSubstr("running already"));
    EXPECT_EQ(window, value("hWnd"));
    EXPECT_EQ("2", value("Mode"));
}

TEST_F(Ovviewer, GivesBackWhatWasThereAndKeepsWhatOthersChanged) {
    setRegistryText(platform::currentUser, debugKey, u"Mode", u"0");
    setRegistryText(platform::currentUser, debugKey, u"Level", u"5");
    ViewerProcess viewer(folder.path(), {"--level", "2"});
    ASSERT_TRUE(published()) << viewer.output();
    EXPECT_EQ("3", value("Mode"));
    setRegistryText(platform::currentUser, debugKey, u"Level", u"9");
    EXPECT_EQ(0, viewer.end(SIGTERM));
    EXPECT_EQ("0", value("Mode"));
    EXPECT_EQ("9", value("Level"));
    EXPECT_EQ("", value("On"));
}

TEST_F(Ovviewer, RefusesAWrongCommandLineAndAFileThatCannotBeWritten) {
    struct {
        std::vector<std::string> options;
        int status;
        const char* message;
    } const cases[] = {{{"--level", "16"}, 2, "--level"},
                       {{"--mode", "pigeon"}, 2, "--mode"},
                       {{"--save", folder.path().string()}, 1, "directory"},
                       {{"--help"}, 0, "--routine"}};
    for (const auto& [options, status, message] : cases) {
        ViewerProcess viewer(folder.path(), options);
        EXPECT_EQ(status, viewer.wait());
        EXPECT_THAT(viewer.output(), HasSubstr(message));
        EXPECT_EQ("", value("hWnd"));
    }
}

}  // namespace
}  // namespace ovno2
