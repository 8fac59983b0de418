// The statuses that the simulated library gives beyond those a caller tells apart
// (connectivity/library_records.h).
//
// Their numbers are the simulator's own; callers pass them on or turn them into a failure.
#pragma once

#include "library/library_records.h"

namespace ovno2::simulator::status {

using library::Status;

inline constexpr Status notStarted = 0x80108001;  // the group was not initialised on this thread
inline constexpr Status invalidParameter = 0x80108002;
inline constexpr Status invalidHandle = 0x80108003;
inline constexpr Status outOfMemory = 0x80108004;
inline constexpr Status notSupported = 0x80108005;     // the phone has no such information or store
inline constexpr Status wrongRecordSize = 0x80108006;  // the size word is not the one this library uses
inline constexpr Status itemNotFound = 0x80108007;
inline constexpr Status folderNotFound = 0x80108008;
inline constexpr Status fileNotFound = 0x80108009;
inline constexpr Status alreadyExists = 0x8010800A;
inline constexpr Status invalidName = 0x8010800B;  // too long, empty, or with a separator in it
inline constexpr Status storeFull = 0x8010800C;
inline constexpr Status readOnly = 0x8010800D;
inline constexpr Status folderNotEmpty = 0x8010800E;
inline constexpr Status storeFailed = 0x8010800F;  // the image could not be read or written
inline constexpr Status cancelled = 0x80108010;    // the caller's progress function asked to stop

}  // namespace ovno2::simulator::status
