#include "host/output/wrapping.h"

#include "host/output/display_width.h"

namespace ovno2::host {

std::vector<Text> wrapped(TextView text, std::size_t width) {
    std::vector<Text> lines;
    for (const Text& paragraph : split(text, u'\n')) {
        lines.emplace_back();
        for (const Text& word : split(singleLine(paragraph), u' ')) {
            Text& line = lines.back();
            if (!line.empty() && displayWidth(line) + 1 + displayWidth(word) > width)
                lines.push_back(word);
            else
                line.append(line.empty() ? u"" : u" ").append(word);
        }
    }
    return lines;
}

}  // namespace ovno2::host
