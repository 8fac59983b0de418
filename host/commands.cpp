#include "host/commands.h"

#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "base/utf8.h"
#include "host/attached_phones.h"
#include "host/command_output.h"
#include "host/console.h"
#include "host/contact_output.h"
#include "host/doctor.h"
#include "host/exit_status.h"
#include "host/field_table.h"
#include "host/files/files_command.h"
#include "host/log_switch.h"
#include "host/phone_output.h"
#include "host/progress.h"
#include "host/result_messages.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

// Where pictures go: the folder that the user names, or one that is removed afterwards, since the phone's
// pictures come with the contacts in any case.
class PictureFolder {
  public:
    explicit PictureFolder(const std::string& wanted) : kept_(!wanted.empty()) {
        if (kept_) {
            const fs::path path = fs::absolute(console::pathOf(wanted));
            std::error_code error;
            fs::create_directories(path, error);
            if (!fs::is_directory(path))
                throw CommandFailure{failed, "--pictures: the folder \"" + wanted + "\" cannot be made" +
                                                 (error ? ": " + error.message() : "") + "."};
            path_ = path;
        } else {
            path_ = console::makeTemporaryFolder();
        }
    }
    ~PictureFolder() {
        std::error_code ignored;
        if (!kept_) fs::remove_all(path_, ignored);
    }
    PictureFolder(const PictureFolder&) = delete;
    PictureFolder& operator=(const PictureFolder&) = delete;

    std::string path() const { return console::textOf(path_); }

  private:
    bool kept_;
    fs::path path_;
};

// The commands on attached phones.
class Session {
  public:
    explicit Session(const Options& options) : options_(options), phones_(options) {}

    void list() {
        if (options_.format == Format::json)
            write(phonesAsJson(phones_.all()));
        else if (phones_.all().empty())
            note("No phone is attached.");
        else
            writeTable(phonesAsTable(phones_.all()));
    }

    void contacts() {
        const std::vector<Contact> book = readContacts(phones_.chosen());
        const bool pictures = !options_.pictures.empty();
        if (options_.format == Format::json)
            writeContactsAsJson(book, pictures, write);
        else if (book.empty())
            note("The phone book is empty.");
        else
            writeTable(contactsAsTable(book, pictures));
    }

    void overview() {
        const ListedPhone& phone = phones_.chosen();
        if (options_.format == Format::table) {
            write("Attached phones\n\n");
            list();
        }
        const std::vector<Contact> book = readContacts(phone);
        if (options_.format == Format::json) {
            write("{\"phones\": " + phonesAsJson(phones_.all()) + ",\n\"contacts\": ");
            writeContactsAsJson(book, /*pictures=*/false, write);
            write("}\n");
            return;
        }
        write("\nPhone book of " + titleOf(phone) + ": " + std::to_string(book.size()) + " contacts\n\n");
        constexpr std::size_t pageWidth = 120;
        if (!book.empty())
            writeTable(contactsAsTable(book, false), pageWidth,
                       "\"ovphone contacts\" into a file, or --format json,");
    }

  private:
    std::vector<Contact> readContacts(const ListedPhone& phone) {
        const PictureFolder pictures(options_.pictures);
        std::vector<Contact> contacts;
        Long result = 0;
        {
            ProgressBar progress("the contacts of " + titleOf(phone), console::errorIsTerminal());
            result = phones_.driver().readContacts(
                phone, fieldDefinitions(), pictures.path(), [&](Long value) { progress.advanceTo(value); },
                contacts);
        }
        if (result < 0)
            throw CommandFailure{failed, resultMessage(Operation::readContacts, result, titleOf(phone))};
        return contacts;
    }

    const Options& options_;
    AttachedPhones phones_;
};

void doctor(const Options& options) {
    const Diagnosis diagnosis = diagnose(*openDriver(options));
    if (options.format == Format::json) {
        nlohmann::ordered_json object;
        for (const Finding& finding : diagnosis.findings)
            object[finding.key] = toUtf8(finding.value);
        object["problems"] = diagnosis.problems;
        write(object.dump(2) + "\n");
    } else {
        Table table({u"What", u"Found"});
        for (const Finding& finding : diagnosis.findings)
            table.addRow({finding.label, finding.value});
        writeTable(table);
        write(diagnosis.problems.empty() ? "\nPhones can be read.\n" : "\nWhat to do:\n");
        for (const std::string& problem : diagnosis.problems)
            write("- " + problem + "\n");
    }
    if (!diagnosis.problems.empty()) throw CommandFailure{failed, {}};
}

void showLogState() {
    const LogState log = logState();
    write("The log is " + std::string(log.on ? "on" : "off") + ", level " + std::to_string(log.level) +
          (log.timestamps ? ", with timestamps" : "") + ".\n");
    write(log.file.empty() ? "It has no file.\n" : "File: " + console::textOf(log.file) + "\n");
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

void changeLog(const Options& options) {
    bool stored = false;
    switch (options.command) {
        case Command::logOn:
            stored = switchLogOnWithFile();
            break;
        case Command::logOff:
            stored = switchLogOff();
            break;
        case Command::logFile:
            stored = setLogFile(logFileOf(options.logFile));
            break;
        default:
            stored = setLogLevel(options.logLevel, options.logTimestamps);
            break;
    }
    if (!stored) throw CommandFailure{failed, "The registry cannot be written."};
    showLogState();
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

void run(const Options& options) {
    switch (options.command) {
        case Command::overview:
            Session(options).overview();
            break;
        case Command::list:
            Session(options).list();
            break;
        case Command::contacts:
            Session(options).contacts();
            break;
        case Command::files:
            runFilesCommand(options);
            break;
        case Command::doctor:
            doctor(options);
            break;
        case Command::logState:
            showLogState();
            break;
        case Command::logFollow:
            followLog();
            break;
        default:
            changeLog(options);
            break;
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw CommandFailure{failed, "The output could not be written."};
}

}  // namespace

int runCommand(const Options& options) {
    int status = done;
    std::string message;
    try {
        run(options);
    } catch (const CommandFailure& failure) {
        status = failure.status;
        message = failure.message;
    } catch (const std::exception& error) {
        status = failed;
        message = error.what();
    }
    if (!message.empty()) note("ovphone: " + message);
    return status;
}

}  // namespace ovno2::host
