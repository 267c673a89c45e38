// Output of WH. Everything runs in doubles: x is below 2^24 and every power of a multiplier too, so products are exact, and
// a reciprocal gives the quotient: p/m is at least 1/m > 2^-24 away from an integer (m is prime and divides neither
// factor), while p (1/m) is off by less than 2^-27.
//
// Sixteen consecutive outputs are made first, by steps of 1, 2, 4 and 8; from then on all of them step by a^16.
#include "rng/generators/wh.h"

#include "rng/registry.h"
#include "simd/integers.h"

using namespace nax::rng;
using namespace nax::simd;

namespace {

constexpr int kBlock = 16;
constexpr int kSequential = 5;      // up to here single steps are faster than a block

// One step of four components (Quad), or of one component in all lanes (F64).
template <class V>
V step(V x, V a, V m, V reciprocal) {
    const V product = a * x;
    return fnma(m, truncate(product * reciprocal), product);
}

Quad from_words(const uint32_t* words) {
    // All below 2^31.
    return _mm256_cvtepi32_pd(load<__m128i_u>(words));
}
void put_words(uint32_t* to, Quad x) { _mm_storeu_si128(reinterpret_cast<__m128i_u*>(to), _mm256_cvttpd_epi32(x)); }

// One call: the state in doubles, with the row's constants.
struct Row {
    Quad a, m, reciprocal;

    explicit Row(const Stream* stream) {
        const int row = substream_of(stream);
        a = from_words(payload<WhState>(stream).a);
        m = from_words(_sto_WH_M[row]);
        reciprocal = load<Quad>(_stodWH_IM_Tab[row]);
    }
};

// The sum of fractions modulo 1, in the order of the components.
double fraction(Quad x, Quad reciprocal) {
    const Quad term = x * reciprocal;
    const double sum = term[0] + term[1] + term[2] + term[3];
    return sum - __builtin_trunc(sum);
}

// Sixteen consecutive outputs, and a^16.
struct Block {
    Quad x[kBlock];
    Quad stride;

    Block(Quad first, const Row& row) {
        constexpr int kDoublings = 4;
        Quad power[kDoublings + 1] = {row.a};      // a, a^2, a^4, a^8, a^16
#pragma GCC unroll 4
        for (int i = 0; i < kDoublings; ++i) power[i + 1] = step(power[i], power[i], row.m, row.reciprocal);
        stride = power[kDoublings];
        x[0] = first;
#pragma GCC unroll 16
        for (int i = 1; i < kBlock; ++i) {
            const int level = 31 - __builtin_clz(static_cast<unsigned>(i));
            x[i] = step(x[i - (1 << level)], power[level], row.m, row.reciprocal);
        }
    }
    // The state after n outputs, n at most the block's length.
    Quad after(int n, const Row& row) const { return n < kBlock ? x[n] : step(x[0], stride, row.m, row.reciprocal); }
};

// Four vectors of four components to four components of four outputs.
[[gnu::always_inline]] inline void transpose(const Quad* from, Quad (&to)[kWhComponents]) {
    const Quad low02 = __builtin_shufflevector(from[0], from[1], 0, 4, 2, 6), low13 = __builtin_shufflevector(from[0], from[1], 1, 5, 3, 7);
    const Quad high02 = __builtin_shufflevector(from[2], from[3], 0, 4, 2, 6), high13 = __builtin_shufflevector(from[2], from[3], 1, 5, 3, 7);
    to[0] = __builtin_shufflevector(low02, high02, 0, 1, 4, 5);
    to[1] = __builtin_shufflevector(low13, high13, 0, 1, 4, 5);
    to[2] = __builtin_shufflevector(low02, high02, 2, 3, 6, 7);
    to[3] = __builtin_shufflevector(low13, high13, 2, 3, 6, 7);
}

// The same component by component, lanes along the sequence.
struct Lanes {
    static constexpr int kParts = kBlock / kLanes64;
    alignas(64) double x[kWhComponents][kBlock];
    F64 stride[kWhComponents], m[kWhComponents], reciprocal[kWhComponents];

