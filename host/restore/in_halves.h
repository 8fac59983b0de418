// Many changes of which the phone keeps all or none: when it refuses them together, one of them may be to
// blame.
#pragma once

#include <functional>
#include <span>
#include <string>

namespace ovno2::host {

// `write` gives why the phone refused the changes; empty = it has taken them. What is refused is tried again
// in halves, down to single ones; after three single ones in a row that the phone refused it is not asked for
// more, and `write` is called with none of the rest.
template <class Change>
void inHalves(std::span<Change> changes, const std::function<std::string(std::span<Change>)>& write) {
    constexpr int mostRefusals = 3;
    int refusals = 0;
    const std::function<void(std::span<Change>)> writeAll = [&](std::span<Change> some) {
        if (some.empty() || refusals >= mostRefusals) return;
        if (write(some).empty()) {
            refusals = 0;
        } else if (some.size() == 1) {
            ++refusals;
        } else {
            writeAll(some.first(some.size() / 2));
            writeAll(some.subspan(some.size() / 2));
        }
    };
    writeAll(changes);
}

}  // namespace ovno2::host
