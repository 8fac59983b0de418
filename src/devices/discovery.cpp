#include "devices/discovery.h"

#include "core/attempt.h"
#include "core/current_platform.h"
#include "core/pending_messages.h"
#include "pc/file_info.h"
#include "pc/files.h"
#include "pc/folders.h"
#include "pc/process.h"
#include "pc/registry_access.h"

namespace ovno2::Discovery {

namespace {

using GetFileInfo_::FileVersionText;
using platform::classesRoot;
using platform::localMachine;

constexpr TextView vendorKey = u"SOFTWARE\\Nokia";
constexpr TextView connectivityKey = u"SOFTWARE\\PC Connectivity Solution";
constexpr TextView runKey = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr TextView uninstallKey = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
constexpr TextView syncProgram = u"PcSync2.exe";

constexpr Long programFiles = 38;  // a special folder
constexpr Long showMinimizedActive = 2;
constexpr double smallestBuild = 1;      // of Nokia Suite and Nokia Ovi Suite
constexpr double suiteAheadOfBuild = 2;  // their builds count from a number that much lower
constexpr Single sufficientVersion = 6;
constexpr Single connectionManagerBonus = 4;

// Host callback: request, text number, style.
constexpr Long showMessage = 0, showStatus = 1, waitStep = 3;
constexpr Long textNotFound = 154, textStarting = 75;
constexpr Long exclamation = 48;
constexpr Long answerCancel = 2;

struct State {
    static constexpr StateSlot slot = StateSlot::discovery;
    Text suiteBuildText;
};

Text machineValue(TextView key, TextView name) {
    return Registry::GetRegValue(localMachine, key, name);
}

Text defaultOfClass(TextView key) {
    return Registry::GetRegValue(classesRoot, key, /*valueName=*/{});
}

Text applicationPath() {
    return machineValue(u"SOFTWARE\\Nokia\\PCSuite", u"ApplicationPath1");
}

Text withBackslash(Text folder) {
    if (!folder.ends_with(u'\\')) folder += u'\\';
    return folder;
}

bool isRunning(TextView program, bool refresh) {
    return Process::CheckIfRunning(program, /*id=*/0, refresh).id != 0;
}

void startProgram(TextView commandLine) {
    attempt([&] { require(currentPlatform().processes().start(commandLine, showMinimizedActive)); });
}

// The host's answer, 0 without a host.
Long callHost(Long pCallBack, Long request, Long textNumber, Long style) {
    Long answer = 0;
    if (pCallBack != 0) {
        attempt([&] {
            require(currentPlatform().windows().callProcedure(pCallBack, request, textNumber, style,
                                                              /*fourth=*/0, answer));
        });
    }
    return answer;
}

// One run of CheckIfNokiaSDKIsThere: its steps share the work text and, on the way, the result.
class SuiteCheck {
  public:
    SuiteCheck(bool startit, Single& suiteVersion) : startit_(startit), suiteVersion_(suiteVersion) {}

    bool run() {
        findRunningPrograms();
        if (readBuildNumber() || readSuiteProgram() || readLibrary()) return result_;
        running_ = isRunning(syncProgram, /*refresh=*/false) || running_;
        const Single bonus = findTrayProgram();
        if (work_.empty())
            readOtherTrayProgram();
        else
            readTrayProgram(bonus);
        if (!running_ && !startit_) return suiteVersion_ >= sufficientVersion;
        if (!running_) startTrayProgram();
        if (suiteVersion_ >= sufficientVersion) result_ = true;
        logProducts();
        return result_;
    }

  private:
    void findRunningPrograms() {
        const bool tray = isRunning(u"NclTray.exe", /*refresh=*/true);
        const bool manager = isRunning(u"ConnectionManager.exe", /*refresh=*/false);
        running_ = tray || manager;
    }

    void take(double version) { suiteVersion_ = static_cast<Single>(version); }

    // Each of the three readers below is true when it ends the check.
    bool readBuildNumber() {
        work_ = machineValue(u"SOFTWARE\\Nokia\\Nokia Suite", u"BuildNumber");
        if (work_.empty()) work_ = machineValue(u"SOFTWARE\\Nokia\\Nokia Ovi Suite", u"OviSuiteBuildNumber");
        if (const double build = numericValue(work_); build > smallestBuild) {
            attempt([&] { stateOf<State>().suiteBuildText = work_; });
            DebugLine(u"OVI: ", work_);
            attempt([&] { work_ = decimalText(build + suiteAheadOfBuild); });
        } else {
            work_ = machineValue(vendorKey, u"PCSuiteBuildNumber");
        }
        const double version = numericValue(work_);
        if (version <= 6) return false;
        take(version);
        DebugLine(u"v0: ", work_);
        result_ = true;
        return !startit_;
    }

