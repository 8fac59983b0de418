#include "host/restore/restore_report.h"

#include <algorithm>

#include "host/output/command_output.h"
#include "host/output/display_width.h"
#include "host/output/json.h"

namespace ovno2::host {

namespace {

using State = RestoreItem::State;

std::string joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts)
        text += (text.empty() ? "" : "; ") + part;
    return forPerson(text);
}

const char* nameOf(State state) {
    constexpr const char* names[] = {"new", "equal", "different", "impossible"};
    return names[static_cast<std::size_t>(state)];
}

// What became of an item, or would.
std::string resultOf(const RestorePart& part, const RestoreItem& item, bool isTrial) {
    if (!part.isToBeWritten(item)) return nameOf(item.state);
    const std::string verb = item.state == State::isNew ? "added" : "changed";
    return isTrial ? "would be " + verb : item.isWritten ? verb : "failed";
}

std::string lineOf(const RestorePart& part, const RestoreItem& item) {
    return std::string(part.name()) + ": " + forPerson(item.title);
}

// What the user is told of an item before anything is written.
void tellPlanned(const RestorePart& part, const RestoreItem& item, const ReportedRestore& restore) {
    const std::string line = lineOf(part, item);
    if (item.state == State::impossible)
        note("ovphone: " + line + ": not restored: " + forPerson(item.why));
    else if (item.state == State::different && !part.isToBeWritten(item))
        note("ovphone: " + line + ": stays as it is (" + forPerson(item.why) + "); --force changes it.");
    else if ((restore.isTrial || restore.verbose) && !isQuiet() && part.isToBeWritten(item))
        write((item.state == State::isNew ? "new: " : "to be changed: ") + line + "\n");
    if (!item.lost.empty()) note("ovphone: " + line + ": no phone has a place for " + joined(item.lost));
}

// What counts as missing of an item at the end.
bool isMissing(const RestorePart& part, const RestoreItem& item, bool isTrial) {
    if (!item.lost.empty() || item.state == State::impossible) return true;
    if (item.state == State::equal) return false;
    if (!part.isToBeWritten(item)) return true;
    return !isTrial && !item.isWritten;
}

std::size_t missingOf(const RestorePart& part, bool isTrial) {
    return static_cast<std::size_t>(std::ranges::count_if(
        part.items(), [&](const RestoreItem& item) { return isMissing(part, item, isTrial); }));
}

std::size_t writtenOf(const RestorePart& part) {
    return static_cast<std::size_t>(std::ranges::count(part.items(), true, &RestoreItem::isWritten));
}

}  // namespace

bool ReportedRestore::isComplete() const {
    return problems.empty() && interruption.empty() && std::ranges::all_of(parts, [&](const auto& part) {
               return part->planFailure.empty() && missingOf(*part, isTrial) == 0;
           });
}

void tellPlan(const ReportedRestore& restore) {
    for (const std::string& problem : restore.problems)
        note("ovphone: " + forPerson(problem));
    for (const auto& part : restore.parts)
        for (const RestoreItem& item : part->items())
            tellPlanned(*part, item, restore);
    if (!isQuiet()) {
        write("To " + titleOf(restore.phone) + " from \"" + forPerson(restore.source) + "\":\n\n");
        Table table({u"What", u"New", u"There already", u"Different there", u"Impossible"});
        for (const auto& part : restore.parts) {
            if (!part->planFailure.empty()) {
                table.addRow({fromUtf8(part->name()), u"not known"});
                continue;
            }
            std::vector<Text> row{fromUtf8(part->name())};
            for (const State state : {State::isNew, State::equal, State::different, State::impossible})
                row.push_back(fromUtf8(std::to_string(part->count(state))));
            table.addRow(std::move(row));
        }
        writeTable(table);
        write("\n");
    }
    for (const auto& part : restore.parts)
        if (!part->planFailure.empty())
            note("ovphone: " + std::string(part->name()) + ": " + forPerson(part->planFailure));
    if (restore.messagesLeft != 0)
        remark("(" + std::to_string(restore.messagesLeft) +
               " messages stay in the archive: --messages puts those that were written on the phone into the "
               "outbox, and the phone may send them.)");
    for (const auto& [kind, count] : restore.goneLeftOut)
        remark("(" + kind + ": " + std::to_string(count) +
               " that the archive's phone no longer had are left out; --all restores them, too.)");
}

void tellResult(const ReportedRestore& restore) {
    std::string text;
    std::size_t missing = 0, all = 0;
    for (const auto& part : restore.parts) {
        for (const RestoreItem& item : part->items())
            if (!item.failure.empty())
                note("ovphone: " + lineOf(*part, item) + ": " + forPerson(item.failure));
        missing += missingOf(*part, restore.isTrial);
        all += part->items().size();
        if (!restore.isTrial)
            text +=
                (text.empty() ? "Restored: " : ", ") + std::to_string(writtenOf(*part)) + " " + part->name();
    }
    if (isQuiet()) return;
    if (!text.empty()) write(text + ".\n");
    if (restore.isTrial) write("Nothing was written.\n");
    const std::string title = titleOf(restore.phone);
    if (restore.isComplete())
        write(restore.isTrial ? "Everything would be on " + title + " then.\n"
                              : "Everything is on " + title + ".\n");
    else
        write("NOT EVERYTHING " + std::string(restore.isTrial ? "WOULD BE" : "IS") + " ON THE PHONE" +
              (missing == 0 ? std::string(": see above.")
                            : ": " + std::to_string(missing) + " of " + std::to_string(all) +
                                  " are missing there, at least in part.") +
              "\n");
}

std::string asJson(const ReportedRestore& restore) {
    JsonDocument document;
    document.StartObject();
    document.member("source", restore.source);
    document.member("phone", TextView(restore.phone.model));
    document.member("serialNumber", TextView(restore.phone.serial));
    if (restore.isTrial) document.member("dryRun", true);
    document.member("complete", restore.isComplete());
    document.key("sections");
    document.StartObject();
    for (const auto& part : restore.parts) {
        document.key(part->name());
        document.StartObject();
        if (!part->planFailure.empty()) document.member("message", part->planFailure);
        for (const State state : {State::isNew, State::equal, State::different, State::impossible})
            document.member(nameOf(state), std::uint64_t{part->count(state)});
        document.member("written", std::uint64_t{writtenOf(*part)});
        document.key("items");
        document.StartArray();
        for (const RestoreItem& item : part->items()) {
            document.StartObject();
            document.member("name", item.title);
            document.member("result", resultOf(*part, item, restore.isTrial));
            if (const std::string& why = item.failure.empty() ? item.why : item.failure; !why.empty())
                document.member("message", why);
            if (!item.lost.empty()) document.member("unplaced", joined(item.lost));
            document.EndObject();
        }
        document.EndArray();
        document.EndObject();
    }
    document.EndObject();
    if (restore.messagesLeft != 0) document.member("messagesLeft", std::uint64_t{restore.messagesLeft});
    document.key("goneLeftOut");
    document.StartObject();
    for (const auto& [kind, count] : restore.goneLeftOut)
        document.member(kind, std::uint64_t{count});
    document.EndObject();
    document.key("problems");
    document.StartArray();
    for (const std::string& problem : restore.problems)
        document.text(fromUtf8(problem));
    document.EndArray();
    if (!restore.interruption.empty()) document.member("interruption", restore.interruption);
    document.EndObject();
    return document.finished();
}

}  // namespace ovno2::host
