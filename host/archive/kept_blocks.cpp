#include "host/archive/kept_blocks.h"

#include <algorithm>

#include "host/formats/sha256.h"

namespace ovno2::host {

namespace {

std::string keyOf(std::string_view block) {
    const Digest digest = digestOf(block);
    return {digest.begin(), digest.end()};
}

// The next line with its break; it goes from `rest`.
std::string_view takeLine(std::string_view& rest) {
    const std::size_t end = std::min(rest.find('\n'), rest.size() - 1) + 1;
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end);
    return line;
}

std::string_view withoutBreak(std::string_view line) {
    while (line.ends_with('\n') || line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

bool isMark(std::string_view line, std::string_view mark, std::string_view kind) {
    return line.starts_with(mark) && withoutBreak(line.substr(mark.size())) == kind;
}

}  // namespace

std::vector<std::string_view> blocksOf(std::string_view text, std::span<const std::string_view> kinds) {
    std::vector<std::string_view> blocks;
    const char* begin = nullptr;
    std::string_view kind;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view line = takeLine(rest);
        if (!begin) {
            const auto known = std::ranges::find_if(
                kinds, [&](std::string_view one) { return isMark(line, "BEGIN:", one); });
            if (known == kinds.end()) continue;
            begin = line.data();
            kind = *known;
        } else if (isMark(line, "END:", kind)) {
            blocks.emplace_back(begin, static_cast<std::size_t>(line.data() + line.size() - begin));
            begin = nullptr;
        }
    }
    return blocks;
}

std::string_view lineOf(std::string_view block, std::string_view property) {
    for (std::string_view rest = block; !rest.empty();) {
        const std::string_view line = withoutBreak(takeLine(rest));
        if (line.starts_with(property) && line.size() > property.size() &&
            (line[property.size()] == ':' || line[property.size()] == ';'))
            return line;
    }
    return {};
}

void PresentBlocks::add(std::string_view block) {
    blocks_.insert(keyOf(block));
    if (const std::string_view uid = lineOf(block, "UID"); !uid.empty()) uids_.emplace(uid);
}

bool PresentBlocks::holds(std::string_view block) const {
    return blocks_.contains(keyOf(block));
}

bool PresentBlocks::holdsUidOf(std::string_view block) const {
    return uids_.contains(std::string(lineOf(block, "UID")));
}

KeptBlocks keptBlocks(std::span<const std::string_view> before, std::span<const std::string_view> goneBefore,
                      const PresentBlocks& now, bool isWhole) {
    KeptBlocks kept;
    std::unordered_set<std::string_view> known(goneBefore.begin(), goneBefore.end());
    kept.gone.assign(goneBefore.begin(), goneBefore.end());
    for (const std::string_view block : before) {
        if (now.holds(block)) continue;
        if (!isWhole && !now.holdsUidOf(block)) {
            kept.stays.push_back(block);
        } else if (known.insert(block).second) {
            kept.gone.push_back(block);
            ++kept.newlyGone;
        }
    }
    return kept;
}

}  // namespace ovno2::host
