#include "tests/emulator_check/forms_avx512.h"

namespace nax::emulator_check {
namespace {

// Logic has no masked form of the plain intrinsic's name.
#define LOGIC(name, mask_type, plain_name)                                                                    \
    {#name, [](Io& io) { put(io.result, _mm512_##plain_name(si(io.a), si(io.b))); },                          \
     [](Io& io) { put(io.result, _mm512_mask_##name(si(io.c), static_cast<mask_type>(io.mask), si(io.a), si(io.b))); }, \
     [](Io& io) { put(io.result, _mm512_maskz_##name(static_cast<mask_type>(io.mask), si(io.a), si(io.b))); }}
#define SHIFT(label, name, mask_type, count) FORMS(label, name, si, mask_type, si(io.a), count)
#define COMPARE(label, name, mask_type, ...)                                                                  \
    {label, [](Io& io) { io.bits = _mm512_##name(__VA_ARGS__); },                                             \
     [](Io& io) { io.bits = _mm512_mask_##name(static_cast<mask_type>(io.mask), __VA_ARGS__); }, nullptr}

constexpr Instruction integers[] = {
    BINARY(add_epi8, si, __mmask64), BINARY(add_epi16, si, __mmask32), BINARY(add_epi32, si, __mmask16), BINARY(add_epi64, si, __mmask8),
    BINARY(sub_epi8, si, __mmask64), BINARY(sub_epi16, si, __mmask32), BINARY(sub_epi32, si, __mmask16), BINARY(sub_epi64, si, __mmask8),
    BINARY(adds_epi8, si, __mmask64), BINARY(adds_epi16, si, __mmask32), BINARY(adds_epu8, si, __mmask64), BINARY(adds_epu16, si, __mmask32),
    BINARY(subs_epi8, si, __mmask64), BINARY(subs_epi16, si, __mmask32), BINARY(subs_epu8, si, __mmask64), BINARY(subs_epu16, si, __mmask32),
    BINARY(mullo_epi16, si, __mmask32), BINARY(mullo_epi32, si, __mmask16), BINARY(mullo_epi64, si, __mmask8),
    BINARY(mulhi_epi16, si, __mmask32), BINARY(mulhi_epu16, si, __mmask32), BINARY(mulhrs_epi16, si, __mmask32),
    BINARY(mul_epu32, si, __mmask8), BINARY(mul_epi32, si, __mmask8), BINARY(avg_epu8, si, __mmask64), BINARY(avg_epu16, si, __mmask32),
    BINARY(min_epi8, si, __mmask64), BINARY(min_epi16, si, __mmask32), BINARY(min_epi32, si, __mmask16), BINARY(min_epi64, si, __mmask8),
    BINARY(min_epu8, si, __mmask64), BINARY(min_epu16, si, __mmask32), BINARY(min_epu32, si, __mmask16), BINARY(min_epu64, si, __mmask8),
    BINARY(max_epi8, si, __mmask64), BINARY(max_epi16, si, __mmask32), BINARY(max_epi32, si, __mmask16), BINARY(max_epi64, si, __mmask8),
    BINARY(max_epu8, si, __mmask64), BINARY(max_epu16, si, __mmask32), BINARY(max_epu32, si, __mmask16), BINARY(max_epu64, si, __mmask8),
    UNARY(abs_epi8, si, __mmask64), UNARY(abs_epi16, si, __mmask32), UNARY(abs_epi32, si, __mmask16), UNARY(abs_epi64, si, __mmask8),
    UNARY(lzcnt_epi32, si, __mmask16), UNARY(lzcnt_epi64, si, __mmask8), UNARY(conflict_epi32, si, __mmask16), UNARY(conflict_epi64, si, __mmask8),
    FORMS("dbsad_epu8 0x6c", dbsad_epu8, si, __mmask32, si(io.a), si(io.b), 0x6C),
    LOGIC(and_epi32, __mmask16, and_si512), LOGIC(and_epi64, __mmask8, and_si512), LOGIC(or_epi32, __mmask16, or_si512),
    LOGIC(xor_epi64, __mmask8, xor_si512), LOGIC(andnot_epi32, __mmask16, andnot_si512), LOGIC(andnot_epi64, __mmask8, andnot_si512),
    SHIFT("slli_epi16 5", slli_epi16, __mmask32, 5), SHIFT("slli_epi32 31", slli_epi32, __mmask16, 31), SHIFT("slli_epi64 33", slli_epi64, __mmask8, 33),
    SHIFT("srli_epi16 16", srli_epi16, __mmask32, 16), SHIFT("srli_epi32 7", srli_epi32, __mmask16, 7), SHIFT("srli_epi64 64", srli_epi64, __mmask8, 64),
    SHIFT("srai_epi16 3", srai_epi16, __mmask32, 3), SHIFT("srai_epi32 40", srai_epi32, __mmask16, 40), SHIFT("srai_epi64 63", srai_epi64, __mmask8, 63),
    SHIFT("rol_epi32 9", rol_epi32, __mmask16, 9), SHIFT("rol_epi64 0", rol_epi64, __mmask8, 0), SHIFT("ror_epi64 17", ror_epi64, __mmask8, 17),
    BINARY(sllv_epi16, si, __mmask32), BINARY(sllv_epi32, si, __mmask16), BINARY(sllv_epi64, si, __mmask8),
    BINARY(srlv_epi16, si, __mmask32), BINARY(srlv_epi32, si, __mmask16), BINARY(srlv_epi64, si, __mmask8),
    BINARY(srav_epi16, si, __mmask32), BINARY(srav_epi32, si, __mmask16), BINARY(srav_epi64, si, __mmask8),
    BINARY(rolv_epi32, si, __mmask16), BINARY(rolv_epi64, si, __mmask8), BINARY(rorv_epi32, si, __mmask16), BINARY(rorv_epi64, si, __mmask8),
    {"ternarylogic_epi64 0xca", [](Io& io) { put(io.result, _mm512_ternarylogic_epi64(si(io.a), si(io.b), si(io.c), 0xCA)); },
     [](Io& io) { put(io.result, _mm512_mask_ternarylogic_epi64(si(io.a), static_cast<__mmask8>(io.mask), si(io.b), si(io.c), 0xCA)); },
     [](Io& io) { put(io.result, _mm512_maskz_ternarylogic_epi64(static_cast<__mmask8>(io.mask), si(io.a), si(io.b), si(io.c), 0xCA)); }},
    {"ternarylogic_epi32 0x96", [](Io& io) { put(io.result, _mm512_ternarylogic_epi32(si(io.a), si(io.b), si(io.c), 0x96)); },
     [](Io& io) { put(io.result, _mm512_mask_ternarylogic_epi32(si(io.a), static_cast<__mmask16>(io.mask), si(io.b), si(io.c), 0x96)); },
     [](Io& io) { put(io.result, _mm512_maskz_ternarylogic_epi32(static_cast<__mmask16>(io.mask), si(io.a), si(io.b), si(io.c), 0x96)); }},
};

constexpr Instruction comparisons[] = {
    COMPARE("cmpeq_epi8", cmpeq_epi8_mask, __mmask64, si(io.a), si(io.b)), COMPARE("cmpeq_epi64", cmpeq_epi64_mask, __mmask8, si(io.a), si(io.b)),
    COMPARE("cmpgt_epi16", cmpgt_epi16_mask, __mmask32, si(io.a), si(io.b)), COMPARE("cmpgt_epi32", cmpgt_epi32_mask, __mmask16, si(io.a), si(io.b)),
    COMPARE("cmplt_epi64", cmplt_epi64_mask, __mmask8, si(io.a), si(io.b)), COMPARE("cmple_epi8", cmple_epi8_mask, __mmask64, si(io.a), si(io.b)),
    COMPARE("cmplt_epu32", cmplt_epu32_mask, __mmask16, si(io.a), si(io.b)), COMPARE("cmpge_epu64", cmpge_epu64_mask, __mmask8, si(io.a), si(io.b)),
    COMPARE("cmpneq_epu16", cmpneq_epu16_mask, __mmask32, si(io.a), si(io.b)), COMPARE("cmpgt_epu8", cmpgt_epu8_mask, __mmask64, si(io.a), si(io.b)),
    COMPARE("test_epi32", test_epi32_mask, __mmask16, si(io.a), si(io.b)), COMPARE("testn_epi64", testn_epi64_mask, __mmask8, si(io.a), si(io.b)),
    COMPARE("test_epi8", test_epi8_mask, __mmask64, si(io.a), si(io.b)), COMPARE("testn_epi16", testn_epi16_mask, __mmask32, si(io.a), si(io.b)),
    COMPARE("cmp_pd lt_os", cmp_pd_mask, __mmask8, pd(io.a), pd(io.b), _CMP_LT_OS), COMPARE("cmp_pd eq_oq", cmp_pd_mask, __mmask8, pd(io.a), pd(io.b), _CMP_EQ_OQ),
    COMPARE("cmp_pd nge_uq", cmp_pd_mask, __mmask8, pd(io.a), pd(io.b), _CMP_NGE_UQ), COMPARE("cmp_pd unord_q", cmp_pd_mask, __mmask8, pd(io.a), pd(io.b), _CMP_UNORD_Q),
    COMPARE("cmp_ps ge_oq", cmp_ps_mask, __mmask16, ps(io.a), ps(io.b), _CMP_GE_OQ), COMPARE("cmp_ps neq_us", cmp_ps_mask, __mmask16, ps(io.a), ps(io.b), _CMP_NEQ_US),
    COMPARE("cmp_ps true", cmp_ps_mask, __mmask16, ps(io.a), ps(io.b), _CMP_TRUE_UQ),
    COMPARE("fpclass_pd", fpclass_pd_mask, __mmask8, pd(io.a), 0x81 | 0x20), COMPARE("fpclass_ps", fpclass_ps_mask, __mmask16, ps(io.a), 0x04 | 0x10 | 0x40),
};

}  // namespace

std::span<const Instruction> integer_instructions() { return integers; }
std::span<const Instruction> comparison_instructions() { return comparisons; }

}  // namespace nax::emulator_check
