#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common/machine_test.h"
#include "platform/portable/files.h"
#include "platform/portable/window_endpoint.h"

namespace ovno2::platform::portable {
namespace {

namespace fs = std::filesystem;

constexpr Long fileNumber = 17;

class MachineFiles : public MachineTest {
  protected:
    MachineFiles() : work(folder.path() / "drives/c/letters") { fs::create_directories(work); }

    Files& files() { return machine.files(); }

    FailureNumber replace(TextView path, std::string_view bytes) {
        OpenFile* file = nullptr;
        FailureNumber failure = files().open(fileNumber, path, FileAccess::replace, file);
        if (failure == noFailure) failure = file->write(bytes.data(), bytes.size());
        if (failure == noFailure) failure = file->close();
        files().close(fileNumber);
        return failure;
    }

    fs::path work;  // C:\work
};

TEST_F(MachineFiles, DrivesAreFoldersOfTheProfileAndTheSystemsRoot) {
    EXPECT_EQ(noFailure, replace(u"C:\\letters\\a.txt", "a"));
    EXPECT_EQ("a", contentOf(work / "a.txt"));
    EXPECT_TRUE(files().pathExists(u"c:/letters/a.txt"));
    EXPECT_TRUE(files().pathExists(u"Z:\\" + (work / "a.txt").relative_path().u16string()));
    EXPECT_TRUE(files().pathExists((work / "a.txt").u16string()));
    EXPECT_EQ(pathNotFound, replace(u"D:\\a.txt", "a"));
    EXPECT_NE(0, files().makeFolderTree(u"D:\\work\\deep"));
    EXPECT_FALSE(fs::exists(folder.path() / "drives/d"));
}

// Beyond the limit every write fails as on a full disk.
TEST_F(MachineFiles, AFullDiskLosesNothingThatWasThereBefore) {
    writeContent(work / "replaced", "old content");
    writeContent(work / "appended", "line\n");
    const pid_t child = fork();
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        const std::string bytes(10000, 'x');
        for (const auto access : {FileAccess::replace, FileAccess::append}) {
            OpenFile* file = nullptr;
            const Text path =
                access == FileAccess::append ? u"C:\\letters\\appended" : u"C:\\letters\\replaced";
            if (files().open(fileNumber, path, access, file) != noFailure) _exit(1);
            if (file->write(bytes.data(), bytes.size()) != diskFull) _exit(2);
            if (file->close() != diskFull) _exit(3);
            files().close(fileNumber);
        }
        _exit(0);
    }
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_EQ("old content", contentOf(work / "replaced"));
    EXPECT_EQ("line\n", contentOf(work / "appended"));
    EXPECT_EQ(2, std::distance(fs::directory_iterator(work), {}));
}

TEST_F(MachineFiles, AReplacedFileKeepsItsPermissionsAndItsLinks) {
    writeContent(work / "target", "old");
    ASSERT_EQ(0, chmod((work / "target").c_str(), 0640));
    fs::create_symlink("target", work / "link");
    EXPECT_EQ(noFailure, replace(u"C:\\letters\\link", "new"));
    EXPECT_TRUE(fs::is_symlink(work / "link"));
    EXPECT_EQ("new", contentOf(work / "target"));
    struct stat status = {};
    ASSERT_EQ(0, stat((work / "target").c_str(), &status));
    EXPECT_EQ(0640u, status.st_mode & 07777);
}

TEST_F(MachineFiles, WhatTheMachineMakesIsForItsOwnerAlone) {
    const fs::path profile = folder.path() / "new/profile";
    const mode_t mask = umask(0);
    Machine other(profile);
    std::unique_ptr<RegistryKey> key;
    EXPECT_EQ(registryOk, other.registry().create(currentUser, u"Software\\Tessaline", key));
    const WindowEndpoint window(profile, u"Viewer", {});
    EXPECT_EQ(noFailure, replace(u"C:\\letters\\a.jpg", "picture"));
    EXPECT_EQ(0, files().makeFolderTree(u"C:\\letters\\deep\\deeper"));
    EXPECT_EQ(noFailure, files().makeFolder(u"C:\\letters\\one"));
    OpenFile* log = nullptr;
    EXPECT_EQ(noFailure, files().open(fileNumber, u"C:\\letters\\one\\log.txt", FileAccess::append, log));
    files().close(fileNumber);
    umask(mask);
    int seen = 0;
    for (const fs::path& root : {profile, work})
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
            ++seen;
            EXPECT_EQ(fs::perms::none, entry.symlink_status().permissions() & fs::perms(077)) << entry.path();
        }
    EXPECT_LE(9, seen);
}

TEST_F(MachineFiles, ADeviceIsWrittenToAndNeverReplaced) {
    EXPECT_EQ(noFailure, replace(u"/dev/null", "gone"));
    struct stat status = {};
    ASSERT_EQ(0, stat("/dev/null", &status));
    EXPECT_TRUE(S_ISCHR(status.st_mode));
    EXPECT_EQ(diskFull, replace(u"/dev/full", "gone"));
    ASSERT_EQ(0, mkfifo((work / "pipe").c_str(), 0600));
    std::unique_ptr<OpenFile> pipe;
    ASSERT_EQ(noFailure, files().openWide(u"C:\\letters\\pipe", pipe));
    pipe.reset();
    EXPECT_EQ(deviceIoError, replace(u"C:\\letters\\pipe", "nobody reads"));
}

}  // namespace
}  // namespace ovno2::platform::portable
