#include "phonefs/file_operations.h"

#include "library/library_memory.h"
#include "pc/byte_table.h"
#include "pc/convert_array.h"
#include "pc/files.h"
#include "pc/get_file_contents_mod.h"
#include "phonefs/nokia_files.h"
#include "platform_native/last_error.h"

namespace ovno2::NokiaFiles {

namespace {

using library::FileRecord;
using library::Handle;
using library::LibraryString;
using library::Status;
using library::Word;

Handle session() {
    return stateOf<State>().FSHandle;
}

bool openSession() {
    if (session() != 0) return true;
    Text lastModel;
    return OpenFS(lastModel, {}) >= 0;
}

void logStatus(TextView tag, Long status) {
    if (status != 0) DebugLine(tag, hex{status});
}

bool enterFolder(Text folder) {
    return ChangeDir(folder) == 0;
}

// The folder that holds `path`, in the library's own form.
Text libraryFolderOf(const Text& path) {
    return u"\\\\" + replaceAll(Files::FolderPart(path), u"/", u"\\");
}

// A bare name, and one operation of the library on it: its answer's status.
template <class Operation>
Long withName(const Text& name, Operation&& operation) {
    Long status = library::notCalled;
    attempt([&] {
        const LibraryString wide(name);
        status = operation(wide.get()).status;
    });
    return status;
}

FileRecord fileNamed(const char16_t* name) {
    FileRecord record{};
    record.name = library::addressOf(name);
    return record;
}

// Hands out what a read has put at `data`, piece by piece; a file is never held twice.
Files::ByteSource bytesAt(Address data, std::size_t size) {
    return [data, size, done = std::size_t{0}](std::span<std::uint8_t> piece) mutable {
        const std::size_t count = std::min(piece.size(), size - done);
        if (!currentPlatform().memory().read(library::pointerTo(static_cast<Address>(data + done)), count,
                                             piece.data()))
            throw RuntimeFailure(invalidProcedureCall);
        done += count;
        return count;
    };
}

// A file that is a text in UTF-16, or has a mark, goes to the phone as its text in the code page.
ConvertArray::ByteArray codePageBytes(const Files::FileBytes& content) {
    Text text;
    text.reserve(content.size);
    ByteTable().append(text, content.bytes.get(), content.size);
    GetFileContentsMod::ConvertFromUnicodeSub(text);
    ConvertArray::ByteArray bytes;
    ConvertArray::ConvertStringToByteArray(text, bytes);
    if (!text.empty() && !bytes.hasElements()) throw RuntimeFailure(outOfMemory);
    return bytes;
}

// Status of one deletion in either of the library's two forms; true when the library expects another number
// of arguments than it was called with.
bool deleteInEitherForm(const char16_t* name, Status& status) {
    using ThreeArguments = library::signature::CONADeleteFolder;
    using FourArguments = library::signature::CONADeleteFolderFourArguments;
    platform::ArgumentMismatch mismatch = 0;
    const auto mismatched = [&](FailureNumber failure) { return failure == badCallingConvention; };
    const auto checked = [&](auto&& call) {
        return attempt([&] {
            call();
            if (mismatch != 0) throw RuntimeFailure(badCallingConvention);
        });
    };
    clearPendingFailure();
    platform::clearLastError();
    FailureNumber failure = checked([&] {
        status = library::CONADeleteFolder.callAs<ThreeArguments>(mismatch, session(), name, Word{0});
    });
    if (platform::lastError() == 0 && !mismatched(failure)) return false;
    clearPendingFailure();
    for (const Word flag : {Word{1}, Word{0}})
        failure = checked([&] {
            status =
                library::CONADeleteFolder.callAs<FourArguments>(mismatch, session(), name, flag, Word{0});
        });
    return mismatched(failure);
}

}  // namespace

Long GetFile(const Text& Filename, const Text& destdir) {
    const RoutineLog log(u"GetFile");
    if (!openSession()) return -1;
    if (!enterFolder(Files::FolderPart(Filename))) return -2;
    const Text name = Files::FileNamePart(Filename);
    Address data = 0;
    Word size = 0;
    const Long status = withName(name, [&](const char16_t* wide) {
        FileRecord record = fileNamed(wide);
        const library::Answer read =
            library::CONAReadFile.tried(session(), &record, &data, /*offset=*/0, /*length=*/0);
        size = record.size;
        return read;
    });
    logStatus(u"e2:", status);
    if (status != 0) return -2;
    if (data == 0 || static_cast<Long>(size) < 1) size = 0;
    // A file that cannot be read must not empty the one that is there already.
    if (size != 0 && !currentPlatform().memory().readable(library::pointerTo(data), size)) {
        raisePending(invalidProcedureCall);
        return -2;
    }
    attempt([&] {
        Text target = destdir + name;
        Files::WriteFileBytes(target, bytesAt(data, size), /*showError=*/true);
    });
    return 0;
}

Long PutFile(const Text& Filename, Text& destdir) {
    const RoutineLog log(u"PutFile");
    DebugWrite(Filename);
    DebugWrite(destdir);
    if (!openSession()) return -1;
    if (ChangeDir(destdir) != 0) return -2;
    Files::FileBytes content;
    if (!Files::GetFileBytes(Filename, content)) return -3;
    std::span<const std::uint8_t> bytes = content.all();
    ConvertArray::ByteArray converted;
    if (GetFileContentsMod::isEncodedText(bytes)) {
        // Nothing goes to the phone in place of a text that there is no memory to convert.
        if (attempt([&] { converted = codePageBytes(content); }) != noFailure) return -3;
        bytes = converted.elements();
    }
    const Long status = withName(Files::FileNamePart(Filename), [&](const char16_t* wide) {
        FileRecord record = fileNamed(wide);
        record.size = static_cast<Word>(bytes.size());
        DebugWrite(u"PutFile", 1);
        DebugWrite(u"PutFile", 2);
        const library::Answer written =
            library::CONAWriteFile.tried(session(), &record, bytes.data(), /*zero=*/0);
        DebugWrite(u"PutFile", 3);
        DebugWrite(u"PutFile", 4);
        return written;
    });
    logStatus(u"e2:", status);
    return status == 0 ? 0 : -3;
}

Long RenameFile(const Text& OrgFilenameWithPath, const Text& NewName) {
    const RoutineLog log(u"RenameFile");
    if (!openSession()) return -1;
    if (!enterFolder(libraryFolderOf(OrgFilenameWithPath))) return -1;
    const Long status = withName(Files::FileNamePart(OrgFilenameWithPath), [&](const char16_t* name) {
        const LibraryString newName(NewName);
        return library::CONARenameFile.tried(session(), name, newName.get(), /*zero=*/0);
    });
    logStatus(u"e1:", status);
    return status == 0 ? 0 : -2;
}

Long DeleteFile(const Text& FilenameWithPath) {
    const RoutineLog log(u"DeleteFile");
    if (!enterFolder(libraryFolderOf(FilenameWithPath))) return -1;
    const Long status = withName(Files::FileNamePart(FilenameWithPath), [](const char16_t* name) {
        return library::CONADeleteFile.tried(session(), name, /*zero=*/0);
    });
    logStatus(u"e1:", status);
    return status == 0 ? 1 : -2;
}

Long RenameFolder(const Text& OrgNameWithPath, const Text& NewName) {
    const RoutineLog log(u"RenameFolder");
    if (!enterFolder(Files::FolderPart(OrgNameWithPath))) return -1;
    Long status = -2;
    attempt([&] {
        const LibraryString name(Files::FileNamePart(OrgNameWithPath));
        const LibraryString newName(NewName);
        status =
            library::CONARenameFolder.tried(session(), name.get(), newName.get(), /*zero=*/0).valueOr(status);
    });
    logStatus(u"e1:", status);
    return status;
}

Long CreateFolder(const Text& FullFolderName) {
    const RoutineLog log(u"CreateFolder");
    if (!enterFolder(Files::FolderPart(FullFolderName))) return -1;
    const Long status = withName(
        Files::FileNamePart(FullFolderName, /*keepExtension=*/false),
        [](const char16_t* name) { return library::CONACreateFolder.tried(session(), name, /*zero=*/0); });
    logStatus(u"e1:", status);
    return status == 0 ? 0 : -2;
}

Long DeleteFolder(const Text& FullFolderName) {
    const RoutineLog log(u"DeleteFolder");
    constexpr int mostRepeats = 2;
    const Text parent = Files::FolderPart(FullFolderName);
    const Text name = Files::FileNamePart(FullFolderName);
    Status status = static_cast<Status>(library::notCalled);
    for (int repeats = 0;; ++repeats) {
        if (!enterFolder(parent)) return -1;
        bool mismatched = false;
        attempt([&] { mismatched = deleteInEitherForm(LibraryString(name).get(), status); });
        if (!mismatched || repeats == mostRepeats) break;
        CloseFS();
        Text lastModel;
        OpenFS(lastModel, {});
    }
    logStatus(u"e1:", static_cast<Long>(status));
    return status == library::statusOk ? 1 : -2;
}

}  // namespace ovno2::NokiaFiles
