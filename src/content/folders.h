// Folder records of a content store: the root, and the subfolders below it.
#pragma once

#include <vector>

#include "library/library_records.h"

namespace ovno2::Content {

// One folder of a content store's list; entry 0 of a list is the store's root.
struct FolderEntry {
    Text Name;
    Text Path;
    Long FolderId = 0;
};

// What a record says of its folder; a part that there is no memory for stays empty.
FolderEntry entryOf(const library::FolderInfoRecord& record);

// Reads the folder that `record` names (a fresh record names the root) into `record`. The result is the size
// of the record that the library really wrote, 32 or more and even; a negative status when it could not be
// read, then `record` keeps everything but its size.
Long GetNokiaFolder(library::Handle connection, library::FolderInfoRecord& record);

// Appends the `count` subfolder records at `pointer`, and below each its own, to `list`: one level as one
// block, the subtrees behind it in the order of their parents. `recordSize` 0 means 32. More than 100
// subfolders count as none.
//
// With an `oldName`, the first record of this level that bears exactly that name ends the walk and is renamed
// to `newName`, or deleted when that is empty, through `connection`. The result is 0; with an `oldName` the
// last library status of the change, -7 when the library has no memory for the new name, -8 when no record
// bears the old one.
Long GetSubfolders(library::Word count, Address pointer, std::vector<FolderEntry>& list, Long recordSize,
                   library::Handle connection, const Text& oldName, const Text& newName);

// Makes a folder below the root. The last library status, 0 when it is there; -7 when the library has no
// memory for its name. `tag` names the caller in the log.
Long CreateSubfolder(library::Handle connection, const Text& newName, TextView tag);

}  // namespace ovno2::Content
