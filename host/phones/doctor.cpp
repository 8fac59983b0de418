// `ovphone doctor`: what is installed on this machine to reach phones with, and what is missing.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <optional>

#include "host/driver/driver.h"
#include "host/driver/result_messages.h"
#include "host/log/log_switch.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/json.h"
#include "host/phones/attached_phones.h"
#include "host/phones/commands.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

struct Problem {
    const char* kind;     // for programs
    std::string message;  // what keeps phones from being read, and what to do about it; UTF-8
};

// What was found; empty or 0 = nothing.
struct Diagnosis {
    Text suite, suiteBuild;  // the desktop software
    SoftwareReport software;
    std::vector<TextView> running;
    std::string libraryFolder;  // empty = the system's own search
    struct Library {
        const char* key;  // name in JSON
        const char16_t* name;
        bool isThere;
        Text version;
    };
    std::vector<Library> libraries;   // of the folder
    std::optional<Long> connections;  // none = they cannot be listed
    LogState log;
    std::vector<Problem> problems;
};

// The desktop software, the newest kind first.
void findSuite(Diagnosis& diagnosis) {
    const struct {
        TextView name, key, value;
    } suites[] = {
        {u"Nokia Suite", u"SOFTWARE\\Nokia\\Nokia Suite", u"BuildNumber"},
        {u"Nokia Ovi Suite", u"SOFTWARE\\Nokia\\Nokia Ovi Suite", u"OviSuiteBuildNumber"},
        {u"Nokia PC Suite", u"SOFTWARE\\Nokia", u"PCSuiteBuildNumber"},
    };
    for (const auto& suite : suites) {
        diagnosis.suiteBuild = computer::machineValue(suite.key, suite.value);
        diagnosis.suite = suite.name;
        if (!diagnosis.suiteBuild.empty()) return;
    }
    diagnosis.suite.clear();
}

void findLibraries(Diagnosis& diagnosis) {
    if (diagnosis.libraryFolder.empty()) return;
    for (const auto& [key, name] :
         {std::pair("deviceLibrary", u"ConnAPI"), std::pair("contentLibrary", u"DAAPI")}) {
        const fs::path file = console::pathOf(diagnosis.libraryFolder) / libraryFile(toUtf8(name));
        const bool isThere = fs::exists(file);
        diagnosis.libraries.push_back(
            {key, name, isThere, isThere ? computer::programVersion(file) : Text()});
    }
}

Diagnosis diagnose(PhoneDriver& driver) {
    constexpr TextView programs[] = {u"NclTray.exe", u"ConnectionManager.exe", u"PcSync2.exe"};
    Diagnosis diagnosis;
    findSuite(diagnosis);
    diagnosis.software = driver.software();
    diagnosis.running = computer::runningAmong(programs);
    diagnosis.libraryFolder = driver.connectivityFolder();
    findLibraries(diagnosis);
    std::vector<ListedPhone> phones;
    const Long listed = driver.listPhones(phones);
    if (listed >= 0) diagnosis.connections = static_cast<Long>(phones.size());
    diagnosis.log = logState();

    const auto add = [&](const char* kind, std::string message) {
        diagnosis.problems.push_back({kind, std::move(message)});
    };
    if (std::ranges::any_of(diagnosis.libraries, [](const auto& library) { return !library.isThere; }))
        add("libraryIncomplete",
            "The library folder lacks a part of the connectivity library. Install the phone "
            "maker's connectivity software again, or name another folder with --connectivity.");
    if (listed < 0)
        add("phonesNotListed", resultMessage(Operation::listPhones, listed));
    else if (diagnosis.software.contentVersion == 0)
        add("noContentAccess",
            "Phones can be listed, but what they hold cannot be read: the library's content access "
            "does not answer. Install the connectivity software again.");
    if (listed >= 0 && phones.empty())
        add("noPhone",
            "No phone is attached. Connect one by cable or pair it over Bluetooth, and see that it is "
            "switched on.");
    return diagnosis;
}

void writeVersion(JsonDocument& document, const char* key, Single version) {
    if (version == 0) return;
    const std::string number = toUtf8(decimalText(version));
    document.key(key);
    document.RawValue(number.data(), number.size(), rapidjson::kNumberType);
}

