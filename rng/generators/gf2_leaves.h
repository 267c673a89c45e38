// The short products that longer ones are made of.
#pragma once

#include <cstdint>

namespace nax::rng {

inline constexpr int kLeafWords = 20;  // longest operand of a short product

// result[0 .. 2 words) = a b, words at most kLeafWords.
struct Product {
    uint64_t* result;
    const uint64_t* a;
    const uint64_t* b;
    int words;
};

// Carries out independent short products; results must not overlap operands. Where the processor has carry-less
// multiplication of vectors, several run side by side.
void poly_mul_leaves(const Product* products, int count);

}  // namespace nax::rng
