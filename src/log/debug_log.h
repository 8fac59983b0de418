// The diagnostic log: its settings and the writer behind `DebugWrite` (core/log_front.h).
//
// The log is off unless registry values switch it on. Lines then go to a text file, each one opening,
// extending and closing it, or live to a viewer's window (viewer_channel.h). Whether the log is on never
// changes a result. All state is the calling thread's: the settings once read, the indent, the viewer's
// window and shared area, the open keys of the switches that are re-checked. The public class runs these
// routines; everything else only calls `DebugWrite`.
#pragma once

namespace ovno2::DebugLog {

// Hangs the writer on the calling thread. Throws std::bad_alloc at most; may be called again.
void connect();

// Connects, and reads the settings unless that was done on this thread. The re-check of the switches, every
// 256th line while the log is off, makes it read them once more.
void DebugInit() noexcept;

// Gives the viewer's shared area back, and the keys of the switches. The next DebugInit that reads settings
// makes a new area, the next re-check opens the keys; what is open when the thread ends is closed then.
void releaseWhatIsOpen() noexcept;

}  // namespace ovno2::DebugLog
