// Karatsuba's products of up to 20 words, straight-line for each length. Operands are taken in pairs of words, an odd word
// with a zero: 128-bit lanes hold them, and a wider vector holds as many independent products as it has lanes.
#include "rng/generators/gf2_leaves.h"

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <utility>

#include "rng/cpu_features.h"

namespace nax::rng {

namespace {

// One product: 128-bit vectors.
struct Single {
    using V = __m128i;
    static constexpr int kProducts = 1;

    static V add(V a, V b) { return _mm_xor_si128(a, b); }
    static V low_by_low(V a, V b) { return _mm_clmulepi64_si128(a, b, 0x00); }
    static V high_by_high(V a, V b) { return _mm_clmulepi64_si128(a, b, 0x11); }
    static V up(V a) { return _mm_slli_si128(a, 8); }
    static V down(V a) { return _mm_srli_si128(a, 8); }
    static V gather(const __m128i* lanes) { return lanes[0]; }
    static void scatter(V a, __m128i* lanes) { lanes[0] = a; }
};

#ifdef __AVX512F__

struct SideBySide {
    using V = __m512i;
    static constexpr int kProducts = 4;

    static V add(V a, V b) { return _mm512_xor_si512(a, b); }
    static V low_by_low(V a, V b) { return _mm512_clmulepi64_epi128(a, b, 0x00); }
    static V high_by_high(V a, V b) { return _mm512_clmulepi64_epi128(a, b, 0x11); }
    static V up(V a) { return _mm512_bslli_epi128(a, 8); }
    static V down(V a) { return _mm512_bsrli_epi128(a, 8); }
    static V gather(const __m128i* lanes) {
        V v = _mm512_castsi128_si512(lanes[0]);
        v = _mm512_inserti32x4(v, lanes[1], 1);
        v = _mm512_inserti32x4(v, lanes[2], 2);
        return _mm512_inserti32x4(v, lanes[3], 3);
    }
    static void scatter(V a, __m128i* lanes) { _mm512_storeu_si512(lanes, a); }
};

#else

struct SideBySide {
    using V = __m256i;
    static constexpr int kProducts = 2;

    static V add(V a, V b) { return _mm256_xor_si256(a, b); }
    static V low_by_low(V a, V b) { return _mm256_clmulepi64_epi128(a, b, 0x00); }
    static V high_by_high(V a, V b) { return _mm256_clmulepi64_epi128(a, b, 0x11); }
    static V up(V a) { return _mm256_slli_si256(a, 8); }
    static V down(V a) { return _mm256_srli_si256(a, 8); }
    static V gather(const __m128i* lanes) { return _mm256_inserti128_si256(_mm256_castsi128_si256(lanes[0]), lanes[1], 1); }
    static void scatter(V a, __m128i* lanes) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(lanes), a); }
};

#endif

template <class L, int pairs>
struct Karatsuba {
    using V = typename L::V;
    static constexpr bool kInline = pairs <= 3;

    static void product(V* r, const V* a, const V* b) {
        if constexpr (kInline) steps(r, a, b);
        else out_of_line(r, a, b);
    }
    [[gnu::noinline]] static void out_of_line(V* r, const V* a, const V* b) { steps(r, a, b); }

    [[gnu::always_inline]] static void steps(V* r, const V* a, const V* b) {
        if constexpr (pairs == 1) one_pair(r, a[0], b[0]);
        else if constexpr (pairs == 3) three_pairs(r, a, b);
        else halves(r, a, b);
    }

private:
    static void one_pair(V* r, V a, V b) {
        const V low = L::low_by_low(a, b);
        const V high = L::high_by_high(a, b);
        const V sums = L::low_by_low(L::add(a, L::down(a)), L::add(b, L::down(b)));
        const V middle = L::add(sums, L::add(low, high));
        r[0] = L::add(low, L::up(middle));
        r[1] = L::add(high, L::down(middle));
    }

