// What this computer has sent to a phone, so that a file that is there already need not be sent or fetched to
// be compared.
//
// A phone gives every file the time of its arrival. A file that is still of the size and time that it had
// then is what was sent, byte for byte. The memory is a file a phone in the user's own folder
// (console::stateFolder), one line a file that was sent; it is nobody else's to read. Without it, or with a
// damaged line, nothing is known: no failure.
#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>

#include "host/output/text.h"

namespace ovno2::host {

// A file's content: its size in bytes and a 64-bit FNV-1a hash.
struct Content {
    std::uint64_t size = 0;
    std::uint64_t hash = 0;
    bool operator==(const Content&) const = default;
};
std::optional<Content> contentOf(const std::filesystem::path& file);  // none where it cannot be read

struct SentFile {
    Content sent;
    // As the phone has listed it afterwards.
    std::uint64_t phoneSize = 0;
    std::chrono::sys_seconds phoneTime;
};

class SentFiles {
  public:
    // A phone without a serial number is not remembered.
    explicit SentFiles(const Text& phoneSerial);

    const SentFile* find(const Text& phonePath) const;  // null = none
    void remember(const Text& phonePath, const SentFile& file);

  private:
    void load();
    void takeLine(const std::string& line);

    std::filesystem::path store_;     // empty = none
    std::map<Text, SentFile> files_;  // by path in lower case
};

}  // namespace ovno2::host
