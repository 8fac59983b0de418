#include "simulator/calls/the_world.h"

#include <iostream>

#include "simulator/commands/control_commands.h"
#include "simulator/images/json_text.h"
#include "simulator/images/phones_folder.h"
#include "simulator/system/system.h"

namespace ovno2::simulator {
namespace {

std::filesystem::path pathOf(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

void loadDefaultPhones(World& world) {
    const std::optional<std::string> list = system::environment("OVNO2_PHONES");
    if (!list) {
        const std::filesystem::path beside = system::libraryFolder() / "phones";
        std::error_code ignored;
        if (std::filesystem::is_directory(beside, ignored)) loadPhones(world, beside);
        return;
    }
    for (std::size_t at = 0; at < list->size();) {
        const std::size_t end = std::min(list->find(system::pathListSeparator, at), list->size());
        if (end > at) loadPhones(world, pathOf(list->substr(at, end - at)));
        at = end + 1;
    }
}

// A plan from a file: one command of the control interface, or a list of them.
void runPlanFile(World& world, const std::filesystem::path& file) {
    const auto run = [&](const JsonNode& command) {
        try {
            runCommand(world, command);
        } catch (const std::exception& error) {
            world.imageErrors.emplace_back(error.what());
        }
    };
    try {
        JsonText text(file);
        const JsonNode plan = text.parse();
        if (plan.isArray()) {
            plan.forEachElement([&](const JsonNode& command, std::size_t) { run(command); });
        } else {
            run(plan);
        }
    } catch (const std::exception& error) {
        world.imageErrors.emplace_back(error.what());
    }
}

World* begin() {
    auto* const world = new World;  // lives as long as the process: other libraries call it while they unload
    loadDefaultPhones(*world);
    if (const auto plan = system::environment("OVNO2_SIMULATOR_PLAN")) runPlanFile(*world, pathOf(*plan));
    if (const auto journal = system::environment("OVNO2_JOURNAL")) world->journal.writeTo(pathOf(*journal));
    if (system::environment("OVNO2_PHONES_VERBOSE")) {
        for (const std::string& error : world->imageErrors)
            std::cerr << error << '\n';
    }
    return world;
}

}  // namespace

World& theWorld() {
    static World& world = *begin();
    return world;
}

}  // namespace ovno2::simulator
