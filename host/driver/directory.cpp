#include "host/driver/directory.h"

#include "dates/date_parser.h"

namespace ovno2::host {

namespace {

// A file's time comes as text only: the directory record, which hosts have always had, has no other member
// for it. The text is local time in the user's form, by the time-zone bias of now for all times of the year,
// and is read back here with the module's own parser and the same bias.
std::chrono::minutes timeBias() {
    return std::chrono::minutes(numericLong(computer::machineValue(
        u"SYSTEM\\CurrentControlSet\\Control\\TimeZoneInformation", u"ActiveTimeBias")));
}

std::optional<std::chrono::sys_seconds> timeOf(TextView text, std::chrono::minutes bias) {
    const std::optional<DateFields> fields = readDateFields(text);
    if (!fields || *fields == DateFields{}) return std::nullopt;
    constexpr Long firstYear = 1900, lastYear = 2400;  // what the clocks of file systems count to
    if (fields->year < firstYear || fields->year > lastYear) return std::nullopt;
    using namespace std::chrono;
    const year_month_day date{year(static_cast<int>(fields->year)),
                              month(static_cast<unsigned>(fields->month)),
                              day(static_cast<unsigned>(fields->day))};
    return sys_days(date) + hours(fields->hour) + minutes(fields->minute) + seconds(fields->second) + bias;
}

FolderEntry entryOf(DirItem& record, std::chrono::minutes bias) {
    FolderEntry entry;
    entry.isFolder = (record.Flags & dirItemFolder) != 0;
    entry.isReadOnly = (record.Flags & dirItemChangeable) == 0;
    entry.isSpecial = (record.Flags & dirItemSpecial) != 0;
    if (entry.isFolder) {
        const TextView shown = record.DisplayName;  // in square brackets
        if (shown.size() > 2) entry.label = shown.substr(1, shown.size() - 2);
        if (entry.label == record.Name) entry.label.clear();
    } else {
        entry.size = static_cast<std::uint32_t>(record.Size);  // what passes 31 bits comes negative
        entry.changed = timeOf(record.DateText, bias);
        entry.changedText = std::move(record.DateText);
    }
    entry.name = std::move(record.Name);
    return entry;
}

}  // namespace

std::vector<FolderEntry> folderEntries(std::span<DirItem> records) {
    const std::chrono::minutes bias = timeBias();
    std::vector<FolderEntry> entries;
    entries.reserve(records.size());
    for (DirItem& record : records)
        entries.push_back(entryOf(record, bias));
    return entries;
}

}  // namespace ovno2::host
