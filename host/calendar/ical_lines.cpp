#include "host/calendar/ical_lines.h"

#include <algorithm>

#include "host/calendar/recurrence_names.h"

namespace ovno2::host {

const ContentLine* FileComponent::find(std::string_view property) const {
    const auto found = std::ranges::find(lines, property, &ContentLine::name);
    return found == lines.end() ? nullptr : &*found;
}

FileTree readComponents(std::string_view bytes, std::string_view file, std::string_view charset) {
    constexpr std::size_t deepest = 8;
    FileTree tree;
    std::vector<FileComponent> open;
    std::size_t ignored = 0;  // how many components too deep
    bool isOutsideSaid = false, isDepthSaid = false;
    const auto problem = [&](std::size_t line, const std::string& what) {
        tree.problems.push_back(std::string(file) + ":" + std::to_string(line) + ": " + what);
    };
    const auto close = [&] {
        FileComponent done = std::move(open.back());
        open.pop_back();
        (open.empty() ? tree.components : open.back().parts).push_back(std::move(done));
    };
    ContentLineReader reader(bytes, std::string(charset));
    for (ContentLine line; reader.next(line);) {
        if (line.name == "BEGIN") {
            if (open.size() < deepest) {
                open.push_back(
                    {.name = upperCased(line.value), .line = line.number, .lines = {}, .parts = {}});
                continue;
            }
            ++ignored;
            if (!isDepthSaid) problem(line.number, "too deep inside other components");
            isDepthSaid = true;
        } else if (line.name == "END" && ignored > 0) {
            --ignored;
        } else if (line.name == "END") {
            const std::string name = upperCased(line.value);
            if (std::ranges::find(open, name, &FileComponent::name) == open.end()) {
                problem(line.number, "this ends \"" + line.value + "\", which has not begun");
                continue;
            }
            for (bool isSame = false; !isSame; close()) {
                isSame = open.back().name == name;
                if (!isSame)
                    problem(open.back().line, "the " + open.back().name + " that begins here has no end");
            }
        } else if (!open.empty() && ignored == 0) {
            open.back().lines.push_back(line);
        } else if (ignored == 0) {
            if (!isOutsideSaid) problem(line.number, "what stands here is in no calendar");
            isOutsideSaid = true;
        }
    }
    while (!open.empty()) {
        problem(open.back().line,
                "the file ends in the middle of the " + open.back().name + " that begins here");
        close();
    }
    return tree;
}

}  // namespace ovno2::host
