// `ovphone notes` and its commands.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <set>

#include "host/driver/result_messages.h"
#include "host/formats/csv.h"
#include "host/messages/changes.h"
#include "host/messages/commands.h"
#include "host/messages/message_output.h"
#include "host/messages/message_store.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/folding.h"
#include "host/output/json.h"
#include "host/output/output_file.h"
#include "host/output/table.h"

namespace ovno2::host {

namespace {

struct NotesOptions {
    std::vector<std::string> words;  // ids or what to look for
    std::string id;
    std::string file;
    std::string form;  // of an export; empty = as the file's name ends
    bool force = false;
    bool dryRun = false;
};

constexpr std::size_t pageWidth = 120;  // where there is no terminal

using Write = std::function<void(std::string_view)>;

std::string counted(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " note" : " notes");
}

// Which notes are meant: those whose text holds the words, or the one whose id they are.
std::vector<Note> meant(const std::vector<Note>& notes, const std::vector<std::string>& words) {
    if (words.empty()) return notes;
    std::string wanted;
    for (const std::string& word : words)
        wanted += (wanted.empty() ? "" : " ") + word;
    const Text id = upperCase(fromUtf8(wanted)), text = folded(fromUtf8(wanted));
    std::vector<Note> found;
    std::ranges::copy_if(notes, std::back_inserter(found), [&](const Note& note) {
        return note.uid == id || folded(note.text).find(text) != Text::npos;
    });
    if (found.empty()) throw CommandFailure{failed, "No note holds \"" + wanted + "\"."};
    return found;
}

void writeAsJson(const std::vector<Note>& notes, const Write& write) {
    JsonLines lines(write);
    for (const Note& note : notes) {
        JsonLine& line = lines.next();
        line.StartObject();
        writeNote(line, note);
        line.EndObject();
    }
    lines.end();
}

void writeAsCsv(const std::vector<Note>& notes, const Write& write) {
    std::string text;
    addCsvRecord(text, {"text", "uid"});
    for (const Note& note : notes)
        addCsvRecord(text, {toUtf8(note.text), toUtf8(note.uid)});
    write(text);
}

// Each under a line with its id.
void writeAsText(const std::vector<Note>& notes, const Write& write) {
    for (std::size_t i = 0; i < notes.size(); ++i)
        write((i == 0 ? "[" : "\n[") + toUtf8(notes[i].uid) + "]\n" + toUtf8(notes[i].text) + "\n");
}

void listNotes(const Context& context, const NotesOptions&) {
    const AttachedPhones phones(context);
    const ItemList<Note> list = readNotes(phones, phones.chosen());
    if (context.asJson()) {
        writeAsJson(list.items, writeData);
    } else if (!list.items.empty()) {
        Table table({u"Id", u"Text"});
        for (const Note& note : list.items)
            table.addRow({note.uid, note.text});
        writeTable(table, pageWidth, "\"ovphone notes show\" or --format json");
    } else if (list.missing.empty()) {
        note("The phone holds no notes.");
    }
    requireWhole(list.missing);
}

void showNotes(const Context& context, const NotesOptions& wanted) {
    const AttachedPhones phones(context);
    const ItemList<Note> list = readNotes(phones, phones.chosen());
    try {
        const std::vector<Note> chosen = meant(list.items, wanted.words);
        if (context.asJson())
            writeAsJson(chosen, writeData);
        else
            writeAsText(chosen, [](std::string_view text) { write(text); });
    } catch (const CommandFailure& failure) {
        note("ovphone: " + failure.message);
        requireWhole(list.missing);
        throw CommandFailure{failed, {}};
    }
    requireWhole(list.missing);
}

std::vector<Text> uidsOf(const std::vector<Note>& notes) {
    std::vector<Text> uids;
    uids.reserve(notes.size());
    for (const Note& note : notes)
        uids.push_back(note.uid);
    return uids;
}

// Line ends reach the phone as it writes them itself.
Text noteText(const NotesOptions& wanted) {
    return replaceAll(textFrom(wanted.words), u"\r\n", u"\n");
}

bool isThere(const std::vector<Note>& notes, const Text& text, const std::set<Text>& before) {
    const auto plain = [](const Text& raw) { return replaceAll(replaceAll(raw, u"\r", u""), u"\t", u" "); };
    return std::ranges::any_of(notes, [&](const Note& note) {
        return !before.contains(note.uid) && plain(note.text) == plain(text);
    });
}

void writeNote(const AttachedPhones& phones, const ListedPhone& phone, const Text& uid, const Text& text,
               const std::set<Text>& others) {
    carryOut(phones, phone, std::vector<DataChange>{[&](PhoneDriver& driver) {
                 return driver.writeNote(phone, uid, text);
             }});
    if (!isThere(readNotes(phones, phone).items, text, others))
        throw CommandFailure{failed, titleOf(phone) +
                                         " took the note, but has it otherwise now. See what \"ovphone notes "
                                         "show\" shows."};
}

void addNote(const Context& context, const NotesOptions& wanted) {
    const Text text = noteText(wanted);
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen(Purpose::change);
    ReportedItem added{.title = beginOf(text), .result = ReportedItem::Result::added};
    if (wanted.dryRun)
        return tellDone(context.asJson(), {&added, 1}, wanted.dryRun,
                        "A note of " + std::to_string(text.size()) + " characters would be added to " +
                            titleOf(phone) + ".");
    const std::vector<Text> uids = uidsOf(readNotes(phones, phone).items);
    tellFailure(context.asJson(), {&added, 1}, [&] {
        writeNote(phones, phone, /*uid=*/{}, text, std::set<Text>(uids.begin(), uids.end()));
    });
    tellDone(context.asJson(), {&added, 1}, wanted.dryRun, "1 note added to " + titleOf(phone) + ".");
}

void editNote(const Context& context, const NotesOptions& wanted) {
    const Text text = noteText(wanted);
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen(Purpose::change);
    const std::vector<Text> uids = uidsOf(readNotes(phones, phone).items);
    const Text& uid = uids[placeOf(uids, wanted.id, "note")];
    ReportedItem changed{
        .title = beginOf(text), .result = ReportedItem::Result::changed, .uid = uid, .fields = "text"};
    if (wanted.dryRun)
        return tellDone(context.asJson(), {&changed, 1}, wanted.dryRun,
                        "The note " + toUtf8(uid) + " of " + titleOf(phone) + " would be changed.");
    std::set<Text> others(uids.begin(), uids.end());
    others.erase(uid);
    tellFailure(context.asJson(), {&changed, 1}, [&] { writeNote(phones, phone, uid, text, others); });
    tellDone(context.asJson(), {&changed, 1}, wanted.dryRun, "1 note changed on " + titleOf(phone) + ".");
}

void removeNotes(const Context& context, const NotesOptions& wanted) {
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen(Purpose::change);
    const std::vector<Note> notes = readNotes(phones, phone).items;
    const std::vector<Text> uids = uidsOf(notes);
    std::set<Text> chosen;
    std::vector<ReportedItem> removed;
    for (const std::string& word : wanted.words) {
        const Note& one = notes[placeOf(uids, word, "note")];
        if (chosen.insert(one.uid).second)
            removed.push_back(
                {.title = beginOf(one.text), .result = ReportedItem::Result::removed, .uid = one.uid});
    }
    if (wanted.dryRun)
        return tellDone(context.asJson(), removed, wanted.dryRun,
                        counted(chosen.size()) + " would be deleted from " + titleOf(phone) + ".");
    std::vector<DataChange> changes;
    changes.reserve(chosen.size());
    for (const Text& uid : chosen)
        changes.emplace_back([&phone, &uid](PhoneDriver& driver) { return driver.deleteNote(phone, uid); });
    tellFailure(context.asJson(), removed, [&] { carryOut(phones, phone, changes); });
    const std::vector<Text> now = uidsOf(readNotes(phones, phone).items);
    const std::size_t staying = failThoseStillThere(removed, now);
    tellDone(context.asJson(), removed, wanted.dryRun,
             counted(chosen.size() - staying) + " deleted from " + titleOf(phone) + ".");
    if (staying != 0) throw CommandFailure{failed, counted(staying) + " still there."};
}

struct ExportForm {
    const char* name;
    const char* ending;
    void (*write)(const std::vector<Note>&, const Write&);
};
constexpr ExportForm exportForms[] = {
    {"json", ".json", writeAsJson}, {"csv", ".csv", writeAsCsv}, {"text", ".txt", writeAsText}};

void exportNotes(const Context& context, const NotesOptions& wanted) {
    const auto form = std::ranges::find_if(exportForms, [&](const ExportForm& one) {
        return wanted.form.empty() ? wanted.file.ends_with(one.ending) : wanted.form == one.name;
    });
    if (form == std::end(exportForms))
        throw CommandFailure{
            wrongUsage, "\"" + wanted.file + "\": say with --as what is to be written: json, csv or text."};
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen();
    OutputFile file(wanted.file, wanted.force);
    ItemList<Note> list = readNotes(phones, phone);
    readAgain(phones, phone, list);
    form->write(list.items, [&](std::string_view piece) { file.write(piece); });
    file.finish();
    remark(std::to_string(list.items.size()) + " of " + counted(list.listed) + " of " + titleOf(phone) +
           " written.");
    requireWhole(list.missing);
}

}  // namespace

