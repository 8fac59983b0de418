// Strings and blocks for callers.
//
// The texts and records inside an item that was read may go back one by one (a caller that replaces a value
// frees the old one); the rest of the item goes with CAFreeItemData. Parts that went back already are
// remembered with the item.
#include "simulator/calls/memory_calls.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "simulator/base/text.h"
#include "simulator/calls/exports.h"

namespace ovno2::simulator {

Status misused(World& world, const char* call, const char* what, const void* pointer) {
    world.misuse.push_back(std::string(call) + ": " + what + " (" +
                           hexNumber(static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(pointer))) +
                           ")");
    return status::invalidParameter;
}

LowMemory::Block blockBehind(const World& world, BlockKind kind, std::initializer_list<Address> pointers) {
    for (const Address pointer : pointers) {
        const LowMemory::Block block = world.memory.find(atAddress<const void>(pointer));
        if (block && block.kind == kind) return block;
    }
    return {};
}

void releaseBlock(World& world, char* start) {
    if (!world.releasedParts.empty()) world.releasedParts.erase(start);
    world.memory.release(start);
}

namespace {

// The bytes of a file that was read: its session would release them, but they may go back before.
bool takeFromFileSession(World& world, char* start) {
    bool taken = false;
    world.sessions.forEach([&](Session& session) {
        if (session.kind != SessionKind::fileSystem || std::erase(session.held, start) == 0) return;
        world.memory.release(start);
        taken = true;
    });
    return taken;
}

}  // namespace

Status freeWhole(World& world, const char* call, BlockKind kind, void* pointer) {
    if (pointer == nullptr) return status::invalidParameter;
    const LowMemory::Block block = world.memory.find(pointer);
    if (block && block.kind == BlockKind::item) {
        std::vector<Address>& gone = world.releasedParts[block.start];
        if (std::find(gone.begin(), gone.end(), addressOf(pointer)) != gone.end()) {
            return misused(world, call, "a part of an item freed twice", pointer);
        }
        gone.push_back(addressOf(pointer));
        return library::statusOk;
    }
    if (block && kind == BlockKind::memory && takeFromFileSession(world, block.start))
        return library::statusOk;
    if (!block) return misused(world, call, "nothing handed out there, or freed before", pointer);
    if (block.kind != kind || block.start != pointer)
        return misused(world, call, "not the matching free", pointer);
    releaseBlock(world, block.start);
    return library::statusOk;
}

}  // namespace ovno2::simulator

using namespace ovno2::simulator;
using namespace ovno2::library;

SIMULATOR_EXPORT char16_t* SIMULATOR_STDCALL CONAAllocString(signature::WideText text) {
    return serveValue<char16_t*>(
        {"CONAAllocString"}, [&](ArgumentText& line) { line.secret(text); },
        [&](World& world) {
            requireGiven(text);
            const std::size_t units = std::char_traits<char16_t>::length(text) + 1;
            char* const block = takeMemory(world, units * sizeof(char16_t), BlockKind::string);
            std::memcpy(block, text, units * sizeof(char16_t));
            return reinterpret_cast<char16_t*>(block);
        });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAFreeString(char16_t* text) {
    const auto arguments = [&](ArgumentText& line) {
        const LowMemory::Block block = theWorld().memory.find(text);
        if (block) {
            line.secret(text);
        } else {
            line.word("unknown");
        }
    };
    return serve({"CONAFreeString", 0, /*releases=*/true}, arguments,
                 [&](World& world) { return freeWhole(world, "CONAFreeString", BlockKind::string, text); });
}

SIMULATOR_EXPORT void* SIMULATOR_STDCALL CONAAllocMemory(Word bytes) {
    return serveValue<void*>(
        {"CONAAllocMemory"}, [&](ArgumentText& line) { line.number("bytes", bytes); },
        [&](World& world) -> void* {
            char* const block = takeMemory(world, bytes, BlockKind::memory);
            std::memset(block, 0, bytes);
            return block;
        });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAFreeMemory(void* block) {
    const auto arguments = [&](ArgumentText& line) {
        line.number("bytes", theWorld().memory.find(block).bytes);
    };
    return serve({"CONAFreeMemory", 0, /*releases=*/true}, arguments,
                 [&](World& world) { return freeWhole(world, "CONAFreeMemory", BlockKind::memory, block); });
}

SIMULATOR_CHECK(CONAAllocString);
SIMULATOR_CHECK(CONAFreeString);
SIMULATOR_CHECK(CONAAllocMemory);
SIMULATOR_CHECK(CONAFreeMemory);
