// The driver that a command works with, and the phones that it finds.
#pragma once

#include "host/command/command.h"
#include "host/driver/driver.h"
#include "host/phones/phone_choice.h"

namespace ovno2::host {

// Throws CommandFailure for a --connectivity that means no folder, DriverMissing without a driver.
std::unique_ptr<PhoneDriver> openDriver(const Context& context);

class AttachedPhones {
  public:
    // Throws CommandFailure, also when the phones cannot be listed.
    explicit AttachedPhones(const Context& context);

    PhoneDriver& driver() const { return *driver_; }
    const std::vector<ListedPhone>& all() const { return phones_; }

    // The phone that --phone means (see phone_choice.h). Tells the user which of several was taken. Throws
    // CommandFailure when none is meant.
    const ListedPhone& chosen(Purpose purpose = Purpose::read) const;

    // What the library reported beyond the phones that are listed, and why that may be; UTF-8, empty =
    // nothing.
    std::string missing() const;
    // To be called once the phones are written: tells what is missing and throws CommandFailure for it.
    void requireAllListed() const;

  private:
    Long reported_ = 0;  // devices, each of which may be attached in several ways
    std::optional<Text> wanted_;
    std::unique_ptr<PhoneDriver> driver_;
    std::vector<ListedPhone> phones_;
};

// What messages call it; UTF-8, safe to show.
std::string titleOf(const ListedPhone& phone);

}  // namespace ovno2::host
