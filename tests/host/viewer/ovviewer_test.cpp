// The viewer as a process of its own, watched by a program that logs: this one.
#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/utf8.h"
#include "common/machine_test.h"
#include "common/soon.h"
#include "log/debug_log.h"
#include "pc/registry_access.h"

namespace ovno2 {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr TextView debugKey = u"Software\\Marrowind\\Orvanta\\Debug";

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class ViewerProcess {
  public:
    // `options` as a shell takes them; what it says goes to the file `name` in `home`.
    ViewerProcess(const fs::path& home, const std::string& options, const char* name = "output")
        : output_(home / name) {
        fs::remove(output_);
        const std::string line = "OVNO2_HOME='" + home.string() + "' exec '" OVVIEWER "' " + options + " >'" +
                                 output_.string() + "' 2>&1";
        process_ = fork();
        if (process_ == 0) execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
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
    void expectNothingPublished() {
        for (const char* name : {"hWnd", "On", "Mode", "Level"})
            EXPECT_EQ("", value(name)) << name;
    }
};

TEST_F(Ovviewer, ShowsAndSavesTheLinesOfAnotherProcessByEitherChannel) {
    const fs::path saved = folder.path() / "saved.log";
    std::ofstream(saved) << "before\n";
    struct {
        std::string options;
        const char* mode;
        const char* shown;
    } const cases[] = {
        {"--mode chunks --level 4", "2",
         "[ovNo2] remote Debug on, Level: 4\n[ovNo2] <GetDevices>_\n[ovNo2]  <Read>_\n[ovNo2]   für ??\n"
         "[ovNo2]  </Read>\n[ovNo2] </GetDevices>\n"},
        {"--routine Read --save " + saved.string(), "3",
         "[ovNo2]  <Read>_\n[ovNo2]   für 電話\n[ovNo2]  </Read>\n"},
    };
    for (const auto& [options, mode, shown] : cases) {
        resetThreadState();
        usePlatform(machine);
        ViewerProcess viewer(folder.path(), options);
        ASSERT_TRUE(published()) << viewer.output();
        EXPECT_EQ(mode, value("Mode"));
        startLog();
        DebugWrite(u"GetDevices", routineEntry);
        DebugWrite(u"Read", routineEntry);
        DebugWrite(u"für 電話");
        DebugWrite(u"Read", routineExit);
        DebugWrite(u"GetDevices", routineExit);
        EXPECT_TRUE(soon([&] { return viewer.output() == shown; })) << viewer.output();
        EXPECT_EQ(0, viewer.end(mode[0] == '2' ? SIGINT : SIGTERM));
        EXPECT_EQ(shown, viewer.output());
        expectNothingPublished();
    }
    EXPECT_EQ(std::string("before\n") + cases[1].shown, contentOf(saved));
}

// What that means for the log is told in the log's own tests.
TEST_F(Ovviewer, AViewerThatWasKilledIsReplacedAndAllItWroteGoes) {
    std::string abandoned;
    {
        ViewerProcess killed(folder.path(), "--level 3");
        ASSERT_TRUE(published()) << killed.output();
        abandoned = value("hWnd");
        EXPECT_EQ(-SIGKILL, killed.end(SIGKILL));
        EXPECT_EQ("1", value("On"));  // left behind
    }
    ViewerProcess next(folder.path(), "");
    EXPECT_TRUE(soon([&] { return value("hWnd") != abandoned && value("On") == "1"; })) << next.output();
    EXPECT_EQ(0, next.end(SIGTERM));
    expectNothingPublished();
}

TEST_F(Ovviewer, GivesBackWhatWasThereAndKeepsWhatOthersChanged) {
    setRegistryText(platform::currentUser, debugKey, u"Mode", u"0");
    setRegistryText(platform::currentUser, debugKey, u"Level", u"5");
    ViewerProcess viewer(folder.path(), "--level 2");
    ASSERT_TRUE(published()) << viewer.output();
    const std::string window = value("hWnd");
    {
        ViewerProcess second(folder.path(), "--mode chunks", "second");
        EXPECT_EQ(1, second.wait());
        EXPECT_THAT(second.output(), HasSubstr("running already"));
    }
    EXPECT_EQ(window, value("hWnd"));
    EXPECT_EQ("3", value("Mode"));
    setRegistryText(platform::currentUser, debugKey, u"Level", u"9");
    EXPECT_EQ(0, viewer.end(SIGTERM));
    EXPECT_EQ("0", value("Mode"));
    EXPECT_EQ("9", value("Level"));
    EXPECT_EQ("", value("On"));
}

TEST_F(Ovviewer, RefusesAWrongCommandLineAndAFileThatCannotBeWritten) {
    struct {
        std::string options;
        int status;
        const char* message;
    } const cases[] = {{"--level 16", 2, "--level"},
                       {"--mode pigeon", 2, "--mode"},
                       {"--save " + folder.path().string(), 1, "directory"},
                       {"--help", 0, "--routine"}};
    for (const auto& [options, status, message] : cases) {
        ViewerProcess viewer(folder.path(), options);
        EXPECT_EQ(status, viewer.wait());
        EXPECT_THAT(viewer.output(), HasSubstr(message));
        expectNothingPublished();
    }
}

}  // namespace
}  // namespace ovno2
