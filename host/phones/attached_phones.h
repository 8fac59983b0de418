// The driver that a command works with, and the phones that it finds.
#pragma once

#include "host/command/command.h"
#include "host/driver/driver.h"

namespace ovno2::host {

// Throws CommandFailure for a --connectivity that means no folder, DriverMissing without a driver.
std::unique_ptr<PhoneDriver> openDriver(const Context& context);

class AttachedPhones {
  public:
    // Throws CommandFailure, also when the phones cannot be listed.
    explicit AttachedPhones(const Context& context);

    PhoneDriver& driver() const { return *driver_; }
    const std::vector<ListedPhone>& all() const { return phones_; }

    // The phone that --phone means, without it the first. Throws CommandFailure when there is none.
    const ListedPhone& chosen() const;

  private:
    std::string wanted_;
    std::unique_ptr<PhoneDriver> driver_;
    std::vector<ListedPhone> phones_;
};

// What messages call it; UTF-8.
std::string titleOf(const ListedPhone& phone);

}  // namespace ovno2::host
