#include "host/attached_phones.h"

#include <filesystem>

#include "base/utf8.h"
#include "host/command_output.h"
#include "host/console.h"
#include "host/exit_status.h"
#include "host/phone_choice.h"
#include "host/result_messages.h"

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

std::unique_ptr<PhoneDriver> openDriver(const Options& options) {
    if (!options.phones.empty())
        console::setEnvironment("OVNO2_PHONES",
                                console::textOf(fs::absolute(console::pathOf(options.phones))));
    return makePhoneDriver({connectivityFolder(options.connectivity)});
}

AttachedPhones::AttachedPhones(const Options& options)
    : wanted_(options.phone), driver_(openDriver(options)) {
    const Long result = driver_->listPhones(phones_);
    if (result < 0) throw CommandFailure{failed, resultMessage(Operation::listPhones, result)};
}

const ListedPhone& AttachedPhones::chosen() const {
    const PhoneChoice choice = choosePhone(phones_, fromUtf8(wanted_));
    if (!choice.phone) throw CommandFailure{failed, choice.message};
    return *choice.phone;
}

std::string titleOf(const ListedPhone& phone) {
    return toUtf8(phone.model.empty() ? phone.serial : phone.model);
}

}  // namespace ovno2::host
