#include "library/library_texts.h"

#include "library/library_memory.h"

namespace ovno2::library {

using namespace std::string_view_literals;  // names of routines whose length is known beforehand

namespace {

constexpr Address lastReservedAddress = 256;
constexpr std::size_t probeLimit = 16384;  // units looked at in search of the terminator
constexpr Long codePageLimit = 16382;      // bytes, terminator included
constexpr Long mostBytesPerUnit = 4;
constexpr Long pointerDetailLevel = 3;

// Bytes of the text in the system's code page, terminator included.
Long codePageLength(TextView text) {
    platform::CodePages& pages = currentPlatform().codePages();
    const std::size_t bytes = pages.singleByteTable() ? text.size() : pages.toAnsi(text).size();
    return static_cast<Long>(bytes) + 1;
}

}  // namespace

void GetStringFromPointer(Address pointer, Text& text) {
    const RoutineLog log(u"GetStringFromPointer"sv);
    text.clear();
    const bool logged = logsMoreThan(pointerDetailLevel);
    if (logged) DebugLine(hex{pointer});
    if (!isAddress(pointer) || pointer <= lastReservedAddress) return;
    platform::Memory& memory = currentPlatform().memory();
    const auto* source = static_cast<const char16_t*>(pointerTo(pointer));
    if (!memory.readText(source, probeLimit, text)) return;
    if (text.size() == probeLimit) {
        text.clear();
        DebugWrite(u"!!!1");
        return;
    }
    const bool mayPassLimit = static_cast<Long>(text.size()) * mostBytesPerUnit + 1 > codePageLimit;
    if (!logged && !mayPassLimit) return;
    const Long bytes = codePageLength(text);
    if (logged) DebugLine(decimal{bytes});
    if (bytes > codePageLimit) {
        DebugWrite(u"!!!1");
        text.clear();
    }
}

Text GetStringFromPointer(Address pointer) {
    Text text;
    GetStringFromPointer(pointer, text);
    return text;
}

}  // namespace ovno2::library
