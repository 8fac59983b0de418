#include "host/archive/manifest.h"

#include <algorithm>

#include "host/archive/archive_names.h"
#include "host/output/console.h"
#include "host/output/display_width.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t hexLength = 64;

// Names with a line break or a backslash are written with escapes, and the line begins with a backslash.
constexpr std::pair<char, char> escapes[] = {{'\\', '\\'}, {'\n', 'n'}, {'\r', 'r'}};

std::string escaped(const std::string& path) {
    std::string text;
    for (const char c : path) {
        const auto* const found = std::ranges::find(escapes, c, &std::pair<char, char>::first);
        if (found == std::end(escapes))
            text.push_back(c);
        else
            text.append({'\\', found->second});
    }
    return text;
}

std::string unescaped(std::string_view text) {
    std::string path;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto* const found =
            text[i] != '\\' || i + 1 == text.size()
                ? std::end(escapes)
                : std::ranges::find(escapes, text[i + 1], &std::pair<char, char>::second);
        if (found == std::end(escapes)) {
            path.push_back(text[i]);
        } else {
            path.push_back(found->first);
            ++i;
        }
    }
    return path;
}

// What is wrong with a line; empty when it was taken.
std::string takeLine(std::string_view line, Manifest& manifest) {
    const bool isEscaped = line.starts_with('\\');
    if (isEscaped) line.remove_prefix(1);
    const std::optional<Digest> digest = digestFromHex(line.substr(0, hexLength));
    // Two blanks, or one and a "*" of binary reading.
    const std::string_view between = digest ? line.substr(hexLength, 2) : std::string_view();
    if (between != "  " && between != " *") return "this is no line of a manifest.";
    const std::string_view name = line.substr(hexLength + 2);
    std::string path = isEscaped ? unescaped(name) : std::string(name);
    while (path.starts_with("./"))
        path.erase(0, 2);
    if (!staysInside(path))
        return "\"" + forPerson(path) + "\" leads out of the archive, or names no file; it is not looked at.";
    const auto [known, isNew] = manifest.files.emplace(path, *digest);
    if (!isNew && known->second != *digest) return "\"" + forPerson(path) + "\" stands there twice.";
    return {};
}

}  // namespace

bool staysInside(const std::string& path) {
    const fs::path whole = console::pathOf(path);
    if (path.empty() || path.find('\0') != std::string::npos || whole.has_root_path()) return false;
    return std::ranges::none_of(whole, [](const fs::path& part) {
        return part.empty() || part == fs::path(".") || part == fs::path("..");
    });
}

Manifest readManifest(std::string_view text) {
    Manifest manifest;
    std::size_t number = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        ++number;
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.empty()) continue;
        if (const std::string wrong = takeLine(line, manifest); !wrong.empty())
            manifest.problems.push_back(std::string(archive::manifest) + ":" + std::to_string(number) + ": " +
                                        wrong);
    }
    return manifest;
}

std::string manifestLine(const std::string& path, const Digest& digest) {
    const std::string name = escaped(path);
    return (name == path ? "" : "\\") + hexOf(digest) + "  " + name + "\n";
}

}  // namespace ovno2::host
