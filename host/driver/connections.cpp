// The connection media and the trust in phones, as the module numbers them.
#include "host/driver/driver.h"

namespace ovno2::host {

namespace {

constexpr Long pairing = 1, trusting = 2;

struct MediumNumbers {
    Long library;
    Long host;
};
constexpr MediumNumbers mediumNumbers[] = {{2, eMediaIR}, {4, eMediaCable}, {8, eMediaBT}, {16, eMediaUSB}};

}  // namespace

Long PhoneDriver::activeMedia() {
    const Long active = connections();
    if (active < 0) return active;
    Long media = 0;
    for (const MediumNumbers& medium : mediumNumbers)
        if ((active & medium.library) != 0) media |= medium.host;
    return media;
}

Long PhoneDriver::pairBluetooth(const Text& address, const Text& passkey) {
    return changeTrust(address, pairing, passkey);
}

// Both at once would be told as one: trusting goes on when pairing has failed, and its status counts.
Long PhoneDriver::trustBluetooth(const Text& address) {
    return changeTrust(address, trusting, {});
}

}  // namespace ovno2::host