    bool readSuiteProgram() {
        work_ = applicationPath();
        DebugLine(u"ApplicationPath1:", work_);
        attempt([&] {
            if (work_.empty())
                work_ = Folders::GetSpecialFolder_(programFiles, /*addSeparator=*/true) +
                        u"Nokia\\Nokia PC Suite 7";
        });
        attempt([&] {
            work_ = FileVersionText(withBackslash(work_) + u"PCSuite.exe", /*preferProductVersion=*/false);
        });
        const double version = numericValue(work_);
        if (version <= 7) return false;
        take(version);
        DebugLine(u"v0a: ", work_);
        result_ = suiteVersion_ > 0;
        return !startit_;
    }

    bool readLibrary() {
        work_ = machineValue(connectivityKey, u"PlatformPath");
        DebugLine(u"PlatformPath:", work_);
        if (work_.empty() || suiteVersion_ >= sufficientVersion) return false;
        DebugLine(u" 1:", work_);
        attempt([&] {
            work_ = FileVersionText(withBackslash(work_) + u"ConnAPI.dll", /*preferProductVersion=*/true);
        });
        take(numericValue(work_));
        DebugLine(u"ConnApivers:", work_);
        if (startit_) return false;
        result_ = suiteVersion_ > 0;
        return true;
    }

    // Puts the tray program's command line into the work text; what a program found as the connection manager
    // adds to a low version.
    Single findTrayProgram() {
        work_ = machineValue(runKey, u"PCSuiteTrayApplication");
        DebugLine(u"PCSuiteTrayApplication:", work_);
        if (!work_.empty()) return 0;
        Single bonus = 0;
        attempt([&] {
            Text folder = applicationPath();
            if (folder.empty()) return;
            folder = withBackslash(std::move(folder));
            Text manager = folder + u"ConnectionManager.exe";
            if (Files::FileExists(manager)) {
                work_ = std::move(manager);
                bonus = connectionManagerBonus;
            } else {
                work_ = folder + u"TrayApplication.exe";
            }
        });
        return bonus;
    }

    // The program of a command line: up to its last ".exe", else, unless the whole is a file, up to the three
    // characters behind its last dot. A line that is commented out counts as well.
    void cutAfterProgram() {
        const Text lower = lowerCase(work_);
        std::size_t at = lower.rfind(u".exe");
        if (at == Text::npos && !Files::FileExists(work_)) at = work_.rfind(u'.');
        if (at != Text::npos) work_ = work_.substr(0, at + 4);
    }

    void readTrayProgram(Single bonus) {
        DebugLine(u" 2:", work_);
        constexpr TextView remark = u"rem ";
        attempt([&] {
            if (equalsIgnoringCase(TextView(work_).substr(0, remark.size()), remark))
                work_.erase(0, remark.size());
        });
        attempt([&] { cutAfterProgram(); });
        DebugLine(work_);
        work_ = FileVersionText(work_, /*preferProductVersion=*/false);
        attempt([&] {
            if (work_.empty())
                work_ = FileVersionText(withBackslash(applicationPath()) + u"LaunchApplication.exe", false);
        });
        take(numericValue(work_));
        DebugLine(u"v1: ", work_);
        if (suiteVersion_ > 0) {
            if (suiteVersion_ < 2) suiteVersion_ += 5;
            if (suiteVersion_ <= 3) suiteVersion_ += bonus;
        }
        work_ = machineValue(vendorKey, u"PCSuiteBuildNumber");
        if (work_.empty()) return;
        take(numericValue(work_));
        DebugLine(u"v1a: ", work_);
    }

    void readOtherTrayProgram() {
        work_ = machineValue(runKey, u"Nokia Tray Application");
        if (work_.empty()) return;
        work_ = FileVersionText(work_, /*preferProductVersion=*/false);
        take(numericValue(work_));
        DebugLine(u"v2: ", work_);
    }

