#include "host/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
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
  ovphone contacts show --pictures photos > book
                                               ... in full, with the pictures in a folder
  ovphone files tree E:                        what lies on a drive of the phone
  ovphone files get -r E:/Images photos        the phone's pictures into a folder
  ovphone help contacts                        more about a command

Exit status: 0 done, 1 failed or not all of it could be done, 2 wrong usage.)";

std::vector<CLI::App*> commandsOf(const CLI::App& app) {
    return const_cast<CLI::App&>(app).get_subcommands([](const CLI::App*) { return true; });
}

// What was typed may be a slip of the hand.
std::string hint(const std::string& typed, const std::vector<Text>& names) {
    const std::vector<Text> nearest = nearestNames(fromUtf8(typed), names, 1);
    return nearest.empty() ? "" : " Did you mean \"" + toUtf8(nearest[0]) + "\"?";
}

std::string commandHint(const CLI::App& app, const std::string& typed) {
    std::vector<Text> names;
    for (const CLI::App* command : commandsOf(app))
        names.push_back(fromUtf8(command->get_name()));
    return hint(typed, names);
}

std::string optionHint(const CLI::App& app, const std::string& typed) {
    std::vector<Text> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames())
            names.push_back(fromUtf8("--" + name));
    }
    return hint(typed.substr(0, typed.find('=')), names);
}

std::string lineOf(const CLI::App& command) {
    const CLI::App* const parent = command.get_parent();
    return (parent ? lineOf(*parent) + " " : "") + command.get_name();
}

// The innermost command that was understood.
const CLI::App& innermost(const CLI::App& app) {
    const std::vector<CLI::App*> given = app.get_subcommands();
    return given.empty() ? app : innermost(*given.front());
}

// Tells the user what is wrong with the line, or the help that it asks for.
int explain(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
        app.exit(error);
        return done;
    }
    const CLI::App& command = innermost(app);
    std::cerr << "ovphone: " << error.what();
    if (const std::vector<std::string> unknown = app.remaining(/*recurse=*/true); !unknown.empty())
        std::cerr << "."
                  << (unknown.front().starts_with("-") ? optionHint(command, unknown.front())
                                                       : commandHint(command, unknown.front()));
    std::cerr << "\n\"" << lineOf(command) << " --help\" explains the commands and options.\n";
    return wrongUsage;
}

// "help": the help of the program, or of the command that the words name.
void addHelp(CLI::App& app, Context& context) {
    const auto words = std::make_shared<std::vector<std::string>>();
    CLI::App& help = addCommand(app, "help", "Explain a command", context, [&app, words] {
        const CLI::App* command = &app;
        for (const std::string& word : *words) {
            const std::vector<CLI::App*> known = commandsOf(*command);
            const auto named =
                std::ranges::find_if(known, [&](const CLI::App* one) { return one->get_name() == word; });
            if (named == known.end())
                throw CommandFailure{wrongUsage, "There is no command \"" + lineOf(*command) + " " + word +
                                                     "\"." + commandHint(*command, word)};
            command = *named;
        }
        const CLI::App* const parent = command->get_parent();
        write(command->help(parent ? lineOf(*parent) : ""));
    });
    help.add_option("COMMAND", *words, "such as \"files get\" (default: the program)")->type_name("");
    help.footer(R"(Examples:
  ovphone help
  ovphone help contacts find)");
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

std::unique_ptr<CLI::App> makeCommandLine(Context& context, std::span<RegisterCommand* const> commands) {
    auto program = std::make_unique<CLI::App>("Shows the attached phones and what they hold.", "ovphone");
    CLI::App& app = *program;
    app.footer(examples);
    app.allow_windows_style_options(false);  // a path may begin with "/"
    app.require_subcommand(0, 1);
    app.set_version_flag("--version", "ovphone " OVNO2_VERSION, "Show the program's version and end");
    for (RegisterCommand* const command : commands)
        command(app, context);
    addHelp(app, context);
    return program;
}

int runCommandLine(const std::vector<std::string>& arguments, std::span<RegisterCommand* const> commands) {
    Context context;
    const std::unique_ptr<CLI::App> app = makeCommandLine(context, commands);

    // The parser takes the arguments from the back.
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    if (!reversed.empty()) reversed.pop_back();
    try {
        app->parse(reversed);
    } catch (const CLI::ParseError& error) {
        return explain(*app, error);
    }
    return run(context.action);
}

}  // namespace ovno2::host
