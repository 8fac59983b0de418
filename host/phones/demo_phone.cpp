#include "host/phones/demo_phone.h"

#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/incoming.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

// What is installed may be read-only, and readable by everyone.
void makeOwn(const fs::path& image) {
    for (const auto& entry : fs::recursive_directory_iterator(image))
        fs::permissions(entry.path(), entry.is_directory() ? fs::perms::owner_all
                                                           : fs::perms::owner_read | fs::perms::owner_write);
    fs::permissions(image, fs::perms::owner_all);
}

}  // namespace

fs::path simulatorFolder() {
    fs::path folder = console::programFolder() / "simulator";
    if (fs::is_directory(folder)) return folder;
    throw CommandFailure{
        failed, "The demo phone is not installed: there is no folder \"" + console::textOf(folder) + "\"."};
}

fs::path demoPhones() {
    fs::path phones = console::stateFolder() / "phones";
    const fs::path phone = phones / "demo";
    if (fs::exists(phone)) return phones;
    const fs::path original = simulatorFolder() / "phones" / "demo";
    if (!fs::exists(original / "phone.json"))
        throw CommandFailure{failed,
                             "The demo phone is not installed: \"" + console::textOf(original) + "\" lacks."};
    if (fs::create_directories(phones)) fs::permissions(phones, fs::perms::owner_all);
    const Incoming incoming(phones);
    const fs::path copy = incoming.path() / "demo";
    fs::copy(original, copy, fs::copy_options::recursive);
    makeOwn(copy);
    if (!Incoming::move(copy, phone, /*overwrite=*/false)) return phones;  // another program was first
    remark(
        "(The demo phone is a copy of your own, and keeps what you change on it. To begin anew, delete \"" +
        console::textOf(phone) + "\".)");
    return phones;
}

}  // namespace ovno2::host
