// The vocabulary of vectors, for the instruction set that the file is compiled for. Function files use these wrappers of
// intent and no intrinsics; avx512.h and avx2.h give each its body and agree bit for bit.
//
// Some operations have no short form in AVX2 that is right for every lane: exponent and mantissa of zeros, denormals,
// negative numbers and NaN, scaling into the denormals or to infinity. These take `care` as last argument. Fast{} asks
// for the form of the loop, right for ordinary lanes; Careful{} for one that is right for all. AVX-512 has but one.
#pragma once

#include "simd/isa.h"

#if defined(__AVX512F__)
#include "simd/avx512.h"
#elif defined(__AVX2__)
#include "simd/avx2.h"
#else
#error "vectors of this instruction set have no vocabulary"
#endif
