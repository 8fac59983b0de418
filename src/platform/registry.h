// The registry, as operations on opened keys.
//
// Names and texts are UTF-16; nothing is expanded or converted. Every operation returns the platform's result
// code: `registryOk`, or one of the codes below or another non-zero code; out-values are untouched unless the
// code is 0.
#pragma once

#include <memory>
#include <string>

#include "base/types.h"

namespace ovno2::platform {

// Predefined handles as the module passes them (unsigned in the system's tables, signed where they cross as
// Long).
inline constexpr Long classesRoot = static_cast<Long>(0x80000000u);
inline constexpr Long currentUser = static_cast<Long>(0x80000001u);
inline constexpr Long localMachine = static_cast<Long>(0x80000002u);

inline constexpr Long registryOk = 0;
inline constexpr Long registryNotFound = 2;
inline constexpr Long registryAccessDenied = 5;
inline constexpr Long registryInvalidHandle = 6;
inline constexpr Long registryOutOfMemory = 8;

enum class RegistryType : Long {
    text = 1,
    expandableText = 2,  // environment references are left as they are
    binary = 3,
    number = 4,  // 32 bits
    textList = 7,
};

struct RegistryValue {
    Long type = 0;             // a RegistryType, or a number of another type
    Text text;                 // types 1, 2, 7: the stored characters, a stored terminating NUL included
    std::string bytes;         // type 3 and unknown types: the stored bytes
    std::uint32_t number = 0;  // type 4
};

// Stays open until it is destroyed, in the state in which the registry is at each operation. A key that was
// deleted meanwhile gives a code other than `registryOk`; where another one was made at its place, the value
// of that or such a code.
class RegistryKey {
  public:
    virtual ~RegistryKey() = default;
    virtual Long read(TextView name, RegistryValue& value) = 0;  // the empty name is the key's default value
    // Type 1, 2, 7: exactly the characters of `value.text` are stored; no terminating NUL is added.
    virtual Long write(TextView name, const RegistryValue& value) = 0;
    virtual Long remove(TextView name) = 0;
};

class Registry {
  public:
    virtual ~Registry() = default;
    // Opens an existing key for reading; `view64` asks for the 64-bit view.
    virtual Long open(Long hive, TextView path, bool view64, std::unique_ptr<RegistryKey>& key) = 0;
    // Opens a key for reading and writing and creates what is missing on the way.
    virtual Long create(Long hive, TextView path, std::unique_ptr<RegistryKey>& key) = 0;
    // Reads `key` of `section` from a profile (.ini) file: at most `capacity` - 1 characters, empty when
    // missing.
    virtual Text profileString(TextView section, TextView key, TextView path, std::size_t capacity) = 0;
};

}  // namespace ovno2::platform
