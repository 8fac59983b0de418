// The registry and the profile file, as the whole module reads and writes them.
//
// Every value crosses as text: numbers as signed decimal text, binary data as one character a byte through
// the ANSI code page. The routines keep no state: keys are opened and closed within each call; only a
// `WatchedValue` keeps its key open. No routine throws: what fails becomes the thread's pending failure and
// shows in the result.
#pragma once

#include <memory>

#include "platform/registry.h"

namespace ovno2::Registry {

// GetRegValue's flags.
inline constexpr Long view64Bit = 1;  // reads the 64-bit view

// The value as text, without one terminating NUL; empty when the key or the value is missing or cannot be
// read. The empty name is the key's default value.
Text GetRegValue(Long hive, TextView keyPath, TextView valueName, Long flags = 0) noexcept;

// A value that is read again and again: gives what GetRegValue gives, and keeps the key open in between.
//
// The key is opened at the first reading; at each further one while it is missing, and when it can no longer
// be read, so that a key that was deleted and made anew is found. A key that is renamed is followed to its
// new name until `close`.
class WatchedValue {
  public:
    // The texts must outlive the object.
    WatchedValue(Long hive, TextView keyPath, TextView valueName, Long flags = 0)
        : hive_(hive), keyPath_(keyPath), valueName_(valueName), flags_(flags) {}

    Text text() noexcept;
    void close() noexcept { key_.reset(); }

  private:
    Long hive_;
    TextView keyPath_;
    TextView valueName_;
    Long flags_;
    std::unique_ptr<platform::RegistryKey> key_;  // null = not opened, or missing
};

// Writes `value` as `type` (1, 2 and 7 text, 4 number; other types create the key and write no value). Empty
// text deletes the value, and so does a number 0 unless `keepZero`. True when the value then reads back as
// exactly `value`. A "\" in front of `keyPath` is dropped, in the caller's variable too; an empty path gives
// false.
bool SetRegValue(Long hive, Text& keyPath, TextView valueName, TextView value, Long type,
                 bool keepZero = false) noexcept;
bool SetRegValue(Long hive, TextView keyPath, TextView valueName, TextView value, Long type,
                 bool keepZero = false) noexcept;

// RegQueryValueText's result for a type it does not read.
inline constexpr Long unhandledType = -1;

// The value of an open key, a stored terminating NUL included. 0, the platform's code, or `unhandledType`;
// `text` is empty unless the result is 0.
Long RegQueryValueText(platform::RegistryKey& key, TextView valueName, Text& text);

// Stores the text's characters without a terminating NUL; empty text deletes the value. The platform's code.
Long RegSetStringValue(platform::RegistryKey& key, TextView valueName, TextView text, Long type);

// Stores a 32-bit number; 0 deletes the value unless `keepZero`. When storing fails, the value is deleted and
// stored once more. The platform's code.
Long RegSetLongValue(platform::RegistryKey& key, TextView valueName, Long number, bool keepZero);

// A key of a section of a profile file, at most 511 characters; empty when it is missing.
Text GetIniValue(TextView section, TextView key, TextView path) noexcept;

}  // namespace ovno2::Registry
