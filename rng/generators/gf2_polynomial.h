// Polynomials over GF(2) as arrays of 64-bit words: bit i of word w is the coefficient of x^(64 w + i).
//
// Products: A. Karatsuba, Yu. Ofman (1962) below 39 words, Toom-Cook with three parts from there on, evaluated at 0, 1, w,
// w + 1 and infinity for w = x^64, so that evaluation and exact division are whole-word work (M. Bodrato, "Towards optimal
// Toom-Cook multiplication for univariate and multivariate polynomials in characteristic 2 and 0", WAIFI 2007). Remainders:
// P. Barrett's reduction with a precomputed inverse, which has no division; modulo polynomials of few terms, folding.
#pragma once

#include <cstddef>
#include <cstdint>

namespace nax::rng {

inline constexpr int kToomCookFrom = 39;    // shortest operand of the Toom-Cook routine

// Words of scratch that a product of two operands of `words` words needs.
constexpr std::size_t poly_mul_scratch(std::size_t words) { return 8 * words + 256; }

// result[0 .. 2 words) = a b for operands of the same length.
void poly_mul_kar(uint64_t* result, const uint64_t* a, const uint64_t* b, int words, uint64_t* scratch);
void poly_mul_tc3(uint64_t* result, const uint64_t* a, const uint64_t* b, int words, uint64_t* scratch);

// The product of polynomials of any degrees; result has (degree_a / 64 + 1) + (degree_b / 64 + 1) words, the scratch
// poly_mul_scratch of the shorter operand plus three times its words.
void poly_mul(uint64_t* result, int degree_a, const uint64_t* a, int degree_b, const uint64_t* b, uint64_t* scratch);

// result[0 .. 2 words) = a^2: over GF(2) a square spreads the bits.
void poly_square(uint64_t* result, const uint64_t* a, int words);

// The words of x^(2 degree) / p, rounded down, without its leading and its constant term: what poly_mod_p multiplies with.
// p and inverse have `words` words, words = poly_mod_words(degree).
constexpr int poly_mod_words(int degree) { return 2 * ((degree + 127) / 128); }
void poly_inverse(uint64_t* inverse, int degree, const uint64_t* p, int words, uint64_t* scratch);

// result := result mod p for a result of less than 2 degree bits in 2 words words; its upper half ends as zero.
void poly_mod_p(uint64_t* result, int degree, const uint64_t* inverse, const uint64_t* p, int words, uint64_t* scratch);

// Scratch of the two functions above.
constexpr std::size_t poly_mod_scratch(std::size_t words) { return 8 * words + poly_mul_scratch(words); }

// Folding: for up to kFoldTerms terms whose second exponent lies a block of words or more below the degree. The exponents
// stand in ascending order.
inline constexpr int kFoldTerms = 256;
inline constexpr int kFoldBlock = 8;
inline constexpr int kFoldPadding = 2 * kFoldBlock;
bool poly_folds(int degree, int terms, const int32_t* exponents);
// value := value mod p, for a value of any number of words that is a multiple of kFoldBlock; the scratch has kFoldPadding
// words more.
void poly_fold(uint64_t* value, int words, int degree, int terms, const int32_t* exponents, uint64_t* scratch);

}  // namespace nax::rng