    // A suite whose type library lies beside a tray program starts that by itself.
    static void startTrayProgram() {
        Text path = defaultOfClass(u"TypeLib\\{20761014-A291-4715-BC9E-3FA88D403A19}\\1.0\\0\\win32");
        if (!path.empty()) {
            attempt([&] { path = replaceAll(path, u"ConnectionManager", u"TrayApplication"); });
            if (Files::FileExists(path)) return;
        }
        Text classId = defaultOfClass(u"NclTray.ActiveAppState\\CLSID");
        if (classId.empty()) classId = defaultOfClass(u"NclTray.ActiveAppState.1\\CLSID");
        if (classId.empty()) {
            LaunchPCSuite2IfRequired(/*pCallBack=*/0);
            return;
        }
        attempt([&] { path = defaultOfClass(u"CLSID\\" + classId + u"\\LocalServer32"); });
        if (!path.empty()) startProgram(path);
    }

    static void logProducts() {
        Text name;
        for (const TextView product :
             {u"{C1BBDCDD-8F08-4DE6-BA11-E7B14F7E129B}", u"{BCB8B85E-E28A-424F-AE81-A7553DAA32A4}"}) {
            attempt([&] {
                if (name.empty()) name = machineValue(Text(uninstallKey).append(product), u"DisplayName");
            });
        }
        DebugLine(name);
        DebugLine(machineValue(vendorKey, u"PCSUITE4X"));
    }

    bool startit_;
    Single& suiteVersion_;
    bool result_ = false;
    bool running_ = false;  // one of the suite's programs
    Text work_;
};

// The first digit of a part of the version, as tenths.
double tenths(const Text& part) {
    return numericValue(TextView(part).substr(0, 1)) / 10;
}

const Text& partAt(const std::vector<Text>& parts, std::size_t index) {
    if (index >= parts.size()) throw RuntimeFailure(subscriptOutOfRange);
    return parts[index];
}

}  // namespace

bool CheckIfNokiaSDKIsThere(bool startit, Single& suiteVersion) {
    const RoutineLog log(u"CheckIfNokiaSDKIsThere");
    const bool result = SuiteCheck(startit, suiteVersion).run();
    DebugLine(result ? u"True" : u"False");
    return result;
}

Long LaunchPCSuite2IfRequired(Long pCallBack) {
    if (isRunning(syncProgram, /*refresh=*/true)) return 1;
    Text path;
    attempt([&] { path = applicationPath().append(syncProgram); });
    if (path.empty() || !Files::FileExists(path)) {
        DebugWrite(u"NokiaConnect", 3);
        return callHost(pCallBack, showMessage, textNotFound, exclamation) == answerCancel ? -1 : -2;
    }
    callHost(pCallBack, showStatus, textStarting, /*style=*/0);
    attempt([&] { startProgram(path + u" /NoDialog"); });
    DebugWrite(u"NokiaConnect", 2);

    platform::Platform& platform = currentPlatform();
    constexpr int waitSteps = 51;
    for (int step = 0; step < waitSteps; ++step) {
        callHost(pCallBack, waitStep, /*textNumber=*/0, /*style=*/0);
        processPendingMessages();
        attempt([&] { platform.clock().sleep(50); });
        clearPendingFailure();
        const auto activate = [&] { require(platform.windows().activate(u"Nokia PC Sync - ")); };
        if (attempt(activate) == noFailure) attempt([&] { require(platform.windows().sendKeys(u"{Esc}")); });
    }
    attempt([&] { platform.clock().sleep(1000); });
    return 1;
}

Single GetPCSuiteVersion() {
    double version = 0;
    Text work = machineValue(vendorKey, u"PCSuiteBuildNumber");
    if (numericValue(work) > 6) {
        version = numericValue(work);
        DebugLine(u"v0: ", work);
    }
    work = machineValue(u"SOFTWARE\\PC Connectivity Solution\\Configurations\\Nokia", u"CableDriverVersion");
    if (const double driver = numericValue(work); driver > 7 && driver > version) version = driver;
    work = machineValue(connectivityKey, u"PlatformPath");
    DebugLine(u" 1:", work);
    if (!work.empty() && version < 6) {
        attempt([&] {
            work = FileVersionText(withBackslash(work) + u"ConnAPI.dll", /*preferProductVersion=*/true);
        });
        DebugLine(u"ConnApivers:", work);
        std::vector<Text> parts;
        attempt([&] { parts = split(work, u'.'); });
        attempt([&] { version = numericValue(partAt(parts, 0)); });
        attempt([&] { version += tenths(partAt(parts, numericValue(partAt(parts, 1)) == 0 ? 2 : 1)); });
    }
    return static_cast<Single>(version);
}

TextView SuiteBuildText() {
    return stateOf<State>().suiteBuildText;
}

}  // namespace ovno2::Discovery
