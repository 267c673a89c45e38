// PHILOX4X32X10, a counter-based generator.
//
// Output block i is a bijection of the 128-bit counter c + i under a 64-bit key, ten rounds of
//   (hi1, lo1) = 0xCD9E8D57 c2, (hi0, lo0) = 0xD2511F53 c0,  c := (hi1 ^ c1 ^ k0, lo1, hi0 ^ c3 ^ k1, lo0),
// the key words growing by 0x9E3779B9 and 0xBB67AE85 between rounds. Period 2^130 words. Output words are the four 32-bit
// words of a block in order; reals are (a + b)/2 + (b - a) y / 2^32 with y taken as signed.
// J. K. Salmon, M. A. Moraes, R. O. Dror, D. E. Shaw, "Parallel random numbers: as easy as 1, 2, 3", SC'11 (2011).
#include "rng/generators/philox4x32x10.h"

#include "rng/generator.h"

namespace nax::rng {

void philox_block(const PhiloxState& state, uint32_t (&out)[4]) {
    uint32_t c0 = state.counter[0], c1 = state.counter[1], c2 = state.counter[2], c3 = state.counter[3];
    uint32_t k0 = state.key[0], k1 = state.key[1];
    for (int round = 0; round < kPhiloxRounds; ++round) {
        const uint64_t p0 = uint64_t{kPhiloxMultiplier0} * c0;
        const uint64_t p1 = uint64_t{kPhiloxMultiplier1} * c2;
        c0 = static_cast<uint32_t>(p1 >> 32) ^ c1 ^ k0;
        c1 = static_cast<uint32_t>(p1);
        c2 = static_cast<uint32_t>(p0 >> 32) ^ c3 ^ k1;
        c3 = static_cast<uint32_t>(p0);
        k0 += kPhiloxKeyStep0;
        k1 += kPhiloxKeyStep1;
    }
    out[0] = c0;
    out[1] = c1;
    out[2] = c2;
    out[3] = c3;
}

}  // namespace nax::rng

using namespace nax::rng;

extern "C" int PHILOX4X32X10SkipAhead(nax_stream* stream, uint64_t n) {
    skip_counter(payload<PhiloxState>(stream), n, philox_block);
    return STO_STATUS_OK;
}

namespace {

struct Philox4x32x10 : CounterSeeding<PhiloxState> {
    static int skip_ahead(Stream* stream, int, uint64_t count) { return PHILOX4X32X10SkipAhead(stream, count); }
    static int skip_ahead_far(Stream* stream, int words, const uint64_t* count) {
        skip_counter(payload<PhiloxState>(stream), words, count, philox_block);
        return STO_STATUS_OK;
    }
};

}  // namespace

NAX_GENERATOR(PHILOX4X32X10, Philox4x32x10)
