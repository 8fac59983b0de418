#include "host/messages/conversations.h"

#include <algorithm>
#include <map>
#include <unordered_map>

#include "host/output/folding.h"

namespace ovno2::host {

namespace {

// Gives each address a number of its own, the same for all ways in which it is written.
class People {
  public:
    std::size_t numberOf(const Text& address) {
        std::vector<Person>& alike = byKey_[numberKey(address)];
        for (const Person& person : alike)
            if (sameNumber(person.address, address)) return person.number;
        alike.push_back({address, ++count_});
        return count_;
    }
    // Whoever is written to together, in whatever order they stand.
    std::vector<std::size_t> groupOf(const Message& message) {
        std::vector<std::size_t> group;
        for (const Text& address : message.addresses)
            group.push_back(numberOf(address));
        std::ranges::sort(group);
        group.erase(std::unique(group.begin(), group.end()), group.end());
        return group;
    }

  private:
    struct Person {
        Text address;
        std::size_t number;
    };
    std::unordered_map<Text, std::vector<Person>> byKey_;
    std::size_t count_ = 0;
};

const Text& latestTime(const Conversation& conversation) {
    return conversation.messages.back()->time;
}

}  // namespace

Text titleOf(TextView address, const NameBook& names) {
    Text name = names.nameOf(address);
    return name.empty() ? Text(address) : name;
}

std::vector<Conversation> conversationsOf(const std::vector<Message>& messages, const NameBook& names) {
    People people;
    std::map<std::vector<std::size_t>, Conversation> byPeople;
    for (const Message& message : messages) {
        Conversation& conversation = byPeople[people.groupOf(message)];
        if (conversation.messages.empty()) {
            conversation.addresses = message.addresses;
            for (const Text& address : message.addresses)
                conversation.title += (conversation.title.empty() ? u"" : u", ") + titleOf(address, names);
            if (conversation.title.empty()) conversation.title = u"(nobody)";
        }
        conversation.messages.push_back(&message);
    }
    std::vector<Conversation> all;
    all.reserve(byPeople.size());
    for (auto& [group, conversation] : byPeople) {
        std::ranges::stable_sort(conversation.messages, {}, &Message::time);
        all.push_back(std::move(conversation));
    }
    std::ranges::stable_sort(all, std::greater(), latestTime);
    return all;
}

std::vector<Conversation> conversationsWith(const std::vector<Conversation>& all, TextView wanted) {
    const Text name = folded(wanted);
    const auto chosen = [&](const auto& isMeant) {
        std::vector<Conversation> found;
        std::ranges::copy_if(all, std::back_inserter(found), isMeant);
        return found;
    };
    std::vector<Conversation> found = chosen([&](const Conversation& conversation) {
        return folded(conversation.title) == name ||
               std::ranges::any_of(conversation.addresses,
                                   [&](const Text& address) { return sameNumber(address, wanted); });
    });
    if (!found.empty()) return found;
    return chosen([&](const Conversation& conversation) {
        return folded(conversation.title).find(name) != Text::npos ||
               std::ranges::any_of(conversation.addresses, [&](const Text& address) {
                   return folded(address).find(name) != Text::npos;
               });
    });
}

bool holds(const Conversation& conversation, const Message& message, TextView wanted) {
    const Text text = folded(wanted);
    return folded(message.text).find(text) != Text::npos ||
           folded(conversation.title).find(text) != Text::npos ||
           std::ranges::any_of(message.addresses, [&](const Text& address) {
               return folded(address).find(text) != Text::npos || sameNumber(address, wanted);
           });
}

}  // namespace ovno2::host
