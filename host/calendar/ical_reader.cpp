#include "host/calendar/ical_reader.h"

#include <map>

#include "host/calendar/ical_entry.h"

namespace ovno2::host {

namespace {

class CalendarFileReader {
  public:
    CalendarFileReader(std::string_view bytes, std::string_view file, std::string_view charset)
        : file_(file), tree_(readComponents(bytes, file, charset)) {}

    CalendarFile read() {
        result_.problems = std::move(tree_.problems);
        // Blocks may stand on their own, without a calendar around them.
        readEntries(tree_.components, {});
        for (const FileComponent& component : tree_.components)
            if (component.name == "VCALENDAR") readCalendar(component);
        if (result_.entries.empty() && result_.problems.empty())
            problem(1, "there is no calendar entry in this file");
        leaveOutReplaced();
        return std::move(result_);
    }

  private:
    void readCalendar(const FileComponent& calendar) {
        FileClocks clocks;
        const auto oldZone = std::make_shared<const FileZone>(FileZone::ofOldForm(calendar));
        // Half the clocks of the world are another's: without the days of summer the offset says little.
        if (oldZone->isKnown() && (oldZone->hasDaylight() || !isOwnOffset(oldZone->standardOffset())))
            clocks.oldZone = oldZone;
        for (const FileComponent& part : calendar.parts)
            if (part.name == "VTIMEZONE")
                if (const ContentLine* const name = part.find("TZID"))
                    clocks.zones.emplace(name->value, std::make_shared<const FileZone>(part));
        if (const ContentLine* const name = calendar.find("X-WR-CALNAME"); name && result_.name.empty())
            result_.name = fromUtf8(unescaped(*name, name->value));
        readEntries(calendar.parts, clocks);
    }

    // That clocks here stand at in winter or in summer.
    static bool isOwnOffset(std::chrono::seconds offset) {
        using namespace std::chrono;
        for (const sys_days day : {sys_days(year(2008) / 1 / 15), sys_days(year(2008) / 7 / 15)})
            if (localHere(day).time_since_epoch() - sys_seconds(day).time_since_epoch() == offset)
                return true;
        return false;
    }

    void readEntries(const std::vector<FileComponent>& components, const FileClocks& clocks) {
        for (const FileComponent& component : components) {
            if (component.name == "VEVENT" || component.name == "VTODO")
                readEntry(component, clocks);
            else if (component.name != "VTIMEZONE" && component.name != "VCALENDAR")
                problem(component.line, "\"" + component.name + "\" is no calendar entry");
        }
    }

    void readEntry(const FileComponent& component, const FileClocks& clocks) {
        FileEntry read = readFileEntry(component, clocks);
        if (!read.problem.empty()) return problem(component.line, read.problem);
        const std::size_t index = result_.entries.size();
        const Text& uid = read.entry.uid;
        if (read.instead)
            replaced_.emplace_back(index, *read.instead);
        else if (!uid.empty())
            series_.emplace(uid, index);
        result_.entries.push_back(std::move(read.entry));
        result_.lines.push_back(component.line);
    }

    // An entry that stands for one date of a series takes that date out of it and is one of its own.
    void leaveOutReplaced() {
        for (const auto& [index, date] : replaced_) {
            CalendarEntry& entry = result_.entries[index];
            if (const auto found = series_.find(entry.uid); found != series_.end()) {
                CalendarEntry& series = result_.entries[found->second];
                series.exceptions.push_back(isoText({.day = date.day}));
                if (series.wideRule) series.wideRule->exceptions.push_back(date);
            }
            entry.uid.clear();
        }
    }

    void problem(std::size_t line, const std::string& what) {
        result_.problems.push_back(file_ + ":" + std::to_string(line) + ": " + what);
    }

    std::string file_;
    FileTree tree_;
    CalendarFile result_;
    std::map<Text, std::size_t> series_;                    // by uid
    std::vector<std::pair<std::size_t, Moment>> replaced_;  // entries and the dates they stand for
};

}  // namespace

CalendarFile readCalendarFile(std::string_view bytes, std::string_view file, std::string_view charset) {
    return CalendarFileReader(bytes, file, charset).read();
}

}  // namespace ovno2::host
