// Single instructions at the edge of the machine: memory, masks, register halves.
#pragma once

#include <cstdint>

#include "tests/emulator_check/instructions.h"

namespace nax::emulator_check {

// Masked moves: elements outside the mask are not touched, whatever page they lie on.
void masked_load_pd(Vector& r, const double* p, unsigned mask);
void masked_store_pd(double* p, const Vector& a, unsigned mask);
void masked_load_epi8(Vector& r, const void* p, std::uint64_t mask);
void masked_store_epi16(void* p, const Vector& a, unsigned mask);
void masked_add_from_memory(Vector& r, const Vector& a, const double* p, unsigned mask);
void masked_broadcast_add(Vector& r, const Vector& a, const double* p, unsigned mask);
void compress_store_ps(float* p, const Vector& a, unsigned mask);
void expand_load_epi32(Vector& r, const void* p, unsigned mask);
void narrow_store(void* p, const Vector& a, unsigned mask);  // i64 to i32
void gather_pd(Vector& r, const double* base, const Vector& index, unsigned mask);
void gather_ps(Vector& r, const float* base, const Vector& index, unsigned mask);
void scatter_pd(double* base, const Vector& index, const Vector& a, unsigned mask);
void scatter_epi32(void* base, const Vector& index, const Vector& a, unsigned mask);

// What a whole register holds after an instruction on its lower part; it held `before`.
void after_evex_xmm(Vector& r, const Vector& before, const Vector& a);   // vpaddd xmm
void after_evex_ymm(Vector& r, const Vector& before, const Vector& a);   // vpaddd ymm, masked
void after_vex_xmm(Vector& r, const Vector& before, const Vector& a);    // the VEX form
void after_legacy_sse(Vector& r, const Vector& before, const Vector& a); // paddd: keeps the rest
void after_vzeroupper(Vector& r, const Vector& before);
void after_native_move(Vector& r, const Vector& before, const Vector& a);  // a VEX move that the host runs itself
void after_native_pause(Vector& r, const Vector& before);  // high registers across code that the host runs itself

struct MaskResults {
    std::uint64_t conjunction, exclusive, complement, shifted, unpacked, sum;
    bool all_zero, all_ones;
};
MaskResults mask_arithmetic(std::uint64_t a, std::uint64_t b);

// Some work in a loop, for threads.
double long_sum(const double* x, long n);
void aligned_load(Vector& r, const void* p);
bool aes_and_product(Vector& r, const Vector& a, const Vector& b);  // false when built without them

}  // namespace nax::emulator_check
