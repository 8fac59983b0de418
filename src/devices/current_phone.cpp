#include "devices/current_phone.h"

#include "core/attempt.h"

namespace ovno2::Devices {

namespace {

struct State {
    static constexpr StateSlot slot = StateSlot::currentPhone;
    CurrentPhone phone;
};

}  // namespace

const CurrentPhone& currentPhone() {
    return stateOf<State>().phone;
}

void setCurrentPhone(const Text& serial, const Text& model) {
    attempt([&] { stateOf<State>().phone.serial = serial; });
    setCurrentModel(model);
}

void setCurrentModel(const Text& model) {
    attempt([&] { stateOf<State>().phone.model = model; });
}

void forgetCurrentPhone() {
    CurrentPhone& phone = stateOf<State>().phone;
    phone.serial.clear();
    phone.model.clear();
}

}  // namespace ovno2::Devices
