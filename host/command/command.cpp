#include "host/command/command.h"

#include <CLI/CLI.hpp>

#include "host/output/command_output.h"

namespace ovno2::host {

namespace {

// The parser's own check, whose description would stand twice in the help.
CLI::Validator quiet(CLI::Validator check) {
    return check.description("");
}

}  // namespace

// The parser calls the innermost command first.
void setAction(CLI::App& command, Context& context, std::function<void()> action) {
    command.callback([&context, action = std::move(action)] {
        if (!context.action) context.action = action;
    });
}

CLI::App& addCommand(CLI::App& parent, const char* name, const char* description, Context& context,
                     std::function<void()> action) {
    CLI::App& command = *parent.add_subcommand(name, description);
    setAction(command, context, std::move(action));
    return command;
}

void addFormatOption(CLI::App& command, Context& context) {
    command
        .add_option("--format", context.format,
                    "for people (the default; cut to fit a terminal) or for programs")
        ->type_name("table|json")
        ->check(quiet(CLI::IsMember({"table", "json"})));
}

void addJsonFlag(CLI::App& command, Context& context) {
    command.add_flag_callback(
        "--json", [&context] { context.format = "json"; }, "the same as --format json");
}

void addCommonOptions(CLI::App& command, Context& context) {
    addFormatOption(command, context);
    command
        .add_option("--connectivity", context.connectivity,
                    "the connectivity library's folder, or its name beside this program")
        ->type_name("NAME|DIR");
    command.add_option("--phones", context.phones, "folder of phone images for the simulator")
        ->type_name("DIR")
        ->check(quiet(CLI::ExistingDirectory));
    command.add_flag("--demo", context.demo,
                     "a simulated phone, to try everything without a real one; what you change on it stays");
}

void addQuietOption(CLI::App& command) {
    command.add_flag_callback("-q,--quiet", beQuiet, "say nothing but what went wrong");
}

void addPhoneOption(CLI::App& command, Context& context) {
    command
        .add_option_function<std::string>(
            "--phone", [&context](const std::string& name) { context.phone = name; },
            "model, name or serial number, or a part of it (default: the first; commands that change a "
            "phone\n"
            "ask for a name when several are attached)")
        ->type_name("NAME|SERIAL");
}

void addPhoneCommandOptions(CLI::App& command, Context& context) {
    addCommonOptions(command, context);
    addPhoneOption(command, context);
    addQuietOption(command);
}

}  // namespace ovno2::host
