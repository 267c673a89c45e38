// Remainders of polynomials over GF(2): Barrett reduction, and x^n modulo a polynomial by it or by folding.
#include <algorithm>
#include <bit>
#include <utility>

#include "rng/generators/gf2_polynomial.h"
#include "nax/abi/streams.h"
#include "service/block.h"

namespace nax::rng {

namespace {

constexpr int kWordBits = 64;

// to[0 .. words) = from >> bits for 0 to 63 bits; one word beyond them is read.
void shift_right_bits(uint64_t* to, int words, const uint64_t* from, int bits) {
    if (bits == 0) {
        std::copy_n(from, words, to);
        return;
    }
    for (int i = 0; i < words; ++i) to[i] = from[i] >> bits | from[i + 1] << (kWordBits - bits);
}

// to[0 .. words) = from >> bits, for a from of `from_words` words; a negative count shifts up.
void shift_right(uint64_t* to, int words, const uint64_t* from, int from_words, int bits) {
    const int skip = bits >= 0 ? bits / kWordBits : -((kWordBits - 1 - bits) / kWordBits);
    const int shift = bits - skip * kWordBits;
    const auto word = [&](int i) { return i >= 0 && i < from_words ? from[i] : 0; };
    const int inside = skip >= 0 ? std::clamp(from_words - 1 - skip, 0, words) : 0;
    if (inside > 0) shift_right_bits(to, inside, from + skip, shift);
    for (int i = inside; i < words; ++i) {
        const uint64_t high = word(i + skip + 1);
        to[i] = shift == 0 ? word(i + skip) : word(i + skip) >> shift | high << (kWordBits - shift);
    }
}

// Clears all bits from `bits` on.
void truncate(uint64_t* a, int words, int bits) {
    const int full = bits / kWordBits;
    if (full >= words) return;
    a[full] &= (uint64_t{1} << (bits % kWordBits)) - 1;
    std::fill(a + full + 1, a + words, uint64_t{0});
}

uint64_t reverse_bits(uint64_t x) {
    x = __builtin_bswap64(x);
    x = (x >> 4 & 0x0F0F0F0F0F0F0F0Fu) | (x & 0x0F0F0F0F0F0F0F0Fu) << 4;
    x = (x >> 2 & 0x3333333333333333u) | (x & 0x3333333333333333u) << 2;
    return (x >> 1 & 0x5555555555555555u) | (x & 0x5555555555555555u) << 1;
}

// to = the coefficients of x^0 ... x^degree of a in reverse order, cut to `words` words.
void reverse_polynomial(uint64_t* to, const uint64_t* a, int words, int degree) {
    const int used = degree / kWordBits + 1;
    const auto reversed = [&](int i) { return i < used && used - 1 - i < words ? reverse_bits(a[used - 1 - i]) : 0; };
    const int shift = used * kWordBits - 1 - degree;
    for (int i = 0; i < words; ++i) {
        to[i] = shift == 0 ? reversed(i) : reversed(i) >> shift | reversed(i + 1) << (kWordBits - shift);
    }
}

bool reaches(const uint64_t* a, int words, int degree) {
    if (degree / kWordBits >= words) return false;
    if (a[degree / kWordBits] >> (degree % kWordBits) != 0) return true;
    return std::any_of(a + degree / kWordBits + 1, a + words, [](uint64_t word) { return word != 0; });
}

void xor_words(uint64_t* to, const uint64_t* from, int words) {
    for (int i = 0; i < words; ++i) to[i] ^= from[i];
}

}  // namespace

// Newton's iteration for the power series 1 / reverse(p): over GF(2) the step y (2 - f y) is f y^2, and doubles the
// number of right terms.
void poly_inverse(uint64_t* inverse, int degree, const uint64_t* p, int words, uint64_t* scratch) {
    uint64_t* const reversed = scratch;
    uint64_t* const series = scratch + words;
    uint64_t* const square = series + words;
    uint64_t* const product = square + 2 * words;
    uint64_t* const rest = product + 2 * words;
    // The leading term of p may lie beyond its words; in reverse order it is the constant term.
    uint64_t* const low_terms = square;
    std::copy_n(p, words, low_terms);
    truncate(low_terms, words, degree);
    reverse_polynomial(reversed, low_terms, words, degree - 1);
    for (int i = words - 1; i > 0; --i) reversed[i] = reversed[i] << 1 | reversed[i - 1] >> 63;
    reversed[0] = reversed[0] << 1 | 1;

    std::fill_n(series, words, uint64_t{0});
    series[0] = 1;
    for (int precision = 1; precision < degree;) {
        const int before = (precision + kWordBits - 1) / kWordBits;
        precision = std::min(2 * precision, degree);
        const int now = (precision + kWordBits - 1) / kWordBits;
        poly_square(square, series, before);
        poly_mul_tc3(product, square, reversed, now, rest);
        truncate(product, now, precision);
        std::copy_n(product, now, series);
    }
    // Term i of the series belongs to x^(degree - i); the first one is the leading term.
    series[0] &= ~uint64_t{1};
    truncate(series, words, degree);
    for (int i = 0; i + 1 < words; ++i) series[i] = series[i] >> 1 | series[i + 1] << 63;
    series[words - 1] >>= 1;
    reverse_polynomial(inverse, series, words, degree - 1);
}

// With y = x^(64 h), h half of the words: the quotient is the part above y^2 of the product of the inverse with the value
// shifted up to y^2, and the remainder needs only the part below y^2 of quotient times p. So of the four products of halves
// three are enough, each time.
void poly_mod_p(uint64_t* result, int degree, const uint64_t* inverse, const uint64_t* p, int words, uint64_t* scratch) {
    const int half = words / 2;
    uint64_t* const aligned = scratch;
    uint64_t* const quotient = aligned + words;
    uint64_t* const product = quotient + words;
    uint64_t* const rest = product + words;

    shift_right(aligned, words, result, 2 * words, 2 * degree - words * kWordBits);
    shift_right(quotient, words, result, 2 * words, degree);
    poly_mul_tc3(product, aligned + half, inverse + half, half, rest);
    xor_words(quotient, product, words);
    poly_mul_tc3(product, aligned, inverse + half, half, rest);
    xor_words(quotient, product + half, half);
    poly_mul_tc3(product, aligned + half, inverse, half, rest);
    xor_words(quotient, product + half, half);

    poly_mul_tc3(product, quotient, p, half, rest);
    xor_words(result, product, words);
    poly_mul_tc3(product, quotient, p + half, half, rest);
    xor_words(result + half, product, half);
    poly_mul_tc3(product, quotient + half, p, half, rest);
    xor_words(result + half, product, half);
    truncate(result, 2 * words, degree);
}

bool poly_folds(int degree, int terms, const int32_t* exponents) {
    return terms >= 2 && terms <= kFoldTerms && exponents[0] >= 0 && exponents[terms - 1] == degree &&
           degree - exponents[terms - 2] >= kWordBits * kFoldBlock &&
           std::adjacent_find(exponents, exponents + terms, [](int32_t a, int32_t b) { return a >= b; }) == exponents + terms;
}

namespace {

// The modulus, with what reduces by it.
struct Modulus {
    int degree, terms;
    const int32_t* exponents;
    int words;              // poly_mod_words(degree)
    int square_words;       // of a square: 2 words, rounded up to blocks
    bool folds;
    const uint64_t* p = nullptr;
    uint64_t* inverse = nullptr;      // unless it folds
    uint64_t* scratch = nullptr;

