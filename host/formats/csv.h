// Comma-separated values (RFC 4180), as spreadsheets and address books write them.
//
// The reader also takes ";" and tabs between values, whichever the first line has most of, and lines that end
// in LF, CR LF or CR. No bytes make it fail; cost is linear in the file's size.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ovno2::host {

class CsvReader {
  public:
    // `file` lives as long as the reader; a mark of UTF-8 at its beginning is passed over.
    explicit CsvReader(std::string_view file);

    // The values of the next record, as bytes; false at the end. Empty lines are passed over.
    bool next(std::vector<std::string>& values);
    // The line at which that record begins, from 1.
    std::size_t line() const { return line_; }
    // A quote was opened in it and never closed: its last value is all the rest of the file.
    bool isUnclosed() const { return isUnclosed_; }

  private:
    bool atLineEnd() const {
        return place_ == file_.size() || file_[place_] == '\n' || file_[place_] == '\r';
    }
    void passLineEnd();
    std::string value();

    std::string_view file_;
    std::size_t place_ = 0;
    std::size_t nextLine_ = 1;
    std::size_t line_ = 0;
    char separator_ = ',';
    bool isUnclosed_ = false;
};

// Adds one record to `text`: quotes where they are needed, and CR LF.
void addCsvRecord(std::string& text, const std::vector<std::string>& values);

}  // namespace ovno2::host
