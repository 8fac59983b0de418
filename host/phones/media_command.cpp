// `ovphone media`: the kinds of connection that are on, and switching them.
#include <CLI/CLI.hpp>
#include <algorithm>

#include "host/driver/result_messages.h"
#include "host/output/command_output.h"
#include "host/output/exit_status.h"
#include "host/output/json.h"
#include "host/phones/attached_phones.h"
#include "host/phones/commands.h"

namespace ovno2::host {

namespace {

struct Medium {
    Long number;  // tMedia
    const char* name;
};
constexpr Medium media[] = {
    {eMediaUSB, "usb"}, {eMediaCable, "cable"}, {eMediaBT, "bluetooth"}, {eMediaIR, "infrared"}};

Long activeMedia(PhoneDriver& driver) {
    const Long active = driver.activeMedia();
    if (active < 0) throw CommandFailure{failed, resultMessage(Operation::switchMedia, active)};
    return active;
}

void show(Long active, bool asJson) {
    if (asJson) {
        JsonLines lines([](std::string_view piece) { writeData(piece); });
        for (const Medium& medium : media) {
            JsonLine& line = lines.next();
            line.StartObject();
            line.member("medium", medium.name);
            line.member("on", (active & medium.number) != 0);
            line.EndObject();
        }
        lines.end();
        return;
    }
    Table table({u"Medium", u"State"});
    for (const Medium& medium : media)
        table.addRow({fromUtf8(medium.name), (active & medium.number) != 0 ? u"on" : u"off, or not there"});
    writeTable(table);
}

void showMedia(const Context& context) {
    const std::unique_ptr<PhoneDriver> driver = openDriver(context);
    const Long active = activeMedia(*driver);
    show(active, context.asJson());
    if (active == 0)
        throw CommandFailure{failed,
                             "No kind of connection is on, or the connectivity software did not tell them. "
                             "Switch one on, such as with \"ovphone media on usb\"."};
}

// The module says that all went well when nothing was switched, too: what is on afterwards counts.
void switchMedia(const Context& context, const std::vector<std::string>& names, bool on) {
    const std::unique_ptr<PhoneDriver> driver = openDriver(context);
    Long wanted = 0;
    for (const Medium& medium : media) {
        if (std::ranges::find(names, medium.name) == names.end()) continue;
        wanted |= medium.number;
        const Long result = driver->switchMedium(medium.number, on);
        if (result < 0) throw CommandFailure{failed, resultMessage(Operation::switchMedia, result)};
    }
    const Long active = activeMedia(*driver);
    show(active, context.asJson());
    std::string wrong;
    for (const Medium& medium : media)
        if ((wanted & medium.number) != 0 && ((active & medium.number) != 0) != on)
            wrong += (wrong.empty() ? "" : ", ") + std::string(medium.name);
    if (wrong.empty()) return;
    throw CommandFailure{failed,
                         on ? "Still off: " + wrong +
                                  ". This computer may have no such connection, or its adapter is not "
                                  "plugged in or switched off in the system's settings: see to that "
                                  "and retry."
                            : "Still on: " + wrong +
                                  ". The connectivity software did not switch it off. Another program "
                                  "may need it: close that and retry."};
}

constexpr const char* examples =
    R"(The names of media are usb, cable, bluetooth and infrared. A phone is found only over
a medium that is on.

Examples:
  ovphone media                                  which kinds of connection are on
  ovphone media on bluetooth
  ovphone media off infrared cable
  ovphone media --format json                    for a program)";

}  // namespace

void registerMedia(CLI::App& app, Context& context) {
    CLI::App& command = addCommand(app, "media", "Show the kinds of connection that are on, or switch them",
                                   context, [&context] { showMedia(context); });
    command.require_subcommand(0, 1);
    command.footer(examples);
    addCommonOptions(command, context);
    for (const bool on : {true, false}) {
        const auto names = std::make_shared<std::vector<std::string>>();
        CLI::App& change = addCommand(command, on ? "on" : "off", on ? "Switch media on" : "Switch media off",
                                      context, [&context, names, on] { switchMedia(context, *names, on); });
        std::vector<std::string> known;
        for (const Medium& medium : media)
            known.emplace_back(medium.name);
        change.add_option("NAME", *names, "usb, cable, bluetooth or infrared")
            ->required()
            ->type_name("")
            ->check(CLI::IsMember(known).description(""));
        change.footer(examples);
        addCommonOptions(change, context);
    }
}

}  // namespace ovno2::host
