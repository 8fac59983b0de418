// `ovphone log` and its commands
#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <thread>

#include "host/log/commands.h"
#include "host/log/log_switch.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

void showLogState() {
    const LogState log = logState();
    write("The log is " + std::string(log.on ? "on" : "off") + ", level " + std::to_string(log.level) +
          (log.timestamps ? ", with timestamps" : "") + ".\n");
    write(log.file.empty() ? "It has no file.\n" : "File: " + console::textOf(log.file) + "\n");
}

// Ends a command that changed a switch.
void showChange(bool stored) {
    if (!stored) throw CommandFailure{failed, "The registry cannot be written."};
    showLogState();
}

// A log without a file would be lost, unless a viewer happens to be there.
bool switchLogOnWithFile() {
    return (!logState().file.empty() || setLogFile(console::userFolder() / "ovNo2.log")) && switchLogOn();
}

// The module never makes folders for its log.
fs::path logFileOf(const std::string& given) {
    fs::path file = fs::absolute(console::pathOf(given)).lexically_normal();
    if (!fs::is_directory(file.parent_path()) || fs::is_directory(file))
        throw CommandFailure{failed,
                             "\"" + given + "\" cannot be a file: " +
                                 (fs::is_directory(file) ? "it is a folder." : "there is no such folder.")};
    return file;
}

void followLog() {
    const LogState log = logState();
    if (log.file.empty())
        throw CommandFailure{failed,
                             "The log has no file. \"ovphone log on\" gives it one and switches it on."};
    if (!log.on) note("(The log is off; \"ovphone log on\" switches it on.)");
    constexpr std::size_t earlierLines = 10;
    LogFollower follower(log.file, earlierLines);
    while (std::ferror(stdout) == 0) {
        write(follower.more());
        std::fflush(stdout);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
}

constexpr const char* examples = R"(Examples:
  ovphone log                                    whether it is on, and where it goes
  ovphone log file driver.log                    into a file of your own ...
  ovphone log on                                 ... from now on
  ovphone log level 5 --timestamps               with the details and the time of every line
  ovphone log follow                             as it grows, until Ctrl-C)";

}  // namespace

void registerLog(CLI::App& app, Context& context) {
    struct LogOptions {
        std::string file;
        int level = 0;
        bool timestamps = false;
    };
    const auto options = std::make_shared<LogOptions>();
    CLI::App& log = addCommand(app, "log", "Show or change the switches of the module's diagnostic log",
                               context, showLogState);
    log.require_subcommand(0, 1);
    log.footer(examples);
    addCommand(log, "on", "Switch the log on", context, [] { showChange(switchLogOnWithFile()); });
    addCommand(log, "off", "Switch the log off", context, [] { showChange(switchLogOff()); });
    CLI::App& file = addCommand(log, "file", "Write the log to this file", context,
                                [options] { showChange(setLogFile(logFileOf(options->file))); });
    file.add_option("FILE", options->file, "a file; it is made when it is missing")
        ->type_name("")
        ->required();
    CLI::App& level = addCommand(log, "level", "Choose how much a viewer of the log is sent", context,
                                 [options] { showChange(setLogLevel(options->level, options->timestamps)); });
    level.add_option("N", options->level, "0 (ordinary lines only) to 15")
        ->type_name("")
        ->required()
        ->check(CLI::Range(0, 15).description(""));
    level.add_flag("--timestamps", options->timestamps,
                   "begin every line with the time, in seconds of the day");
    addCommand(log, "follow", "Show the log's lines as they come; Ctrl-C ends it", context, followLog);
    for (CLI::App* command : log.get_subcommands([](CLI::App*) { return true; }))
        command->footer(examples);
}

}  // namespace ovno2::host
