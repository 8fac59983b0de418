#include "host/files/transfer_progress.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "host/output/console.h"
#include "host/output/display_width.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

constexpr std::chrono::milliseconds patience{300};  // before the first drawing
constexpr std::chrono::milliseconds interval{80};
constexpr std::size_t barWidth = 20;

std::string timeText(double seconds) {
    const long long whole = std::llround(seconds);
    std::array<char, 32> text{};
    if (whole < 3600)
        std::snprintf(text.data(), text.size(), "%lld:%02lld", whole / 60, whole % 60);
    else
        std::snprintf(text.data(), text.size(), "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60,
                      whole % 60);
    return text.data();
}

}  // namespace

std::string sizeText(std::uint64_t bytes) {
    if (bytes < 1000) return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    static constexpr const char* units[] = {"KB", "MB", "GB", "TB"};
    double size = static_cast<double>(bytes) / 1024;
    std::size_t unit = 0;
    for (; size >= 999.95 && unit + 1 < std::size(units); ++unit)
        size /= 1024;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f %s", size, units[unit]);
    return text.data();
}

std::string transferLine(const TransferState& state, std::size_t width) {
    const double share =
        state.total == 0 ? 0
                         : std::min(1.0, static_cast<double>(state.done) / static_cast<double>(state.total));
    const auto filled = static_cast<std::size_t>(share * barWidth);
    std::string line = state.place + (state.place.empty() ? "[" : " [") + std::string(filled, '#') +
                       std::string(barWidth - filled, ' ') + "] " +
                       std::to_string(static_cast<int>(share * 100)) + " % of " + sizeText(state.total);
    if (state.done != 0 && state.seconds > 0) {
        const double rate = static_cast<double>(state.done) / state.seconds;
        line += ", " + sizeText(static_cast<std::uint64_t>(rate)) + "/s, " +
                timeText(static_cast<double>(state.total - std::min(state.done, state.total)) / rate) +
                " left";
    }
    constexpr double longFile = 2;
    if (state.fileSeconds >= longFile)
        line += ", a file of " + sizeText(state.size) + " since " + timeText(state.fileSeconds);
    return toUtf8(cutToWidth(fromUtf8(line) + u": " + singleLine(state.name), width));
}

TransferProgress::TransferProgress(std::uint64_t totalBytes, bool shown)
    : shown_(shown), nextDrawing_(start_ + patience) {
    state_.total = totalBytes;
}

double TransferProgress::seconds() const {
    return std::chrono::duration<double>(Clock::now() - start_).count();
}

void TransferProgress::left(std::uint64_t bytes) {
    isUnderWay_ = false;
    state_.total -= std::min(bytes, state_.total);
}

void TransferProgress::copied(std::uint64_t bytes) {
    isUnderWay_ = false;
    state_.done += bytes;
}

void TransferProgress::begin(const Text& name, std::uint64_t bytes) {
    state_.name = name;
    state_.size = bytes;
    isUnderWay_ = true;
    const auto now = fileStart_ = Clock::now();
    // A large file may take long: it is named at once.
    constexpr std::uint64_t large = 1 << 20;
    if (now >= nextDrawing_ || (state_.total >= large && !visible_)) draw(now);
}

void TransferProgress::tick() {
    const auto now = Clock::now();
    if (isUnderWay_ && now >= nextDrawing_) draw(now);
}

void TransferProgress::draw(Clock::time_point now) {
    if (!shown_) return;
    nextDrawing_ = now + interval;
    state_.seconds = seconds();
    state_.fileSeconds = std::chrono::duration<double>(now - fileStart_).count();
    const std::size_t width = console::terminalWidth();
    const std::string line = transferLine(state_, width - 1);
    const std::size_t cells = displayWidth(fromUtf8(line));
    std::fputs(("\r" + line + std::string(width - 1 - std::min(cells, width - 1), ' ')).c_str(), stderr);
    std::fflush(stderr);
    visible_ = true;
}

void TransferProgress::hide() {
    if (!visible_) return;
    std::fputs(("\r" + std::string(console::terminalWidth() - 1, ' ') + "\r").c_str(), stderr);
    std::fflush(stderr);
    visible_ = false;
}

}  // namespace ovno2::host
