#include "tests/emulator_check/forms_avx512.h"

namespace nax::emulator_check {
namespace {

// The destination is the first factor, so the merging form keeps it and not io.c.
#define FUSED(name, view, mask_type)                                                                          \
    {#name, [](Io& io) { put(io.result, _mm512_##name(view(io.a), view(io.b), view(io.c))); },                \
     [](Io& io) { put(io.result, _mm512_mask3_##name(view(io.a), view(io.b), view(io.c), static_cast<mask_type>(io.mask))); }, \
     [](Io& io) { put(io.result, _mm512_maskz_##name(static_cast<mask_type>(io.mask), view(io.a), view(io.b), view(io.c))); }}

constexpr Instruction floats[] = {
    BINARY(add_pd, pd, __mmask8), BINARY(add_ps, ps, __mmask16), BINARY(sub_pd, pd, __mmask8), BINARY(sub_ps, ps, __mmask16),
    BINARY(mul_pd, pd, __mmask8), BINARY(mul_ps, ps, __mmask16), BINARY(div_pd, pd, __mmask8), BINARY(div_ps, ps, __mmask16),
    BINARY(min_pd, pd, __mmask8), BINARY(min_ps, ps, __mmask16), BINARY(max_pd, pd, __mmask8), BINARY(max_ps, ps, __mmask16),
    UNARY(sqrt_pd, pd, __mmask8), UNARY(sqrt_ps, ps, __mmask16),
    FUSED(fmadd_pd, pd, __mmask8), FUSED(fmadd_ps, ps, __mmask16), FUSED(fmsub_pd, pd, __mmask8), FUSED(fmsub_ps, ps, __mmask16),
    FUSED(fnmadd_pd, pd, __mmask8), FUSED(fnmadd_ps, ps, __mmask16), FUSED(fnmsub_pd, pd, __mmask8), FUSED(fnmsub_ps, ps, __mmask16),
    FUSED(fmaddsub_pd, pd, __mmask8), FUSED(fmaddsub_ps, ps, __mmask16), FUSED(fmsubadd_pd, pd, __mmask8), FUSED(fmsubadd_ps, ps, __mmask16),
};

#define ROUNDED(label, name, view, mask_type, mode, ...) FORMS(label, name, view, mask_type, __VA_ARGS__, (mode) | _MM_FROUND_NO_EXC)
#define ALL_MODES(name, view, mask_type, ...)                                                                 \
    ROUNDED(#name " rn", name, view, mask_type, _MM_FROUND_TO_NEAREST_INT, __VA_ARGS__),                      \
    ROUNDED(#name " rd", name, view, mask_type, _MM_FROUND_TO_NEG_INF, __VA_ARGS__),                          \
    ROUNDED(#name " ru", name, view, mask_type, _MM_FROUND_TO_POS_INF, __VA_ARGS__),                          \
    ROUNDED(#name " rz", name, view, mask_type, _MM_FROUND_TO_ZERO, __VA_ARGS__)

constexpr Instruction rounded[] = {
    ALL_MODES(add_round_pd, pd, __mmask8, pd(io.a), pd(io.b)), ALL_MODES(add_round_ps, ps, __mmask16, ps(io.a), ps(io.b)),
    ALL_MODES(mul_round_pd, pd, __mmask8, pd(io.a), pd(io.b)), ALL_MODES(mul_round_ps, ps, __mmask16, ps(io.a), ps(io.b)),
    ALL_MODES(div_round_pd, pd, __mmask8, pd(io.a), pd(io.b)), ALL_MODES(sqrt_round_pd, pd, __mmask8, pd(io.a)),
    ALL_MODES(scalef_round_pd, pd, __mmask8, pd(io.a), pd(io.b)), ALL_MODES(scalef_round_ps, ps, __mmask16, ps(io.a), ps(io.b)),
};

constexpr Instruction parts[] = {
    UNARY(getexp_pd, pd, __mmask8), UNARY(getexp_ps, ps, __mmask16),
    FORMS("getmant_pd 1..2", getmant_pd, pd, __mmask8, pd(io.a), _MM_MANT_NORM_1_2, _MM_MANT_SIGN_src),
    FORMS("getmant_ps 1..2", getmant_ps, ps, __mmask16, ps(io.a), _MM_MANT_NORM_1_2, _MM_MANT_SIGN_src),
    FORMS("getmant_pd 0.5..1", getmant_pd, pd, __mmask8, pd(io.a), _MM_MANT_NORM_p5_1, _MM_MANT_SIGN_zero),
    FORMS("getmant_pd 0.5..2", getmant_pd, pd, __mmask8, pd(io.a), _MM_MANT_NORM_p5_2, _MM_MANT_SIGN_src),
    FORMS("getmant_pd 0.75..1.5", getmant_pd, pd, __mmask8, pd(io.a), _MM_MANT_NORM_p75_1p5, _MM_MANT_SIGN_nan),
    BINARY(scalef_pd, pd, __mmask8), BINARY(scalef_ps, ps, __mmask16),
    FORMS("roundscale_pd nearest", roundscale_pd, pd, __mmask8, pd(io.a), 0x00), FORMS("roundscale_ps nearest", roundscale_ps, ps, __mmask16, ps(io.a), 0x00),
    FORMS("roundscale_pd down 2^-4", roundscale_pd, pd, __mmask8, pd(io.a), 0x41), FORMS("roundscale_pd up quiet", roundscale_pd, pd, __mmask8, pd(io.a), 0x0A),
    FORMS("roundscale_ps zero 2^-15", roundscale_ps, ps, __mmask16, ps(io.a), 0xF3), FORMS("roundscale_pd current", roundscale_pd, pd, __mmask8, pd(io.a), 0x14),
    FORMS("reduce_pd nearest 2^-4", reduce_pd, pd, __mmask8, pd(io.a), 0x40), FORMS("reduce_ps zero", reduce_ps, ps, __mmask16, ps(io.a), 0x03),
    FORMS("range_pd min", range_pd, pd, __mmask8, pd(io.a), pd(io.b), 0x04), FORMS("range_pd max abs clear", range_pd, pd, __mmask8, pd(io.a), pd(io.b), 0x0B),
    FORMS("range_ps max", range_ps, ps, __mmask16, ps(io.a), ps(io.b), 0x05), FORMS("range_pd min abs", range_pd, pd, __mmask8, pd(io.a), pd(io.b), 0x06),
    UNARY(rcp14_pd, pd, __mmask8), UNARY(rcp14_ps, ps, __mmask16), UNARY(rsqrt14_pd, pd, __mmask8), UNARY(rsqrt14_ps, ps, __mmask16),
};

}  // namespace

std::span<const Instruction> float_instructions() { return floats; }
std::span<const Instruction> rounded_instructions() { return rounded; }
std::span<const Instruction> part_instructions() { return parts; }

}  // namespace nax::emulator_check
