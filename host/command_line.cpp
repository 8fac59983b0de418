#include "host/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "base/utf8.h"
#include "host/exit_status.h"
#include "host/phone_choice.h"

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

constexpr const char* filesHelp =
    R"(Phone paths begin with a drive or its label: E:/Images, "Memory card/Images"; / is the phone itself. In every
part of a path * stands for any characters and ? for one; quote them, so that the shell leaves them alone.)";

void addFilesCommand(CLI::App& app, Options& options, std::string& format) {
    CLI::App* files = app.add_subcommand(
        "files", "Browse the files of a phone, copy and change them; alone it shows the drives");
    files->require_subcommand(0, 1);
    files->callback([&options] { options.command = Command::files; });
    files->footer(filesHelp);
    FilesOptions& wanted = options.files;
    const auto add = [&](const char* name, const char* description, FilesAction action) {
        CLI::App* added = files->add_subcommand(name, description);
        added->callback([&options, action] {
            options.command = Command::files;
            options.files.action = action;
        });
        added->footer(filesHelp);
        addCommonOptions(*added, options, format);
        addPhoneOption(*added, options);
        return added;
    };
    const auto addPaths = [&](CLI::App* action, const char* name, const char* description, int fewest) {
        CLI::Option* paths = action->add_option(name, wanted.paths, description);
        paths->expected(fewest, CLI::detail::expected_max_vector_size);
        paths->type_name("");
        if (fewest > 0) paths->required();
    };
    const auto addRecursive = [&](CLI::App* action, const char* description) {
        action->add_flag("-r,--recursive", wanted.recursive, description);
    };
    const auto addForce = [&](CLI::App* action) {
        action->add_flag("-f,--force", wanted.force, "overwrite files that are there and differ");
    };

    CLI::App* list = add("ls", "List folders and files", FilesAction::list);
    addPaths(list, "PATH", "what to list (default: the drives)", 0);
    addRecursive(list, "with all that is in the folders");
    addPaths(add("tree", "Draw the tree of folders and files", FilesAction::tree), "PATH",
             "where to begin (default: the phone itself)", 0);
    CLI::App* get =
        add("get", "Copy files from the phone; what is there already is skipped", FilesAction::get);
    addPaths(get, "PATH",
             "what to get; the last of several is the folder here that it goes to, which is made when it is\n"
             "missing (default: the current folder)",
             1);
    addRecursive(get, "folders with all that is in them");
    addForce(get);
    CLI::App* put = add("put", "Copy files to the phone; what is there already is skipped", FilesAction::put);
    addPaths(put, "FILE", "what to put; the last is the path of the phone's folder that it goes to", 2);
    addRecursive(put, "folders with all that is in them");
    addForce(put);
    CLI::App* rename = add("mv", "Give a file or folder another name", FilesAction::rename);
    rename->add_option("PATH", wanted.renamed, "what to rename")->type_name("")->required();
    rename->add_option("NAME", wanted.newName, "its new name in the same folder")->type_name("")->required();
    CLI::App* remove = add("rm", "Delete files", FilesAction::remove);
    addPaths(remove, "PATH", "what to delete", 1);
    addRecursive(remove, "folders with all that is in them");
    CLI::App* makeFolder = add("mkdir", "Make folders", FilesAction::makeFolder);
    addPaths(makeFolder, "PATH", "the new folders", 1);
    makeFolder->add_flag("-p,--parents", wanted.parents,
                         "make the folders above, too; a folder that is there is no failure");
    addPaths(add("rmdir", "Delete empty folders", FilesAction::removeFolder), "PATH", "what to delete", 1);
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
    app.allow_windows_style_options(false);  // a path may begin with "/"
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

    addFilesCommand(app, options, format);
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
