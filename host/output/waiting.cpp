#include "host/output/waiting.h"

#include <utility>

#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/display_width.h"

namespace ovno2::host {

Waiting::Waiting(std::string what, std::string ifInterrupted)
    : what_(std::move(what)),
      ifInterrupted_(std::move(ifInterrupted)),
      interruption_({.tick = [this] { tick(); },
                     .end =
                         [this] {
                             line_.hide();
                             note("ovphone: " + ifInterrupted_);
                         }}) {}

void Waiting::tick() {
    if (isQuiet() || !console::errorIsTerminal()) return;
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start_);
    const Text line = fromUtf8(what_ + " ... " + std::to_string(seconds.count()) + " s");
    line_.show(toUtf8(cutToWidth(line, console::terminalWidth() - 1)));
}

void Waiting::finish() {
    line_.hide();
    if (interruption_.signal() != 0) throw CommandFailure{128 + interruption_.signal(), ifInterrupted_};
}

}  // namespace ovno2::host
