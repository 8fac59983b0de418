#include "simulator/commands/balance.h"

namespace ovno2::simulator {
namespace {

// An object with the counts that are not 0, each under the name of its kind.
template <typename Kind, typename CountOf>
void writeCounts(JsonWriter& answer, const char* name, std::size_t kinds, CountOf countOf) {
    answer.Key(name);
    answer.StartObject();
    for (std::size_t i = 0; i < kinds; ++i) {
        const auto kind = static_cast<Kind>(i);
        if (const std::uint64_t count = countOf(kind)) answer.member(nameOf(kind), count);
    }
    answer.EndObject();
}

}  // namespace

void writeBalance(JsonWriter& answer, const World& world) {
    writeCounts<BlockKind>(answer, "handedOut", blockKinds, [&](BlockKind kind) {
        return kind == BlockKind::held ? 0 : world.memory.live(kind);
    });
    writeCounts<SessionKind>(answer, "open", sessionKinds,
                             [&](SessionKind kind) { return world.sessions.count(kind); });
    writeCounts<Group>(answer, "started", groups, [counts = world.startedByAll()](Group group) {
        return counts[static_cast<std::size_t>(group)];
    });
    answer.member("closedInside", world.sessions.closedInside());
    answer.member("misuse", world.misuse);
}

}  // namespace ovno2::simulator
