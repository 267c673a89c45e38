// Output of MRG32K3A: below 16 numbers by the recursion, from there on 16 at a time by the jump of 19 steps, which makes
// 16 terms from the 18 that stand 2 to 19 places before them.
#include "rng/generators/mrg32k3a.h"
#include "rng/generators/to_real.h"

using namespace nax::rng;

namespace {

constexpr int kBlock = 16;
constexpr int kParts = kBlock / kLanes32;

// Folding 2^32 = defect twice and one subtraction reduce any sum of 64 bits that the recurrences make.
uint32_t reduce(uint64_t v, const MrgComponent& c) {
    v = (v >> 32) * c.defect + (v & 0xFFFFFFFF);
    v = (v >> 32) * c.defect + (v & 0xFFFFFFFF);
    return static_cast<uint32_t>(v >= c.modulus ? v - c.modulus : v);
}

// One term of a component; the offset oldest * modulus keeps the sum non-negative.
uint32_t next_term(uint32_t v[3], const MrgComponent& c) {
    const uint64_t sum = static_cast<uint64_t>(c.newest) * v[2] + static_cast<uint64_t>(c.middle) * v[1] +
                         static_cast<uint64_t>(c.oldest) * (c.modulus - static_cast<uint64_t>(v[0]));
    const uint32_t term = reduce(sum, c);
    v[0] = v[1];
    v[1] = v[2];
    v[2] = term;
    return term;
}

// x - y modulo m1, in 1 ... m1.
uint32_t combine(uint32_t x, uint32_t y) { return x > y ? x - y : x - y + kMrgX.modulus; }
U32 combine(U32 x, U32 y) {
    const U32 greater = reinterpret_cast<U32>(x > y);
    return x - y + (broadcast(kMrgX.modulus) & ~greater);
}

// The terms k places earlier than those of `after`, which follow those of `before`.
template <int k>
U32 earlier(U32 before, U32 after) {
    return join<kLanes32 - k>(before, after);
}

// The jump's constants of one component. Both parities of lanes are computed in 64 bits.
struct JumpX {
    U64 high, mid, low, offset;
    explicit JumpX(const Mrg32k3aVectors& v)
        : high(load<U64>(v.x_high)), mid(load<U64>(v.x_mid)), low(load<U64>(v.x_low)), offset(load<U64>(v.x_offset)) {}
    static constexpr MrgComponent kComponent = kMrgX;
    U64 sum(U64 v2, U64 v1, U64 v0) const {
        return multiply_low_halves(high, v2) + multiply_low_halves(mid, v1) + (offset - multiply_low_halves(low, v0));
    }
};
struct JumpY {
    U64 high, mid, low, offset;
    explicit JumpY(const Mrg32k3aVectors& v)
        : high(load<U64>(v.y_high)), mid(load<U64>(v.y_mid)), low(load<U64>(v.y_low)), offset(load<U64>(v.y_offset)) {}
    static constexpr MrgComponent kComponent = kMrgY;
    U64 sum(U64 v2, U64 v1, U64 v0) const {
        return multiply_low_halves(high, v2) + (offset - multiply_low_halves(mid, v1) - multiply_low_halves(low, v0));
    }
};

template <class Jump>
U64 reduce_lanes(U64 v) {
    const U64 mask = broadcast(uint64_t{0xFFFFFFFF});
    const U64 defect = broadcast(uint64_t{Jump::kComponent.defect});
    v = multiply_low_halves(v >> 32, defect) + (v & mask);
    v = multiply_low_halves(v >> 32, defect) + (v & mask);
    return subtract_once(v, broadcast(uint64_t{Jump::kComponent.modulus}));
}

template <class Jump>
U32 jump(const Jump& j, U32 before, U32 after) {
    const U64 v2 = reinterpret_cast<U64>(earlier<1>(before, after));
    const U64 v1 = reinterpret_cast<U64>(earlier<2>(before, after));
    const U64 v0 = reinterpret_cast<U64>(earlier<3>(before, after));
    const U64 even = reduce_lanes<Jump>(j.sum(v2, v1, v0));
    const U64 odd = reduce_lanes<Jump>(j.sum(v2 >> 32, v1 >> 32, v0 >> 32));
    return interleave_low_halves(even, odd);
}

// The last block of a component, with the vector before it, whose last three lanes count.
struct History {
    U32 part[kParts + 1];

