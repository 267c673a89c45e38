#include "tests/emulator_check/forms_avx512.h"

namespace nax::emulator_check {
namespace {

// The first table is the destination: kept where the mask excludes. The indices are the destination in mask2 forms.
#define TWO_TABLES(name, view, mask_type)                                                                     \
    {#name, [](Io& io) { put(io.result, _mm512_##name(view(io.a), si(io.c), view(io.b))); },                  \
     [](Io& io) { put(io.result, _mm512_mask2_##name(view(io.a), si(io.c), static_cast<mask_type>(io.mask), view(io.b))); }, \
     [](Io& io) { put(io.result, _mm512_maskz_##name(static_cast<mask_type>(io.mask), view(io.a), si(io.c), view(io.b))); }}
#define INDEXED(name, view, mask_type) FORMS(#name, name, view, mask_type, si(io.b), view(io.a))
#define IMMEDIATE1(label, name, view, mask_type, imm) FORMS(label, name, view, mask_type, view(io.a), imm)
#define IMMEDIATE2(label, name, view, mask_type, imm) FORMS(label, name, view, mask_type, view(io.a), view(io.b), imm)
#define ONLY_MASKED(name, view, mask_type)                                                                    \
    {#name, nullptr, [](Io& io) { put(io.result, _mm512_mask_##name(view(io.c), static_cast<mask_type>(io.mask), view(io.a))); }, \
     [](Io& io) { put(io.result, _mm512_maskz_##name(static_cast<mask_type>(io.mask), view(io.a))); }}

constexpr Instruction permutations[] = {
    INDEXED(permutexvar_pd, pd, __mmask8), INDEXED(permutexvar_ps, ps, __mmask16), INDEXED(permutexvar_epi16, si, __mmask32),
    INDEXED(permutexvar_epi32, si, __mmask16), INDEXED(permutexvar_epi64, si, __mmask8),
    TWO_TABLES(permutex2var_pd, pd, __mmask8), TWO_TABLES(permutex2var_ps, ps, __mmask16), TWO_TABLES(permutex2var_epi16, si, __mmask32),
    TWO_TABLES(permutex2var_epi32, si, __mmask16), TWO_TABLES(permutex2var_epi64, si, __mmask8),
    IMMEDIATE1("permutex_pd", permutex_pd, pd, __mmask8, 0x4E), IMMEDIATE1("permute_ps", permute_ps, ps, __mmask16, 0x1B),
    IMMEDIATE1("permute_pd", permute_pd, pd, __mmask8, 0x6A), IMMEDIATE1("shufflehi_epi16", shufflehi_epi16, si, __mmask32, 0x39),
    IMMEDIATE1("shufflelo_epi16", shufflelo_epi16, si, __mmask32, 0x93),
    FORMS("permutevar_pd", permutevar_pd, pd, __mmask8, pd(io.a), si(io.b)), FORMS("permutevar_ps", permutevar_ps, ps, __mmask16, ps(io.a), si(io.b)),
    IMMEDIATE2("shuffle_pd", shuffle_pd, pd, __mmask8, 0xA5), IMMEDIATE2("shuffle_ps", shuffle_ps, ps, __mmask16, 0xE1),
    IMMEDIATE2("shuffle_f32x4", shuffle_f32x4, ps, __mmask16, 0x8D), IMMEDIATE2("shuffle_i64x2", shuffle_i64x2, si, __mmask8, 0x4E),
    IMMEDIATE2("alignr_epi32", alignr_epi32, si, __mmask16, 5), IMMEDIATE2("alignr_epi64", alignr_epi64, si, __mmask8, 3),
    IMMEDIATE2("alignr_epi8", alignr_epi8, si, __mmask64, 20), BINARY(shuffle_epi8, si, __mmask64),
    BINARY(unpacklo_pd, pd, __mmask8), BINARY(unpackhi_ps, ps, __mmask16), BINARY(unpacklo_epi8, si, __mmask64), BINARY(unpackhi_epi16, si, __mmask32),
    BINARY(packs_epi32, si, __mmask32), BINARY(packus_epi16, si, __mmask64),
    UNARY(movedup_pd, pd, __mmask8), UNARY(moveldup_ps, ps, __mmask16), UNARY(movehdup_ps, ps, __mmask16),
    ONLY_MASKED(compress_pd, pd, __mmask8), ONLY_MASKED(compress_epi32, si, __mmask16), ONLY_MASKED(expand_ps, ps, __mmask16), ONLY_MASKED(expand_epi64, si, __mmask8),
    FORMS("insertf64x4", insertf64x4, pd, __mmask8, pd(io.a), _mm512_castpd512_pd256(pd(io.b)), 1),
    FORMS("inserti32x4", inserti32x4, si, __mmask16, si(io.a), _mm512_castsi512_si128(si(io.b)), 2),
    FORMS("broadcast_f32x8", broadcast_f32x8, ps, __mmask16, _mm512_castps512_ps256(ps(io.a))),
    FORMS("broadcast_i64x2", broadcast_i64x2, si, __mmask8, _mm512_castsi512_si128(si(io.a))),
    FORMS("broadcastw", broadcastw_epi16, si, __mmask32, _mm512_castsi512_si128(si(io.a))),
};

}  // namespace

std::span<const Instruction> permutation_instructions() { return permutations; }

}  // namespace nax::emulator_check
