#include "platform/control_words.h"

#include <bit>
#include <cstring>

#include "nax/processor.h"

using namespace nax::platform;

namespace {

constexpr uint32_t kMxcsrDefault = 0x1F80;
constexpr uint32_t kMxcsrRounding = 0x6000;
constexpr uint64_t kExponent = 0x7FF0000000000000;
constexpr uint64_t kMantissa = 0x000FFFFFFFFFFFFF;

}  // namespace

extern "C" {

int nax_dft_opa_isnan(double value) {
    const auto bits = std::bit_cast<uint64_t>(value);
    return (bits & kExponent) == kExponent && (bits & kMantissa) != 0;
}
int nax_dft_opa_finite(double value) { return (std::bit_cast<uint64_t>(value) & kExponent) != kExponent; }

uint32_t nax_dft_ps_get_ssx() { return read_mxcsr(); }

uint32_t nax_dft_ps_set_ssx(uint32_t value, uint32_t mask) {
    const uint32_t old = read_mxcsr();
    write_mxcsr(merged(old, value, mask));
    return old;
}
uint32_t nax_dft_opa_clear_ssx() {
    const uint32_t old = read_mxcsr();
    write_mxcsr(kMxcsrDefault);
    return old;
}
uint32_t nax_dft_opa_set_rc_ssx(uint32_t mode) {
    const uint32_t old = read_mxcsr();
    const uint32_t wanted = merged(old, mode, kMxcsrRounding);
    if (wanted != old) write_mxcsr(wanted);
    return old;
}
void nax_dft_opa_set_cw_ssx(uint32_t value) { write_mxcsr(value); }

// The mask of MXCSR bits that may be set stands at byte 28 of the saved state; processors without it store 0.
int nax_dft_opa_tst_daz_ssx() {
    alignas(16) unsigned char state[512] = {};
    __asm__ volatile("fxsave %0" : "=m"(state));
    uint32_t settable;
    std::memcpy(&settable, state + 28, sizeof settable);
    return (settable >> 6) & 1;
}

uint32_t nax_dft_ps_get_cw_fpu() { return read_x87_control(); }
uint32_t nax_dft_ps_get_sw_fpu() { return read_x87_status(); }

uint32_t nax_dft_ps_set_cw_fpu(uint32_t value, uint32_t mask) {
    const uint32_t old = read_x87_control();
    write_x87_control(merged(old, value, mask));
    return old;
}
uint32_t nax_dft_opa_set_rcpc_fpu(uint32_t value, uint32_t mask) {
    const uint32_t old = read_x87_control();
    const uint32_t wanted = merged(old, value, mask);
    if (wanted != old) write_x87_control(wanted);
    return old;
}
void nax_dft_opa_set_cw_fpu(uint32_t value) { write_x87_control(value); }

uint32_t nax_dft_ps_clear_fpu() {
    const uint32_t old = read_x87_status();
    clear_x87_exceptions();
    return old;
}

}  // extern "C"
