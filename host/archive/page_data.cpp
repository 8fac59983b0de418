#include "host/archive/page_data.h"

#include "host/page/page.h"

namespace ovno2::host {

PageArray::PageArray(ArchiveFolder& folder, const char* name)
    : output_(folder, pageDataPath(name)), lines_([this](std::string_view piece) { output_.write(piece); }) {
    PageDataFrame frame = pageDataFrame(name);
    output_.write(frame.begin);
    end_ = std::move(frame.end);
}

void PageArray::finish() {
    lines_.end();
    output_.write(end_);
    output_.finish();
}

void writeGone(JsonLine& line, const std::string& since) {
    line.member("onPhone", false);
    line.member("goneSince", since);
}

}  // namespace ovno2::host