    // From the state: the first block by the recursion.
    History(uint32_t v[3], const MrgComponent& c) {
        alignas(64) uint32_t terms[kLanes32 + kBlock] = {};
        for (int i = 0; i < 3; ++i) terms[kLanes32 - 3 + i] = v[i];
        for (int i = 0; i < kBlock; ++i) terms[kLanes32 + i] = next_term(v, c);
#pragma GCC unroll 16
        for (int p = 0; p <= kParts; ++p) part[p] = load<U32>(terms + p * kLanes32);
    }
    template <class Jump>
    void advance(const Jump& j) {
        U32 next[kParts];
#pragma GCC unroll 16
        for (int p = 0; p < kParts; ++p) next[p] = jump(j, part[p], part[p + 1]);
        part[0] = part[kParts];
#pragma GCC unroll 16
        for (int p = 0; p < kParts; ++p) part[p + 1] = next[p];
    }
    // Stores the three terms that end `used` terms into the block.
    void keep(uint32_t v[3], int used) const {
        alignas(64) uint32_t terms[kLanes32 + kBlock];
#pragma GCC unroll 16
        for (int p = 0; p <= kParts; ++p) store(terms + p * kLanes32, part[p]);
        for (int i = 0; i < 3; ++i) v[i] = terms[kLanes32 + used - 3 + i];
    }
};

template <class Map, class T>
void put_block(const Map& map, const History& x, const History& y, T* r) {
#pragma GCC unroll 16
    for (int p = 0; p < kParts; ++p) put(r + p * kLanes32, map(combine(x.part[p + 1], y.part[p + 1])));
}

template <class Map, class T>
void generate_few(Mrg32k3aState& state, int n, const Map& map, T* r) {
    for (int i = 0; i < n; ++i) {
        const uint32_t x = next_term(state.x, kMrgX);
        r[i] = map(combine(x, next_term(state.y, kMrgY)));
    }
}

template <class Map, class T>
int generate(Stream* stream, int n, const Mrg32k3aVectors& vectors, Map map, T* r) {
    Mrg32k3aState& state = payload<Mrg32k3aState>(stream);
    if (n < kBlock) {
        generate_few(state, n, map, r);
        return STO_STATUS_OK;
    }
    const JumpX jump_x(vectors);
    const JumpY jump_y(vectors);
    History x(state.x, kMrgX), y(state.y, kMrgY);
    put_block(map, x, y, r);
    int done = kBlock;
    for (; done + kBlock <= n; done += kBlock) {
        x.advance(jump_x);
        y.advance(jump_y);
        put_block(map, x, y, r + done);
    }
    int used = kBlock;
    if (done < n) {
        x.advance(jump_x);
        y.advance(jump_y);
        T last[kBlock];
        put_block(map, x, y, last);
        used = n - done;
        std::memcpy(r + done, last, static_cast<unsigned>(used) * sizeof(T));
    }
    x.keep(state.x, used);
    y.keep(state.y, used);
    return STO_STATUS_OK;
}

constexpr double kReciprocal = 2.328306549837829e-10;       // 1/(2^32 - 209)

}  // namespace

extern "C" {

int __stoiBRngMRG32K3A(nax_stream* stream, int n, void* r) {
    return generate(stream, n, _sto_imrg32k3a_data, RawWords{}, static_cast<uint32_t*>(r));
}

int __stodBRngMRG32K3A(nax_stream* stream, int n, double* r, double a, double b) {
    return generate(stream, n, _sto_dmrg32k3a_data, UnsignedScale<double>(a, b, kReciprocal), r);
}

int __stosBRngMRG32K3A(nax_stream* stream, int n, float* r, float a, float b) {
    return generate(stream, n, _sto_smrg32k3a_data, UnsignedScale<float>(a, b, kReciprocal), r);
}

}  // extern "C"
