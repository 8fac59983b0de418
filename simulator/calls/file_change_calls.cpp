// Changes to the phone's file system: rename, delete and create.
#include "simulator/calls/exports.h"
#include "simulator/calls/file_session.h"

using namespace ovno2::simulator;
using namespace ovno2::library;

namespace {

// Serves one change in the session's current folder.
template <typename Change>
Status change(const char* call, Handle handle, signature::WideText entry, signature::WideText newName,
              Change carryOut) {
    const auto arguments = [&](ArgumentText& text) {
        text.number("handle", handle).text(entry);
        if (newName != nullptr) text.text(newName);
    };
    return serve({call, handle}, arguments, [&](World& world) {
        FileSession& session = requireFiles(world, handle);
        requireGiven(entry);
        carryOut(world, session);
        return statusOk;
    });
}

}  // namespace

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONARenameFile(Handle session, signature::WideText name,
                                                         signature::WideText newName, Word) {
    return change("CONARenameFile", session, name, newName, [&](World&, FileSession& files) {
        requireGiven(newName);
        files.store.renameFile(files.current, name, newName);
    });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONARenameFolder(Handle session, signature::WideText name,
                                                           signature::WideText newName, Word) {
    return change("CONARenameFolder", session, name, newName, [&](World&, FileSession& files) {
        requireGiven(newName);
        files.store.renameFolder(files.current, name, newName);
    });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONADeleteFile(Handle session, signature::WideText name, Word) {
    return change("CONADeleteFile", session, name, nullptr,
                  [&](World&, FileSession& files) { files.store.removeFile(files.current, name); });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONACreateFolder(Handle session, signature::WideText name, Word) {
    return change("CONACreateFolder", session, name, nullptr,
                  [&](World&, FileSession& files) { files.store.createFolder(files.current, name); });
}

// Folder deletion has two forms. A library with three arguments deletes an empty folder at once. One with
// four deletes in two steps: with flag 1 it is asked whether the folder may go, with flag 0 it goes; flag 0
// alone, which is also what a call with three arguments looks like to it, does nothing and leaves the
// platform's last error set.
namespace {

Status deleteInTwoSteps(FileSession& session, signature::WideText name, Word flag) {
    const FileStore::Entry folder = session.store.folderIn(session.current, name);
    if (flag != 0) {
        session.store.requireRemovable(folder);
        session.announcedDeletion = folder.path;
        return statusOk;
    }
    if (session.announcedDeletion != folder.path) return status::invalidParameter;
    session.announcedDeletion.clear();
    session.store.removeFolder(session.current, name);
    return statusOk;
}

struct Deletion {
    Status status;
    Word argumentWords;  // how many the library expects
};

bool deletionTakesFour() {
    World& world = theWorld();
    const std::lock_guard guard(world.lock);
    return world.plan.shape.deleteFolderTakesFour;
}

Deletion deleteFolder(Handle handle, signature::WideText name, Word flagOrZero) {
    const bool takesFour = deletionTakesFour();
    const auto arguments = [&](ArgumentText& text) {
        text.number("handle", handle).text(name);
        if (takesFour) text.number("flag", flagOrZero);
    };
    const Status status = serve({"CONADeleteFolder", handle}, arguments, [&](World& world) -> Status {
        FileSession& session = requireFiles(world, handle);
        requireGiven(name);
        if (takesFour) return deleteInTwoSteps(session, name, flagOrZero);
        session.store.removeFolder(session.current, name);
        return statusOk;
    });
    if (takesFour && flagOrZero == 0 && status == status::invalidParameter) system::setArgumentError();
    return {status, takesFour ? 4U : 3U};
}

}  // namespace

#if defined(_WIN32)

// The callee removes its arguments: as many words as the form in use has, which no compiler can know.
extern "C" std::uint64_t simulatorDeleteFolder(Handle session, signature::WideText name, Word third, Word) {
    const Deletion done = deleteFolder(session, name, third);
    return std::uint64_t{done.argumentWords * sizeof(Word)} << 32 | done.status;
}

SIMULATOR_EXPORT __attribute__((naked)) void CONADeleteFolder() {
    asm("pushl 16(%esp)\n"
        "pushl 16(%esp)\n"
        "pushl 16(%esp)\n"
        "pushl 16(%esp)\n"
        "call _simulatorDeleteFolder\n"
        "addl $16, %esp\n"
        "popl %ecx\n"
        "addl %edx, %esp\n"
        "jmp *%ecx\n");
}

#else

SIMULATOR_EXPORT Status CONADeleteFolder(Handle session, signature::WideText name, Word flagOrZero) {
    return deleteFolder(session, name, flagOrZero).status;
}

SIMULATOR_CHECK(CONADeleteFolder);

#endif

SIMULATOR_CHECK(CONARenameFile);
SIMULATOR_CHECK(CONARenameFolder);
SIMULATOR_CHECK(CONADeleteFile);
SIMULATOR_CHECK(CONACreateFolder);
