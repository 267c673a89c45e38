// ARS5, a counter-based generator on AES rounds.
//
// Output block i is the 128-bit counter c + i under five AES rounds without key schedule: exclusive or with the key, four
// full rounds, one last round without the mixing of columns; round key i is the 128-bit key with 0x9E3779B97F4A7C15 and
// 0xBB67AE8584CAA73B added i times to its halves. Period 2^130 words. Output words are the four 32-bit words of a block in
// order; reals are (a + b)/2 + (b - a) y / 2^32 with y taken as signed.
// J. K. Salmon, M. A. Moraes, R. O. Dror, D. E. Shaw, "Parallel random numbers: as easy as 1, 2, 3", SC'11 (2011).
#include "rng/generators/ars5.h"

namespace nax::rng {

namespace {

// Skips need the processor's AES like numbers; seeding doesn't.
template <class Move>
int with_aes(const Move& move) {
    if (__stoCPUisAES() == 0) return STO_STATUS_NO_AES;
    move();
    return STO_STATUS_OK;
}

}  // namespace

}  // namespace nax::rng

using namespace nax::rng;

extern "C" {

int __stoBRngARS5InitStream(int method, nax_stream* stream, int n, const void* params) {
    Ars5State& state = payload<Ars5State>(stream);
    const uint64_t* const nskip = static_cast<const uint64_t*>(params);
    switch (method) {
        case NAX_INIT_STANDARD: seed_counter_state(state, static_cast<const uint32_t*>(params), n); return STO_STATUS_OK;
        case NAX_INIT_LEAPFROG: return STO_STATUS_NO_LEAPFROG;
        case NAX_INIT_SKIPAHEAD: return with_aes([&] { skip_counter(state, *nskip, ars5_block); });
        case NAX_INIT_SKIPAHEADEX: return with_aes([&] { skip_counter(state, n, nskip, ars5_block); });
        default: return STO_STATUS_BAD_METHOD;
    }
}

}  // extern "C"
