// The phone last identified, which the device list and all content areas share.
//
// State on the thread: a serial number, the phone that the content areas' folder caches were last filled for
// (they set it); and a model text, the one that the serial look-up last matched or that went with that
// serial. Starting or ending a library session forgets both, and so does a read that must ask the phone
// again.
#pragma once

#include "base/types.h"

namespace ovno2::Devices {

struct CurrentPhone {
    Text serial;
    Text model;
};

const CurrentPhone& currentPhone() noexcept;  // empty texts while none is known
// A part that there is no memory for keeps its old value.
void setCurrentPhone(const Text& serial, const Text& model);
void setCurrentModel(const Text& model);
void forgetCurrentPhone() noexcept;

}  // namespace ovno2::Devices
