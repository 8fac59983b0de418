// Messages as JSON for programs, and as tables, talks and mail for people and their other programs.
#pragma once

#include <functional>
#include <string_view>

#include "host/messages/conversations.h"
#include "host/output/json.h"
#include "host/output/table.h"

namespace ovno2::host {

// The members of a message's and of a note's object.
void writeMessage(JsonLine& line, const Message& message, const NameBook& names);
void writeNote(JsonLine& line, const Note& note);

// An array with one object a message, one a line, in the phone's order; `write` gets it piece by piece. What
// is absent is left out. Always valid UTF-8.
void writeMessagesAsJson(const std::vector<Message>& messages, const NameBook& names,
                         const std::function<void(std::string_view)>& write);

// One row a conversation.
Table conversationsAsTable(const std::vector<Conversation>& conversations);

// A conversation as a talk: a line with its title, then each message with its time and who wrote it, none
// wider than `width` where words can be parted. With `uids` each message's UID stands with it. UTF-8.
std::string asTalk(const Conversation& conversation, std::size_t width, bool uids);

// The messages as the mails of an mbox file (RFC 4155 with quoted "From " lines), the oldest first; what is
// no part of a mail stands in headers of its own. UTF-8.
void writeMessagesAsMbox(const std::vector<Message>& messages, const NameBook& names,
                         const std::function<void(std::string_view)>& write);

// RFC 4180, one row a message: time, direction, folder, addresses, names, text, uid.
void writeMessagesAsCsv(const std::vector<Message>& messages, const NameBook& names,
                        const std::function<void(std::string_view)>& write);

}  // namespace ovno2::host
