// Copying single files between the PC and the phone, and changing the phone's file system.
//
// Each routine makes the phone folder that holds its target current and then calls one operation of the
// library with a bare name. They keep no state of their own; the session is that of phonefs/nokia_files.h.
// `GetFile`, `PutFile` and `RenameFile` open it when it is closed, the others need it open. None closes it.
#pragma once

#include "base/types.h"

namespace ovno2::NokiaFiles {

// 0 copied, whatever writing locally came to; -1 session not open, -2 folder or read failed. `destdir` is put
// directly in front of the file's name. The bytes go from the library's memory to the file in pieces.
Long GetFile(const Text& Filename, const Text& destdir);

// 0 written; -1 session not open, -2 folder failed, -3 the local file is missing or cannot be
// read, or the library refused.
// Takes a leading "root/" off `destdir`. UTF-16 text files are sent in the system's code page, everything
// else byte for byte.
Long PutFile(const Text& Filename, Text& destdir);

Long RenameFile(const Text& OrgFilenameWithPath, const Text& NewName);  // 0; -1 session or folder, -2 refused
Long DeleteFile(const Text& FilenameWithPath);                          // 1 deleted; -1 folder, -2 refused
Long RenameFolder(const Text& OrgNameWithPath, const Text& NewName);    // the library's status; -1 folder
Long CreateFolder(const Text& FullFolderName);                          // 0; -1 folder, -2 refused
Long DeleteFolder(const Text& FullFolderName);                          // 1 deleted; -1 folder, -2 refused

}  // namespace ovno2::NokiaFiles
