// The progress of a copy, on one line of standard error that is taken away again at the end: how much is
// done, how fast, and how long the rest will take.
//
// A phone takes and gives files whole and tells nothing meanwhile, so the bar moves on with every file; of
// one that takes long the line tells its size and for how long it has been under way. Nothing is shown for a
// copy that ends at once.
#pragma once

#include <chrono>
#include <string>

#include "host/output/text.h"

namespace ovno2::host {

// "3.4 MB", "999 bytes".
std::string sizeText(std::uint64_t bytes);

struct TransferState {
    std::uint64_t done = 0;   // bytes
    std::uint64_t total = 0;  // bytes
    double seconds = 0;       // since the beginning
    Text name;                // of the file under way
    std::uint64_t size = 0;   // its bytes
    double fileSeconds = 0;   // since it began
    std::string place = {};   // of the copy in a larger whole: "5 of 5, file 3 of 171"; mostly empty
};
// The line, cut to `width` cells.
std::string transferLine(const TransferState& state, std::size_t width);

class TransferProgress {
  public:
    // With `shown` false nothing is ever written.
    TransferProgress(std::uint64_t totalBytes, bool shown);
    ~TransferProgress() { hide(); }
    TransferProgress(const TransferProgress&) = delete;
    TransferProgress& operator=(const TransferProgress&) = delete;

    void setPlace(std::string place) { state_.place = std::move(place); }
    void begin(const Text& name, std::uint64_t bytes);  // a file
    void tick();                                        // draws anew while it is under way
    void copied(std::uint64_t bytes);
    void left(std::uint64_t bytes);  // a file that is not copied after all
    void hide();                     // before something else is written

    std::uint64_t bytesCopied() const { return state_.done; }
    double seconds() const;

  private:
    using Clock = std::chrono::steady_clock;

    void draw(Clock::time_point now);

    TransferState state_;
    bool shown_;
    bool visible_ = false;
    bool isUnderWay_ = false;
    Clock::time_point fileStart_;
    Clock::time_point start_ = Clock::now();
    Clock::time_point nextDrawing_;
};

}  // namespace ovno2::host
