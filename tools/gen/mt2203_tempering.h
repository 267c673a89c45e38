// Equidistribution of a tempered MT2203, and the search for its masks.
//
// The v upper bits of successive outputs, as power series, span with the unit vectors a lattice over GF(2)[t]; k(v), the
// number of successive outputs whose v upper bits take all values, is its shortest length. Lattice vectors are kept as
// states of the generator: multiplication by t is a step (S. Harase, M. Matsumoto, M. Saito, "Fast lattice reduction for
// F2-linear pseudorandom number generators", Mathematics of Computation 80 (2011)).
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <vector>

namespace nax::gen {

struct Tempering {
    uint32_t b = 0, c = 0;
    int defect = 0;        // sum over v of floor(2203 / v) - k(v)
    int largest_term = 0;
};

class Lattice {
public:
    Lattice(uint32_t matrix_a, uint32_t b, uint32_t c, int v)
        : matrix_a_(matrix_a), b_(b), c_(c), v_(v), mask_(~uint32_t{0} << (32 - v)), vectors_(static_cast<std::size_t>(v) + 1) {}

    // k(v): leading vectors are cancelled until the odd one out is zero.
    int shortest() {
        for (int i = 0; i < v_; ++i) vectors_[static_cast<std::size_t>(i)].leading = 0x80000000u >> i;
        Vector* odd = &vectors_.back();
        odd->state[0] = 0x80000000u;
        odd->length = 0;
        odd->leading = output(*odd);
        std::vector<Vector*> row;
        for (Vector& vector : vectors_) row.push_back(&vector);
        while (advance(*odd)) {
            Vector*& pivot = row[31 - static_cast<std::size_t>(std::countr_zero(odd->leading))];
            if (pivot->length < odd->length) std::swap(pivot, odd);
            add(*odd, *pivot);
        }
        int least = row[0]->length;
        for (int i = 1; i < v_; ++i) least = std::min(least, row[static_cast<std::size_t>(i)]->length);
        return least + 1;  // unit vectors have length -1
    }

private:
    static constexpr int kWords = 69;

    struct Vector {
        std::array<uint32_t, kWords> state{};
        int start = 0;
        uint32_t leading = 0;
        int length = -1;
    };

    uint32_t output(const Vector& a) const {
        uint32_t y = a.state[static_cast<std::size_t>(a.start)];
        y ^= y >> 12;
        y ^= y << 7 & b_;
        y ^= y << 15 & c_;
        return (y ^ y >> 18) & mask_;
    }
    // Steps until the leading coefficient isn't zero; false for the zero vector.
    bool advance(Vector& a) const {
        for (int steps = 0; a.leading == 0; ++steps) {
            if (steps > 32 * kWords) return false;
            const std::size_t k = static_cast<std::size_t>(a.start);
            const uint32_t y = (a.state[k] & ~31u) | (a.state[(k + 1) % kWords] & 31u);
            a.state[k] = a.state[(k + 34) % kWords] ^ y >> 1 ^ ((y & 1) != 0 ? matrix_a_ : 0u);
            a.start = (a.start + 1) % kWords;
            a.leading = output(a);
            ++a.length;
        }
        return true;
    }
    static void add(Vector& to, const Vector& from) {
        for (int i = 0; i < kWords; ++i) {
            to.state[static_cast<std::size_t>((to.start + i) % kWords)] ^=
                from.state[static_cast<std::size_t>((from.start + i) % kWords)];
        }
        to.leading ^= from.leading;
    }

    uint32_t matrix_a_, b_, c_;
    int v_;
    uint32_t mask_;
    std::vector<Vector> vectors_;
};

inline int defect_at(uint32_t matrix_a, uint32_t b, uint32_t c, int v) { return 2203 / v - Lattice(matrix_a, b, c, v).shortest(); }

inline Tempering extended(uint32_t matrix_a, Tempering t, int v) {
    const int term = defect_at(matrix_a, t.b, t.c, v);
    t.defect += term;
    t.largest_term = std::max(t.largest_term, term);
    return t;
}

// At resolution v the bits that reach output bit 32 - v are chosen: C[32-v], B[32-v] and, by way of C, B[17-v]. The best
// partial choices go on. Bits 0 to 6 of B and 0 to 14 of C have nothing to act on.
inline Tempering search_tempering(uint32_t matrix_a) {
    constexpr std::size_t kBeam = 16;
    std::vector<Tempering> beam(1);
    for (int v = 1; v <= 25; ++v) {
        const uint32_t c_bit = 32 - v >= 15 ? 1u << (32 - v) : 0u;
        const uint32_t b_bit = 1u << (32 - v);
        const uint32_t b_low = 17 - v >= 7 ? 1u << (17 - v) : 0u;
        std::vector<Tempering> next;
        for (const Tempering& t : beam) {
            for (unsigned choice = 0; choice < 8; ++choice) {
                if (((choice & 1) != 0 && c_bit == 0) || ((choice & 4) != 0 && b_low == 0)) continue;
                Tempering trial = t;
                trial.c ^= (choice & 1) != 0 ? c_bit : 0;
                trial.b ^= (choice & 2) != 0 ? b_bit : 0;
                trial.b ^= (choice & 4) != 0 ? b_low : 0;
                next.push_back(extended(matrix_a, trial, v));
            }
        }
        std::stable_sort(next.begin(), next.end(), [](const Tempering& a, const Tempering& b) { return a.defect < b.defect; });
        next.resize(std::min(next.size(), kBeam));
        beam = next;
    }
    for (Tempering& t : beam) {
        for (int v = 26; v <= 32; ++v) t = extended(matrix_a, t, v);
    }
    return *std::min_element(beam.begin(), beam.end(), [](const Tempering& a, const Tempering& b) { return a.defect < b.defect; });
}

}  // namespace nax::gen
