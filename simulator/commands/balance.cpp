#include "simulator/commands/balance.h"

namespace ovno2::simulator {

nlohmann::json balanceOf(const World& world) {
    nlohmann::json handedOut = nlohmann::json::object();
    for (std::size_t i = 1; i < blockKinds; ++i) {
        const auto kind = static_cast<BlockKind>(i);
        const std::uint64_t live = world.memory.live(kind);
        if (live != 0 && kind != BlockKind::held) handedOut[nameOf(kind)] = live;
    }
    nlohmann::json open = nlohmann::json::object();
    for (std::size_t i = 0; i < sessionKinds; ++i) {
        const auto kind = static_cast<SessionKind>(i);
        if (const std::uint64_t count = world.sessions.count(kind)) open[nameOf(kind)] = count;
    }
    nlohmann::json started = nlohmann::json::object();
    const auto counts = world.startedByAll();
    for (std::size_t i = 0; i < groups; ++i) {
        if (counts[i] != 0) started[nameOf(static_cast<Group>(i))] = counts[i];
    }
    return {{"handedOut", std::move(handedOut)},
            {"open", std::move(open)},
            {"started", std::move(started)},
            {"closedInside", world.sessions.closedInside()},
            {"misuse", world.misuse}};
}

}  // namespace ovno2::simulator
