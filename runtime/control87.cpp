// One abstract word for both floating-point units. Its bits are those that the C runtimes which have _control87,
// _status87 and _clear87 define in float.h.
#include "nax/processor.h"
#include "platform/control_words.h"

using namespace nax::platform;

namespace {

// Abstract exceptions in the order of the hardware's bits 0 to 5: x87 flags and masks, MXCSR flags, and MXCSR masks
// seven bits up.
constexpr uint32_t kExceptions[6] = {NAX_CW87_INVALID,  NAX_CW87_DENORMAL,  NAX_CW87_ZERODIVIDE,
                                     NAX_CW87_OVERFLOW, NAX_CW87_UNDERFLOW, NAX_CW87_INEXACT};
constexpr uint32_t kHardwareExceptions = 0x3F;
constexpr int kMxcsrMaskShift = 7;

uint32_t abstract_exceptions(uint32_t hardware) {
    uint32_t abstract = 0;
    for (int i = 0; i < 6; ++i)
        if (((hardware >> i) & 1) != 0) abstract |= kExceptions[i];
    return abstract;
}
uint32_t hardware_exceptions(uint32_t abstract) {
    uint32_t hardware = 0;
    for (int i = 0; i < 6; ++i)
        if ((abstract & kExceptions[i]) != 0) hardware |= 1u << i;
    return hardware;
}

// Two-bit fields: rounding at bit 10 (x87) and 13 (MXCSR), in the same code as the abstract one at bit 8.
constexpr uint32_t kAbstractRoundingShift = 8, kX87RoundingShift = 10, kMxcsrRoundingShift = 13;
// x87 precision at bit 8 codes 24, -, 53, 64 bits as 0 to 3; the abstract field at bit 16 codes 64, 53, 24 as 0 to 2.
constexpr uint32_t kX87PrecisionShift = 8, kAbstractPrecisionShift = 16;
constexpr uint32_t kAbstractPrecision[4] = {2, 3, 1, 0};
constexpr uint32_t kX87Precision[4] = {3, 2, 0, 1};
constexpr uint32_t kX87Infinity = 1u << 12;
// MXCSR denormals-are-zero (bit 6, operands) and flush-to-zero (bit 15, results).
constexpr uint32_t kMxcsrOperands = 1u << 6, kMxcsrResults = 1u << 15;
constexpr uint32_t kFlushBoth = 0x01000000, kFlushOperands = 0x02000000, kFlushResults = 0x03000000;

uint32_t abstract_x87(uint32_t control) {
    return abstract_exceptions(control) | ((control >> kX87RoundingShift) & 3) << kAbstractRoundingShift |
           kAbstractPrecision[(control >> kX87PrecisionShift) & 3] << kAbstractPrecisionShift |
           ((control & kX87Infinity) != 0 ? NAX_CW87_INFINITY : 0);
}

uint32_t x87_of(uint32_t abstract, uint32_t old) {
    constexpr uint32_t changed = kHardwareExceptions | 3 << kX87RoundingShift | 3 << kX87PrecisionShift | kX87Infinity;
    return (old & ~changed) | hardware_exceptions(abstract) |
           ((abstract >> kAbstractRoundingShift) & 3) << kX87RoundingShift |
           kX87Precision[(abstract >> kAbstractPrecisionShift) & 3] << kX87PrecisionShift |
           ((abstract & NAX_CW87_INFINITY) != 0 ? kX87Infinity : 0);
}

uint32_t abstract_denormals(uint32_t mxcsr) {
    const bool operands = (mxcsr & kMxcsrOperands) != 0, results = (mxcsr & kMxcsrResults) != 0;
    return operands ? (results ? kFlushBoth : kFlushOperands) : (results ? kFlushResults : 0);
}
uint32_t mxcsr_denormals(uint32_t abstract) {
    switch (abstract & NAX_CW87_DENORMALS) {
        case kFlushBoth:
            return kMxcsrOperands | kMxcsrResults;
        case kFlushOperands:
            return kMxcsrOperands;
        case kFlushResults:
            return kMxcsrResults;
        default:
            return 0;
    }
}

uint32_t abstract_mxcsr(uint32_t mxcsr) {
    return abstract_exceptions(mxcsr >> kMxcsrMaskShift) |
           ((mxcsr >> kMxcsrRoundingShift) & 3) << kAbstractRoundingShift | abstract_denormals(mxcsr);
}

uint32_t mxcsr_of(uint32_t abstract, uint32_t old) {
    constexpr uint32_t changed =
        kHardwareExceptions << kMxcsrMaskShift | 3u << kMxcsrRoundingShift | kMxcsrOperands | kMxcsrResults;
    return (old & ~changed) | hardware_exceptions(abstract) << kMxcsrMaskShift |
           ((abstract >> kAbstractRoundingShift) & 3) << kMxcsrRoundingShift | mxcsr_denormals(abstract);
}

// What both units have is shown as the x87 has it.
uint32_t abstract_control() {
    constexpr uint32_t common = NAX_CW87_EXCEPTIONS | NAX_CW87_ROUNDING;
    const uint32_t x87 = abstract_x87(read_x87_control()), mxcsr = abstract_mxcsr(read_mxcsr());
    return x87 | (mxcsr & NAX_CW87_DENORMALS) | (((x87 ^ mxcsr) & common) != 0 ? NAX_CW87_AMBIGUOUS : 0);
}

uint32_t abstract_status() { return abstract_exceptions(read_x87_status()) | abstract_exceptions(read_mxcsr()); }

}  // namespace

extern "C" {

// Each unit keeps its own state outside the mask, also where the two differ.
uint32_t nax_dft_opa_control87(uint32_t value, uint32_t mask) {
    if (mask == 0) return abstract_control();
    const uint32_t x87 = read_x87_control(), mxcsr = read_mxcsr();
    write_x87_control(x87_of(merged(abstract_x87(x87), value, mask), x87));
    write_mxcsr(mxcsr_of(merged(abstract_mxcsr(mxcsr), value, mask), mxcsr));
    return abstract_control();
}

uint32_t nax_dft_opa_status87() { return abstract_status(); }

uint32_t nax_dft_opa_clear87() {
    const uint32_t old = abstract_status();
    clear_x87_exceptions();
    write_mxcsr(read_mxcsr() & ~kHardwareExceptions);
    return old;
}

}  // extern "C"
