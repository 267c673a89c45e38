// ARS5: the block loop, on AES rounds of vectors where the processor has them and of single blocks elsewhere.
#include "rng/generators/ars5.h"

#include "rng/generators/counter_draw.h"
#include "rng/generators/to_real.h"

namespace nax::rng {

namespace {

constexpr int kRowBlocks = kLanes32 / kCounterBlockWords;  // blocks in a vector

__m128i load_words(const uint32_t* words) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(words)); }

// The six round keys: key + i steps, the halves added without carry between them.
struct RoundKeys {
    __m128i keys[kArs5Rounds + 1];

    explicit RoundKeys(const Ars5State& state) {
        const __m128i step = _mm_set_epi64x(static_cast<int64_t>(kArs5KeyStepHigh), static_cast<int64_t>(kArs5KeyStepLow));
        keys[0] = load_words(state.key);
        for (int i = 1; i <= kArs5Rounds; ++i) keys[i] = _mm_add_epi64(keys[i - 1], step);
    }
};

inline __m128i encrypt(const RoundKeys& round, __m128i s) {
    s = _mm_xor_si128(s, round.keys[0]);
    for (int i = 1; i < kArs5Rounds; ++i) s = _mm_aesenc_si128(s, round.keys[i]);
    return _mm_aesenclast_si128(s, round.keys[kArs5Rounds]);
}

#ifdef __AVX512F__

using Vector = __m512i;
inline Vector spread(__m128i a) { return _mm512_maskz_broadcast_i32x4(0xFFFF, a); }
inline Vector block_numbers() { return _mm512_setr_epi64(0, 0, 1, 0, 2, 0, 3, 0); }
inline Vector add64(Vector a, Vector b) { return _mm512_add_epi64(a, b); }
inline Vector exclusive_or(Vector a, Vector b) { return _mm512_xor_si512(a, b); }
inline Vector round_of(Vector s, Vector key) { return _mm512_aesenc_epi128(s, key); }
inline Vector last_round(Vector s, Vector key) { return _mm512_aesenclast_epi128(s, key); }

#else

using Vector = __m256i;
inline Vector spread(__m128i a) { return _mm256_broadcastsi128_si256(a); }
inline Vector block_numbers() { return _mm256_setr_epi64x(0, 0, 1, 0); }
inline Vector add64(Vector a, Vector b) { return _mm256_add_epi64(a, b); }
inline Vector exclusive_or(Vector a, Vector b) { return _mm256_xor_si256(a, b); }
inline Vector round_of(Vector s, Vector key) { return _mm256_aesenc_epi128(s, key); }
inline Vector last_round(Vector s, Vector key) { return _mm256_aesenclast_epi128(s, key); }

#endif

// Several blocks to a vector.
struct WideAes {
    static constexpr int kManyRows = 64 / kLanes32;  // 64 words a round hide the latency of the AES rounds
    static constexpr int kFewRows = 16 / kLanes32;

    const RoundKeys& round;

    template <int rows>
    [[gnu::always_inline]] void blocks(Wide counter, U32 (&out)[rows]) const {
        Vector s[rows];
        const __m128i low = _mm_set_epi64x(static_cast<int64_t>(counter >> 64), static_cast<int64_t>(counter));
        Vector at = add64(spread(low), block_numbers());
        const Vector next = spread(_mm_set_epi64x(0, kRowBlocks));
#pragma GCC unroll 8
        for (int i = 0; i < rows; ++i, at = add64(at, next)) s[i] = exclusive_or(at, spread(round.keys[0]));
#pragma GCC unroll 8
        for (int k = 1; k < kArs5Rounds; ++k) {
            const Vector key = spread(round.keys[k]);
#pragma GCC unroll 8
            for (int i = 0; i < rows; ++i) s[i] = round_of(s[i], key);
        }
#pragma GCC unroll 8
        for (int i = 0; i < rows; ++i) out[i] = reinterpret_cast<U32>(last_round(s[i], spread(round.keys[kArs5Rounds])));
    }
};

// One block to a vector, for processors without AES on vectors.
struct _vARS5 {
    static constexpr int kManyRows = 1;
    static constexpr int kFewRows = 1;

    const RoundKeys& round;

    template <int rows>
    void blocks(Wide counter, U32 (&out)[rows]) const {
        __m128i s[rows * kRowBlocks];
        for (int i = 0; i < rows * kRowBlocks; ++i, ++counter) {
            s[i] = encrypt(round, _mm_set_epi64x(static_cast<int64_t>(counter >> 64), static_cast<int64_t>(counter)));
        }
        std::memcpy(out, s, sizeof(out));
    }
};

template <class Map, class T>
void draw(Ars5State& state, int n, T* r, const Map& map) {
    const RoundKeys round(state);
    if (__stoCPUisVAES() != 0) {
        draw_counter(state, n, r, map, WideAes{round}, ars5_block);
    } else {
        draw_counter(state, n, r, map, _vARS5{round}, ars5_block);
    }
}

}  // namespace

void ars5_block(const Ars5State& state, uint32_t (&out)[4]) {
    const __m128i words = encrypt(RoundKeys(state), load_words(state.counter));
    std::memcpy(out, &words, sizeof(out));
}

void ars5_draw(Ars5State& state, int n, uint32_t* r) { draw(state, n, r, RawWords{}); }
void ars5_draw(Ars5State& state, int n, double* r, double a, double b) { draw(state, n, r, MidpointScale<double>(a, b)); }
void ars5_draw(Ars5State& state, int n, float* r, float a, float b) { draw(state, n, r, MidpointScale<float>(a, b)); }

}  // namespace nax::rng
