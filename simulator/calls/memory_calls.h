// Giving back what was handed out. No state of its own; used by the calls that free structures.
#pragma once

#include <initializer_list>

#include "simulator/calls/serve.h"

namespace ovno2::simulator {

// Notes a free that does not fit anything handed out; gives the status for it.
Status misused(World& world, const char* call, const char* what, const void* pointer);

// Whether one of the pointers leads into a live block of this kind; that block then.
LowMemory::Block blockBehind(const World& world, BlockKind kind, std::initializer_list<Address> pointers);

// Releases a block and what is remembered about its parts.
void releaseBlock(World& world, char* start);

// A whole block of this kind, or one part of an item that goes back by itself.
Status freeWhole(World& world, const char* call, BlockKind kind, void* pointer);

}  // namespace ovno2::simulator
