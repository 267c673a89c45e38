// The characteristic polynomial of an MT2203 step, and whether it is irreducible.
//
// With X = t^69 + t^34, Y = t^68 + t^33 and a_i = bit i of MatrixA it is
//   X^27 Y^5 + sum(i < 5) a_i X^27 Y^(4-i) + sum(i >= 5) a_i X^(31-i),
// affine in the bits of MatrixA: each small factor is ruled out by 32 exclusive ors of residues made once.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

#include "rng/generators/gf2_polynomial.h"

namespace nax::gen {

inline constexpr int kDegree = 2203;

// Polynomials of degree up to 63.
using Small = uint64_t;

inline Small reduced(Small a, Small f) {
    while (std::bit_width(a) >= std::bit_width(f)) a ^= f << (std::bit_width(a) - std::bit_width(f));
    return a;
}

inline Small product(Small a, Small b, Small f) {
    Small r = 0;
    for (; b != 0; b >>= 1, a = reduced(a << 1, f)) r ^= (b & 1) != 0 ? a : 0;
    return r;
}

// The terms of the polynomial that go with 1 (index 32) and with bit i of MatrixA, for any ring of polynomials.
template <class Element, class Multiply>
std::vector<Element> terms(Element x, Element y, Element one, const Multiply& multiply) {
    const auto power = [&](Element base, int n) {
        Element r = one;
        for (; n > 0; --n) r = multiply(r, base);
        return r;
    };
    const Element x27 = power(x, 27);
    std::vector<Element> r;
    for (int i = 0; i < 32; ++i) r.push_back(i < 5 ? multiply(x27, power(y, 4 - i)) : power(x, 31 - i));
    r.push_back(multiply(x27, power(y, 5)));
    return r;
}

// Rules out polynomials with a factor of degree 12 or less.
class Sieve {
public:
    Sieve() {
        std::vector<Small> factors;
        for (Small f = 2; f < 1u << 13; ++f) {
            if (std::any_of(factors.begin(), factors.end(), [f](Small g) { return reduced(f, g) == 0; })) continue;
            factors.push_back(f);
            const auto times = [f](Small a, Small b) { return product(a, b, f); };
            Small t[70] = {reduced(1, f)};
            for (int i = 1; i < 70; ++i) t[i] = reduced(t[i - 1] << 1, f);
            residues_.push_back(terms<Small>(t[69] ^ t[34], t[68] ^ t[33], t[0], times));
        }
    }
    bool passes(uint32_t matrix_a) const {
        return std::none_of(residues_.begin(), residues_.end(), [matrix_a](const std::vector<Small>& residue) {
            Small sum = residue[32];
            for (uint32_t bits = matrix_a; bits != 0; bits &= bits - 1) sum ^= residue[std::countr_zero(bits)];
            return sum == 0;
        });
    }

private:
    std::vector<std::vector<Small>> residues_;
};

// A polynomial of any degree as words; shifted sums are all that its making needs.
using Long = std::vector<uint64_t>;

inline Long times_sparse(const Long& a, int high, int low) {
    Long r(a.size() + 2);
    for (std::size_t i = 0; i < a.size() * 64; ++i) {
        if ((a[i / 64] >> i % 64 & 1) == 0) continue;
        for (const std::size_t shift : {static_cast<std::size_t>(high), static_cast<std::size_t>(low)}) {
            r[(i + shift) / 64] ^= uint64_t{1} << (i + shift) % 64;
        }
    }
    return r;
}

inline Long polynomial_of(uint32_t matrix_a) {
    const auto power = [](Long a, int high, int n) {
        for (; n > 0; --n) a = times_sparse(a, high, high - 35);
        return a;
    };
    Long sum(256);
    const auto add = [&](const Long& a) {
        for (std::size_t i = 0; i < a.size(); ++i) sum[i] ^= a[i];
    };
    const Long x27 = power({1}, 69, 27);
    add(power(x27, 68, 5));
    for (int i = 0; i < 32; ++i) {
        if ((matrix_a >> i & 1) != 0) add(i < 5 ? power(x27, 68, 4 - i) : power({1}, 69, 31 - i));
    }
    return sum;
}

// t^(2^2203) = t modulo the polynomial: 2203 is prime, so without a factor of degree 1, which the sieve excludes, it is
// irreducible.
inline bool is_irreducible(uint32_t matrix_a) {
    constexpr int kWords = rng::poly_mod_words(kDegree);
    Long p = polynomial_of(matrix_a);
    p.resize(kWords);
    Long inverse(kWords), power(2 * kWords), square(2 * kWords), scratch(rng::poly_mod_scratch(kWords));
    rng::poly_inverse(inverse.data(), kDegree, p.data(), kWords, scratch.data());
    power[0] = 2;
    for (int i = 0; i < kDegree; ++i) {
        rng::poly_square(square.data(), power.data(), kWords);
        rng::poly_mod_p(square.data(), kDegree, inverse.data(), p.data(), kWords, scratch.data());
        power.swap(square);
    }
    power[0] ^= 2;
    return std::all_of(power.begin(), power.end(), [](uint64_t word) { return word == 0; });
}

}  // namespace nax::gen
