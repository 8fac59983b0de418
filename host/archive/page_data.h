// One array of the archive's page, written item by item.
#pragma once

#include "host/archive/archive_folder.h"
#include "host/output/json.h"

namespace ovno2::host {

// `name` is that of the data file (see host/page/page.h).
class PageArray {
  public:
    PageArray(ArchiveFolder& folder, const char* name);

    // Takes one value, which must be complete before the next call.
    JsonLine& next() { return lines_.next(); }
    void finish();

  private:
    std::string end_;
    ArchiveOutput output_;
    JsonLines lines_;
};

// Of an item that is no longer on the phone, behind its other members.
void writeGone(JsonLine& line, const std::string& since);

}  // namespace ovno2::host
