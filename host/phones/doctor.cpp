// `ovphone doctor`: what is installed on this machine to reach phones with, and what is missing.
#include <CLI/CLI.hpp>
#include <filesystem>

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

struct Finding {
    const char* key;        // name in JSON
    const char16_t* label;  // what was looked at
    Text value;             // what was found
};

struct Diagnosis {
    std::vector<Finding> findings;
    std::vector<std::string> problems;  // what keeps phones from being read, and what to do about it; UTF-8
};

// The desktop software with its build number, the newest kind first.
Text desktopSoftware() {
    const struct {
        TextView name, key, value;
    } suites[] = {
        {u"Nokia Suite", u"SOFTWARE\\Nokia\\Nokia Suite", u"BuildNumber"},
        {u"Nokia Ovi Suite", u"SOFTWARE\\Nokia\\Nokia Ovi Suite", u"OviSuiteBuildNumber"},
        {u"Nokia PC Suite", u"SOFTWARE\\Nokia", u"PCSuiteBuildNumber"},
    };
    for (const auto& suite : suites)
        if (const Text build = computer::machineValue(suite.key, suite.value); !build.empty())
            return Text(suite.name) + u' ' + build;
    return {};
}

Text runningPrograms() {
    constexpr TextView programs[] = {u"NclTray.exe", u"ConnectionManager.exe", u"PcSync2.exe"};
    Text names;
    for (const TextView program : computer::runningAmong(programs))
        names.append(names.empty() ? u"" : u", ").append(program);
    return names;
}

Text versionText(Single version) {
    return version == 0 ? Text(u"unknown") : decimalText(version);
}

Text orNone(const Text& text) {
    return text.empty() ? Text(u"none found") : text;
}

Text stateOfLog() {
    const LogState log = logState();
    if (!log.on) return u"off";
    return log.file.empty() ? Text(u"on, without a file")
                            : u"on, into " + fromUtf8(console::textOf(log.file));
}

Diagnosis diagnose(PhoneDriver& driver) {
    Diagnosis diagnosis;
    const auto add = [&](const char* key, const char16_t* label, Text value) {
        diagnosis.findings.push_back({key, label, std::move(value)});
    };
    const SoftwareReport software = driver.software();
    add("software", u"Desktop software", orNone(desktopSoftware()));
    add("softwareVersion", u"Its version", versionText(software.suiteVersion));
    add("softwareSufficient", u"New enough", software.newEnough ? u"yes" : u"no");
    add("running", u"Running programs", orNone(runningPrograms()));

    const std::string folder = driver.connectivityFolder();
    add("libraryFolder", u"Library folder",
        folder.empty() ? Text(u"searched by the system") : fromUtf8(folder));
    bool complete = true;
    for (const auto& [key, name] :
         {std::pair("deviceLibrary", "ConnAPI"), std::pair("contentLibrary", "DAAPI")}) {
        const fs::path file = console::pathOf(folder) / libraryFile(name);
        const bool there = !folder.empty() && fs::exists(file);
        Text found = there ? u"there" : folder.empty() ? u"not looked for" : u"missing";
        if (there)
            if (const Text version = computer::programVersion(file); !version.empty())
                found += u", version " + version;
        complete = complete && (there || folder.empty());
        add(key, name[0] == 'C' ? u"Library ConnAPI" : u"Library DAAPI", found);
    }
    add("contentVersion", u"Content access",
        software.contentVersion == 0 ? Text(u"does not answer")
                                     : u"version " + decimalText(software.contentVersion));

    std::vector<ListedPhone> phones;
    const Long listed = driver.listPhones(phones);
    add("connections", u"Attached phones",
        listed < 0 ? Text(u"cannot be listed")
                   : decimalText(static_cast<Long>(phones.size())) +
                         (phones.size() == 1 ? u" connection" : u" connections"));
    add("log", u"Diagnostic log", stateOfLog());

    if (!complete)
        diagnosis.problems.push_back(
            "The library folder lacks a part of the connectivity library. Install the phone "
            "maker's connectivity software again, or name another folder with --connectivity.");
    if (listed < 0)
        diagnosis.problems.push_back(resultMessage(Operation::listPhones, listed));
    else if (software.contentVersion == 0)
        diagnosis.problems.push_back(
            "Phones can be listed, but what they hold cannot be read: the library's content access "
            "does not answer. Install the connectivity software again.");
    if (listed >= 0 && phones.empty())
        diagnosis.problems.push_back(
            "No phone is attached. Connect one by cable or pair it over Bluetooth, and see that it is "
            "switched on.");
    return diagnosis;
}

void showDiagnosis(const Context& context) {
    const Diagnosis diagnosis = diagnose(*openDriver(context));
    if (context.asJson()) {
        JsonDocument document;
        document.StartObject();
        for (const Finding& finding : diagnosis.findings)
            document.member(finding.key, finding.value);
        document.key("problems");
        document.StartArray();
        for (const std::string& problem : diagnosis.problems)
            document.text(fromUtf8(problem));
        document.EndArray();
        document.EndObject();
        write(document.finished());
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

}  // namespace

void registerDoctor(CLI::App& app, Context& context) {
    CLI::App& doctor = addCommand(
        app, "doctor", "Say what is installed to reach phones with, what is missing and what to do", context,
        [&context] { showDiagnosis(context); });
    addCommonOptions(doctor, context);
}

}  // namespace ovno2::host
