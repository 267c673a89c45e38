// Output of ARS5: the block loop, on AES rounds of vectors where the processor has them and of single blocks elsewhere.
#include "rng/generators/ars5.h"

#include "rng/generators/counter_draw.h"
#include "rng/generators/to_real.h"
#include "rng/cpu_features.h"

namespace nax::rng {

namespace {

constexpr int kRowBlocks = kLanes32 / kCounterBlockWords;  // blocks in a vector

__m128i load_block(const uint32_t* words) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(words)); }

// The six round keys: key + i steps, the halves added without carry between them.
struct RoundKeys {
    __m128i keys[kArs5Rounds + 1];

    explicit RoundKeys(const Ars5State& state) {
        const __m128i step = _mm_set_epi64x(static_cast<int64_t>(kArs5KeyStepHigh), static_cast<int64_t>(kArs5KeyStepLow));
        keys[0] = load_block(state.key);
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
inline __m128i block_of(const Vector (&s)[1], int i) {
    const __m512i order = _mm512_add_epi64(_mm512_set1_epi64(2 * i), _mm512_setr_epi64(0, 1, 0, 0, 0, 0, 0, 0));
    return _mm512_castsi512_si128(_mm512_permutexvar_epi64(order, s[0]));
}

#else

using Vector = __m256i;
inline Vector spread(__m128i a) { return _mm256_broadcastsi128_si256(a); }
inline Vector block_numbers() { return _mm256_setr_epi64x(0, 0, 1, 0); }
inline Vector add64(Vector a, Vector b) { return _mm256_add_epi64(a, b); }
inline Vector exclusive_or(Vector a, Vector b) { return _mm256_xor_si256(a, b); }
inline Vector round_of(Vector s, Vector key) { return _mm256_aesenc_epi128(s, key); }
inline Vector last_round(Vector s, Vector key) { return _mm256_aesenclast_epi128(s, key); }
inline __m128i block_of(const Vector (&s)[2], int i) {
    const Vector row = i < 2 ? s[0] : s[1];
    return (i & 1) == 0 ? _mm256_castsi256_si128(row) : _mm256_extracti128_si256(row, 1);
}

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

constexpr int kShort = 16;  // numbers of a short call
constexpr int kShortRows = kShort / kLanes32;

// The lanes' additions stay within the low half of the counter, and nothing is left of the last block.
inline bool is_short(const Ars5State& state, int n) {
    uint64_t low;
    std::memcpy(&low, state.counter, sizeof(low));
    return n <= kShort && state.left == 0 && !low_half_wraps(low, kShort / kCounterBlockWords);
}

// A short call costs little more than its rounds if counter and keys stay in vectors: no key schedule in memory, no
// arithmetic on 128 bits.
template <class Map, class T>
[[gnu::always_inline]] inline void draw_short(Ars5State& state, int n, T* r, const Map& map) {
    const __m128i counter = load_block(state.counter);
    const Vector key = spread(load_block(state.key));
    const auto round_key = [&](uint64_t i) {
        const __m128i steps = _mm_set_epi64x(static_cast<int64_t>(i * kArs5KeyStepHigh), static_cast<int64_t>(i * kArs5KeyStepLow));
        return add64(key, spread(steps));
    };
    Vector s[kShortRows];
    Vector at = add64(spread(counter), block_numbers());
#pragma GCC unroll 2
    for (Vector& row : s) {
        row = exclusive_or(at, key);
        at = add64(at, spread(_mm_set_epi64x(0, kRowBlocks)));
    }
#pragma GCC unroll 8
    for (uint64_t i = 1; i <= kArs5Rounds; ++i) {
        const Vector k = round_key(i);
#pragma GCC unroll 2
        for (Vector& row : s) row = i < kArs5Rounds ? round_of(row, k) : last_round(row, k);
    }

    U32 rows[kShortRows];
#pragma GCC unroll 2
    for (int i = 0; i < kShortRows; ++i) rows[i] = (U32)s[i];
    map_rows(rows, n, r, map);
    const int blocks = (n + kCounterBlockWords - 1) / kCounterBlockWords;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state.counter), _mm_add_epi64(counter, _mm_set_epi64x(0, blocks)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state.block), block_of(s, blocks - 1));
    state.left = static_cast<uint32_t>(blocks * kCounterBlockWords - n);
}

template <class Generator, class Map, class T>
void draw_long(Ars5State& state, int n, T* r, const Map& map) {
    const RoundKeys round(state);
    draw_counter(state, n, r, map, Generator{round}, ars5_block);
}

// Numbers need the processor's AES.
template <class Map, class T>
[[gnu::noinline]] int draw_any(Ars5State& state, int n, T* r, const Map& map) {
    const bool vectors = __stoCPUisVAES() != 0;
    if (!vectors && __stoCPUisAES() == 0) return STO_STATUS_NO_AES;
    if (n <= 0) return STO_STATUS_OK;
    if (vectors) draw_long<WideAes>(state, n, r, map);
    else draw_long<_vARS5>(state, n, r, map);
    return STO_STATUS_OK;
}
template <class Map, class T>
int draw(nax_stream* stream, int n, T* r, const Map& map) {
    Ars5State& state = payload<Ars5State>(stream);
    if (n <= 0 || !vector_aes_known() || !is_short(state, n)) return draw_any(state, n, r, map);
    draw_short(state, n, r, map);
    return STO_STATUS_OK;
}

}  // namespace

void ars5_block(const Ars5State& state, uint32_t (&out)[4]) {
    const __m128i words = encrypt(RoundKeys(state), load_block(state.counter));
    std::memcpy(out, &words, sizeof(out));
}

}  // namespace nax::rng

using namespace nax::rng;

extern "C" {

int __stosBRngARS5(nax_stream* stream, int n, float* r, float a, float b) {
    return draw(stream, n, r, MidpointScale<float>(a, b));
}

int __stodBRngARS5(nax_stream* stream, int n, double* r, double a, double b) {
    return draw(stream, n, r, MidpointScale<double>(a, b));
}

int __stoiBRngARS5(nax_stream* stream, int n, void* r) { return draw(stream, n, static_cast<uint32_t*>(r), RawWords{}); }

}  // extern "C"
