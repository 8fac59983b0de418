#include "host/driver/directory.h"

#include "host/driver/module_dates.h"

namespace ovno2::host {

namespace {

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
        entry.changedText = entry.changed ? localText(*entry.changed) : std::move(record.DateText);
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
