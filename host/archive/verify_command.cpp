// `ovphone verify`: whether an archive is as it was written.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <memory>

#include "host/archive/archive_names.h"
#include "host/archive/commands.h"
#include "host/archive/verification.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/json.h"

namespace ovno2::host {

namespace {

using Trouble = Verification::Trouble;

constexpr const char* interruptedRun =
    "The last run of \"ovphone archive\" into it did not end. Give that command again: it goes on from what "
    "is "
    "there.";

std::string asJson(const std::string& folder, const Verification& result) {
    JsonDocument document;
    document.StartObject();
    document.member("archive", folder);
    document.member("whole", result.isWhole());
    document.member("unfinished", result.isUnfinished);
    document.member("files", std::uint64_t{result.listed});
    document.member("intact", std::uint64_t{result.intact});
    document.member("bytes", result.bytes);
    document.key("findings");
    document.StartArray();
    for (const Verification::Finding& finding : result.findings) {
        document.StartObject();
        document.member("problem", nameOf(finding.trouble));
        if (!finding.path.empty()) document.member("path", finding.path);
        document.member("message", finding.message);
        document.EndObject();
    }
    document.EndArray();
    document.EndObject();
    return document.finished();
}

std::string summaryOf(const Verification& result) {
    std::string text = std::to_string(result.intact);
    if (result.intact != result.listed) text += " of " + std::to_string(result.listed);
    text += result.listed == 1 ? " file is" : " files are";
    text += " as written (" + sizeText(result.bytes) + ")";
    std::array<std::size_t, 5> counts{};
    for (const Verification::Finding& finding : result.findings)
        ++counts[static_cast<std::size_t>(finding.trouble)];
    for (const Trouble trouble :
         {Trouble::missing, Trouble::changed, Trouble::unreadable, Trouble::extra, Trouble::wrongLine})
        if (const std::size_t count = counts[static_cast<std::size_t>(trouble)]; count != 0)
            text += ", " + std::to_string(count) + " " + nameOf(trouble);
    return text + ".\n";
}

void verify(const Context& context, const std::string& name) {
    const Verification result =
        verifyArchive(console::pathOf(name), console::errorIsTerminal() && !isQuiet() && !context.asJson());
    if (context.asJson()) {
        write(asJson(name, result));
    } else {
        for (const Verification::Finding& finding : result.findings)
            note("ovphone: " + finding.message);
        if (!isQuiet()) write(summaryOf(result));
    }
    if (result.isUnfinished) throw CommandFailure{failed, interruptedRun};
    if (!result.isWhole()) throw CommandFailure{failed, {}};
}

}  // namespace

void registerVerify(CLI::App& app, Context& context) {
    const auto folder = std::make_shared<std::string>();
    CLI::App& command = addCommand(app, "verify", "Say whether an archive is as it was written", context,
                                   [&context, folder] { verify(context, *folder); });
    command.add_option("DIR", *folder, "the archive's folder")->type_name("")->required();
    addFormatOption(command, context);
    addJsonFlag(command, context);
    addQuietOption(command);
    command.footer(
        R"(Every file of the archive is read and compared with the manifest, the file SHA256SUMS in it. What is missing,
changed or extra is named, and the exit status is 1. "sha256sum -c SHA256SUMS" does the same without this program.

Examples:
  ovphone verify nokia-n95
  ovphone verify --format json nokia-n95         for a program)");
}

}  // namespace ovno2::host
