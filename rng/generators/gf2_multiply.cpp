// Products of polynomials over GF(2): carry-less multiplication, Karatsuba, Toom-Cook.
#include <immintrin.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "rng/generators/gf2_leaves.h"
#include "rng/generators/gf2_polynomial.h"

namespace nax::rng {

namespace {

inline void xor_into(uint64_t* to, const uint64_t* from, int words) {
    int i = 0;
    for (; i + 4 <= words; i += 4) {
        const __m256i sum = _mm256_xor_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(to + i)),
                                             _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from + i)));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + i), sum);
    }
    for (; i < words; ++i) to[i] ^= from[i];
}

// to[i] = from[0] ^ ... ^ from[i]; to may be from or lie before it.
inline void running_sum(uint64_t* to, const uint64_t* from, int words) {
    uint64_t sum = 0;
    for (int i = 0; i < words; ++i) to[i] = sum ^= from[i];
}

// Independent products: the short ones together, the others one by one.
template <std::size_t count, class Multiply>
void multiply_all(const Product (&parts)[count], const Multiply& multiply, uint64_t* scratch) {
    const auto is_leaf = [](const Product& part) { return part.words <= kLeafWords; };
    if (std::all_of(std::begin(parts), std::end(parts), is_leaf)) {
        poly_mul_leaves(parts, count);
        return;
    }
    for (const Product& part : parts) multiply(part.result, part.a, part.b, part.words, scratch);
}

}  // namespace

void poly_mul_kar(uint64_t* result, const uint64_t* a, const uint64_t* b, int words, uint64_t* scratch) {
    if (words <= kLeafWords) {
        const Product leaf{result, a, b, words};
        poly_mul_leaves(&leaf, 1);
        return;
    }
    const int low = (words + 1) / 2;
    const int high = words - low;
    uint64_t* const sum_a = scratch;
    uint64_t* const sum_b = scratch + low;
    uint64_t* const middle = scratch + 2 * low;
    uint64_t* const rest = scratch + 4 * low;
    std::copy_n(a, low, sum_a);
    std::copy_n(b, low, sum_b);
    xor_into(sum_a, a + low, high);
    xor_into(sum_b, b + low, high);
    const Product parts[] = {{result, a, b, low}, {result + 2 * low, a + low, b + low, high}, {middle, sum_a, sum_b, low}};
    multiply_all(parts, poly_mul_kar, rest);
    xor_into(middle, result, 2 * low);
    xor_into(middle, result + 2 * low, 2 * high);
    xor_into(result + low, middle, 2 * low);
}

namespace {

// The values of a0 + a1 y + a2 y^2 at y = 1, w and w + 1; the parts have k words, the last one `top`.
struct ToomValues {
    uint64_t* at_1;       // k words
    uint64_t* at_w;       // k + 2 words
    uint64_t* at_w1;      // k + 2 words

    void evaluate(const uint64_t* a, int k, int top) const {
        std::copy_n(a, k, at_1);
        xor_into(at_1, a + k, k);
        xor_into(at_1, a + 2 * k, top);
        std::copy_n(a, k, at_w);
        at_w[k] = at_w[k + 1] = 0;
        xor_into(at_w + 1, a + k, k);
        xor_into(at_w + 2, a + 2 * k, top);
        std::copy_n(at_w, k + 2, at_w1);
        xor_into(at_w1, a + k, k);
        xor_into(at_w1, a + 2 * k, top);
    }
};

// Coefficients c1, c2, c3 of the product from its values at 1, w, w + 1 and its coefficients c0 and c4:
//   c3 w (w + 1) = P(w) + P(w + 1) + P(1) + c0
//   c1 + c2 w    = (P(w) + c0) / w + c3 w^2 + c4 w^3,  c1 + c2 = P(1) + c0 + c3 + c4.
// A quotient by w is a shift by a word, one by w + 1 a running sum of words. c1, c2 and c3 have 2 k words and replace p1, pw
// and pw1.
void interpolate(uint64_t* p1, uint64_t* pw, uint64_t* pw1, const uint64_t* c0, const uint64_t* c4, int k, int top) {
    xor_into(p1, c0, 2 * k);
    xor_into(pw1, pw, 2 * k + 1);
    xor_into(pw1, p1, 2 * k);
    running_sum(pw1, pw1 + 1, 2 * k);
    const uint64_t* const c3 = pw1;

    xor_into(p1, c3, 2 * k);
    xor_into(p1, c4, 2 * top);
    xor_into(pw, c0, 2 * k);
    xor_into(pw + 3, c3, 2 * k - 2);
    xor_into(pw + 4, c4, std::min(2 * top, 2 * k - 3));
    xor_into(pw + 1, p1, 2 * k);
    running_sum(pw, pw + 1, 2 * k);
    xor_into(p1, pw, 2 * k);
}

}  // namespace