std::string asJson(const Diagnosis& diagnosis) {
    JsonDocument document;
    document.StartObject();
    if (!diagnosis.suite.empty()) {
        document.member("software", diagnosis.suite);
        document.member("softwareBuild", diagnosis.suiteBuild);
    }
    writeVersion(document, "softwareVersion", diagnosis.software.suiteVersion);
    document.member("softwareSufficient", diagnosis.software.newEnough);
    document.key("running");
    document.StartArray();
    for (const TextView program : diagnosis.running)
        document.text(program);
    document.EndArray();
    if (!diagnosis.libraryFolder.empty()) document.member("libraryFolder", fromUtf8(diagnosis.libraryFolder));
    for (const Diagnosis::Library& library : diagnosis.libraries) {
        document.key(library.key);
        document.StartObject();
        document.member("present", library.isThere);
        if (!library.version.empty()) document.member("version", library.version);
        document.EndObject();
    }
    writeVersion(document, "contentVersion", diagnosis.software.contentVersion);
    if (diagnosis.connections) document.member("connections", *diagnosis.connections);
    document.key("log");
    document.StartObject();
    document.member("on", diagnosis.log.on);
    document.member("level", diagnosis.log.level);
    document.member("timestamps", diagnosis.log.timestamps);
    if (!diagnosis.log.file.empty()) document.member("file", fromUtf8(console::textOf(diagnosis.log.file)));
    document.EndObject();
    document.key("problems");
    document.StartArray();
    for (const Problem& problem : diagnosis.problems) {
        document.StartObject();
        document.member("kind", problem.kind);
        document.member("message", fromUtf8(problem.message));
        document.EndObject();
    }
    document.EndArray();
    document.EndObject();
    return document.finished();
}

Text versionText(Single version) {
    return version == 0 ? Text(u"unknown") : decimalText(version);
}

Text orNone(const Text& text) {
    return text.empty() ? Text(u"none found") : text;
}

Text stateOfLog(const LogState& log) {
    if (!log.on) return u"off";
    return log.file.empty() ? Text(u"on, without a file")
                            : u"on, into " + fromUtf8(console::textOf(log.file));
}

Text listOf(std::span<const TextView> names) {
    Text list;
    for (const TextView name : names)
        list.append(list.empty() ? u"" : u", ").append(name);
    return list;
}

Table asTable(const Diagnosis& diagnosis) {
    const SoftwareReport& software = diagnosis.software;
    Table table({u"What", u"Found"});
    table.addRow({u"Desktop software",
                  orNone(diagnosis.suite.empty() ? Text() : diagnosis.suite + u' ' + diagnosis.suiteBuild)});
    table.addRow({u"Its version", versionText(software.suiteVersion)});
    table.addRow({u"New enough", software.newEnough ? u"yes" : u"no"});
    table.addRow({u"Running programs", orNone(listOf(diagnosis.running))});
    table.addRow({u"Library folder", diagnosis.libraryFolder.empty() ? Text(u"searched by the system")
                                                                     : fromUtf8(diagnosis.libraryFolder)});
    for (const Diagnosis::Library& library : diagnosis.libraries)
        table.addRow({Text(u"Library ") + library.name, !library.isThere ? Text(u"missing")
                                                        : library.version.empty()
                                                            ? Text(u"there")
                                                            : u"there, version " + library.version});
    table.addRow({u"Content access", software.contentVersion == 0
                                         ? Text(u"does not answer")
                                         : u"version " + decimalText(software.contentVersion)});
    table.addRow(
        {u"Attached phones", !diagnosis.connections
                                 ? Text(u"cannot be listed")
                                 : decimalText(*diagnosis.connections) +
                                       (*diagnosis.connections == 1 ? u" connection" : u" connections")});
    table.addRow({u"Diagnostic log", stateOfLog(diagnosis.log)});
    return table;
}

void showDiagnosis(const Context& context) {
    const Diagnosis diagnosis = diagnose(*openDriver(context));
    if (context.asJson()) {
        write(asJson(diagnosis));
    } else {
        writeTable(asTable(diagnosis));
        write(diagnosis.problems.empty() ? "\nPhones can be read.\n" : "\nWhat to do:\n");
        for (const Problem& problem : diagnosis.problems)
            write("- " + problem.message + "\n");
    }
    if (!diagnosis.problems.empty()) throw CommandFailure{failed, {}};
}

}  // namespace

void registerDoctor(CLI::App& app, Context& context) {
    CLI::App& doctor = addCommand(
        app, "doctor", "Say what is installed to reach phones with, what is missing and what to do", context,
        [&context] { showDiagnosis(context); });
    addCommonOptions(doctor, context);
    doctor.footer(R"(Examples:
  ovphone doctor
  ovphone doctor --format json                   for a program)");
}

}  // namespace ovno2::host
