// The journal: one line a call, in the order the calls were served, such as
//     DAOpenCA("356300010000017", medium 1, target 1) = 0
//
// Off unless a test or OVNO2_JOURNAL asks for it; while it is off no line is built. Owned and guarded by the
// World.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "library/library_records.h"

namespace ovno2::simulator {

// Builds the text of one call's arguments.
class ArgumentText {
  public:
    ArgumentText& text(const char16_t* value);  // in double quotes; null as `null`
    ArgumentText& secret(const void* value);    // `***`, or `null`
    ArgumentText& number(std::string_view name, library::Word value);
    ArgumentText& hex(std::string_view name, library::Word value);
    ArgumentText& word(std::string_view bare);
    ArgumentText& item(const library::ItemIdRecord* id);
    const std::string& all() const { return arguments; }

  private:
    std::string& next();
    std::string arguments;
};

class Journal {
  public:
    bool on() const { return switchedOn; }
    void switchOn(bool on) { switchedOn = on; }
    bool writeTo(
        const std::filesystem::path& target);  // appends, and switches on; false when it cannot be opened
    void add(std::string_view call, const std::string& arguments, const std::string& result);

    const std::vector<std::string>& lines() const { return kept; }
    void clear() { kept.clear(); }

  private:
    bool switchedOn = false;
    std::ofstream file;  // closed = kept in memory for the control interface
    std::vector<std::string> kept;
};

}  // namespace ovno2::simulator