void registerNotes(CLI::App& app, Context& context) {
    using Action = void (*)(const Context&, const NotesOptions&);
    const auto options = std::make_shared<NotesOptions>();
    const auto running = [&context, options](Action action) {
        return [&context, options, action] { action(context, *options); };
    };
    CLI::App& notes = addCommand(app, "notes", "Show the notes of a phone, or write and delete some", context,
                                 running(listNotes));
    notes.require_subcommand(0, 1);
    addPhoneCommandOptions(notes, context);
    notes.footer(R"(Examples:
  ovphone notes                         a line a note, with its id
  ovphone notes show shopping           those that hold a word, in full
  ovphone notes add Milk, bread         a new note)");
    const auto add = [&](const char* name, const char* description, Action action,
                         const char* examples) -> CLI::App& {
        CLI::App& command = addCommand(notes, name, description, context, running(action));
        addPhoneCommandOptions(command, context);
        command.footer(std::string("Examples:\n") + examples);
        return command;
    };
    const auto dryRun = [&](CLI::App& command) {
        command.add_flag("-n,--dry-run", options->dryRun, "only say what would be done");
    };
    const auto takesText = [&](CLI::App& command) {
        command.add_option("TEXT", options->words, "the text; - is standard input")
            ->type_name("")
            ->required();
        dryRun(command);
    };
    add("list", "Show a line a note", listNotes, "  ovphone notes list");
    add("show", "Show notes in full", showNotes, "  ovphone notes show > notes.txt        all of them")
        .add_option("WHAT", options->words, "an id, or what a note holds (default: all)")
        ->type_name("");
    takesText(
        add("add", "Add a note", addNote, "  ovphone notes add - < list.txt        its text from a file"));
    CLI::App& edit =
        add("edit", "Give a note another text", editNote, "  ovphone notes edit 0A12 Milk, bread, tea");
    edit.add_option("ID", options->id, "the note's id, or as much of it as no other has")
        ->type_name("")
        ->required();
    takesText(edit);
    CLI::App& remove =
        add("remove", "Delete notes from the phone", removeNotes, "  ovphone notes remove 0A12 0A13");
    remove.add_option("ID", options->words, "the notes' ids, or as much of one as no other has")
        ->type_name("")
        ->required();
    dryRun(remove);
    CLI::App& exported = add("export", "Write all notes to a file", exportNotes,
                             R"(  ovphone notes export notes.txt
  ovphone notes export - --as json      for programs)");
    exported.add_option("FILE", options->file, "the file, or - for standard output")
        ->type_name("")
        ->required();
    exported.add_option("--as", options->form, "what the file is to be (default: as its name ends)")
        ->type_name("json|csv|text")
        ->check(CLI::IsMember({"json", "csv", "text"}).description(""));
    exported.add_flag("-f,--force", options->force, "overwrite a file that is there");
}

}  // namespace ovno2::host
