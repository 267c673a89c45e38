// The x87 environment, by which an error becomes a floating-point exception (the processor makers' manuals, FSTENV).
#pragma once

#include <cstdint>

namespace nax::runtime {

// Flags of the status word; the same bits of the control word mask the exceptions.
inline constexpr uint16_t kX87Invalid = 1;
inline constexpr uint16_t kX87DivideByZero = 4;
inline constexpr uint16_t kX87Overflow = 8;
inline constexpr uint16_t kX87Underflow = 16;
inline constexpr uint16_t kX87AllExceptions = 0x3F;

struct X87Environment {
    uint16_t control, reserved0;
    uint16_t status, reserved1;
    uint16_t tag, reserved2;
    uint32_t instruction_pointer, selectors, operand_pointer, operand_selector;

    void store() { __asm__ volatile("fnstenv %0" : "=m"(*this)); }
    // Waits first: an exception that is pending and not masked is delivered here.
    void load() const { __asm__ volatile("fwait\n\tfldenv %0" : : "m"(*this)); }
};
static_assert(sizeof(X87Environment) == 28);

// Raises the exception `flag` on the calling thread: as SIGFPE if `trapped` has its bit, else as a flag that stays set.
// Ends with all x87 exceptions masked.
[[gnu::visibility("hidden")]] void raise_x87(uint16_t flag, uint16_t trapped);

}  // namespace nax::runtime
