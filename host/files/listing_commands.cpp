// `ovphone files ls` and `tree`
#include <algorithm>

#include "host/files/files_output.h"
#include "host/files/files_session.h"
#include "host/output/command_output.h"

namespace ovno2::host {

namespace {

std::vector<std::string> pathsOf(const FilesSession& session) {
    return session.wanted().paths.empty() ? std::vector<std::string>{"/"} : session.wanted().paths;
}

}  // namespace

void listFiles(FilesSession& session) {
    const PhoneFiles& phone = session.phone();
    const std::vector<PhoneEntry> tops = session.meant(pathsOf(session));
    const bool goesIn = tops.size() == 1 && tops[0].isFolder;
    std::vector<PhoneEntry> all;
    for (const PhoneEntry& top : tops) {
        if (!goesIn) all.push_back(top);
        if (!top.isFolder || (!goesIn && !session.wanted().recursive)) continue;
        session.each(toUtf8(top.path), [&] {
            if (session.wanted().recursive)
                phone.walk(top, [&](const PhoneEntry& below, std::size_t, bool) { all.push_back(below); });
            else
                std::ranges::move(phone.listForReading(top.path), std::back_inserter(all));
        });
    }
    if (session.asJson())
        write(entriesAsJson(all));
    else if (!all.empty())
        writeTable(entriesAsTable(all, goesIn ? tops[0].path : Text(), /*wholePaths=*/!goesIn));
    else if (session.report().results().empty())
        note("The folder is empty.");
}

void drawTree(FilesSession& session) {
    std::vector<std::string> trees;
    for (const PhoneEntry& top : session.meant(pathsOf(session)))
        session.each(toUtf8(top.path), [&] {
            trees.push_back(session.asJson() ? treeAsJson(session.phone(), top)
                                             : treeAsText(session.phone(), top));
        });
    const bool isArray = session.asJson() && trees.size() != 1;
    std::string text = isArray ? "[\n" : "";
    for (std::size_t i = 0; i < trees.size(); ++i)
        text += (i == 0 ? "" : isArray ? ",\n" : "\n") + trees[i];
    write(text + (isArray ? "]\n" : ""));
}

}  // namespace ovno2::host
