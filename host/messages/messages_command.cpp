// `ovphone messages` and its commands.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <memory>
#include <set>

#include "host/contacts/phone_book.h"
#include "host/messages/changes.h"
#include "host/messages/commands.h"
#include "host/messages/message_output.h"
#include "host/messages/message_store.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/output_file.h"

namespace ovno2::host {

namespace {

struct MessagesOptions {
    std::vector<std::string> words;  // whom, what, or which
    std::string recipients;
    std::string file;
    std::string form;  // of an export; empty = as the file's name ends
    bool force = false;
    bool dryRun = false;
    bool verbose = false;
};

constexpr std::size_t pageWidth = 120;  // where there is no terminal

std::size_t widthHere() {
    return console::outputIsTerminal() ? console::terminalWidth() : pageWidth;
}

std::string counted(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " message" : " messages");
}

std::string wordsOf(const MessagesOptions& wanted) {
    std::string text;
    for (const std::string& word : wanted.words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

// A phone's messages with the names that belong to them.
struct Mailroom {
    ItemList<Message> list;
    NameBook names;

    Mailroom(const AttachedPhones& phones, const ListedPhone& phone)
        : list(readMessages(phones, phone)), names(readNames(phones, phone)) {}
    std::vector<Conversation> conversations() const { return conversationsOf(list.items, names); }
};

void showTalks(const std::vector<Conversation>& conversations, const MessagesOptions& wanted) {
    for (std::size_t i = 0; i < conversations.size(); ++i)
        write((i == 0 ? "" : "\n\n") + asTalk(conversations[i], widthHere(), wanted.verbose));
}

std::vector<Message> messagesOf(const std::vector<Conversation>& conversations) {
    std::vector<Message> all;
    for (const Conversation& conversation : conversations)
        for (const Message* const message : conversation.messages)
            all.push_back(*message);
    return all;
}

void show(const Context& context, const MessagesOptions& wanted, const Mailroom& room,
          const std::vector<Conversation>& conversations) {
    if (context.asJson())
        writeMessagesAsJson(messagesOf(conversations), room.names, writeData);
    else
        showTalks(conversations, wanted);
}

// What is missing may be what was looked for.
[[noreturn]] void failWith(const Mailroom& room, const std::string& message) {
    note("ovphone: " + message);
    requireWhole(room.list.missing);
    throw CommandFailure{failed, {}};
}

void listMessages(const Context& context, const MessagesOptions&) {
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen();
    const Mailroom room(phones, phone);
    if (context.asJson())
        writeMessagesAsJson(room.list.items, room.names, writeData);
    else if (!room.list.items.empty())
        writeTable(conversationsAsTable(room.conversations()), pageWidth,
                   "\"ovphone messages show\" or --format json");
    else if (room.list.listed == 0 && room.list.missing.empty())
        note("The phone holds no messages.");
    requireWhole(room.list.missing);
}

void showMessages(const Context& context, const MessagesOptions& wanted) {
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen();
    const Mailroom room(phones, phone);
    std::vector<Conversation> chosen = room.conversations();
    if (!wanted.words.empty()) chosen = conversationsWith(chosen, fromUtf8(wordsOf(wanted)));
    if (chosen.empty() && !wanted.words.empty())
        failWith(room, "There are no messages with \"" + wordsOf(wanted) +
                           "\". \"ovphone messages find\" looks into their texts.");
    show(context, wanted, room, chosen);
    requireWhole(room.list.missing);
}

void findMessages(const Context& context, const MessagesOptions& wanted) {
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen();
    const Mailroom room(phones, phone);
    const Text text = fromUtf8(wordsOf(wanted));
    std::vector<Conversation> found;
    for (Conversation conversation : room.conversations()) {
        std::erase_if(conversation.messages,
                      [&](const Message* message) { return !holds(conversation, *message, text); });
        if (!conversation.messages.empty()) found.push_back(std::move(conversation));
    }
    if (found.empty()) failWith(room, "No message holds \"" + wordsOf(wanted) + "\".");
    show(context, wanted, room, found);
    requireWhole(room.list.missing);
}

// The numbers that the line names, each by itself or by the name of a contact with one mobile number.
std::vector<Text> recipientsOf(const AttachedPhones& phones, const ListedPhone& phone,
                               const std::string& typed) {
    const auto isNumber = [](const Text& text) {
        return !text.empty() && std::ranges::all_of(text, [](char16_t unit) {
            return (unit >= u'0' && unit <= u'9') || TextView(u"+-/(). *#").find(unit) != TextView::npos;
        });
    };
    std::vector<Text> recipients;
    std::optional<NameBook> names;
    for (const Text& part : split(replaceAll(fromUtf8(typed), u";", u","), u',')) {
        const Text recipient = trimBlanks(part);
        if (recipient.empty()) continue;
        if (isNumber(recipient)) {
            recipients.push_back(recipient);
            continue;
        }
        if (!names) names = readNames(phones, phone);
        const std::vector<Text> numbers = names->mobilesOf(recipient);
        if (numbers.size() != 1)
            throw CommandFailure{failed, "\"" + toUtf8(recipient) + "\" has " +
                                             (numbers.empty() ? "no" : std::to_string(numbers.size())) +
                                             " mobile numbers in the phone book; give the number."};
        recipients.push_back(numbers.front());
    }
    if (recipients.empty()) throw CommandFailure{wrongUsage, "Nobody is named to whom it is to go."};
    return recipients;
}

void sendMessage(const Context& context, const MessagesOptions& wanted) {
    const Text text = textFrom(wanted.words);
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen(Purpose::change);
    const std::vector<Text> recipients = recipientsOf(phones, phone, wanted.recipients);
    const std::string to = toUtf8(join(recipients, u','));
    ReportedItem sent{.title = "to " + to, .result = ReportedItem::Result::added};
    if (wanted.dryRun)
        return tellDone(context.asJson(), {&sent, 1}, wanted.dryRun,
                        "Would be put into the outbox of " + titleOf(phone) + ", to " + to + ".");
    std::set<Text> before;
    for (const Message& message : readMessages(phones, phone).items)
        before.insert(message.uid);
    std::optional<Message> arrived;
    tellFailure(context.asJson(), {&sent, 1}, [&] {
        carryOut(phones, phone, std::vector<DataChange>{[&](PhoneDriver& driver) {
                     return driver.writeMessage(phone, recipients, text);
                 }});
        for (const Message& message : readMessages(phones, phone).items)
            if (!arrived && !before.contains(message.uid) && message.addresses == recipients)
                arrived = message;
        if (!arrived)
            throw CommandFailure{failed, titleOf(phone) +
                                             " took the message, but it is not among its messages now. See "
                                             "on the phone whether it has been sent already."};
    });
    sent.uid = arrived->uid;
    tellDone(context.asJson(), {&sent, 1}, wanted.dryRun,
             "The message to " + to + " lies in the folder " + toUtf8(arrived->folder) + " of " +
                 titleOf(phone) + ". The phone decides when it is sent.");
}

void removeMessages(const Context& context, const MessagesOptions& wanted) {
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen(Purpose::change);
    const ItemList<Message> list = readMessages(phones, phone);
    std::vector<Text> uids;
    uids.reserve(list.items.size());
    for (const Message& message : list.items)
        uids.push_back(message.uid);
    // A session deletes from one folder.
    std::map<std::pair<DataStore, Text>, std::set<Text>> byFolder;
    std::vector<ReportedItem> removed;
    for (const std::string& word : wanted.words) {
        const Message& message = list.items[placeOf(uids, word, "message")];
        if (byFolder[{message.store, message.folderId}].insert(message.uid).second)
            removed.push_back({.title = beginOf(message.text),
                               .result = ReportedItem::Result::removed,
                               .uid = message.uid});
    }
    if (wanted.dryRun)
        return tellDone(context.asJson(), removed, wanted.dryRun,
                        counted(removed.size()) + " would be deleted from " + titleOf(phone) + ".");
    for (const auto& [folder, inIt] : byFolder) {
        std::vector<DataChange> changes;
        changes.reserve(inIt.size());
        for (const Text& uid : inIt)
            changes.emplace_back([&phone, &place = folder, &uid](PhoneDriver& driver) {
                return driver.deleteMessage(phone, place.first, place.second, uid);
            });
        tellFailure(context.asJson(), removed, [&] { carryOut(phones, phone, changes); });
    }
    uids.clear();
    for (const Message& message : readMessages(phones, phone).items)
        uids.push_back(message.uid);
    const std::size_t staying = failThoseStillThere(removed, uids);
    tellDone(context.asJson(), removed, wanted.dryRun,
             counted(removed.size() - staying) + " deleted from " + titleOf(phone) + ".");
    if (staying != 0) throw CommandFailure{failed, counted(staying) + " still there."};
}

using Export = void (*)(const Mailroom&, const MessagesOptions&, OutputFile&);
struct ExportForm {
    const char* name;
    const char* ending;
    Export write;
};
constexpr ExportForm exportForms[] = {
    {"mbox", ".mbox",
     [](const Mailroom& room, const MessagesOptions&, OutputFile& file) {
         writeMessagesAsMbox(room.list.items, room.names, [&](std::string_view piece) { file.write(piece); });
     }},
    {"json", ".json",
     [](const Mailroom& room, const MessagesOptions&, OutputFile& file) {
         writeMessagesAsJson(room.list.items, room.names, [&](std::string_view piece) { file.write(piece); });
     }},
    {"csv", ".csv",
     [](const Mailroom& room, const MessagesOptions&, OutputFile& file) {
         writeMessagesAsCsv(room.list.items, room.names, [&](std::string_view piece) { file.write(piece); });
     }},
    {"text", ".txt",
     [](const Mailroom& room, const MessagesOptions& wanted, OutputFile& file) {
         for (const Conversation& conversation : room.conversations())
             file.write(asTalk(conversation, pageWidth, wanted.verbose) + "\n\n");
     }},
};

const ExportForm& formOf(const MessagesOptions& wanted) {
    for (const ExportForm& form : exportForms)
        if (wanted.form.empty() ? wanted.file.ends_with(form.ending) : wanted.form == form.name) return form;
    throw CommandFailure{
        wrongUsage, "\"" + wanted.file + "\": say with --as what is to be written: mbox, json, csv or text."};
}

void exportMessages(const Context& context, const MessagesOptions& wanted) {
    const ExportForm& form = formOf(wanted);
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen();
    OutputFile file(wanted.file, wanted.force);
    Mailroom room(phones, phone);
    readAgain(phones, phone, room.list);
    form.write(room, wanted, file);
    file.finish();
    remark(std::to_string(room.list.items.size()) + " of " + counted(room.list.listed) + " of " +
           titleOf(phone) + " written. " + room.list.remark);
    requireWhole(room.list.missing);
}

}  // namespace

void registerMessages(CLI::App& app, Context& context) {
    using Action = void (*)(const Context&, const MessagesOptions&);
    const auto options = std::make_shared<MessagesOptions>();
    const auto running = [&context, options](Action action) {
        return [&context, options, action] { action(context, *options); };
    };
    CLI::App& messages = addCommand(app, "messages", "Show the messages of a phone, or write and delete some",
                                    context, running(listMessages));
    messages.require_subcommand(0, 1);
    addPhoneCommandOptions(messages, context);
    messages.footer(R"(Examples:
  ovphone messages                               a line for everyone that messages are with
  ovphone messages show Anna                     what was written to and by somebody
  ovphone messages export messages.mbox          everything, for a mail program)");
    const auto add = [&](const char* name, const char* description, Action action,
                         const char* examples) -> CLI::App& {
        CLI::App& command = addCommand(messages, name, description, context, running(action));
        addPhoneCommandOptions(command, context);
        command.footer(std::string("Examples:\n") + examples);
        return command;
    };
    const auto verbose = [&](CLI::App& command) {
        command.add_flag("-v,--verbose", options->verbose, "with the messages' ids");
    };
    const auto dryRun = [&](CLI::App& command) {
        command.add_flag("-n,--dry-run", options->dryRun, "only say what would be done");
    };
    add("list", "Show a line for everyone that messages are with", listMessages, "  ovphone messages list");
    CLI::App& show = add("show", "Show what was written to and by somebody, or everyone", showMessages,
                         R"(  ovphone messages show Anna Müller
  ovphone messages show 0171 3920001             however numbers are written
  ovphone messages show > messages.txt           everything)");
    show.add_option("WHO", options->words, "a name, a number or a part of one (default: everyone)")
        ->type_name("");
    verbose(show);
    CLI::App& find = add("find", "Find messages by their text or by whom they are with", findMessages,
                         "  ovphone messages find train            case and accents do not matter");
    find.add_option("TEXT", options->words, "a part of what they hold")->type_name("")->required();
    verbose(find);
    CLI::App& send = add("send", "Put a message into the phone's outbox; the phone decides when it is sent",
                         sendMessage, R"(  ovphone messages send "+49 171 3920001" See you at six
  ovphone messages send Anna,0170555 - < text    to two people, the text from a file)");
    send.add_option("TO", options->recipients, "numbers or names, divided by \",\"")
        ->type_name("")
        ->required();
    send.add_option("TEXT", options->words, "the text; - is standard input")->type_name("")->required();
    dryRun(send);
    CLI::App& remove = add("remove", "Delete messages from the phone", removeMessages,
                           "  ovphone messages remove 0A12 0A13      \"messages show -v\" shows the ids");
    remove.add_option("ID", options->words, "the messages' ids, or as much of one as no other has")
        ->type_name("")
        ->required();
    dryRun(remove);
    CLI::App& exported = add("export", "Write all messages to a file", exportMessages,
                             R"(  ovphone messages export messages.mbox          for mail programs
  ovphone messages export messages.csv           for spreadsheets
  ovphone messages export - --as json | less     for programs)");
    exported.add_option("FILE", options->file, "the file, or - for standard output")
        ->type_name("")
        ->required();
    exported.add_option("--as", options->form, "what the file is to be (default: as its name ends)")
        ->type_name("mbox|json|csv|text")
        ->check(CLI::IsMember({"mbox", "json", "csv", "text"}).description(""));
    exported.add_flag("-f,--force", options->force, "overwrite a file that is there");
    verbose(exported);
}

}  // namespace ovno2::host
