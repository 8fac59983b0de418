#include "host/messages/message.h"

#include <algorithm>
#include <span>

namespace ovno2::host {

namespace {

using Direction = Message::Direction;

// The folders that phones have from the start, by what their paths and names contain.
struct KnownFolder {
    TextView part;
    const char16_t* name;
    Direction direction;
};
constexpr KnownFolder knownFolders[] = {
    {u"inbox", u"Inbox", Direction::received},    {u"outbox", u"Outbox", Direction::waiting},
    {u"sent", u"Sent", Direction::sent},          {u"draft", u"Drafts", Direction::draft},
    {u"archive", u"Archive", Direction::unknown},
};

bool isNumber(TextView text) {
    return !text.empty() &&
           std::ranges::all_of(text, [](char16_t unit) { return unit >= u'0' && unit <= u'9'; });
}

bool isUid(TextView text) {
    return text.size() % 2 == 0 && std::ranges::all_of(text, [](char16_t unit) {
               return (unit >= u'0' && unit <= u'9') || (unit >= u'A' && unit <= u'F');
           });
}

// The name of a folder and its path, which both may hold the separator: a path ends with the name, or is it.
struct FolderParts {
    Text name, path;
};
FolderParts folderParts(std::span<const Text> parts) {
    for (std::size_t split = 1; split < parts.size(); ++split) {
        FolderParts folder{join(parts.first(split), u'|'), join(parts.subspan(split), u'|')};
        if (folder.path.ends_with(folder.name)) return folder;
    }
    return {parts.front(), join(parts.subspan(1), u'|')};
}

void takeFolder(Message& message, const FolderParts& folder) {
    message.folder = folder.name;
    const Text path = lowerCase(folder.path), name = lowerCase(folder.name);
    for (const KnownFolder& known : knownFolders) {
        const bool isPredefined = name == u"predef" + Text(known.part) || name == known.part ||
                                  path == known.part || path.ends_with(u"\\" + Text(known.part));
        if (!isPredefined) continue;
        message.direction = known.direction;
        message.folder = known.name;
    }
}

}  // namespace

std::optional<Message> messageOf(TextView line, DataStore store) {
    // Name, path, id, time, UID, addresses, text.
    constexpr std::size_t fewest = 7, firstPlaceOfId = 2;
    const std::vector<Text> parts = split(line, u'|');
    for (std::size_t id = firstPlaceOfId; id + (fewest - firstPlaceOfId) <= parts.size(); ++id) {
        if (!isNumber(parts[id]) || !isUid(parts[id + 2])) continue;
        const std::span<const Text> all(parts);
        Message message;
        message.store = store;
        takeFolder(message, folderParts(all.first(id)));
        message.folderId = parts[id];
        message.time = isoTime(parts[id + 1]);
        message.uid = parts[id + 2];
        message.addresses = split(parts[id + 3], u',');
        message.text = join(all.subspan(id + 4), u'|');
        return message;
    }
    return std::nullopt;
}

std::optional<Note> noteOf(TextView line) {
    const std::size_t end = line.find(u'|');
    if (end == TextView::npos) return std::nullopt;
    return Note{Text(line.substr(0, end)), Text(line.substr(end + 1))};
}

const char* nameOf(Direction direction) {
    switch (direction) {
        case Direction::received:
            return "received";
        case Direction::sent:
            return "sent";
        case Direction::waiting:
            return "waiting";
        case Direction::draft:
            return "draft";
        default:
            return "";
    }
}

}  // namespace ovno2::host
