#include "bench/stream_plain_rivals.h"

#include <immintrin.h>

#include <algorithm>
#include <cstring>

namespace nax::bench {
namespace {

uint32_t temper(uint32_t y) {
    y ^= y >> 11;
    y ^= (y << 7) & 0x9D2C5680u;
    y ^= (y << 15) & 0xEFC60000u;
    return y ^ (y >> 18);
}

uint32_t twist(uint32_t upper, uint32_t lower, uint32_t middle) {
    const uint32_t y = (upper & 0x80000000u) | (lower & 0x7FFFFFFFu);
    return middle ^ (y >> 1) ^ ((y & 1) != 0 ? 0x9908B0DFu : 0u);
}

const uint32_t* first_fill() {
    static uint32_t fill[624];
    if (fill[0] == 0) {
        fill[0] = 19650218u;
        for (uint32_t i = 1; i < 624; ++i) fill[i] = (fill[i - 1] ^ (fill[i - 1] >> 30)) * 1812433253u + i;
    }
    return fill;
}

}  // namespace

void PlainTwister::start(uint32_t seed) {
    std::memcpy(x_, first_fill(), sizeof(x_));
    uint32_t previous = x_[0];
    for (int i = 1; i < 624; ++i) previous = x_[i] = (x_[i] ^ ((previous ^ (previous >> 30)) * 1664525u)) + seed;
    x_[0] = previous;
    previous = x_[1] = (x_[1] ^ ((previous ^ (previous >> 30)) * 1664525u)) + seed;
    for (int i = 2; i < 624; ++i) {
        previous = x_[i] = (x_[i] ^ ((previous ^ (previous >> 30)) * 1566083941u)) - static_cast<uint32_t>(i);
    }
    x_[1] = (x_[1] ^ ((previous ^ (previous >> 30)) * 1566083941u)) - 1;
    x_[0] = 0x80000000u;
    next_ = 624;
}

void PlainTwister::refill() {
    uint32_t* const x = x_;
    for (int k = 0; k < 227; ++k) x[k] = twist(x[k], x[k + 1], x[k + 397]);
#pragma GCC ivdep
    for (int k = 227; k < 623; ++k) x[k] = twist(x[k], x[k + 1], x[k - 227]);
    x[623] = twist(x[623], x[0], x[396]);
    next_ = 0;
}

template <class T, class Map>
void PlainTwister::draw(T* __restrict r, int n, const Map& map) {
    while (n > 0) {
        if (next_ == 624) refill();
        const int take = std::min(n, 624 - next_);
        for (int i = 0; i < take; ++i) r[i] = map(temper(x_[next_ + i]));
        next_ += take;
        r += take;
        n -= take;
    }
}

void PlainTwister::words(uint32_t* r, int n) {
    draw(r, n, [](uint32_t y) { return y; });
}
void PlainTwister::doubles(double* r, int n, double a, double b) {
    const double s = (b - a) * 0x1p-32;
    draw(r, n, [a, s](uint32_t y) { return __builtin_fma(static_cast<double>(y), s, a); });
}
void PlainTwister::singles(float* r, int n, float a, float b) {
    const float s = (b - a) * 0x1p-32f;
    draw(r, n, [a, s](uint32_t y) { return __builtin_fmaf(static_cast<float>(y), s, a); });
}

PlainSfmt::PlainSfmt() {
    for (uint32_t i = 0; i < 624; ++i) x_[i] = i * 2654435761u + 1;
}

// The authors' loop in 128-bit registers.
void PlainSfmt::refill() {
    __m128i* const w = reinterpret_cast<__m128i*>(x_);
    const __m128i mask = _mm_set_epi32(static_cast<int>(0xBFFFFFF6), static_cast<int>(0xBFFAFFFF),
                                       static_cast<int>(0xDDFECB7F), static_cast<int>(0xDFFFFFEF));
    const auto step = [mask](__m128i a, __m128i b, __m128i c, __m128i d) {
        __m128i z = _mm_xor_si128(_mm_srli_si128(c, 1), a);
        z = _mm_xor_si128(z, _mm_slli_epi32(d, 18));
        z = _mm_xor_si128(z, _mm_slli_si128(a, 1));
        return _mm_xor_si128(z, _mm_and_si128(_mm_srli_epi32(b, 11), mask));
    };
    __m128i c = _mm_loadu_si128(w + 154), d = _mm_loadu_si128(w + 155);
    for (int k = 0; k < 156; ++k) {
        const __m128i r = step(_mm_loadu_si128(w + k), _mm_loadu_si128(w + (k < 34 ? k + 122 : k - 34)), c, d);
        _mm_storeu_si128(w + k, r);
        c = d;
        d = r;
    }
    next_ = 0;
}

template <class T, class Map>
void PlainSfmt::draw(T* __restrict r, int n, const Map& map) {
    while (n > 0) {
        if (next_ == 624) refill();
        const int take = std::min(n, 624 - next_);
        for (int i = 0; i < take; ++i) r[i] = map(x_[next_ + i]);
        next_ += take;
        r += take;
        n -= take;
    }
}

void PlainSfmt::words(uint32_t* r, int n) {
    draw(r, n, [](uint32_t y) { return y; });
}
void PlainSfmt::doubles(double* r, int n, double a, double b) {
    const double s = (b - a) * 0x1p-32, middle = (a + b) / 2;
    draw(r, n,
         [middle, s](uint32_t y) { return __builtin_fma(static_cast<double>(static_cast<int32_t>(y)), s, middle); });
}

// A block to an instruction.
void PlainArs5::words(uint32_t* r, int n) {
    const __m128i step =
        _mm_set_epi64x(static_cast<int64_t>(0xBB67AE8584CAA73B), static_cast<int64_t>(0x9E3779B97F4A7C15));
    for (; n >= 4; n -= 4, r += 4) {
        __m128i key = _mm_loadu_si128(reinterpret_cast<const __m128i*>(key_));
        __m128i s = _mm_xor_si128(_mm_set_epi64x(0, static_cast<int64_t>(counter_++)), key);
        for (int i = 0; i < 4; ++i) s = _mm_aesenc_si128(s, key = _mm_add_epi64(key, step));
        s = _mm_aesenclast_si128(s, _mm_add_epi64(key, step));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(r), s);
    }
}

PlainDigital::PlainDigital(const uint32_t (*numbers)[32], int dimension) : dimension_(dimension) {
    for (int d = 0; d < dimension; ++d) {
        for (int bit = 0; bit < 32; ++bit) direction_[bit][d] = numbers[d][bit];
    }
}

void PlainDigital::doubles(double* __restrict r, int points) {
    for (; points > 0; --points, r += dimension_) {
        const uint32_t* const row = direction_[__builtin_ctz(~counter_++)];
        for (int d = 0; d < dimension_; ++d) {
            x_[d] ^= row[d];
            r[d] = static_cast<double>(static_cast<int32_t>(x_[d] >> 1)) * 0x1p-31;
        }
    }
}

}  // namespace nax::bench
