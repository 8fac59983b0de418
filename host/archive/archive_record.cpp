#include "host/archive/archive_record.h"

#include <algorithm>

#include "host/archive/json_reading.h"
#include "host/output/json.h"
#include "host/phones/phone_output.h"

namespace ovno2::host {

namespace {

constexpr std::uint64_t version = 1;
constexpr const char* goneMark = "Gone";  // behind a section's name: how many a run missed first

template <class Write>
std::string line(Write&& write) {
    rapidjson::StringBuffer buffer;
    JsonLine object(buffer);
    object.StartObject();
    write(object);
    object.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

std::string asLine(const SectionReport& section) {
    return line([&](JsonLine& object) {
        object.member("state", nameOf(section.state));
        object.member("count", std::uint64_t{section.count});
        object.member("gone", std::uint64_t{section.gone});
        object.member("listed", std::uint64_t{section.listed});
        if (section.missing.empty()) return;
        std::string reason;
        constexpr std::size_t mostReasons = 3;
        for (std::size_t i = 0; i < std::min(section.missing.size(), mostReasons); ++i)
            reason += (i == 0 ? "" : " ") + section.missing[i];
        if (section.missing.size() > mostReasons)
            reason += " " + std::to_string(section.missing.size() - mostReasons) + " more: see losses.json.";
        object.member("reason", reason);
    });
}

}  // namespace

const char* nameOf(SectionReport::State state) {
    constexpr const char* names[] = {"left out", "complete", "partial", "failed", "not supported"};
    return names[static_cast<std::size_t>(state)];
}

void SectionReport::arrived(std::size_t number, std::size_t ofListed,
                            const std::vector<std::string>& notArrived) {
    state = State::complete;
    listed = ofListed;
    saved = number;
    for (const std::string& one : notArrived)
        lose(one);
}

void SectionReport::fail(const std::string& why) {
    state = State::failed;
    missing.push_back(why);
}

void SectionReport::lose(const std::string& what) {
    if (state == State::complete) state = State::partial;
    missing.push_back(what);
}

std::string lossesAsJson(const std::vector<ArchiveLoss>& losses, const Sections& sections,
                         const std::string& earlier) {
    std::string text;
    JsonLines lines([&](std::string_view piece) { text += piece; });
    rapidjson::Document known;
    if (readJson(earlier, known) && known.IsArray())
        for (const rapidjson::Value& loss : known.GetArray())
            if (loss.IsObject() && !sections.contains(textMember(loss, "section"))) loss.Accept(lines.next());
    for (const ArchiveLoss& loss : losses) {
        JsonLine& object = lines.next();
        object.StartObject();
        object.member("section", loss.section);
        object.member("kind", loss.isUnread ? "unread" : "lost");
        if (!loss.item.empty()) object.member("item", loss.item);
        object.member("what", loss.what);
        object.EndObject();
    }
    lines.end();
    return text;
}

ArchiveRecord::ArchiveRecord(const std::string& earlier, const std::string& interruptedRun) {
    rapidjson::Document record;
    if (readJson(earlier, record)) {
        if (const rapidjson::Value* const runs = findMember(record, "runs"); runs && runs->IsArray())
            for (const rapidjson::Value& run : runs->GetArray()) {
                runs_.push_back(host::asLine(run));
                for (const char* const name : sectionNames) {
                    const auto* const gone = findMember(run, (std::string(name) + goneMark).c_str());
                    if (gone && gone->IsUint())
                        missed_[name].push_back({textMember(run, "started"), gone->GetUint()});
                }
            }
        if (const rapidjson::Value* const sections = findMember(record, "sections");
            sections && sections->IsObject())
            for (const auto& section : sections->GetObject())
                sections_[section.name.GetString()] = host::asLine(section.value);
    }
    if (interruptedRun.empty()) return;
    runs_.push_back(line([&](JsonLine& run) {
        run.member("started", interruptedRun);
        run.member("result", "interrupted");
    }));
}

std::vector<std::string> ArchiveRecord::goneSince(const std::string& section, std::size_t count,
                                                  const std::string& now) const {
    std::vector<std::string> times;
    times.reserve(count);
    if (const auto missed = missed_.find(section); missed != missed_.end())
        for (const Missed& one : missed->second)
            times.insert(times.end(), std::min(one.count, count - times.size()), one.time);
    times.resize(count, now);
    return times;
}

std::string ArchiveRecord::withRun(const ListedPhone& phone, const Run& run, const Sections& sections) const {
    std::string text = "{\n\"version\":" + std::to_string(version) + ",\n\"phone\":";
    text += line([&](JsonLine& object) { writePhone(object, phone); });
    text += ",\n\"runs\":[\n";
    for (const std::string& earlier : runs_)
        text += earlier + ",\n";
    text += line([&](JsonLine& object) {
        object.member("started", run.started);
        if (!run.finished.empty()) object.member("finished", run.finished);
        object.member("result", run.result);
        for (const auto& [name, section] : sections)
            if (section.newlyGone != 0) object.member(name + goneMark, std::uint64_t{section.newlyGone});
    });
    text += "\n],\n\"sections\":{";
    bool isFirst = true;
    for (const char* const name : sectionNames) {
        const auto now = sections.find(name);
        const auto before = sections_.find(name);
        text += std::string(isFirst ? "" : ",") + "\n\"" + name + "\":";
        text += now != sections.end()       ? asLine(now->second)
                : before != sections_.end() ? before->second
                                            : asLine(SectionReport());
        isFirst = false;
    }
    return text + "\n}\n}\n";
}

}  // namespace ovno2::host
