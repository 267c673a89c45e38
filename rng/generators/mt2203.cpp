// MT2203, a family of 6024 small Mersenne twisters.
//
//   x(k+69) = x(k+34) ^ (y >> 1) ^ (MatrixA if y is odd),  y = upper 27 bits of x(k), lower 5 bits of x(k+1)
//
// Period 2^2203 - 1 each. The members have different, hence coprime, primitive characteristic polynomials, so their
// sequences are linearly unrelated. Output words are the tempered 32-bit x; reals are a + (b - a) y / 2^32.
// M. Matsumoto, T. Nishimura, "Dynamic creation of pseudorandom number generators", Monte Carlo and Quasi-Monte Carlo
// Methods 1998, Springer (2000), 56-69.
#include "rng/generators/mt2203.h"

#include "rng/generators/twister_seeding.h"
#include "rng/registry.h"

extern "C" const uint32_t _sto_mt2203_table[nax::rng::kMt2203Rows][3] = {
#include "rng/generators/mt2203.inc"
};

using namespace nax::rng;

extern "C" {

int __stoBRngMT2203InitStream(int method, nax_stream* stream, int n, const void* params) {
    switch (method) {
        case NAX_INIT_STANDARD: {
            const uint32_t* const row = _sto_mt2203_table[substream_of(stream)];
            Mt2203State& state = payload<Mt2203State>(stream);
            seed_twister(state.x, static_cast<const uint32_t*>(params), n);
            state.next = kMt2203Words;
            state.matrix_a = row[0];
            state.temper_b = row[1];
            state.temper_c = row[2];
            state.unused = 0;
            return STO_STATUS_OK;
        }
        case NAX_INIT_LEAPFROG: return STO_STATUS_NO_LEAPFROG;
        case NAX_INIT_SKIPAHEAD: return STO_STATUS_NO_SKIPAHEAD;
        case NAX_INIT_SKIPAHEADEX: return STO_STATUS_NO_SKIPAHEADEX;
        default: return STO_STATUS_BAD_METHOD;
    }
}

int __stosBRngMT2203(nax_stream* stream, int n, float* r, float a, float b) {
    if (n > 0) mt2203_draw(payload<Mt2203State>(stream), n, r, a, b);
    return STO_STATUS_OK;
}

int __stodBRngMT2203(nax_stream* stream, int n, double* r, double a, double b) {
    if (n > 0) mt2203_draw(payload<Mt2203State>(stream), n, r, a, b);
    return STO_STATUS_OK;
}

int __stoiBRngMT2203(nax_stream* stream, int n, void* r) {
    if (n > 0) mt2203_draw(payload<Mt2203State>(stream), n, static_cast<uint32_t*>(r));
    return STO_STATUS_OK;
}

}  // extern "C"
