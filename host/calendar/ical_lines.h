// A calendar file's lines as the tree of components that its BEGIN and END lines make.
#pragma once

#include <string>
#include <vector>

#include "host/formats/content_lines.h"

namespace ovno2::host {

struct FileComponent {
    std::string name;      // "VEVENT", upper case
    std::size_t line = 0;  // of its BEGIN
    std::vector<ContentLine> lines;
    std::vector<FileComponent> parts;

    const ContentLine* find(std::string_view property) const;
};

struct FileTree {
    std::vector<FileComponent> components;
    std::vector<std::string> problems;  // "FILE:LINE: what"
};

// What is nested deeper than calendars ever are is left out, and said. Cost is linear in the file's size.
FileTree readComponents(std::string_view bytes, std::string_view file, std::string_view charset);

}  // namespace ovno2::host
