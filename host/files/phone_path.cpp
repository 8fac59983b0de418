#include "host/files/phone_path.h"

#include "host/output/command_output.h"
#include "host/output/exit_status.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

constexpr TextView separators = u"/\\";

void requirePart(const Text& part, const std::string& typed) {
    if (part == u"." || part == u"..")
        throw CommandFailure{
            wrongUsage,
            "\"" + typed + "\": a phone path goes down from a drive, without \"" + toUtf8(part) + "\"."};
    const std::size_t colon = part.find(u':');
    if (colon != Text::npos && colon + 1 != part.size())
        throw CommandFailure{wrongUsage,
                             "\"" + typed + "\": a drive and a folder have \"/\" between them, as in \"" +
                                 toUtf8(part.substr(0, colon + 1) + u"/" + part.substr(colon + 1)) + "\"."};
}

}  // namespace

std::vector<Text> partsOfPhonePath(const std::string& typed) {
    std::vector<Text> parts;
    const Text path = fromUtf8(typed);
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find_first_of(separators, begin), path.size());
        Text part = path.substr(begin, end - begin);
        begin = end + 1;
        if (part.empty() || (parts.empty() && part == u"root")) continue;
        requirePart(part, typed);
        parts.push_back(std::move(part));
    }
    return parts;
}

bool hasWildcard(TextView part) {
    return part.find_first_of(u"*?") != TextView::npos;
}

bool matchesWildcard(TextView pattern, TextView name) {
    const Text wanted = lowerCase(pattern);
    const Text given = lowerCase(name);
    std::size_t p = 0, n = 0;
    std::size_t star = Text::npos,
                retry = 0;  // the last "*", and where in the name what follows it is tried next
    while (n < given.size()) {
        if (p < wanted.size() && wanted[p] == u'*') {
            star = p++;
            retry = n;
        } else if (p < wanted.size() && (wanted[p] == u'?' || wanted[p] == given[n])) {
            ++p;
            ++n;
        } else if (star != Text::npos) {
            p = star + 1;
            n = ++retry;
        } else {
            return false;
        }
    }
    while (p < wanted.size() && wanted[p] == u'*')
        ++p;
    return p == wanted.size();
}

bool canStandInAPath(TextView name) {
    return !name.empty() && name != u"." && name != u".." && name.find_first_of(separators) == TextView::npos;
}

}  // namespace ovno2::host
