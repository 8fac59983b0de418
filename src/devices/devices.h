// The attached phones, and which of them the host means.
//
// `GetPhoneList` turns the library's device records into six parallel arrays for the host; `GetSerialNumber`
// finds the phone that the host names by its model; `PhoneModel_` derives a platform type from the profile
// "defaults.ini". State on the thread: the model given to `PhoneModel_` and its platform type.
#pragma once

#include "base/host_array.h"
#include "platform/thread_state.h"

namespace ovno2 {

// Connection media as the host numbers them; bit flags.
enum tMedia : Long {
    eMediaUnknown = 0,
    eMediaCable = 1,
    eMediaBT = 2,
    eMediaIR = 4,
    eMediaUSB = 8,
    eMediaUSBDrive = 16,
};

// Phone software platforms. The numbering has gaps.
enum tNokiaPhoneType : Long {
    eNokiaPhoneType = 0,  // unknown
    eNokiaPhoneS40 = 1,
    eNokiaPhoneS40_2 = 2,
    eNokiaPhoneS40_3 = 3,
    eNokiaPhoneS40_4 = 5,
    eNokiaPhoneS40_5 = 6,
    eNokiaPhoneS40_6 = 7,
    eNokiaPhoneS40_7 = 8,
    eNokiaPhoneS40_8 = 9,
    eNokiaPhoneS60 = 60,
    eNokiaPhoneS60_2 = 62,
    eNokiaPhoneS60_3 = 63,
    eNokiaPhoneS60_3_FP1 = 64,
    eNokiaPhoneS60_5 = 65,
    eNokiaPhoneS60_6 = 66,
    eNokiaPhoneS80 = 80,
};

namespace Devices {

// What no PC has: a library that claims more phones is not believed.
inline constexpr std::uint32_t mostDevices = 1000;

struct State {
    static constexpr StateSlot slot = StateSlot::devices;
    Text phoneModel;                      // as given to PhoneModel_
    Text profileSection;                  // of the profile, where that model's type stands
    Long platformType = eNokiaPhoneType;  // a tNokiaPhoneType
};

// One entry per listed connection in each array, indexed from 0, in the order the library reports them.
struct PhoneList {
    TextArray models;
    LongArray media;      // tMedia
    TextArray deviceIds;  // serial numbers
    TextArray addresses;
    TextArray names;
    LongArray types;  // tNokiaPhoneType
};

// The number of devices the library reported, or -1 session, -2 device count, -3 device list, -7 library file
// not found. `models` and `media` are emptied once the count is known; the other four arrays keep what they
// held when nothing is listed.
Long GetPhoneList(PhoneList& list);

// The serial number of the phone named by model or serial number; empty when none matches. Without `force`
// the phone last identified answers while the model is the one last matched.
Text GetSerialNumber(const Text& model, const Text& phoneId, bool force);

// The platform type of the listed phone with that serial number; 0 when there is none.
Long GetPhoneType(const Text& id);

// Stores the model name and derives the platform type from the profile.
void PhoneModel_(const Text& model);
const Text& phoneModel();
const Text& profileSection();  // the section of the profile that tells about that model
Long platformType();           // a tNokiaPhoneType

// The platform type for a platform code and level of the properties record; 0 when the code is unknown.
Long platformTypeOf(std::uint32_t code, std::uint32_t level);

}  // namespace Devices

}  // namespace ovno2
