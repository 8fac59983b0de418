#include "pc/files.h"

#include "core/attempt.h"
#include "core/current_platform.h"
#include "pc/file_access.h"

namespace ovno2::Files {

namespace {

constexpr char16_t quote = u'"';

// The index of the last "\", else of the last "/"; npos without either.
std::size_t splitPoint(TextView path) {
    const std::size_t backslash = path.rfind(u'\\');
    return backslash != TextView::npos ? backslash : path.rfind(u'/');
}

TextView upToStar(TextView path) {
    return path.substr(0, path.find(u'*'));
}

TextView truthText(bool truth) {
    return truth ? u"True" : u"False";
}

}  // namespace

void releaseFileSystemObject() {
    stateOf<State>().fileSystemObject.reset();
}

void RemoveTrailingSeparator(Text& path) {
    if (!path.empty() && (path.back() == u'\\' || path.back() == u'/')) path.pop_back();
}

Text FolderPart(TextView path, bool keepSeparator) {
    constexpr std::size_t shortestAddress = 8;  // "https://": a separator within it splits nothing
    const std::size_t split = splitPoint(path);
    TextView folder;
    if (split != TextView::npos) {
        const bool isAddress = split < shortestAddress && path.find(u"://") != TextView::npos;
        folder = isAddress ? path : path.substr(0, keepSeparator ? split + 1 : split);
    }
    // The file name had the quote that goes with it.
    if (folder.starts_with(quote) && !folder.ends_with(quote)) folder.remove_prefix(1);
    return Text(folder);
}

Text FileNamePart(TextView path, bool keepExtension) {
    const std::size_t split = splitPoint(path);
    TextView name = split == TextView::npos ? path : path.substr(split + 1);
    if (!keepExtension) name = name.substr(0, name.rfind(u'.'));
    if (name.ends_with(quote) && !name.starts_with(quote)) name.remove_suffix(1);
    return Text(name);
}

Text GetShortFileName(TextView path) {
    constexpr std::size_t shortEnough = 241;  // fits as it is
    Text result;
    attempt([&] {
        std::size_t depth = 0;  // folders that this took apart, each as a call of its own
        Text folder(path);
        Text names;  // what stands behind `folder`
        for (bool done = false; !done; ++depth) {
            DebugWrite(u"GetShortFileName", routineEntry);
            DebugWrite(folder);
            Text shortened;
            if (folder.size() < classicPathLimit) shortened = currentPlatform().files().shortPath(folder);
            const Text above = FolderPart(folder);
            if (!shortened.empty()) {
                folder = std::move(shortened);
                done = true;
            } else if (folder.size() < shortEnough || folder.size() > longestPath ||
                       above.size() >= folder.size()) {
                done = true;
            } else {
                names.insert(0, u'\\' + FileNamePart(folder));
                folder = above;
            }
        }
        result = folder + names;
        for (; depth > 0; --depth)
            DebugWrite(u"GetShortFileName", routineExit);
    });
    return result;
}

bool FileExistsW_(TextView path) {
    const RoutineLog log(u"FileExistsW_");
    bool exists = false;
    attempt([&] {
        const Text name = removeAll(path, quote);
        exists = currentPlatform().files().pathExists(name) && openByWidePath(name) != nullptr;
    });
    DebugLine(u"FileExistsW_:", truthText(exists));
    return exists;
}

bool FileExists(TextView path) {
    Long attributes = platform::noAttributes;
    attempt([&] { attributes = currentPlatform().files().attributes(removeAll(path, quote)); });
    return attributes != platform::noAttributes;
}

bool FolderExists(TextView path) {
    if (path == u"\\\\") return false;
    Long attributes = platform::noAttributes;
    attempt([&] { attributes = currentPlatform().files().attributes(removeAll(upToStar(path), quote)); });
    return attributes != platform::noAttributes && (attributes & platform::attributeDirectory) != 0;
}

Long GetAttributes(TextView path) {
    Long attributes = platform::noAttributes;
    attempt([&] { attributes = currentPlatform().files().attributes(upToStar(path)); });
    return attributes;
}

Long SetAttributes(TextView path, Long attributes) {
    const FailureNumber failure =
        attempt([&] { require(currentPlatform().files().setAttributes(path, attributes)); });
    return failure == noFailure ? 1 : 0;
}

Single FileSize(TextView path, bool skipExistenceTest) {
    Single size = 0;
    if (!skipExistenceTest && !FileExistsW_(path)) return size;
    attempt([&] {
        const platform::ObjectPointer file = objectOf(callWith(fileSystemObject(), u"GetFile", path));
        size = static_cast<Single>(numberOf(file->get(u"Size")));
    });
    return size;
}

}  // namespace ovno2::Files
