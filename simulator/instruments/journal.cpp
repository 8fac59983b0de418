#include "simulator/instruments/journal.h"

#include <utility>

#include "simulator/base/text.h"
#include "simulator/memory/low_memory.h"
#include "simulator/system/system.h"

namespace ovno2::simulator {

std::string& ArgumentText::next() {
    if (!arguments.empty()) arguments += ", ";
    return arguments;
}

ArgumentText& ArgumentText::text(const char16_t* value) {
    if (value == nullptr) return word("null");
    next().append("\"").append(toUtf8(value)).append("\"");
    return *this;
}

ArgumentText& ArgumentText::secret(const void* value) {
    return word(value == nullptr ? "null" : "***");
}

ArgumentText& ArgumentText::number(std::string_view name, library::Word value) {
    next().append(name).append(" ").append(std::to_string(value));
    return *this;
}

ArgumentText& ArgumentText::hex(std::string_view name, library::Word value) {
    next().append(name).append(" ").append(hexNumber(value));
    return *this;
}

ArgumentText& ArgumentText::word(std::string_view bare) {
    next().append(bare);
    return *this;
}

ArgumentText& ArgumentText::item(const library::ItemIdRecord* id) {
    if (id == nullptr) return word("null");
    number("position", id->position);
    const char* const uid = atAddress<const char>(id->uid);
    if (id->uidLength != 0 && id->uidLength <= 2048 && system::readable(uid, id->uidLength)) {
        word("uid " + toHex({uid, id->uidLength}));
    }
    return *this;
}

bool Journal::writeTo(const std::filesystem::path& target) {
    std::error_code ignored;
    if (std::filesystem::is_fifo(target, ignored)) return false;  // opening it waits for a reader
    file.open(target, std::ios::app | std::ios::binary);
    switchedOn = file.is_open();
    return switchedOn;
}

void Journal::add(std::string_view call, const std::string& arguments, const std::string& result) {
    std::string line(call);
    line.append("(").append(arguments).append(") = ").append(result);
    if (file.is_open()) {
        // One write a line, so that processes that share the file do not mix theirs.
        file << line.append("\n") << std::flush;
    } else {
        kept.push_back(std::move(line));
    }
}

}  // namespace ovno2::simulator
