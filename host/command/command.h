// What the commands of `ovphone` have in common: how they are registered, and the options that several take.
//
// A command is one source with a function `void registerX(CLI::App& app, Context& context)`, which adds the
// command's name, its options and what it does; the list in host/all_commands.h names them all. The function
// that a command does is called when the whole line has been understood. It throws CommandFailure, or
// whatever std::exception tells the user what is wrong.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace ovno2::host {

// What the line says.
struct Context {
    std::string format = "table";      // or "json"
    std::string connectivity;          // folder or name of a provider of the connectivity library
    std::string phones;                // folder of phone images for the simulator
    bool demo = false;                 // the bundled simulator and the user's copy of its phone
    std::optional<std::string> phone;  // as the user names it

    std::function<void()> action;  // of the innermost command that was given

    bool asJson() const { return format == "json"; }
};

// `action` is what the program does when `command` is given and none of its own commands. What it refers to
// must live as long as the context; a command's own options are best held by it (a std::shared_ptr).
void setAction(CLI::App& command, Context& context, std::function<void()> action);

// A command of `parent` with that action.
CLI::App& addCommand(CLI::App& parent, const char* name, const char* description, Context& context,
                     std::function<void()> action);

void addFormatOption(CLI::App& command, Context& context);         // --format
void addJsonFlag(CLI::App& command, Context& context);             // --json, for --format json
void addCommonOptions(CLI::App& command, Context& context);        // and --connectivity, --phones, --demo
void addPhoneOption(CLI::App& command, Context& context);          // --phone
void addQuietOption(CLI::App& command);                            // --quiet
void addPhoneCommandOptions(CLI::App& command, Context& context);  // all of these

}  // namespace ovno2::host
