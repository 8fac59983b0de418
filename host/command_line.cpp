#include "host/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "host/exit_status.h"
#include "host/phone_choice.h"
#include "support/utf8.h"

namespace ovno2::host {

namespace {

constexpr const char* examples = R"(Examples:
  ovphone                                      the attached phones, and the phone book of the first
  ovphone list --format json                   the attached phones, for a program
  ovphone contacts --phone "Nokia N95"         one phone's phone book
  ovphone contacts --pictures photos > book    ... in full, with the pictures in a folder

Exit status: 0 done, 1 failed, 2 wrong usage.)";

const std::map<std::string, Format> formats = {{"table", Format::table}, {"json", Format::json}};

// The parser's own check, whose description would stand twice in the help.
CLI::Validator quiet(CLI::Validator check) {
    return check.description("");
}

void addCommonOptions(CLI::App& command, Options& options, std::string& format) {
    command.add_option("--format", format, "for people (the default; cut to fit a terminal) or for programs")
        ->type_name("table|json")
        ->check(quiet(CLI::IsMember({"table", "json"})));
    command
        .add_option("--connectivity", options.connectivity,
                    "the connectivity library's folder, or its name beside this program")
        ->type_name("NAME|DIR");
    command.add_option("--phones", options.phones, "folder of phone images for the simulator")
        ->type_name("DIR")
        ->check(quiet(CLI::ExistingDirectory));
}

void addPhoneOption(CLI::App& command, Options& options) {
    command
        .add_option("--phone", options.phone,
                    "model, name or serial number, or a part of it (default: the first)")
        ->type_name("NAME|SERIAL");
}

void addLogCommand(CLI::App& app, Options& options) {
    CLI::App* log = app.add_subcommand("log", "Show or change the switches of the module's diagnostic log");
    log->require_subcommand(0, 1);
    log->callback([&options, log] {
        if (log->get_subcommands().empty()) options.command = Command::logState;
    });
    const auto add = [&](const char* name, const char* description, Command command) {
        CLI::App* action = log->add_subcommand(name, description);
        action->callback([&options, command] { options.command = command; });
        return action;
    };
    add("on", "Switch the log on", Command::logOn);
    add("off", "Switch the log off", Command::logOff);
    add("file", "Write the log to this file", Command::logFile)
        ->add_option("PATH", options.logFile, "a file; it is made when it is missing")
        ->required();
    CLI::App* level = add("level", "Choose how much a viewer of the log is sent", Command::logLevel);
    level->add_option("N", options.logLevel, "0 (ordinary lines only) to 15")
        ->required()
        ->check(CLI::Range(0, 15));
    level->add_flag("--timestamps", options.logTimestamps,
                    "begin every line with the time, in seconds of the day");
    add("follow", "Show the log's lines as they come; Ctrl-C ends it", Command::logFollow);
}

// What was typed may be a slip of the hand.
std::string commandHint(const CLI::App& app, const std::string& typed) {
    std::vector<Text> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(fromUtf8(command->get_name()));
    const std::vector<Text> nearest = nearestNames(fromUtf8(typed), names, 1);
    return nearest.empty() ? "" : " Did you mean \"" + toUtf8(nearest[0]) + "\"?";
}

}  // namespace

std::optional<Options> parseCommandLine(const std::vector<std::string>& arguments, int& exitStatus) {
    Options options;
    std::string format = "table";
    CLI::App app("Shows the attached phones and what they hold.", "ovphone");
    app.footer(examples);
    app.require_subcommand(0, 1);
    addCommonOptions(app, options, format);
    addPhoneOption(app, options);

    const auto addCommand = [&](const char* name, const char* description, Command command) {
        CLI::App* added = app.add_subcommand(name, description);
        added->callback([&options, command] { options.command = command; });
        addCommonOptions(*added, options, format);
        return added;
    };
    addCommand("list", "Show the attached phones, one line a connection", Command::list);
    CLI::App* contacts = addCommand("contacts", "Show the phone book of a phone", Command::contacts);
    addPhoneOption(*contacts, options);
    contacts
        ->add_option("--pictures", options.pictures,
                     "write the contacts' pictures to this folder, which is made when it is missing")
        ->type_name("DIR");

    addCommand("doctor", "Say what is installed to reach phones with, what is missing and what to do",
               Command::doctor);
    addLogCommand(app, options);

    // The parser takes the arguments from the back.
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    if (!reversed.empty()) reversed.pop_back();
    try {
        app.parse(reversed);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            app.exit(error);
            exitStatus = done;
            return std::nullopt;
        }
        std::cerr << "ovphone: " << error.what();
        const std::vector<std::string> unknown = app.remaining();
        if (!unknown.empty() && app.get_subcommands().empty())
            std::cerr << "." << commandHint(app, unknown.front());
        std::cerr << "\n\"ovphone --help\" explains the commands and options.\n";
        exitStatus = wrongUsage;
        return std::nullopt;
    }
    options.format = formats.at(format);
    return options;
}

}  // namespace ovno2::host
