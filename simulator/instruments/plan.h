// What a test wants to go otherwise than a healthy phone would have it: failing calls, lost connections, wild
// records and other shapes of the library.
//
// Filled by the control interface; asked by the calls. While it is empty a call pays one test of a flag.
// Owned and guarded by the World.
#pragma once

#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "simulator/memory/low_memory.h"

namespace ovno2::simulator {

using library::Status;
using library::Word;

// The n-th call of a function, counted from when the fault was planned, or every call from the n-th on.
struct Occasion {
    std::string call;  // "*" = any function
    std::uint64_t nth = 1;
    bool onwards = false;
    std::uint64_t seen = 0;

    bool matches(std::string_view name) const { return call == "*" || call == name; }
    // Counts one call; whether it is meant.
    bool arrives() {
        ++seen;
        return onwards ? seen >= nth : seen == nth;
    }
};

struct Fault {
    enum class Kind { status, allocation, repeat };  // repeat: the previous answer of a search once more
    Occasion occasion;
    Kind kind = Kind::status;
    Status status = 0;
};

struct Drop {
    std::uint64_t after = 0;             // calls that still go through
    std::optional<std::uint64_t> bytes;  // instead: bytes of files that are still carried
    Status status = library::connectionLost;
    std::optional<std::u16string> serial;  // of any phone without
    bool gone = false;                     // the phone stays away; else it can be opened again
};

// Overwrites one word of a record that a call hands out.
struct Poke {
    struct Text {
        std::u16string text;
    };
    enum class Wild { unmapped, unterminated, misaligned };

    Occasion occasion;
    std::string record;  // which record of the call: "contact", "item", "value", "id", "device", ...
    std::optional<std::string> uid;    // only for this item
    std::optional<std::uint8_t> pair;  // of "item" and "value"
    std::size_t index = 0;             // which one of several
    std::size_t word = 0;
    std::variant<Word, Text, Wild> value;
    std::optional<Word> orMask;  // instead of a value: bits to set
};

struct Shape {
    std::optional<Word> dataItem, folder, calendar, date;
    std::optional<Word> connectivity, deviceManagement, contentAccess, fileSystem;
    bool deleteFolderTakesFour = false;
};

class Plan {
  public:
    explicit Plan(LowMemory& lowMemory) : memory(lowMemory) {}
    Plan(const Plan&) = delete;
    Plan& operator=(const Plan&) = delete;

    void add(Fault fault);
    void add(Drop drop);
    void add(Poke poke);
    void clear();  // everything but the shape
    Shape shape;

    // The call under way is to give the previous answer once more.
    bool repeating = false;

    // Whether calls are watched at all.
    bool watching() const { return !faults.empty() || !drops.empty(); }
    bool poking() const { return !pokes.empty(); }

    // The fault that this call meets, if any.
    std::optional<Fault> arrive(std::string_view call);

    // The drops that this call on the phone's session sets off; each is handed out once.
    std::optional<Drop> dropOn(const std::u16string& serial);

    // The drop that happens while a call carries `bytes` of a file; `bytes` becomes how many of them arrive.
    std::optional<Drop> dropWithin(const std::u16string& serial, std::uint64_t& bytes);

    // For a call that has built its records: which pokes it meets.
    std::vector<const Poke*> pokesOf(std::string_view call, const std::string* uid);

    // Writes one poke into a record's words; words outside it are left alone.
    void apply(const Poke& poke, void* words, std::size_t count);

    // An address that faults when it is read; a text that runs to the end of its page without an end.
    Address unmapped();
    Address unterminated();

  private:
    Address pokedText(const std::u16string& text);

    LowMemory& memory;
    std::list<Fault> faults;
    std::list<Drop> drops;
    std::list<Poke> pokes;
    std::vector<char*> texts;
    char* wildPages = nullptr;  // one page unit full of text, one without access
};

}  // namespace ovno2::simulator