    Modulus(int d, int count, const int32_t* table)
        : degree(d), terms(count), exponents(table), words(poly_mod_words(d)),
          square_words((2 * words + kFoldBlock - 1) / kFoldBlock * kFoldBlock), folds(poly_folds(d, count, table)) {}

    std::size_t memory() const {
        const std::size_t w = static_cast<std::size_t>(words), square = static_cast<std::size_t>(square_words);
        return 2 * w + 2 * square + std::max(poly_mod_scratch(w), square + kFoldPadding);
    }
    // Takes its words and the scratch from zeroed memory; returns the place for two squares.
    uint64_t* place(uint64_t* memory) {
        uint64_t* const dense = memory;
        for (int i = 0; i < terms; ++i) {
            const int word = exponents[i] / kWordBits;
            if (word < words) dense[word] |= uint64_t{1} << (exponents[i] % kWordBits);
        }
        p = dense;
        inverse = dense + words;
        uint64_t* const squares = inverse + words;
        scratch = squares + 2 * square_words;
        if (!folds) poly_inverse(inverse, degree, p, words, scratch);
        return squares;
    }
    void reduce(uint64_t* square) const {
        if (folds) poly_fold(square, square_words, degree, terms, exponents, scratch);
        else poly_mod_p(square, degree, inverse, p, words, scratch);
    }
};

// x^n mod p by squaring, for n > 0; `power` and `square` have room for a square.
void power_of_x(uint64_t* power, uint64_t n, const Modulus& modulus, uint64_t* square) {
    const int words = modulus.words, degree = modulus.degree;
    power[0] = 2;
    for (int bit = static_cast<int>(std::bit_width(n)) - 2; bit >= 0; --bit) {
        poly_square(square, power, words);
        if (reaches(square, 2 * words, degree)) modulus.reduce(square);
        std::copy_n(square, words, power);
        if ((n >> bit & 1) == 0) continue;
        const uint64_t carry = power[words - 1] >> 63;
        for (int i = words - 1; i > 0; --i) power[i] = power[i] << 1 | power[i - 1] >> 63;
        power[0] <<= 1;
        if (carry != 0 || reaches(power, words, degree)) xor_words(power, modulus.p, words);
        truncate(power, words, degree);
    }
}

}  // namespace

}  // namespace nax::rng

extern "C" int __stoPolyRem(uint64_t nskip, int degree, int terms, const int32_t* table, int words, uint64_t* out) {
    using namespace nax::rng;
    std::fill_n(out, words, uint64_t{0});
    if (nskip < static_cast<uint64_t>(degree)) {
        out[nskip / kWordBits] = uint64_t{1} << (nskip % kWordBits);
        return STO_STATUS_OK;
    }
    Modulus modulus(degree, terms, table);
    nax::service::Block<uint64_t> work(modulus.memory());
    if (!work) return STO_STATUS_NO_MEMORY;
    std::fill_n(work.get(), modulus.memory(), uint64_t{0});
    uint64_t* const power = modulus.place(work.get());
    power_of_x(power, nskip, modulus, power + modulus.square_words);
    std::copy_n(power, std::min(words, (degree + kWordBits - 1) / kWordBits), out);
    return STO_STATUS_OK;
}
