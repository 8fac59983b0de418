#include "simulator/calls/the_world.h"

#include <algorithm>
#include <cstdio>
#include <set>

#include "simulator/base/text.h"
#include "simulator/commands/control_commands.h"
#include "simulator/images/json_text.h"
#include "simulator/images/phones_folder.h"
#include "simulator/system/system.h"

namespace ovno2::simulator {
namespace {

std::filesystem::path pathOf(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

// One line; what would steer a terminal is written as a number.
void show(std::string_view mistake) {
    std::string line = "simulated phones: ";
    for (std::size_t i = 0; i < mistake.size(); ++i) {
        const auto byte = static_cast<unsigned char>(mistake[i]);
        const bool isC1 =
            byte == 0xC2 && i + 1 < mistake.size() && static_cast<unsigned char>(mistake[i + 1]) < 0xA0;
        if (byte < 0x20 || byte == 0x7F || isC1) {
            line += "\\x" + toHex(mistake.substr(isC1 ? ++i : i, 1));
        } else {
            line += mistake[i];
        }
    }
    std::fputs((line + "\n").c_str(), stderr);
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
    // Lives as long as the process, as the library itself does then: others call it while they unload, and
    // the next one to load it finds the same phones.
    system::stayLoaded();
    auto* const world = new World;
    loadDefaultPhones(*world);
    if (const auto plan = system::environment("OVNO2_SIMULATOR_PLAN")) runPlanFile(*world, pathOf(*plan));
    if (const auto journal = system::environment("OVNO2_JOURNAL");
        journal && !world->journal.writeTo(pathOf(*journal))) {
        world->imageErrors.emplace_back(
            ImageError(pathOf(*journal), "", "a file that can be written to").what());
    }
    std::set<std::string> shown;
    for (const std::string& error : world->imageErrors) {
        if (shown.insert(error).second) show(error);
    }
    return world;
}

}  // namespace

World& theWorld() {
    static World& world = *begin();
    return world;
}

void tell(World& world, const std::string& mistake) {
    if (std::ranges::find(world.imageErrors, mistake) != world.imageErrors.end()) return;
    world.imageErrors.push_back(mistake);
    show(mistake);
}

}  // namespace ovno2::simulator
