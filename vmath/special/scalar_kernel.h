// Kernels without vector code: every element goes through the function's scalar path, in blocks.
#pragma once

#include "simd/isa.h"
#include "vmath/frame/rare_lanes.h"

namespace nax::vmath::NAX_ISA {

template <class T>
void run_scalar(int32_t n, const T* a, int32_t inca, T* r, int32_t incr, bool strided,
                typename RareFunction<T>::OneInput function, const char* name) {
    if (n <= 0) return;
    MxcsrScope<true> mxcsr(nax_arq_kernel_GetMode());
    X87Scope x87;
    const RareCall<T> call = {function, name, {a, a}, {r, r}, {inca, inca}, {incr, incr}, 1, 1, strided};
    T results[kMaxBlock];
    for (int64_t i = 0; i < n; i += kMaxBlock) {
        const int count = n - i < kMaxBlock ? static_cast<int>(n - i) : kMaxBlock;
        settle_rare_lanes<T>(call, x87, results, kMaxBlock, ~uint64_t{0} >> (64 - count), i, count);
    }
}

}  // namespace nax::vmath::NAX_ISA

// The two exported forms of a kernel; function and name are those of the scalar path and of reports.
#define NAX_SCALAR_KERNEL(element, type, name, tag, function)                                                   \
    extern "C" void nax_arq_kernel_##type##name##_##tag(int32_t n, const element* a, element* r) {              \
        nax::vmath::NAX_ISA::run_scalar<element>(n, a, 1, r, 1, false, function, "v" #type #name);              \
    }                                                                                                           \
    extern "C" void nax_arq_kernel_##type##name##I_##tag(int32_t n, const element* a, int32_t inca, element* r, \
                                                         int32_t incr) {                                        \
        nax::vmath::NAX_ISA::run_scalar<element>(n, a, inca, r, incr, inca != 1 || incr != 1, function,         \
                                                 "v" #type #name);                                              \
    }
