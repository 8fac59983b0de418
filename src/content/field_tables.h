// The tables between the phone's contact field ids and the host's field codes.
//
// Which rows hold depends on the version of the device-management library. The tables belong to the thread's
// content state and are rebuilt once per read or write of contacts.
#pragma once

#include <array>
#include <cstddef>

#include "base/types.h"

namespace ovno2::Content {

inline constexpr std::size_t fieldIdCount = 529;

// From this device-management version on the library numbers contact fields the new way.
inline constexpr Long firstVersionWithLongIds = 30;

struct FieldTables {
    Long version = 0;  // of the device-management library they are for; 0 = unknown, or not yet built
    // Phone field id -> host field code, first and second choice; 0 = no mapping.
    std::array<Long, fieldIdCount> FieldCodeTable{};
    std::array<Long, fieldIdCount> AltFieldCodeTable{};
    // Upper bounds, exclusive, of the phone field ids of the four contact field groups.
    std::array<std::uint16_t, 4> FieldGroupBounds{};

    Long code(std::uint32_t fieldId) const { return fieldId < fieldIdCount ? FieldCodeTable[fieldId] : 0; }
    Long alternativeCode(std::uint32_t fieldId) const {
        return fieldId < fieldIdCount ? AltFieldCodeTable[fieldId] : 0;
    }
    // 1 to 4; 0 for an id above the last bound.
    Long group(std::uint32_t fieldId) const;
};

// Rebuilds the thread's tables for the library's version.
void InitFieldTables();

// The device-management version, asked once per thread; 0 while the library cannot tell.
Long deviceManagementVersion();

}  // namespace ovno2::Content
