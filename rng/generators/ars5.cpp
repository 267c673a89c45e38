// ARS5, a counter-based generator on AES rounds.
//
// Output block i is the 128-bit counter c + i under five AES rounds without key schedule: exclusive or with the key, four
// full rounds, one last round without the mixing of columns; round key i is the 128-bit key with 0x9E3779B97F4A7C15 and
// 0xBB67AE8584CAA73B added i times to its halves. Period 2^130 words. Output words are the four 32-bit words of a block in
// order; reals are (a + b)/2 + (b - a) y / 2^32 with y taken as signed.
// J. K. Salmon, M. A. Moraes, R. O. Dror, D. E. Shaw, "Parallel random numbers: as easy as 1, 2, 3", SC'11 (2011).
#include "rng/generators/ars5.h"

#include "rng/generator.h"

using namespace nax::rng;

namespace {

// Skips need the processor's AES like numbers; seeding doesn't.
template <class... Count>
int skip_with_aes(Stream* stream, Count... count) {
    if (__stoCPUisAES() == 0) return STO_STATUS_NO_AES;
    skip_counter(payload<Ars5State>(stream), count..., ars5_block);
    return STO_STATUS_OK;
}

struct Ars5 : CounterSeeding<Ars5State> {
    static int skip_ahead(Stream* stream, int, uint64_t count) { return skip_with_aes(stream, count); }
    static int skip_ahead_far(Stream* stream, int words, const uint64_t* count) {
        return skip_with_aes(stream, words, count);
    }
};

}  // namespace

NAX_GENERATOR(ARS5, Ars5)
