// Messages in the order in which people read them: by whom they are with, then by time.
#pragma once

#include <vector>

#include "host/messages/message.h"
#include "host/messages/phone_number.h"

namespace ovno2::host {

struct Conversation {
    std::vector<Text> addresses;           // of the others, as the first message writes them
    Text title;                            // their names, or the addresses; "(nobody)" without any
    std::vector<const Message*> messages;  // the oldest first; those without a time before all others
};

// The one with the latest message first. `messages` must outlive the result.
std::vector<Conversation> conversationsOf(const std::vector<Message>& messages, const NameBook& names);

// The name, or the address where it is nobody's.
Text titleOf(TextView address, const NameBook& names);

// Those with somebody whose name or number is `wanted`, else holds it.
std::vector<Conversation> conversationsWith(const std::vector<Conversation>& all, TextView wanted);

// True when the message's text, or a name or number of its conversation, holds `wanted`; letter case and
// accents do not count.
bool holds(const Conversation& conversation, const Message& message, TextView wanted);

}  // namespace ovno2::host