void poly_mul_tc3(uint64_t* result, const uint64_t* a, const uint64_t* b, int words, uint64_t* scratch) {
    if (words < kToomCookFrom) {
        poly_mul_kar(result, a, b, words, scratch);
        return;
    }
    const int k = (words + 2) / 3;
    const int top = words - 2 * k;
    uint64_t* next = scratch;
    const auto take = [&](int count) { return std::exchange(next, next + count); };
    const ToomValues va{take(k), take(k + 2), take(k + 2)};
    const ToomValues vb{take(k), take(k + 2), take(k + 2)};
    uint64_t* const p1 = take(2 * k);
    uint64_t* const pw = take(2 * k + 4);
    uint64_t* const pw1 = take(2 * k + 4);
    va.evaluate(a, k, top);
    vb.evaluate(b, k, top);

    uint64_t* const c0 = result;
    uint64_t* const c4 = result + 4 * k;
    const Product parts[] = {{c0, a, b, k},
                             {c4, a + 2 * k, b + 2 * k, top},
                             {pw, va.at_w, vb.at_w, k + 2},
                             {pw1, va.at_w1, vb.at_w1, k + 2},
                             {p1, va.at_1, vb.at_1, k}};
    multiply_all(parts, poly_mul_tc3, next);
    interpolate(p1, pw, pw1, c0, c4, k, top);

    std::fill_n(result + 2 * k, 2 * k, uint64_t{0});
    xor_into(result + k, p1, 2 * k);
    xor_into(result + 2 * k, pw, 2 * k);
    xor_into(result + 3 * k, pw1, k + top);
}

void poly_mul(uint64_t* result, int degree_a, const uint64_t* a, int degree_b, const uint64_t* b, uint64_t* scratch) {
    int length = degree_a / 64 + 1;
    int side = degree_b / 64 + 1;
    if (side > length) {
        std::swap(length, side);
        std::swap(a, b);
    }
    std::fill_n(result, length + side, uint64_t{0});
    uint64_t* const product = scratch;
    for (; length >= side; a += side, result += side, length -= side) {
        poly_mul_tc3(product, a, b, side, scratch + 2 * side);
        xor_into(result, product, 2 * side);
    }
    if (length == 0) return;
    // What is left of the longer operand is padded: one more square product.
    uint64_t* const padded = scratch + 2 * side;
    std::copy_n(a, length, padded);
    std::fill_n(padded + length, side - length, uint64_t{0});
    poly_mul_tc3(product, padded, b, side, scratch + 3 * side);
    xor_into(result, product, length + side);
}

void poly_square(uint64_t* result, const uint64_t* a, int words) {
    for (int i = words - 1; i >= 0; --i) {
        const __m128i word = _mm_cvtsi64_si128(static_cast<int64_t>(a[i]));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(result + 2 * i), _mm_clmulepi64_si128(word, word, 0x00));
    }
}

}  // namespace nax::rng
