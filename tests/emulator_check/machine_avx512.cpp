#include "tests/emulator_check/machine.h"

#include "tests/emulator_check/forms_avx512.h"

namespace nax::emulator_check {

void masked_load_pd(Vector& r, const double* p, unsigned mask) { put(r, _mm512_mask_loadu_pd(pd(r), static_cast<__mmask8>(mask), p)); }
void masked_store_pd(double* p, const Vector& a, unsigned mask) { _mm512_mask_storeu_pd(p, static_cast<__mmask8>(mask), pd(a)); }
void masked_load_epi8(Vector& r, const void* p, std::uint64_t mask) { put(r, _mm512_maskz_loadu_epi8(mask, p)); }
void masked_store_epi16(void* p, const Vector& a, unsigned mask) { _mm512_mask_storeu_epi16(p, mask, si(a)); }
void masked_add_from_memory(Vector& r, const Vector& a, const double* p, unsigned mask) {
    __m512d x = pd(a);
    asm volatile("kmovd %2,%%k1\n\tvaddpd (%1),%0,%0%{%%k1%}" : "+v"(x) : "r"(p), "r"(mask) : "k1", "memory");
    put(r, x);
}
void masked_broadcast_add(Vector& r, const Vector& a, const double* p, unsigned mask) {
    __m512d x = pd(a);
    asm volatile("kmovd %2,%%k1\n\tvaddpd (%1)%{1to8%},%0,%0%{%%k1%}" : "+v"(x) : "r"(p), "r"(mask) : "k1", "memory");
    put(r, x);
}
void compress_store_ps(float* p, const Vector& a, unsigned mask) { _mm512_mask_compressstoreu_ps(p, static_cast<__mmask16>(mask), ps(a)); }
void expand_load_epi32(Vector& r, const void* p, unsigned mask) { put(r, _mm512_mask_expandloadu_epi32(si(r), static_cast<__mmask16>(mask), p)); }
void narrow_store(void* p, const Vector& a, unsigned mask) { _mm512_mask_cvtepi64_storeu_epi32(p, static_cast<__mmask8>(mask), si(a)); }
void gather_pd(Vector& r, const double* base, const Vector& index, unsigned mask) {
    put(r, _mm512_mask_i64gather_pd(pd(r), static_cast<__mmask8>(mask), si(index), base, 8));
}
void gather_ps(Vector& r, const float* base, const Vector& index, unsigned mask) {
    put(r, _mm512_mask_i32gather_ps(ps(r), static_cast<__mmask16>(mask), si(index), base, 4));
}
void scatter_pd(double* base, const Vector& index, const Vector& a, unsigned mask) {
    _mm512_mask_i64scatter_pd(base, static_cast<__mmask8>(mask), si(index), pd(a), 8);
}
void scatter_epi32(void* base, const Vector& index, const Vector& a, unsigned mask) {
    _mm512_mask_i32scatter_epi32(base, static_cast<__mmask16>(mask), si(index), si(a), 4);
}

void after_evex_xmm(Vector& r, const Vector& before, const Vector& a) {
    asm volatile("vmovdqu64 (%1),%%zmm1\n\tvmovdqu64 (%2),%%zmm17\n\tvpaddd %%xmm17,%%xmm1,%%xmm1\n\tvmovdqu64 %%zmm1,(%0)"
                 : : "r"(&r), "r"(&before), "r"(&a) : "xmm1", "xmm17", "memory");
}
void after_evex_ymm(Vector& r, const Vector& before, const Vector& a) {
    asm volatile("vmovdqu64 (%1),%%zmm1\n\tvmovdqu64 (%2),%%zmm2\n\tmov $0x55,%%eax\n\tkmovd %%eax,%%k3\n\t"
                 "vpaddd %%ymm2,%%ymm1,%%ymm1%{%%k3%}\n\tvmovdqu64 %%zmm1,(%0)"
                 : : "r"(&r), "r"(&before), "r"(&a) : "xmm1", "xmm2", "k3", "eax", "memory");
}
void after_vex_xmm(Vector& r, const Vector& before, const Vector& a) {
    asm volatile("vmovdqu64 (%1),%%zmm1\n\tvpaddd (%2),%%xmm1,%%xmm1\n\tvmovdqu64 %%zmm1,(%0)"
                 : : "r"(&r), "r"(&before), "r"(&a) : "xmm1", "memory");
}
void after_legacy_sse(Vector& r, const Vector& before, const Vector& a) {
    asm volatile("vmovdqu64 (%1),%%zmm1\n\tpaddd (%2),%%xmm1\n\tvmovdqu64 %%zmm1,(%0)"
                 : : "r"(&r), "r"(&before), "r"(&a) : "xmm1", "memory");
}
void after_vzeroupper(Vector& r, const Vector& before) {
    asm volatile("vmovdqu64 (%1),%%zmm1\n\tvzeroupper\n\tvmovdqu64 %%zmm1,(%0)" : : "r"(&r), "r"(&before) : "xmm1", "memory");
}
// cpuid is left to the host, and with it what follows up to the next instruction that the host lacks.
void after_native_move(Vector& r, const Vector& before, const Vector& a) {
    asm volatile("vmovdqu64 (%1),%%zmm1\n\tmov %2,%%rsi\n\txor %%eax,%%eax\n\tcpuid\n\tvmovdqu (%%rsi),%%ymm1\n\tvmovdqu64 %%zmm1,(%0)"
                 : : "D"(&r), "r"(&before), "r"(&a) : "xmm1", "rax", "rbx", "rcx", "rdx", "rsi", "memory");
}
void after_native_pause(Vector& r, const Vector& before) {
    asm volatile("vmovdqu64 (%1),%%zmm1\n\tvmovdqa64 %%zmm1,%%zmm31\n\tkxnorw %%k2,%%k2,%%k2\n\txor %%eax,%%eax\n\tcpuid\n\t"
                 "vpternlogd $0xF0,%%zmm31,%%zmm31,%%zmm31%{%%k2%}\n\tvpandq %%zmm1,%%zmm31,%%zmm31\n\tvmovdqu64 %%zmm31,(%0)"
                 : : "D"(&r), "r"(&before) : "xmm1", "xmm31", "k2", "rax", "rbx", "rcx", "rdx", "memory");
}

MaskResults mask_arithmetic(std::uint64_t a, std::uint64_t b) {
    const __mmask64 p = _cvtu64_mask64(a), q = _cvtu64_mask64(b);
    MaskResults r;
    r.conjunction = _cvtmask64_u64(_kand_mask64(p, q));
    r.exclusive = _cvtmask32_u32(_kxor_mask32(static_cast<__mmask32>(p), static_cast<__mmask32>(q)));
    r.complement = _cvtmask16_u32(_knot_mask16(static_cast<__mmask16>(p)));
    r.shifted = _cvtmask64_u64(_kshiftri_mask64(p, 13)) ^ _cvtmask64_u64(_kshiftli_mask64(q, 40));
    r.unpacked = _mm512_kunpackd(p, q);
    r.sum = _cvtmask64_u64(_kadd_mask64(p, q));
    unsigned char zero, ones;
    asm volatile("kortestq %2,%3\n\tsetz %0\n\tsetc %1" : "=r"(zero), "=r"(ones) : "k"(p), "k"(q) : "cc");
    r.all_zero = zero;
    r.all_ones = ones;
    return r;
}

double long_sum(const double* x, long n) {
    __m512d sum = _mm512_setzero_pd();
    for (long i = 0; i + 8 <= n; i += 8) sum = _mm512_add_pd(sum, _mm512_loadu_pd(x + i));
    return _mm512_reduce_add_pd(sum);
}
void aligned_load(Vector& r, const void* p) { put(r, _mm512_load_si512(p)); }

bool aes_and_product(Vector& r, const Vector& a, const Vector& b) {
#if defined(__VAES__) && defined(__VPCLMULQDQ__)
    put(r, _mm512_clmulepi64_epi128(_mm512_aesenc_epi128(si(a), si(b)), si(b), 0x01));
    return true;
#else
    static_cast<void>(r), static_cast<void>(a), static_cast<void>(b);
    return false;
#endif
}

}  // namespace nax::emulator_check
