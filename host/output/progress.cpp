#include "host/output/progress.h"

#include <cmath>

namespace ovno2::host {

namespace {

constexpr std::chrono::milliseconds patience{300};  // before the first drawing
constexpr std::chrono::milliseconds interval{80};
constexpr std::size_t barWidth = 20;
constexpr std::size_t markWidth = 3;

std::string& stage() {
    static std::string text;
    return text;
}

}  // namespace

ProgressBar::ProgressBar(std::string what, bool shown, const char* doing)
    : what_(std::move(what)),
      doing_(doing),
      shown_(shown),
      nextDrawing_(std::chrono::steady_clock::now() + patience) {}

void ProgressBar::setStage(const std::string& text) {
    stage() = text;
}

void ProgressBar::advanceTo(Long value) {
    const Long step = value - value_;
    value_ = value;
    if (step >= announcement)
        items_ = 0;
    else if (items_ >= 0)
        items_ += step;
    if (!shown_) return;
    const auto now = std::chrono::steady_clock::now();
    if (items_ == 0) itemsBegan_ = now;
    if (now < nextDrawing_) return;
    nextDrawing_ = now + interval;
    draw();
}

void ProgressBar::draw() {
    constexpr std::size_t way = barWidth - markWidth;
    const std::size_t there = frame_++ % (2 * way);
    const std::size_t place = there <= way ? there : 2 * way - there;
    std::string line = (stage().empty() ? "" : stage() + ": ") + std::string(doing_) + ' ' + what_ + " [" +
                       std::string(place, ' ') + "<=>" + std::string(way - place, ' ') + "]";
    if (items_ >= 0) line += " " + std::to_string(items_);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - itemsBegan_).count();
    if (constexpr double enoughToTell = 0.2; items_ > 0 && seconds > enoughToTell)
        line += ", " + std::to_string(std::llround(static_cast<double>(items_) / seconds)) + "/s";
    line_.show(line);
}

}  // namespace ovno2::host
