// The phone's file system: the session with it, and the listing of one folder.
//
// Opened by the first listing or transfer and kept open until `CloseFS`. State on the thread: the session's
// handle, model and serial number, the pairs of drive label and drive name that listings have shown, and the
// time bias, read once. File operations stand in phonefs/file_operations.h and use the session from here.
//
// Paths come with "/" or "\"; the library's form begins with "\\" and the root, whose folders are the drives,
// is "\\" alone.
#pragma once

#include <optional>

#include "base/host_array.h"
#include "library/library_records.h"
#include "phonefs/dir_item.h"
#include "platform/thread_state.h"

namespace ovno2::NokiaFiles {

struct State {
    static constexpr StateSlot slot = StateSlot::phoneFiles;
    library::Handle FSHandle = 0;  // 0 = closed
    Text FSModel;                  // model text of the last open
    Text FSSerial;                 // phone of the last open
    // Label and name of each drive seen with a label; emptied when another phone is opened.
    struct Drive {
        Text label;
        Text name;
    };
    std::vector<Drive> drives;
    std::optional<Long> FSTimeBias;  // minutes
};

// 0 open, -1 no such phone, -2 the file-system service did not start, -3 the phone's file system did not
// open. An empty `model` becomes the model of the last open.
Long OpenFS(Text& model, const Text& phoneId);
Long CloseFS();  // always 0

// Makes a folder current: 0, or -1. A leading "root/" is taken off the caller's path.
Long ChangeDir(Text& path);

// Appends nothing and removes nothing when the folder is empty; else `list` ends with one element per entry,
// folders first. 0 listed, -1 failure (entries listed before it stay).
Long GetDirContents(Text& model, HostArray<DirItem>& list, const Text& folder);

// A 64-bit file time (UTC) as local date and time; date zero when it is no valid time.
DateValue localFileTime(std::uint64_t fileTime);

}  // namespace ovno2::NokiaFiles
