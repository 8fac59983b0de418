#include "pc/process.h"

#include <algorithm>

#include "core/attempt.h"
#include "core/current_platform.h"
#include "pc/file_access.h"
#include "pc/process_state.h"

namespace ovno2::Process {

namespace {

using platform::ProcessEntry;

constexpr Long ntFamily = 2;
// How the two lists start and grow; records behind the last process stay unused.
constexpr std::size_t statusListSize = 201;
constexpr std::size_t snapshotListSize = 26;
constexpr std::size_t snapshotListGrowth = 20;
constexpr std::size_t mostThreads = 5001;
constexpr std::size_t mostRecordsWithThread = 3001;

// Paths as the snapshot method finds them, made drive paths. The drives are only asked for when a path needs
// them.
class DrivePaths {
  public:
    Text of(TextView path) {
        if (path.starts_with(u"\\??\\")) path.remove_prefix(4);
        if (path.starts_with(u"\\Device\\")) return fromDevice(path);
        constexpr TextView systemRoot = u"\\SystemRoot\\";
        if (path.starts_with(systemRoot)) return windowsFolder() + Text(path.substr(systemRoot.size()));
        // A bare name stays one; a path without a drive lies in the Windows folder.
        const bool relative = path.find(u'\\') != TextView::npos && !path.starts_with(u'\\') &&
                              path.find(u':') == TextView::npos;
        return relative ? windowsFolder() + Text(path) : Text(path);
    }

  private:
    struct Drive {
        Text device;  // ends in "\"
        Text name;    // "C:"
    };

    Text fromDevice(TextView path) {
        if (!drivesRead_) readDrives();
        for (const Drive& drive : drives_)
            if (equalsIgnoringCase(path.substr(0, drive.device.size()), drive.device))
                return drive.name + u"\\" + Text(path.substr(drive.device.size()));
        return Text(path);
    }

    void readDrives() {
        drivesRead_ = true;
        attempt([&] {
            const platform::Variant drives = Files::fileSystemObject().get(u"Drives");
            for (const platform::Variant& element : Files::objectOf(drives)->elements()) {
                Text name = Files::textOf(Files::objectOf(element)->get(u"DriveLetter")) + u":";
                Text device = currentPlatform().processes().deviceName(name);
                if (!device.empty()) drives_.push_back({device + u"\\", std::move(name)});
            }
        });
    }

    static Text windowsFolder() {
        Text folder = currentPlatform().processes().environment(u"windir");
        if (!folder.empty() && folder.back() != u'\\') folder += u'\\';
        return folder;
    }

    bool drivesRead_ = false;
    std::vector<Drive> drives_;
};

Record makeRecord(const ProcessEntry& entry, Text path, bool fullNames) {
    Record record;
    record.name = fullNames ? path : path.substr(path.rfind(u'\\') + 1);
    record.path = std::move(path);
    record.id = entry.id;
    record.handle = entry.handle;
    return record;
}

bool listByStatus(std::vector<Record>& list, bool fullNames) {
    std::vector<ProcessEntry> entries;
    if (!currentPlatform().processes().listByStatus(entries)) return false;
    list.resize(std::max(entries.size(), statusListSize));
    for (std::size_t i = 0; i < entries.size(); ++i)
        attempt([&] { list[i] = makeRecord(entries[i], entries[i].path, fullNames); });
    return true;
}

// The first thread of a listed process goes into that process's record.
void findThread(std::vector<Record>& list) {
    platform::Platform& platform = currentPlatform();
    std::size_t count = 0;
    platform.processes().visitThreads([&](const platform::ThreadEntry& thread) {
        platform.windows().processPendingMessages();
        if (thread.processId != 0) {
            const auto end =
                list.begin() + static_cast<std::ptrdiff_t>(std::min(list.size(), mostRecordsWithThread));
            const auto record = std::ranges::find(list.begin(), end, thread.processId, &Record::id);
            if (record != end) {
                record->threadId = thread.id;
                return false;
            }
        }
        return ++count < mostThreads;
    });
}

bool listBySnapshot(std::vector<Record>& list, bool fullNames) {
    std::vector<ProcessEntry> entries;
    if (!currentPlatform().processes().listBySnapshot(entries)) return false;
    list.resize(snapshotListSize);
    DrivePaths drivePaths;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (i == list.size()) list.resize(list.size() + snapshotListGrowth);
        attempt([&] {
            TextView path = entries[i].path;
            path = path.substr(0, path.find(u'\0'));
            if (path.size() >= 2 && path.front() == u'[' && path.back() == u']')
                path = path.substr(1, path.size() - 2);
            list[i] = makeRecord(entries[i], drivePaths.of(path), fullNames);
        });
    }
    attempt([&] { findThread(list); });
    return true;
}

}  // namespace

bool GetProcList(std::vector<Record>& list, bool snapshot, bool fullNames) {
    const RoutineLog log(u"GetProcList");
    bool listed = false;
    attempt([&] {
        list.clear();
        Long& family = stateOf<ProcessState>().platformFamily;
        if (family == 0) family = currentPlatform().processes().platformFamily();
        listed =
            snapshot || family != ntFamily ? listBySnapshot(list, fullNames) : listByStatus(list, fullNames);
    });
    return listed;
}

Record CheckIfRunning(TextView name, Long id, bool refresh) {
    // Called in loops: without diagnostics not even the writer's call counter moves.
    constexpr TextView tag = u"CheckIfRunning";
    if (logIsOn()) DebugWrite(tag, routineEntry);
    std::vector<Record>& list = stateOf<ProcessState>().list;
    if (list.empty() || refresh) GetProcList(list, /*snapshot=*/false, /*fullNames=*/false);
    Record found;
    for (std::size_t i = 0; i < list.size(); ++i) {
        const Record& record = list[i];
        if (i > 0 && record.id == 0) break;
        const bool named = !name.empty() && equalsIgnoringCase(record.name, name);
        if (named || (id != 0 && record.id == id)) {
            attempt([&] { found = record; });
            break;
        }
    }
    if (logIsOn()) {
        DebugLine(decimal{found.id});
        DebugWrite(tag, routineExit);
    }
    return found;
}

}  // namespace ovno2::Process
