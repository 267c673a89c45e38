// The floating-point control words of a thread. A worker takes those of the thread that asks for the work: rounding and
// denormal handling, and so the bits of the results, are then the caller's whichever thread runs an item.
#pragma once

#include <cstdint>

namespace nax::service {

struct ControlWords {
    uint32_t mxcsr;
    uint16_t x87;

    static ControlWords current() {
        ControlWords words;
        __asm__ volatile("stmxcsr %0" : "=m"(words.mxcsr));
        __asm__ volatile("fnstcw %0" : "=m"(words.x87));
        return words;
    }
    // Exception flags are no control: those that the thread has raised stay raised.
    void load() const {
        constexpr uint32_t flags = 0x3F;
        const uint32_t merged = (mxcsr & ~flags) | (current().mxcsr & flags);
        __asm__ volatile("ldmxcsr %0" : : "m"(merged));
        __asm__ volatile("fldcw %0" : : "m"(x87));
    }
};

}  // namespace nax::service
