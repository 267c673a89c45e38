// Spells an intrinsic's three masking forms for the instruction tables.
#pragma once

#include <immintrin.h>

#include "tests/emulator_check/instructions.h"

namespace nax::emulator_check {

inline __m512d pd(const Vector& v) { return _mm512_load_pd(v.bytes); }
inline __m512 ps(const Vector& v) { return _mm512_load_ps(v.bytes); }
inline __m512i si(const Vector& v) { return _mm512_load_si512(v.bytes); }
inline void put(Vector& v, __m512d x) { _mm512_store_pd(v.bytes, x); }
inline void put(Vector& v, __m512 x) { _mm512_store_ps(v.bytes, x); }
inline void put(Vector& v, __m512i x) { _mm512_store_si512(v.bytes, x); }
inline void put(Vector& v, __m256d x) { v = Vector{}; _mm256_store_pd(reinterpret_cast<double*>(v.bytes), x); }
inline void put(Vector& v, __m256 x) { v = Vector{}; _mm256_store_ps(reinterpret_cast<float*>(v.bytes), x); }
inline void put(Vector& v, __m256i x) { v = Vector{}; _mm256_store_si256(reinterpret_cast<__m256i*>(v.bytes), x); }
inline void put(Vector& v, __m128i x) { v = Vector{}; _mm_store_si128(reinterpret_cast<__m128i*>(v.bytes), x); }

// name, operand view, mask type; the variadic part are the operands, then immediates.
#define FORMS(label, name, view, mask_type, ...)                                                             \
    {label, [](Io& io) { put(io.result, _mm512_##name(__VA_ARGS__)); },                                      \
     [](Io& io) { put(io.result, _mm512_mask_##name(view(io.c), static_cast<mask_type>(io.mask), __VA_ARGS__)); }, \
     [](Io& io) { put(io.result, _mm512_maskz_##name(static_cast<mask_type>(io.mask), __VA_ARGS__)); }}
#define UNARY(name, view, mask_type) FORMS(#name, name, view, mask_type, view(io.a))
#define BINARY(name, view, mask_type) FORMS(#name, name, view, mask_type, view(io.a), view(io.b))

}  // namespace nax::emulator_check
