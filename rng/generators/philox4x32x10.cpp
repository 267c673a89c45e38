// PHILOX4X32X10, a counter-based generator.
//
// Output block i is a bijection of the 128-bit counter c + i under a 64-bit key, ten rounds of
//   (hi1, lo1) = 0xCD9E8D57 c2, (hi0, lo0) = 0xD2511F53 c0,  c := (hi1 ^ c1 ^ k0, lo1, hi0 ^ c3 ^ k1, lo0),
// the key words growing by 0x9E3779B9 and 0xBB67AE85 between rounds. Period 2^130 words. Output words are the four 32-bit
// words of a block in order; reals are (a + b)/2 + (b - a) y / 2^32 with y taken as signed.
// J. K. Salmon, M. A. Moraes, R. O. Dror, D. E. Shaw, "Parallel random numbers: as easy as 1, 2, 3", SC'11 (2011).
#include "rng/generators/philox4x32x10.h"

namespace nax::rng {

namespace {

void seed(PhiloxState& state, const uint32_t* seeds, int n) {
    take_seeds(state.key, seeds, 0, n);
    take_seeds(state.counter, seeds, 2, n);
    state.left = 0;
    for (uint32_t& word : state.block) word = 0;
    state.unused = 0;
}

}  // namespace

}  // namespace nax::rng

using namespace nax::rng;

extern "C" {

int __stoBRngPHILOX4X32X10InitStream(int method, nax_stream* stream, int n, const void* params) {
    PhiloxState& state = payload<PhiloxState>(stream);
    switch (method) {
        case NAX_INIT_STANDARD: seed(state, static_cast<const uint32_t*>(params), n); return STO_STATUS_OK;
        case NAX_INIT_LEAPFROG: return STO_STATUS_NO_LEAPFROG;
        case NAX_INIT_SKIPAHEAD:
            skip_counter(state, *static_cast<const uint64_t*>(params), philox_block);
            return STO_STATUS_OK;
        case NAX_INIT_SKIPAHEADEX:
            skip_counter(state, n, static_cast<const uint64_t*>(params), philox_block);
            return STO_STATUS_OK;
        default: return STO_STATUS_BAD_METHOD;
    }
}

int __stosBRngPHILOX4X32X10(nax_stream* stream, int n, float* r, float a, float b) {
    if (n > 0) philox_draw(payload<PhiloxState>(stream), n, r, a, b);
    return STO_STATUS_OK;
}

int __stodBRngPHILOX4X32X10(nax_stream* stream, int n, double* r, double a, double b) {
    if (n > 0) philox_draw(payload<PhiloxState>(stream), n, r, a, b);
    return STO_STATUS_OK;
}

int __stoiBRngPHILOX4X32X10(nax_stream* stream, int n, void* r) {
    if (n > 0) philox_draw(payload<PhiloxState>(stream), n, static_cast<uint32_t*>(r));
    return STO_STATUS_OK;
}

}  // extern "C"
