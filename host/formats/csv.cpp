#include "host/formats/csv.h"

#include <algorithm>

namespace ovno2::host {

namespace {

constexpr std::string_view mark = "\xEF\xBB\xBF";

// The one that stands most often in the first line, quoted texts left out.
char separatorOf(std::string_view file) {
    constexpr std::string_view known = ",;\t";
    std::size_t counts[known.size()] = {};
    bool isQuoted = false;
    for (const char one : file) {
        if (one == '"') isQuoted = !isQuoted;
        if (isQuoted) continue;
        if (one == '\n' || one == '\r') break;
        if (const std::size_t which = known.find(one); which != std::string_view::npos) ++counts[which];
    }
    return known[static_cast<std::size_t>(std::ranges::max_element(counts) - counts)];
}

}  // namespace

CsvReader::CsvReader(std::string_view file) : file_(file) {
    if (file_.starts_with(mark)) file_.remove_prefix(mark.size());
    separator_ = separatorOf(file_);
}

void CsvReader::passLineEnd() {
    if (place_ == file_.size()) return;
    if (file_[place_] == '\r' && place_ + 1 < file_.size() && file_[place_ + 1] == '\n') ++place_;
    ++place_;
    ++nextLine_;
}

bool CsvReader::next(std::vector<std::string>& values) {
    values.clear();
    isUnclosed_ = false;
    while (place_ < file_.size() && atLineEnd())
        passLineEnd();
    if (place_ == file_.size()) return false;
    line_ = nextLine_;
    for (;;) {
        values.push_back(value());
        if (atLineEnd()) break;
        ++place_;  // the separator
    }
    passLineEnd();
    return true;
}

// Up to the separator or the line's end. What follows a closing quote belongs to the value as it stands.
std::string CsvReader::value() {
    std::string text;
    if (place_ < file_.size() && file_[place_] == '"') {
        ++place_;
        for (isUnclosed_ = true; isUnclosed_ && place_ < file_.size(); ++place_) {
            const char one = file_[place_];
            if (one == '"' && place_ + 1 < file_.size() && file_[place_ + 1] == '"')
                ++place_;
            else if (one == '"')
                isUnclosed_ = false;
            if (one == '\n') ++nextLine_;
            if (isUnclosed_) text += one;
        }
    }
    const std::size_t start = place_;
    while (!atLineEnd() && file_[place_] != separator_)
        ++place_;
    return text.append(file_.substr(start, place_ - start));
}

void addCsvRecord(std::string& text, const std::vector<std::string>& values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::string& value = values[i];
        if (i != 0) text += ',';
        const bool isPlain = value.find_first_of(",;\t\"\r\n") == std::string::npos &&
                             !value.starts_with(' ') && !value.ends_with(' ');
        // A line of one empty value would be no record.
        if (isPlain && !(value.empty() && values.size() == 1)) {
            text += value;
            continue;
        }
        text += '"';
        for (const char one : value)
            text.append(one == '"' ? 2 : 1, one);
        text += '"';
    }
    text += "\r\n";
}

}  // namespace ovno2::host
