// `ovphone bluetooth` and its commands
#include <CLI/CLI.hpp>
#include <algorithm>

#include "host/bluetooth/commands.h"
#include "host/bluetooth/found_phones.h"
#include "host/bluetooth/passkey.h"
#include "host/driver/result_messages.h"
#include "host/output/command_output.h"
#include "host/output/exit_status.h"
#include "host/output/json.h"
#include "host/output/waiting.h"
#include "host/phones/attached_phones.h"

namespace ovno2::host {

namespace {

struct PairOptions {
    std::string phone;  // address or name
    bool passkeyFromInput = false;
    bool noTrust = false;
};

constexpr const char* unknownState =
    "Interrupted. The phone may have been paired or trusted meanwhile: \"ovphone bluetooth search\" tells.";

// Only a name needs a search: the module searches for itself when a phone does not answer.
FoundPhone phoneMeant(PhoneDriver& driver, const std::string& typed) {
    const Text wanted = fromUtf8(typed);
    if (const std::optional<Text> address = bluetoothAddress(wanted)) return {{}, *address, {}, 0};
    if (trimBlanks(wanted).empty()) throw CommandFailure{wrongUsage, "An empty name means no phone."};
    const std::vector<FoundPhone> found = searchPhones(driver);
    return chosenOf(found, wanted);
}

// What a command has made of a phone, told as it happens or, for a program, at the end.
class Outcome {
  public:
    Outcome(const Context& context, FoundPhone phone) : asJson_(context.asJson()), phone_(std::move(phone)) {}

    const Text& address() const { return phone_.address; }
    std::string title() const { return titleOf(phone_); }

    void paired() {
        paired_ = true;
        tell("Paired with ");
    }
    void trusted() {
        trusted_ = true;
        tell("Trusted: ");
    }
    // Looks whether the phone can be worked with now.
    void lookForIt(PhoneDriver& driver) {
        std::vector<ListedPhone> attached;
        driver.listPhones(attached);
        const auto found = std::ranges::find_if(attached, [&](const ListedPhone& one) {
            return one.media == eMediaBT && equalsIgnoringCase(one.address, phone_.address);
        });
        if (found == attached.end()) {
            remark("(It is not attached yet: see that it is on and near; \"ovphone list\" tells.)");
            return;
        }
        attached_ = *found;
        remark("(It is attached: \"ovphone contacts --phone '" + titleOf(*found) +
               "'\" shows its phone book.)");
    }
    // Ends the command.
    [[noreturn]] void fail(const std::string& message) const {
        end();
        throw CommandFailure{failed, message};
    }
    void end() const {
        if (!asJson_) return;
        JsonDocument document;
        document.StartObject();
        if (!phone_.name.empty()) document.member("name", TextView(phone_.name));
        document.member("address", TextView(phone_.address));
        if (paired_) document.member("paired", *paired_);
        if (trusted_) document.member("trusted", *trusted_);
        if (attached_) {
            document.member("model", TextView(attached_->model));
            document.member("serialNumber", TextView(attached_->serial));
        }
        document.EndObject();
        writeData(document.finished());
    }
    void wantsPairing() { paired_ = false; }
    void wantsTrust() { trusted_ = false; }

  private:
    void tell(const char* what) const {
        if (!asJson_) write(what + title() + "\n");
    }

    bool asJson_;
    FoundPhone phone_;
    std::optional<bool> paired_, trusted_;  // none = not asked for
    std::optional<ListedPhone> attached_;
};

void trust(PhoneDriver& driver, Outcome& outcome) {
    const Long result = Waiting("Marking " + outcome.title() + " as trusted", unknownState).during([&] {
        return driver.trustBluetooth(outcome.address());
    });
    if (result != 0) outcome.fail(resultMessage(Operation::trustPhone, result, outcome.title()));
    outcome.trusted();
}

void pairPhone(const Context& context, const PairOptions& options) {
    const std::unique_ptr<PhoneDriver> driver = openDriver(context);
    Outcome outcome(context, phoneMeant(*driver, options.phone));
    outcome.wantsPairing();
    if (!options.noTrust) outcome.wantsTrust();
    const Long result = [&] {
        const Passkey passkey("Passkey for " + outcome.title() + " (the phone will ask for the same one): ",
                              options.passkeyFromInput);
        return Waiting("Pairing with " + outcome.title() + "; enter the passkey on the phone", unknownState)
            .during([&] { return driver->pairBluetooth(outcome.address(), passkey.text()); });
    }();
    if (result != 0) outcome.fail(resultMessage(Operation::pairPhone, result, outcome.title()));
    outcome.paired();
    if (!options.noTrust) trust(*driver, outcome);
    outcome.lookForIt(*driver);
    outcome.end();
}

void trustPhone(const Context& context, const PairOptions& options) {
    const std::unique_ptr<PhoneDriver> driver = openDriver(context);
    Outcome outcome(context, phoneMeant(*driver, options.phone));
    outcome.wantsTrust();
    trust(*driver, outcome);
    outcome.lookForIt(*driver);
    outcome.end();
}

[[noreturn]] void untrustPhone() {
    throw CommandFailure{
        failed,
        "Nothing was changed: the phone maker's connectivity library knows no way to take back that a phone "
        "is "
        "trusted or paired. Do it by hand on both sides: remove the phone from the Bluetooth devices in this "
        "computer's settings, and delete this computer from the phone's list of paired devices (usually in "
        "Settings, Connectivity, Bluetooth)."};
}

constexpr const char* examples =
    R"(A phone is named by its address, or by its name or a part of it, which is searched for. The phone
must be on, near, and visible to others. The passkey is any that is entered here and then on the phone; it is kept
nowhere.

Examples:
  ovphone bluetooth search                       what is near, and how to name it
  ovphone bluetooth pair "Omas 3110"             asks for the passkey; the phone does, too
  ovphone bluetooth pair 02:00:00:31:10:0B --no-trust
  echo 0000 | ovphone bluetooth pair Omas --passkey-stdin
  ovphone bluetooth trust "Omas 3110"            a phone that is paired already
  ovphone bluetooth search --format json         for a program)";

}  // namespace

void registerBluetooth(CLI::App& app, Context& context) {
    const auto options = std::make_shared<PairOptions>();
    CLI::App& bluetooth = *app.add_subcommand("bluetooth", "Find phones with Bluetooth and pair with them");
    bluetooth.require_subcommand(1);
    bluetooth.footer(examples);

    const auto add = [&](const char* name, const char* description,
                         std::function<void()> action) -> CLI::App& {
        CLI::App& command = addCommand(bluetooth, name, description, context, std::move(action));
        command.footer(examples);
        addCommonOptions(command, context);
        addQuietOption(command);
        return command;
    };
    const auto takePhone = [&options](CLI::App& command) {
        return command.add_option("PHONE", options->phone, "its address, or its name or a part of it")
            ->type_name("");
    };
    add("search", "Search for phones",
        [&context] { showFound(searchPhones(*openDriver(context)), context.asJson()); });
    CLI::App& pair =
        add("pair", "Pair with a phone, and trust it", [&context, options] { pairPhone(context, *options); });
    takePhone(pair)->required();
    pair.add_flag("--passkey-stdin", options->passkeyFromInput,
                  "take the passkey from the first line of standard input");
    pair.add_flag("--no-trust", options->noTrust, "do not mark the phone as trusted");
    takePhone(add("trust", "Mark a phone as trusted, so that it need not ask each time", [&context, options] {
        trustPhone(context, *options);
    }))->required();
    takePhone(add("untrust", "Say how a phone is made unknown again", untrustPhone));
}

}  // namespace ovno2::host
