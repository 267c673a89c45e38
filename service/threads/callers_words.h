// The floating-point control words of a thread. A worker takes those of the thread that asks for the work: rounding and
// denormal handling, and so the bits of the results, are then the caller's whichever thread runs an item.
#pragma once

#include <cstdint>

#include "platform/control_words.h"

namespace nax::service {

struct ControlWords {
    uint32_t mxcsr;
    uint16_t x87;

    static ControlWords current() {
        return {platform::read_mxcsr(), static_cast<uint16_t>(platform::read_x87_control())};
    }
    // Exception flags are no control: those that the thread has raised stay raised.
    void load() const {
        constexpr uint32_t flags = 0x3F;
        platform::write_mxcsr(platform::merged(platform::read_mxcsr(), mxcsr, ~flags));
        platform::write_x87_control(x87);
    }
};

}  // namespace nax::service
