#include "devices/current_phone.h"

#include "core/attempt.h"

namespace ovno2::Devices {

namespace {

struct State {
    static constexpr StateSlot slot = StateSlot::currentPhone;
    CurrentPhone phone;
};

}  // namespace

const CurrentPhone& currentPhone() noexcept {
    static const CurrentPhone none;
    const State* const state = existingStateOf<State>();
    return state ? state->phone : none;
}

void setCurrentPhone(const Text& serial, const Text& model) {
    attempt([&] { stateOf<State>().phone.serial = serial; });
    setCurrentModel(model);
}

void setCurrentModel(const Text& model) {
    attempt([&] { stateOf<State>().phone.model = model; });
}

void forgetCurrentPhone() noexcept {
    State* const state = existingStateOf<State>();
    if (!state) return;
    state->phone.serial.clear();
    state->phone.model.clear();
}

}  // namespace ovno2::Devices
