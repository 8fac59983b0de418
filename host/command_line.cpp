#include "host/command_line.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <new>

#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/text.h"
#include "host/phones/phone_choice.h"

namespace ovno2::host {

namespace {

constexpr const char* examples = R"(Examples:
  ovphone                                      the attached phones, and the phone book of the first
  ovphone list --format json                   the attached phones, for a program
  ovphone contacts --phone "Nokia N95"         one phone's phone book
  ovphone contacts --pictures photos > book    ... in full, with the pictures in a folder
  ovphone files tree E:                        what lies on a drive of the phone
  ovphone files get -r E:/Images photos        the phone's pictures into a folder

Exit status: 0 done, 1 failed, 2 wrong usage.)";

// What was typed may be a slip of the hand.
std::string commandHint(const CLI::App& app, const std::string& typed) {
    std::vector<Text> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(fromUtf8(command->get_name()));
    const std::vector<Text> nearest = nearestNames(fromUtf8(typed), names, 1);
    return nearest.empty() ? "" : " Did you mean \"" + toUtf8(nearest[0]) + "\"?";
}

// Tells the user what is wrong with the line, or the help that it asks for.
int explain(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
        app.exit(error);
        return done;
    }
    std::cerr << "ovphone: " << error.what();
    const std::vector<std::string> unknown = app.remaining();
    if (!unknown.empty() && app.get_subcommands().empty())
        std::cerr << "." << commandHint(app, unknown.front());
    std::cerr << "\n\"ovphone --help\" explains the commands and options.\n";
    return wrongUsage;
}

std::string messageOf(const std::exception& error) {
    if (const auto* file = dynamic_cast<const std::filesystem::filesystem_error*>(&error))
        return "\"" + console::textOf(file->path1()) + "\": " + file->code().message() + ".";
    if (dynamic_cast<const std::bad_alloc*>(&error)) return "There is not enough memory.";
    return error.what();
}

int run(const std::function<void()>& action) {
    std::setvbuf(stdout, nullptr, _IONBF,
                 0);  // commands write large pieces, which need not be copied once more
    try {
        action();
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
            throw CommandFailure{failed, "The output could not be written."};
    } catch (const CommandFailure& failure) {
        if (!failure.message.empty()) note("ovphone: " + failure.message);
        return failure.status;
    } catch (const std::exception& error) {
        note("ovphone: " + messageOf(error));
        return failed;
    }
    return done;
}

}  // namespace

int runCommandLine(const std::vector<std::string>& arguments, std::span<RegisterCommand* const> commands) {
    Context context;
    CLI::App app("Shows the attached phones and what they hold.", "ovphone");
    app.footer(examples);
    app.allow_windows_style_options(false);  // a path may begin with "/"
    app.require_subcommand(0, 1);
    for (RegisterCommand* const command : commands)
        command(app, context);

    // The parser takes the arguments from the back.
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    if (!reversed.empty()) reversed.pop_back();
    try {
        app.parse(reversed);
    } catch (const CLI::ParseError& error) {
        return explain(app, error);
    }
    return run(context.action);
}

}  // namespace ovno2::host
