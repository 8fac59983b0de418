// What files.json says about a phone's file system beside the files themselves.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "library/library_records.h"
#include "simulator/system/system.h"

namespace ovno2::simulator {

using library::Word;

struct Drive {
    std::optional<std::u16string> label;
    std::optional<std::u16string> memoryType;
    std::optional<std::uint64_t> capacity;  // bytes of all files on the drive
    std::optional<std::uint64_t> used;      // counted when it is first needed, kept up to date from then on
};

// Orders paths without regard to the case of ASCII letters, as the phone finds its entries.
struct IgnoringCase {
    bool operator()(std::string_view left, std::string_view right) const {
        return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                            [](char a, char b) { return upper(a) < upper(b); });
    }
    static char upper(char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    }
};

struct FileSettings {
    template <typename Value>
    using ByPath = std::map<std::string, Value, IgnoringCase>;  // path below `files`, "/" between its parts

    std::filesystem::path root;           // the image's `files`
    std::map<std::string, Drive> drives;  // by letter
    std::set<std::string, IgnoringCase> readOnly;
    ByPath<Word> attributes;
    ByPath<std::uint64_t> times;                       // file times, UTC
    std::set<std::string, IgnoringCase> emptyFolders;  // made when the image is read
    std::size_t nameLength = 255;                      // UTF-16 units

    // The image's folder and its files.json as this process last saw them; another process that changes the
    // phone's files changes one of the two.
    std::array<system::FileStamp, 2> seen;

    // What is said about `from` and all below it is said about `to` and below from now on. False when there
    // is nothing.
    bool rename(const std::string& from, const std::string& to);

    // Nothing is said about this entry any more. False when nothing was.
    bool forget(const std::string& path);
};

// `path` after `from` has become `to`: changed when it is `from` or lies below it.
std::string pathAfterRename(const std::string& path, const std::string& from, const std::string& to);

}  // namespace ovno2::simulator
