#include <vector>

#include "core/attempt.h"
#include "core/current_platform.h"
#include "pc/file_access.h"
#include "pc/files.h"

namespace ovno2::Files {

namespace {

constexpr FailureNumber fileNameTooLong = static_cast<FailureNumber>(0x800700CEu);  // as the shell reports it

FailureNumber makeFolder(TextView folder) {
    return attempt([&] { require(currentPlatform().files().makeFolder(folder)); });
}

Text withoutTrailingBackslash(TextView folder) {
    if (folder.ends_with(u'\\')) folder.remove_suffix(1);
    return Text(folder);
}

// The shell's folder object for a path; null when there is none.
platform::ObjectPointer nameSpace(platform::AutomationObject& shell, TextView folder) {
    const platform::Variant found = callWith(shell, u"NameSpace", folder);
    const platform::ObjectPointer* const object = std::get_if<platform::ObjectPointer>(&found);
    return object ? *object : nullptr;
}

FailureNumber makeByShell(TextView folder, Long& result) {
    DebugWrite(u"MkDir_", /*kind=*/3);
    return attempt([&] {
        const Text path = withoutTrailingBackslash(folder);
        DebugWrite(u"MkDir_ 3a");
        const platform::ObjectPointer shell = currentPlatform().automation().create(u"Shell.Application");
        if (!shell) throw RuntimeFailure(cannotCreateObject);
        DebugWrite(u"MkDir_ 3b");
        const platform::ObjectPointer above = nameSpace(*shell, FolderPart(path));
        if (!above) throw RuntimeFailure(objectNotSet);
        DebugWrite(u"MkDir_ 3c");
        callWith(*above, u"NewFolder", FileNamePart(path));
        if (!nameSpace(*shell, path)) result = pathAccessError;
    });
}

FailureNumber makeByShortName(TextView folder) {
    DebugWrite(u"MkDir_ 2a");
    const Text path = withoutTrailingBackslash(folder);
    Text shortened = GetShortFileName(FolderPart(path));
    if (!shortened.ends_with(u'\\')) shortened += u'\\';
    return makeFolder(shortened + FileNamePart(path));
}

// One level. `result` is that of the folder above, and becomes 75 when the shell made nothing.
void makeLevel(TextView folder, Long& result) {
    enum class Method { none, shell, shortName };
    Method next = Method::shortName;
    FailureNumber failure = noFailure;
    if (folder.size() < classicPathLimit) {
        DebugWrite(u"MkDir_", /*kind=*/2);
        failure = makeFolder(folder);
        next = failure == noFailure ? Method::none : Method::shell;
    }
    bool shellHasRun = false;
    bool shortNameHasRun = false;
    while (next != Method::none) {
        if (next == Method::shell) {
            shellHasRun = true;
            failure = makeByShell(folder, result);
            next = failure == fileNameTooLong && !shortNameHasRun ? Method::shortName : Method::none;
        } else {
            shortNameHasRun = true;
            failure = makeByShortName(folder);
            next = failure != noFailure && !shellHasRun ? Method::shell : Method::none;
        }
    }
    if (failure != noFailure) {
        DebugWrite(u"MkDir_", /*kind=*/5);
        DebugLine(FolderExists(folder) ? TextView(u"True") : TextView(u"False"));
    }
}

// The folder above, when it has to be made first; empty otherwise.
Text missingParent(const Text& folder) {
    constexpr std::size_t driveLength = 2;
    Text parent;
    attempt([&] { parent = textOf(callWith(fileSystemObject(), u"GetParentFolderName", folder)); });
    if (parent == folder || parent.size() <= driveLength || parent.size() > longestPath) return {};
    bool exists = false;
    attempt([&] { exists = truthOf(callWith(fileSystemObject(), u"FolderExists", parent)); });
    return exists ? Text() : parent;
}

}  // namespace

Long MkDirRecourse(TextView folder, TextView subName) {
    const RoutineLog log(u"MkDirRecourse");
    if (subName.empty()) {
        constexpr Long notAsked = -1;
        Long status = notAsked;
        attempt([&] { status = currentPlatform().files().makeFolderTree(folder); });
        if (status == 0 || FolderExists(folder)) return 0;
    }
    return MkDir_(folder);
}

Long MkDir_(TextView folder) {
    Long result = 0;
    attempt([&] {
        // From the folder upwards to the last one that is missing, then down again.
        std::vector<Text> levels;
        for (Text level(folder); !level.empty(); level = missingParent(levels.back())) {
            DebugWrite(u"MkDir_", routineEntry);
            DebugWrite(level);
            levels.push_back(level);
        }
        for (; !levels.empty(); levels.pop_back()) {
            attempt([&] { makeLevel(levels.back(), result); });
            DebugWrite(u"MkDir_", routineExit);
        }
    });
    return result;
}

}  // namespace ovno2::Files
