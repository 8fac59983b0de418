// One line of standard error that is drawn over and over, and taken away at the end.
#pragma once

#include <cstddef>
#include <string>

namespace ovno2::host {

class StatusLine {
  public:
    StatusLine() = default;
    ~StatusLine() { hide(); }
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    void show(const std::string& line);  // UTF-8, in place of the one that is there
    void hide();                         // before something else is written

  private:
    std::size_t cells_ = 0;  // of the line on the screen
};

}  // namespace ovno2::host
