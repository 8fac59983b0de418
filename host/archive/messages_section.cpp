// The messages of an archive: all in one file, and each conversation as a text.
#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "host/archive/archive_names.h"
#include "host/archive/archive_run.h"
#include "host/archive/json_reading.h"
#include "host/archive/saved_items.h"
#include "host/files/local_name.h"
#include "host/messages/message_output.h"
#include "host/messages/message_store.h"
#include "host/output/console.h"

namespace ovno2::host {

namespace {

constexpr const char* section = "messages";

class MessagesSection {
  public:
    MessagesSection(ArchiveRun& run, SectionReport& report, std::vector<SavedMessage> before)
        : run_(run), report_(report), before_(std::move(before)) {}

    void write(const ItemList<Message>& list) {
        std::unordered_set<std::string> present, uids;
        for (const Message& message : list.items) {
            present.insert(identityOf(message));
            uids.insert(toUtf8(message.uid));
        }
        std::erase_if(before_,
                      [&](const SavedMessage& saved) { return present.contains(identityOf(saved.message)); });
        for (SavedMessage& saved : before_) {
            if (!saved.goneSince.empty()) continue;
            // A phone that did not hand out everything may have it still.
            if (!list.missing.empty() && !uids.contains(toUtf8(saved.message.uid))) continue;
            saved.goneSince = run_.startedText();
            ++report_.newlyGone;
        }
        std::vector<Message> all = list.items;
        all.reserve(list.items.size() + before_.size());
        for (const SavedMessage& saved : before_)
            all.push_back(saved.message);
        const std::vector<Conversation> conversations = conversationsOf(all, *run_.names);
        writeList(all, list.items.size(), conversations);
        writeConversations(conversations);
        report_.count = all.size();
        report_.gone = static_cast<std::size_t>(std::ranges::count_if(
            before_, [](const SavedMessage& saved) { return !saved.goneSince.empty(); }));
        for (const Message& message : list.items)
            run_.looseCharacters(section, titleOf(message), toUtf8(message.text));
    }

  private:
    std::string titleOf(const Message& message) const {
        const Text who = message.addresses.empty() ? message.folder
                                                   : host::titleOf(message.addresses.front(), *run_.names);
        return toUtf8(message.time + (message.time.empty() ? u"" : u" ") + who);
    }

    // The archive's own file and the page's, which also knows the conversations. Both have those first that
    // the phone has.
    void writeList(const std::vector<Message>& all, std::size_t present,
                   const std::vector<Conversation>& conversations) {
        std::vector<std::uint64_t> conversationOf(all.size());
        for (std::size_t i = 0; i < conversations.size(); ++i)
            for (const Message* const message : conversations[i].messages)
                conversationOf[static_cast<std::size_t>(message - all.data())] = i + 1;
        ArchiveOutput output(run_.folder, archive::messageList);
        JsonLines lines([&](std::string_view piece) { output.write(piece); });
        PageArray page(run_.folder, section);
        const auto add = [&](JsonLine& line, std::size_t i, bool isForPage) {
            line.StartObject();
            // The names of those that are gone may be gone, too.
            if (i >= present)
                writeMembers(line, before_[i - present].line);
            else
                writeMessage(line, all[i], *run_.names);
            if (isForPage) line.member("conversation", conversationOf[i]);
            if (i >= present && !before_[i - present].goneSince.empty())
                writeGone(line, before_[i - present].goneSince);
            line.EndObject();
        };
        for (std::size_t i = 0; i < all.size(); ++i) {
            add(lines.next(), i, /*isForPage=*/false);
            add(page.next(), i, /*isForPage=*/true);
        }
        lines.end();
        output.finish();
        page.finish();
    }

    void writeConversations(const std::vector<Conversation>& conversations) {
        constexpr std::size_t width = 100;
        LocalNames names;
        // From the oldest on, so that a new one takes no other's name.
        for (auto one = conversations.rbegin(); one != conversations.rend(); ++one) {
            const std::string name = toUtf8(names.give(one->title + u".txt"));
            run_.folder.put(std::string(archive::conversations) + "/" + name,
                            asTalk(*one, width, /*uids=*/false));
        }
        // They are made of the list, which has it all.
        for (const std::string& path : run_.folder.untouchedBelow(archive::conversations))
            run_.folder.remove(path);
    }

    ArchiveRun& run_;
    SectionReport& report_;
    std::vector<SavedMessage> before_;  // those that the phone did not hand out now
};

}  // namespace

void archiveMessages(ArchiveRun& run, SectionReport& report) {
    const std::optional<ItemList<Message>> list = run.readingTwice(report, [&] {
        if (!run.names) run.names = readNames(run.phones, run.phone);
        return readMessages(run.phones, run.phone);
    });
    if (!list) return;
    std::vector<SavedMessage> before;
    try {
        if (const std::optional<std::string> text = run.folder.read(archive::messageList))
            before = readSavedMessages(*text, console::textOf(run.folder.placeOf(archive::messageList)));
    } catch (const CommandFailure& failure) {
        return report.fail(failure.message);
    }
    report.arrived(list->items.size(), list->listed, list->missing);
    MessagesSection(run, report, std::move(before)).write(*list);
}

}  // namespace ovno2::host
