// The progress of a long read, on one line of standard error that is taken away again at the end.
//
// How many items there will be is not told beforehand, so the bar shows that something moves and how far it
// has come. Nothing is shown for a read that ends at once.
#pragma once

#include <chrono>
#include <string>

#include "host/output/status_line.h"
#include "host/output/text.h"

namespace ovno2::host {

class ProgressBar {
  public:
    // `what` names what is read, such as "contacts". With `shown` false nothing is ever written.
    ProgressBar(std::string what, bool shown, const char* doing = "Reading");

    // The value of the progress control; a jump of 50 announces that the items follow one by one.
    static constexpr Long announcement = 50;
    void advanceTo(Long value);

    // Of which whole all reads from now on are a part: "2 of 5"; empty = none.
    static void setStage(const std::string& stage);

  private:
    void draw();

    std::string what_;
    const char* doing_;
    bool shown_;
    StatusLine line_;
    Long value_ = 0;
    Long items_ = -1;  // -1 = the items have not begun
    std::size_t frame_ = 0;
    std::chrono::steady_clock::time_point itemsBegan_;
    std::chrono::steady_clock::time_point nextDrawing_;
};

}  // namespace ovno2::host