    // Six products in place of nine: the mixed terms from the sums of two parts each.
    static void three_pairs(V* r, const V* a, const V* b) {
        V p0[2], p1[2], p2[2], s01[2], s02[2], s12[2], c1[2], c2[2], c3[2];
        one_pair(p0, a[0], b[0]);
        one_pair(p1, a[1], b[1]);
        one_pair(p2, a[2], b[2]);
        one_pair(s01, L::add(a[0], a[1]), L::add(b[0], b[1]));
        one_pair(s02, L::add(a[0], a[2]), L::add(b[0], b[2]));
        one_pair(s12, L::add(a[1], a[2]), L::add(b[1], b[2]));
        for (int i = 0; i < 2; ++i) {
            c1[i] = L::add(s01[i], L::add(p0[i], p1[i]));
            c2[i] = L::add(L::add(s02[i], p1[i]), L::add(p0[i], p2[i]));
            c3[i] = L::add(s12[i], L::add(p1[i], p2[i]));
        }
        r[0] = p0[0];
        r[1] = L::add(p0[1], c1[0]);
        r[2] = L::add(c1[1], c2[0]);
        r[3] = L::add(c2[1], c3[0]);
        r[4] = L::add(c3[1], p2[0]);
        r[5] = p2[1];
    }

    [[gnu::always_inline]] static void halves(V* r, const V* a, const V* b) {
        constexpr int kLow = (pairs + 1) / 2;
        constexpr int kHigh = pairs / 2;
        V sum_a[kLow], sum_b[kLow], middle[2 * kLow];
#pragma GCC unroll 8
        for (int i = 0; i < kLow; ++i) {
            sum_a[i] = i < kHigh ? L::add(a[i], a[kLow + i]) : a[i];
            sum_b[i] = i < kHigh ? L::add(b[i], b[kLow + i]) : b[i];
        }
        Karatsuba<L, kLow>::product(r, a, b);
        Karatsuba<L, kHigh>::product(r + 2 * kLow, a + kLow, b + kLow);
        Karatsuba<L, kLow>::product(middle, sum_a, sum_b);
#pragma GCC unroll 16
        for (int i = 0; i < 2 * kLow; ++i) middle[i] = L::add(middle[i], r[i]);
#pragma GCC unroll 16
        for (int i = 0; i < 2 * kHigh; ++i) middle[i] = L::add(middle[i], r[2 * kLow + i]);
#pragma GCC unroll 16
        for (int i = 0; i < 2 * kLow; ++i) r[kLow + i] = L::add(r[kLow + i], middle[i]);
    }
};

constexpr int kMaxPairs = kLeafWords / 2;

__m128i load_pair(const uint64_t* words, int place, int length) {
    if (place + 2 <= length) return _mm_loadu_si128(reinterpret_cast<const __m128i*>(words + place));
    return place < length ? _mm_loadl_epi64(reinterpret_cast<const __m128i*>(words + place)) : _mm_setzero_si128();
}

template <class L, int pairs>
void batch(const Product* products) {
    using V = typename L::V;
    V a[pairs], b[pairs], r[2 * pairs];
    for (int i = 0; i < pairs; ++i) {
        __m128i lanes_a[L::kProducts], lanes_b[L::kProducts];
        for (int j = 0; j < L::kProducts; ++j) {
            lanes_a[j] = load_pair(products[j].a, 2 * i, products[j].words);
            lanes_b[j] = load_pair(products[j].b, 2 * i, products[j].words);
        }
        a[i] = L::gather(lanes_a);
        b[i] = L::gather(lanes_b);
    }
    Karatsuba<L, pairs>::product(r, a, b);
    for (int i = 0; i < 2 * pairs; ++i) {
        __m128i lanes[L::kProducts];
        L::scatter(r[i], lanes);
        for (int j = 0; j < L::kProducts; ++j) {
            if (i < products[j].words) _mm_storeu_si128(reinterpret_cast<__m128i*>(products[j].result + 2 * i), lanes[j]);
        }
    }
}

using Batch = void (*)(const Product*);
template <class L, int... index>
constexpr std::array<Batch, kMaxPairs> batches(std::integer_sequence<int, index...>) {
    return {batch<L, index + 1>...};
}
// Entry i: operands of i + 1 pairs.
template <class L>
constexpr auto kBatches = batches<L>(std::make_integer_sequence<int, kMaxPairs>{});

template <class L>
void run(const Product* products) {
    int words = 1;
    for (int j = 0; j < L::kProducts; ++j) words = std::max(words, products[j].words);
    kBatches<L>[static_cast<std::size_t>((words - 1) / 2)](products);
}

}  // namespace

void poly_mul_leaves(const Product* products, int count) {
    if (has_vector_clmul()) {
        for (; count >= SideBySide::kProducts; count -= SideBySide::kProducts, products += SideBySide::kProducts) {
            run<SideBySide>(products);
        }
    }
    for (; count > 0; --count, ++products) run<Single>(products);
}

}  // namespace nax::rng
