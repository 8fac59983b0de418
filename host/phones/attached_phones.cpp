#include "host/phones/attached_phones.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "host/driver/result_messages.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/display_width.h"
#include "host/output/exit_status.h"
#include "host/output/text.h"
#include "host/phones/demo_phone.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

// The folder that --connectivity means: a folder, or the name of one beside the program.
std::string connectivityFolder(const std::string& given) {
    if (given.empty()) return {};
    const fs::path program = console::programFolder();
    for (const fs::path& folder : {fs::path(console::pathOf(given)), program / console::pathOf(given),
                                   program / ".." / console::pathOf(given)})
        if (fs::is_directory(folder)) return console::textOf(fs::canonical(folder));
    throw CommandFailure{wrongUsage, "--connectivity: there is no folder \"" + given +
                                         "\", neither as it stands nor beside this program."};
}

}  // namespace

std::unique_ptr<PhoneDriver> openDriver(const Context& context) {
    if (context.demo) {
        if (!context.phones.empty() || !context.connectivity.empty())
            throw CommandFailure{wrongUsage,
                                 "--demo brings its own phone; leave --phones and --connectivity out."};
        console::setEnvironment("OVNO2_PHONES", console::textOf(demoPhones()));
        return makePhoneDriver(console::textOf(simulatorFolder()));
    }
    if (!context.phones.empty())
        console::setEnvironment("OVNO2_PHONES",
                                console::textOf(fs::absolute(console::pathOf(context.phones))));
    return makePhoneDriver(connectivityFolder(context.connectivity));
}

AttachedPhones::AttachedPhones(const Context& context) : driver_(openDriver(context)) {
    if (context.phone) wanted_ = fromUtf8(*context.phone);
    reported_ = driver_->listPhones(phones_);
    if (reported_ < 0) throw CommandFailure{failed, resultMessage(Operation::listPhones, reported_)};
}

const ListedPhone& AttachedPhones::chosen(Purpose purpose) const {
    const PhoneChoice choice = choosePhone(phones_, wanted_, purpose);
    if (!choice.phone) throw CommandFailure{failed, choice.message};
    if (!choice.message.empty()) remark("(" + choice.message + ")");
    return *choice.phone;
}

std::string AttachedPhones::missing() const {
    std::set<TextView> serials;
    std::size_t unnumbered = 0;
    for (const ListedPhone& phone : phones_)
        phone.serial.empty() ? ++unnumbered : serials.insert(phone.serial).second;
    const auto reported = static_cast<std::size_t>(reported_);
    const std::size_t listed = std::min(serials.size() + unnumbered, reported);
    if (listed == reported) return {};
    return std::to_string(listed) + " of " + std::to_string(reported) +
           " attached phones are listed. The others tell no name, are of a maker whose phones the driver "
           "does "
           "not read, or could not be asked: see that they are switched on, attach them again and retry.";
}

void AttachedPhones::requireAllListed() const {
    if (const std::string message = missing(); !message.empty()) throw CommandFailure{failed, message};
}

std::string titleOf(const ListedPhone& phone) {
    return toUtf8(singleLine(phone.model.empty() ? phone.serial : phone.model));
}

}  // namespace ovno2::host
