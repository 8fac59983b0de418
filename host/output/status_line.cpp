#include "host/output/status_line.h"

#include <cstdio>

#include "host/output/display_width.h"

namespace ovno2::host {

void StatusLine::show(const std::string& line) {
    const std::size_t cells = displayWidth(fromUtf8(line));
    const std::size_t rest = cells < cells_ ? cells_ - cells : 0;
    std::fputs(("\r" + line + std::string(rest, ' ')).c_str(), stderr);
    std::fflush(stderr);
    cells_ = cells;
}

void StatusLine::hide() {
    if (cells_ == 0) return;
    show({});
    std::fputs("\r", stderr);
    std::fflush(stderr);
}

}  // namespace ovno2::host
