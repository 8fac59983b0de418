// `ovphone contacts add`, `edit` and `remove`: single contacts.
#include <CLI/CLI.hpp>
#include <fstream>
#include <iterator>
#include <memory>

#include "host/contacts/change_commands.h"
#include "host/contacts/contact_search.h"
#include "host/contacts/contact_values.h"
#include "host/contacts/field_names.h"
#include "host/contacts/field_table.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/folding.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

struct EditOptions : ChangeOptions {
    std::vector<std::string> words;
    bool all = false;
};

[[noreturn]] void misuse(const std::string& message) {
    throw CommandFailure{wrongUsage, message};
}

// "FIELD=VALUE", or "FIELD+=VALUE" for one more.
struct Assignment {
    std::size_t row;
    Text value;
    bool adds = false;
};

Assignment assignmentOf(const std::string& word) {
    const std::size_t place = word.find('=');
    std::string name = word.substr(0, place);
    const bool adds = name.ends_with('+');
    if (adds) name.pop_back();
    const std::optional<std::size_t> row = rowNamed(name);
    if (!row || fieldRows()[*row].code == HostField::other) {
        std::string message = "No field is called \"" + name + "\".";
        const std::vector<Text> near = fieldNamesNear(name, 1);
        if (!near.empty()) message += " Did you mean \"" + toUtf8(near[0]) + "\"?";
        misuse(message);
    }
    return {*row, fromUtf8(word.substr(place + 1)), adds};
}

// The words of a line: a name, and values for fields.
struct Edit {
    std::vector<std::string> name;
    std::vector<Assignment> values;

    explicit Edit(const std::vector<std::string>& words) {
        for (const std::string& word : words)
            if (word.find('=') == std::string::npos)
                name.push_back(word);
            else
                values.push_back(assignmentOf(word));
    }
    Text wholeName() const {
        std::string text;
        for (const std::string& word : name)
            text += (text.empty() ? "" : " ") + word;
        return fromUtf8(text);
    }
};

