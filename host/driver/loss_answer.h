// The host's answer to the module's question about a contact, as a message box gives it.
#pragma once

#include "host/driver/driver.h"

namespace ovno2::host {

inline Long answerNumber(LossAnswer answer) {
    constexpr Long yes = 6, no = 7, cancel = 2;
    switch (answer) {
        case LossAnswer::write:
            return yes;
        case LossAnswer::leaveOut:
            return no;
        default:
            return cancel;
    }
}

}  // namespace ovno2::host
