// The calendars of an archive: a file each, and what is no longer on the phone.
#include <algorithm>
#include <map>

#include "host/archive/archive_names.h"
#include "host/archive/archive_run.h"
#include "host/archive/kept_blocks.h"
#include "host/calendar/calendar_changes.h"
#include "host/calendar/calendar_output.h"
#include "host/calendar/calendar_store.h"
#include "host/calendar/ical_reader.h"
#include "host/calendar/ical_writer.h"
#include "host/calendar/recurrence.h"
#include "host/contacts/contact_files.h"
#include "host/files/local_name.h"
#include "host/output/console.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono;

constexpr const char* section = "calendar";
constexpr std::string_view kinds[] = {"VEVENT", "VTODO"};
constexpr std::string_view zoneKinds[] = {"VTIMEZONE"};
constexpr const char* withoutName = "Calendar";  // of entries that lie in none
constexpr sys_seconds sameStamp{};               // so that the same entry has the same text in every run

class CalendarSection {
  public:
    CalendarSection(ArchiveRun& run, SectionReport& report, bool isWhole)
        : run_(run), report_(report), isWhole_(isWhole), page_(run.folder, section) {
        // No calendar gets the name of the file of those that are gone.
        names_.give(fromUtf8(
            std::string(archive::goneEntries).substr(std::string(archive::goneEntries).find('/') + 1)));
        readEarlier();
    }

    void write(const PhoneCalendars& list) {
        std::map<Text, std::vector<CalendarEntry>> byCalendar;
        for (const Text& name : list.names)
            byCalendar[name];
        for (const CalendarEntry& entry : list.entries) {
            byCalendar[entry.calendar].push_back(entry);
            byCalendar[entry.calendar].back().uid = exportedUid(run_.phone.serial, entry.uid);
        }
        struct File {
            std::string path;
            std::string text;
        };
        std::vector<File> files;
        for (const auto& [name, entries] : byCalendar) {
            if (entries.empty()) continue;
            CalendarText written = writeCalendarFile(entries, CalendarForm::iCalendar, sameStamp);
            noteLosses(entries, written);
            for (const std::string_view block : blocksOf(written.text, kinds))
                present_.add(block);
            for (const CalendarEntry& entry : entries)
                addToPage(entry, /*goneSince=*/{});
            const Text file = names_.give((name.empty() ? fromUtf8(withoutName) : name) + u".ics");
            files.push_back({std::string(archive::calendars) + "/" + toUtf8(file), std::move(written.text)});
        }
        const KeptBlocks kept = keptBlocks(before_, goneBefore_, present_, isWhole_);
        writeGoneEntries(kept);
        for (const File& file : files)
            run_.folder.put(file.path, file.text);
        writeUnknown(kept);
        // Whatever stood in those is in others now.
        for (const std::string& path : run_.folder.untouchedBelow(archive::calendars))
            if (path != archive::goneEntries && path.ends_with(".ics")) run_.folder.remove(path);
        page_.finish();
        report_.newlyGone = kept.newlyGone;
        report_.count = count_;
    }

  private:
    void readEarlier() {
        std::error_code error;
        std::vector<std::string> paths;
        for (const auto& entry : fs::directory_iterator(run_.folder.placeOf(archive::calendars), error))
            if (entry.path().extension() == ".ics")
                paths.push_back(std::string(archive::calendars) + "/" +
                                console::textOf(entry.path().filename()));
        std::ranges::sort(paths);
        earlier_.reserve(paths.size());
        for (const std::string& path : paths) {
            earlier_.push_back(run_.folder.read(path).value_or(""));
            const std::vector<std::string_view> blocks = blocksOf(earlier_.back(), kinds);
            std::vector<std::string_view>& place = path == archive::goneEntries ? goneBefore_ : before_;
            place.insert(place.end(), blocks.begin(), blocks.end());
            std::ranges::copy(blocksOf(earlier_.back(), zoneKinds), std::back_inserter(zones_));
        }
    }

    // The descriptions of zones that earlier runs had, and this computer's zone is not, once each.
    std::string foreignZones() const {
        std::map<std::string_view, std::string_view> zones;
        const std::string own = ownZoneName();
        for (const std::string_view zone : zones_) {
            const std::string_view name = lineOf(zone, "TZID");
            if (!name.ends_with(":" + own)) zones.emplace(name, zone);
        }
        std::string text;
        for (const auto& [name, zone] : zones)
            text += zone;
        return text;
    }