ContactDraft::Picture pictureFrom(const Text& file) {
    constexpr std::uintmax_t largest = std::uintmax_t{16} << 20;
    const fs::path path = console::pathOf(toUtf8(file));
    const std::string name = "\"" + toUtf8(file) + "\"";
    std::error_code error;
    if (!fs::is_regular_file(path, error))
        throw CommandFailure{failed, "The picture " + name + " is no file."};
    if (fs::file_size(path, error) > largest)
        throw CommandFailure{failed,
                             "The picture " + name + " is larger than 16 MB; phones take small ones."};
    std::ifstream stream(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    if (bytes.empty()) throw CommandFailure{failed, "The picture " + name + " cannot be read, or is empty."};
    return {std::move(bytes), {}};
}

void assignPicture(ContactDraft& contact, const Text& file) {
    contact.pictures.clear();
    if (!file.empty()) contact.pictures.push_back(pictureFrom(file));
}

// The first value of a field takes the place of what was there, unless it is to be added; further ones go
// beside it.
void assign(ContactDraft& contact, const std::vector<Assignment>& values) {
    std::vector<bool> assigned(fieldRows().size());
    for (const auto& [i, value, adds] : values) {
        const FieldRow& row = fieldRows()[i];
        if (row.code == HostField::picture) {
            assignPicture(contact, value);
            continue;
        }
        if (row.code == HostField::birthday && !value.empty() && birthdayText(value).empty())
            misuse("\"" + toUtf8(value) + "\" is no date such as 1975-04-12.");
        std::vector<Text>& held = contact.values[i];
        if (!adds && !assigned[i]) held.clear();
        assigned[i] = true;
        if (value.empty()) continue;
        if (row.holds == Holds::one && !held.empty())
            misuse("A contact has one value for \"" + std::string(row.key) + "\".");
        forEachPart(row, value, [&](TextView part) { held.emplace_back(part); });
    }
}

std::string listOf(const std::vector<Contact>& contacts) {
    std::string lines;
    for (const Contact& contact : contacts)
        lines += "\n  " + titleOf(contact) + " (" + toUtf8(contact.uid) + ")";
    return lines;
}

bool isCalled(const Contact& contact, const Text& wanted) {
    return folded(fromUtf8(titleOf(contact))) == folded(wanted) || equalsIgnoringCase(contact.uid, wanted);
}

[[noreturn]] void notFound(const ChangedPhone& changed, const Text& wanted) {
    for (const std::string& message : changed.book.missing)
        note("ovphone: " + message);
    std::string message = "No contact is called \"" + toUtf8(wanted) + "\".";
    const std::vector<Text> near = namesNear(changed.book.contacts, wanted, 1);
    if (!near.empty()) message += " Did you mean \"" + toUtf8(near[0]) + "\"?";
    throw CommandFailure{failed, message};
}

// Those with the whole name or that id; of several one must be meant.
std::vector<Contact> called(const ChangedPhone& changed, const Text& wanted, bool all) {
    std::vector<Contact> found;
    std::ranges::copy_if(changed.book.contacts, std::back_inserter(found),
                         [&](const Contact& contact) { return isCalled(contact, wanted); });
    if (found.size() > 1 && !all)
        throw CommandFailure{failed, std::to_string(found.size()) + " contacts are called \"" +
                                         toUtf8(wanted) + "\"; name one by its id:" + listOf(found)};
    return found;
}

Contact theOne(const ChangedPhone& changed, const Text& wanted) {
    std::vector<Contact> found = called(changed, wanted, /*all=*/false);
    if (found.empty()) found = contactsNamed(changed.book.contacts, wanted);
    if (found.empty()) notFound(changed, wanted);
    if (found.size() > 1)
        throw CommandFailure{failed,
                             "\"" + toUtf8(wanted) +
                                 "\" fits several contacts; give the whole name, or an id:" + listOf(found)};
    return found.front();
}

void carryOutAll(ChangedPhone& changed, std::vector<ContactChange>& changes, const Context& context,
                 const ChangeOptions& wanted) {
    std::vector<ReportedContact> reported;
    reported.reserve(changes.size());
    for (const ContactChange& change : changes)
        reported.push_back({.title = change.title, .change = reported.size(), .unplaced = {}});
    carryOut(changed, changes, reported, context, wanted);
}

void addContact(const Context& context, const EditOptions& wanted) {
    const Edit edit(wanted.words);
    ContactChange change;
    change.after.values.resize(fieldRows().size());
    if (!edit.name.empty()) {
        // The last word of several is the last name.
        Edit names = edit;
        const std::string last = names.name.size() > 1 ? names.name.back() : std::string();
        if (!last.empty()) {
            names.name.pop_back();
            change.after.values[rowOf(HostField::lastName)] = {fromUtf8(last)};
        }
        change.after.values[rowOf(HostField::firstName)] = {names.wholeName()};
    }
    assign(change.after, edit.values);
    if (contentOf(change.after).empty()) misuse("A new contact needs a name or a number.");
    change.title = titleOf(change.after);
    ChangedPhone changed(context);
    std::vector<ContactChange> changes{std::move(change)};
    carryOutAll(changed, changes, context, wanted);
}

void editContact(const Context& context, const EditOptions& wanted) {
    const Edit edit(wanted.words);
    if (edit.name.empty()) misuse("Say whom to edit: ovphone contacts edit NAME FIELD=VALUE ...");
    if (edit.values.empty()) misuse("Say what to change: ovphone contacts edit NAME FIELD=VALUE ...");
    ChangedPhone changed(context);
    const Contact contact = theOne(changed, edit.wholeName());
    ContactChange change{.kind = ContactChange::Kind::change,
                         .title = titleOf(contact),
                         .before = draftOf(contact, changed.pictures),
                         .after = {}};
    change.after = change.before;
    assign(change.after, edit.values);
    ReportedContact reported{.title = change.title, .change = 0, .unplaced = {}};
    std::vector<ContactChange> changes;
    if (contentOf(change.before) == contentOf(change.after))
        reported.change = ReportedContact::none;
    else
        changes.push_back(std::move(change));
    carryOut(changed, changes, {&reported, 1}, context, wanted);
}

void removeContacts(const Context& context, const EditOptions& wanted) {
    ChangedPhone changed(context);
    std::vector<ContactChange> changes;
    std::set<Text> known;
    for (const std::string& word : wanted.words) {
        const std::vector<Contact> found = called(changed, fromUtf8(word), wanted.all);
        if (found.empty()) notFound(changed, fromUtf8(word));
        for (const Contact& contact : found) {
            if (!known.insert(contact.uid).second) continue;
            ContactChange change{.kind = ContactChange::Kind::remove,
                                 .title = titleOf(contact),
                                 .before = draftOf(contact, changed.pictures),
                                 .after = {}};
            change.after.uid = contact.uid;
            changes.push_back(std::move(change));
        }
    }
    carryOutAll(changed, changes, context, wanted);
}

CLI::App& registerOne(CLI::App& contacts, Context& context, const char* name, const char* description,
                      void (*action)(const Context&, const EditOptions&), const char* words,
                      const char* wordsDescription, std::shared_ptr<EditOptions> options) {
    CLI::App& command = addCommand(contacts, name, description, context,
                                   [&context, options, action] { action(context, *options); });
    command.add_option(words, options->words, wordsDescription)->type_name("")->required();
    addChangeOptions(command, context, *options);
    return command;
}

std::string fieldsHelp() {
    return "Fields (VALUE empty = none; FIELD+=VALUE = one more):\n" +
           listOfFields(/*width=*/100, /*indent=*/2) +
           "\nA birthday is written 1975-04-12, a picture as the path of its file; several values are "
           "separated by "
           "\";\".\n\nExamples:\n";
}

}  // namespace

void registerAdd(CLI::App& contacts, Context& context) {
    registerOne(contacts, context, "add", "Put a new contact on the phone", addContact, "NAME FIELD=VALUE",
                "the first name and the last, and the other fields", std::make_shared<EditOptions>())
        .footer(fieldsHelp() +
                R"(  ovphone contacts add Anna Müller mobile=+491713920001 email=anna@example.com
  ovphone contacts add firstName="Anna Maria" lastName=Müller picture=anna.jpg)");
}

void registerEdit(CLI::App& contacts, Context& context) {
    registerOne(contacts, context, "edit", "Change fields of a contact; the others stay", editContact,
                "NAME FIELD=VALUE", "whom, by name or id, and the new values",
                std::make_shared<EditOptions>())
        .footer(fieldsHelp() + R"(  ovphone contacts edit Anna Müller mobile=+491713920001 note=
  ovphone contacts edit Anna categories+=Friends)");
}

void registerRemove(CLI::App& contacts, Context& context) {
    const auto options = std::make_shared<EditOptions>();
    CLI::App& command =
        registerOne(contacts, context, "remove", "Delete contacts from the phone", removeContacts, "NAME",
                    "whole names (in quotes, where they have blanks) or ids", options);
    command.add_flag("--all", options->all, "all contacts of that name");
    command.footer(R"(Examples:
  ovphone contacts remove --dry-run "Anna Müller"
  ovphone contacts remove "Anna Müller" 0A0B     by name, and by the id that show --verbose tells)");
}

}  // namespace ovno2::host
