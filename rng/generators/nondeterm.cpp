// NONDETERM, the processor's hardware source: the RDRAND instruction.
//
// Output is not a recurrence and has no period; each 64-bit word of the instruction is one double, two singles or two
// integer words, low half first. The source is shared by all cores and may be busy: each word is tried up to Retries times.
// Doubles are a + (b - a) u / 2^64, singles a + (b - a) y / 2^32.
// NIST SP 800-90A and 800-90B describe the construction that the processors' makers state for the instruction.
#include <immintrin.h>

#include "nax/abi/streams.h"
#include "rng/generator.h"
#include "rng/generators/nondeterm.h"

namespace nax::rng {

namespace {

constexpr uint32_t kDefaultRetries = 10;

// One word of the source: false if it was busy. A cleared carry flag says so, and comes with a zero.
bool read_source(uint64_t& word) {
    unsigned long long value = 0;
    const bool got = _rdrand64_step(&value) != 0;
    word = value;
    return got;
}

// Calls use(word) for each of n words; stops when one can't be had.
template <class Use>
int for_each_word(uint32_t retries, int n, const Use& use) {
    for (int i = 0; i < n; ++i) {
        uint64_t word = 0;
        uint32_t tries = 1;
        while (!read_source(word)) {
            if (tries++ >= retries) return STO_STATUS_RDRAND_FAILED;
        }
        use(i, word);
    }
    return STO_STATUS_OK;
}

// n values of 32 bits, two to a word of the source, low half first; an odd n leaves a half unused.
template <class Put>
int for_each_half(uint32_t retries, int n, const Put& put) {
    return for_each_word(retries, n / 2 + n % 2, [&](int i, uint64_t word) {
        put(2 * i, static_cast<uint32_t>(word));
        if (2 * i + 1 < n) put(2 * i + 1, static_cast<uint32_t>(word >> 32));
    });
}

int _vdTRNGRdRand(uint32_t retries, int n, double* r, double a, double b) {
    const double scale = (b - a) * 0x1p-64;
    return for_each_word(retries, n, [&](int i, uint64_t word) {
        r[i] = __builtin_fma(scale, static_cast<double>(word), a);
    });
}

int _vsTRNGRdRand(uint32_t retries, int n, float* r, float a, float b) {
    const float scale = (b - a) * 0x1p-32f;
    return for_each_half(retries, n, [&](int i, uint32_t word) {
        r[i] = __builtin_fmaf(scale, static_cast<float>(word), a);
    });
}

int _viTRNGRdRand(uint32_t retries, int n, uint32_t* r) {
    return for_each_half(retries, n, [&](int i, uint32_t word) { r[i] = word; });
}

struct Nondeterm {
    static int seed(Stream* stream, int n, const uint32_t* seeds) {
        const uint32_t retries = n >= 2 ? seeds[1] : 0;
        payload<NondetermState>(stream) = {0, retries != 0 ? retries : kDefaultRetries};
        return STO_STATUS_OK;
    }
};

uint32_t retries_of(nax_stream* stream) { return payload<NondetermState>(stream).retries; }

}  // namespace

}  // namespace nax::rng

using namespace nax::rng;

NAX_GENERATOR(TRNG, Nondeterm)

extern "C" {

int __stosBRngTRNG(nax_stream* stream, int n, float* r, float a, float b) {
    if (__stoCPUisRDRAND() == 0) return STO_STATUS_NO_RDRAND;
    return n < 1 ? STO_STATUS_OK : _vsTRNGRdRand(retries_of(stream), n, r, a, b);
}

int __stodBRngTRNG(nax_stream* stream, int n, double* r, double a, double b) {
    if (__stoCPUisRDRAND() == 0) return STO_STATUS_NO_RDRAND;
    return n < 1 ? STO_STATUS_OK : _vdTRNGRdRand(retries_of(stream), n, r, a, b);
}

int __stoiBRngTRNG(nax_stream* stream, int n, void* r) {
    if (__stoCPUisRDRAND() == 0) return STO_STATUS_NO_RDRAND;
    return n < 1 ? STO_STATUS_OK : _viTRNGRdRand(retries_of(stream), n, static_cast<uint32_t*>(r));
}

}  // extern "C"