    void writeGoneEntries(const KeptBlocks& kept) {
        if (kept.gone.empty()) return;
        const std::vector<std::string> since =
            run_.record.goneSince(section, kept.gone.size(), run_.startedText());
        const std::string zones = foreignZones();
        std::string text = zones;
        for (std::size_t i = 0; i < kept.gone.size(); ++i) {
            text += kept.gone[i];
            if (!present_.holds(kept.gone[i])) addBlockToPage(zones, kept.gone[i], since[i]);
        }
        run_.folder.put(archive::goneEntries, calendarFileAround(text));
    }

    // What the phone may still have stays in a file of its own until it has handed out everything.
    void writeUnknown(const KeptBlocks& kept) {
        if (kept.stays.empty()) return;
        const std::string zones = foreignZones();
        std::string text = zones;
        for (const std::string_view block : kept.stays) {
            text += block;
            addBlockToPage(zones, block, /*goneSince=*/{});
        }
        run_.folder.put(std::string(archive::calendars) + "/" + toUtf8(names_.give(u"not-read-again.ics")),
                        calendarFileAround(text));
    }

    void addBlockToPage(const std::string& zones, std::string_view block, const std::string& goneSince) {
        const std::string text = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\n" + ownZone() + zones +
                                 std::string(block) + "END:VCALENDAR\r\n";
        for (const CalendarEntry& entry : readCalendarFile(text, archive::goneEntries).entries) {
            addToPage(entry, goneSince);
            if (!goneSince.empty()) ++report_.gone;
        }
    }

    const std::string& ownZone() {
        if (ownZone_.empty()) {
            const std::string file = calendarFileAround({});
            ownZone_ = blocksOf(file, zoneKinds).front();
        }
        return ownZone_;
    }

    void addToPage(const CalendarEntry& entry, const std::string& goneSince) {
        JsonLine& line = page_.next();
        line.StartObject();
        writeEntry(line, entry);
        writeOccurrences(line, entry);
        if (!goneSince.empty()) writeGone(line, goneSince);
        line.EndObject();
        ++count_;
    }

    // Up to two years from now, and a thousand at most.
    void writeOccurrences(JsonLine& line, const CalendarEntry& entry) const {
        constexpr std::size_t most = 1000;
        constexpr years ahead(2);
        if (entry.rule.empty()) return;
        const Text to = isoText({.day = local_days(floor<days>(run_.started + ahead).time_since_epoch())});
        std::vector<Text> dates =
            datesOf(entry, entry.kind == CalendarEntry::Kind::toDo ? entry.due : entry.start, to);
        if (dates.size() > most) dates.resize(most);
        line.key("occurrences");
        line.StartArray();
        for (const Text& date : dates)
            line.text(date);
        line.EndArray();
    }

    void noteLosses(const std::vector<CalendarEntry>& entries, const CalendarText& written) {
        std::size_t left = 0;
        for (const auto& [place, what] : written.lost) {
            const bool isWhole = what.starts_with("VEVENT");
            left += isWhole ? 1 : 0;
            run_.losses.push_back({section, isWhole, titleOf(entries[place]), what + "."});
        }
        if (left != 0)
            report_.lose(std::to_string(left) + (left == 1 ? " entry has" : " entries have") +
                         " no date to begin on and no place in a calendar file: "
                         "losses.json names them, and the page shows them.");
        report_.saved -= left;
        for (const CalendarEntry& entry : entries)
            run_.looseCharacters(section, titleOf(entry),
                                 toUtf8(entry.summary + entry.location + entry.description));
    }

    ArchiveRun& run_;
    SectionReport& report_;
    bool isWhole_;
    PageArray page_;
    std::vector<std::string> earlier_;  // the files
    std::vector<std::string_view> before_, goneBefore_, zones_;
    LocalNames names_;
    PresentBlocks present_;
    std::string ownZone_;
    std::size_t count_ = 0;
};

}  // namespace

void archiveCalendar(ArchiveRun& run, SectionReport& report) {
    const std::optional<PhoneCalendars> list =
        run.readingTwice(report, [&] { return readCalendars(run.phones, run.phone); });
    if (!list) return;
    report.arrived(list->entries.size(), list->listed, list->missing);
    CalendarSection(run, report, list->missing.empty()).write(*list);
}

}  // namespace ovno2::host