    Lanes(const Block& block, const Row& row) {
#pragma GCC unroll 16
        for (int j = 0; j < kWhComponents; ++j) {
            stride[j] = broadcast(block.stride[j]);
            m[j] = broadcast(row.m[j]);
            reciprocal[j] = broadcast(row.reciprocal[j]);
        }
#pragma GCC unroll 16
        for (int i = 0; i < kBlock; i += 4) {
            Quad components[kWhComponents];
            transpose(block.x + i, components);
#pragma GCC unroll 16
            for (int k = 0; k < kWhComponents; ++k) store(x[k] + i, components[k]);
        }
    }
    Quad output(int i) const { return Quad{x[0][i], x[1][i], x[2][i], x[3][i]}; }
};

// a + (b - a) u, computed in double.
template <class T>
struct Interval {
    double origin, width;
    Interval(T a, T b) : origin(static_cast<double>(a)), width(static_cast<double>(b) - origin) {}
    T operator()(double u) const { return static_cast<T>(__builtin_fma(width, u, origin)); }
    void store_lanes(T* r, F64 sum) const {
        const F64 value = fused(broadcast(width), sum - truncate(sum), broadcast(origin));
        if constexpr (sizeof(T) == sizeof(float)) store(r, narrow(value));
        else store(r, value);
    }
    void store_quad(T* r, Quad sum) const {
        const Quad value = fused(Quad{} + width, sum - truncate(sum), Quad{} + origin);
        if constexpr (sizeof(T) == sizeof(float)) _mm_storeu_ps(r, _mm256_cvtpd_ps(value));
        else store(r, value);
    }
};

// The numbers of a call of one block: the terms of an output are made before they are brought side by side, and nothing
// moves on beyond the block.
template <class T>
void put_short(const Block& block, const Row& row, const Interval<T>& interval, T* r) {
#pragma GCC unroll 16
    for (int i = 0; i < kBlock; i += 4) {
        Quad terms[4], term[kWhComponents];
#pragma GCC unroll 16
        for (int k = 0; k < 4; ++k) terms[k] = block.x[i + k] * row.reciprocal;
        transpose(terms, term);
        interval.store_quad(r + i, term[0] + term[1] + term[2] + term[3]);
    }
}

template <class T>
void put_block(const Lanes& lanes, const Interval<T>& interval, T* r) {
#pragma GCC unroll 16
    for (int part = 0; part < Lanes::kParts; ++part) {
        F64 sum = load<F64>(lanes.x[0] + part * kLanes64) * lanes.reciprocal[0];
#pragma GCC unroll 16
        for (int j = 1; j < kWhComponents; ++j) sum += load<F64>(lanes.x[j] + part * kLanes64) * lanes.reciprocal[j];
        interval.store_lanes(r + part * kLanes64, sum);
    }
}

// `blocks` times sixteen outputs, two vectors of each component at a time to hide the steps' latency; the lanes move on.
template <class T>
void generate_blocks(Lanes& lanes, int blocks, Interval<T> interval, T* r) {
    constexpr int kTogether = 2;
    for (int part = 0; part < Lanes::kParts; part += kTogether) {
        F64 x[kTogether][kWhComponents];
#pragma GCC unroll 16
        for (int p = 0; p < kTogether; ++p) {
#pragma GCC unroll 16
            for (int j = 0; j < kWhComponents; ++j) x[p][j] = load<F64>(lanes.x[j] + (part + p) * kLanes64);
        }
        T* to = r + part * kLanes64;
        for (int i = 0; i < blocks; ++i, to += kBlock) {
#pragma GCC unroll 16
            for (int p = 0; p < kTogether; ++p) {
                F64 sum = x[p][0] * lanes.reciprocal[0];
#pragma GCC unroll 16
                for (int j = 1; j < kWhComponents; ++j) sum += x[p][j] * lanes.reciprocal[j];
                interval.store_lanes(to + p * kLanes64, sum);
#pragma GCC unroll 16
                for (int j = 0; j < kWhComponents; ++j) x[p][j] = step(x[p][j], lanes.stride[j], lanes.m[j], lanes.reciprocal[j]);
            }
        }
#pragma GCC unroll 16
        for (int p = 0; p < kTogether; ++p) {
#pragma GCC unroll 16
            for (int j = 0; j < kWhComponents; ++j) store(lanes.x[j] + (part + p) * kLanes64, x[p][j]);
        }
    }
}

template <class T>
int generate_real(Stream* stream, int n, T* r, T a, T b) {
    const Row row(stream);
    const Interval<T> interval(a, b);
    uint32_t* const state = payload<WhState>(stream).x;
    Quad x = from_words(state);
    if (n <= kSequential) {
        for (int i = 0; i < n; ++i, x = step(x, row.a, row.m, row.reciprocal)) r[i] = interval(fraction(x, row.reciprocal));
    } else if (n <= kBlock) {
        const Block block(x, row);
        T part[kBlock];
        put_short(block, row, interval, n == kBlock ? r : part);
        if (n < kBlock) std::memcpy(r, part, static_cast<unsigned>(n) * sizeof(T));
        x = block.after(n, row);
    } else {
        Lanes lanes(Block(x, row), row);
        const int tail = n % kBlock;
        generate_blocks(lanes, n / kBlock, interval, r);
        if (tail > 0) {
            T last[kBlock];
            put_block(lanes, interval, last);
            std::memcpy(r + n - tail, last, static_cast<unsigned>(tail) * sizeof(T));
        }
        x = lanes.output(tail);
    }
    put_words(state, x);
    return STO_STATUS_OK;
}

// For words the four components of an output stand side by side, as they are written.
void generate_word_blocks(Block& block, const Row& row, int blocks, uint32_t* r) {
    for (int i = 0; i < blocks; ++i) {
#pragma GCC unroll 16
        for (Quad& x : block.x) {
            put_words(r, x);
            r += kWhComponents;
            x = step(x, block.stride, row.m, row.reciprocal);
        }
    }
}

int generate_words(Stream* stream, int n, uint32_t* r) {
    const Row row(stream);
    uint32_t* const state = payload<WhState>(stream).x;
    Quad x = from_words(state);
    if (n <= kSequential) {
        for (int i = 0; i < n; ++i, r += kWhComponents, x = step(x, row.a, row.m, row.reciprocal)) put_words(r, x);
    } else if (n <= kBlock) {
        const Block block(x, row);
        for (int i = 0; i < n; ++i, r += kWhComponents) put_words(r, block.x[i]);
        x = block.after(n, row);
    } else {
        Block block(x, row);
        const int blocks = n / kBlock, tail = n % kBlock;
        generate_word_blocks(block, row, blocks, r);
        r += static_cast<long>(blocks) * kBlock * kWhComponents;
        for (int i = 0; i < tail; ++i, r += kWhComponents) put_words(r, block.x[i]);
        x = block.x[tail];
    }
    put_words(state, x);
    return STO_STATUS_OK;
}

}  // namespace

extern "C" {

int __stoiBRngWH(nax_stream* stream, int n, void* r) { return generate_words(stream, n, static_cast<uint32_t*>(r)); }

int __stodBRngWH(nax_stream* stream, int n, double* r, double a, double b) { return generate_real(stream, n, r, a, b); }

int __stosBRngWH(nax_stream* stream, int n, float* r, float a, float b) { return generate_real(stream, n, r, a, b); }

}  // extern "C"
