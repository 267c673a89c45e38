// MT2203, a family of 6024 small Mersenne twisters.
//
//   x(k+69) = x(k+34) ^ (y >> 1) ^ (MatrixA if y is odd),  y = upper 27 bits of x(k), lower 5 bits of x(k+1)
//
// Period 2^2203 - 1 each. The members have different, hence coprime, primitive characteristic polynomials, so their
// sequences are linearly unrelated. Output words are the tempered 32-bit x; reals are a + (b - a) y / 2^32.
// M. Matsumoto, T. Nishimura, "Dynamic creation of pseudorandom number generators", Monte Carlo and Quasi-Monte Carlo
// Methods 1998, Springer (2000), 56-69.
#include "rng/generators/mt2203.h"

#include "rng/generator.h"
#include "rng/generators/twister_seeding.h"


extern "C" const uint32_t _sto_mt2203_table[nax::rng::kMt2203Rows][3] = {
#include "rng/generators/mt2203.inc"
};

using namespace nax::rng;

namespace {

struct Mt2203 {
    static int seed(Stream* stream, int n, const uint32_t* seeds) {
        const uint32_t* const row = _sto_mt2203_table[substream_of(stream)];
        Mt2203State& state = payload<Mt2203State>(stream);
        seed_twister(state.x, seeds, n);
        state.next = kMt2203Words;
        state.matrix_a = row[0];
        state.temper_b = row[1];
        state.temper_c = row[2];
        state.unused = 0;
        return STO_STATUS_OK;
    }
    static bool valid(const Stream* stream) {
        const int next = payload<Mt2203State>(stream).next;
        return next >= 0 && next <= kMt2203Words;
    }
};

}  // namespace

NAX_GENERATOR(MT2203, Mt2203)
