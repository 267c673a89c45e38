// Exported names of the AVX-512 kernels: dense and strided form of one operation. A strided call in which every stride
// is one runs the dense form. The macros stand inside namespace nax::vmath::avx512.
//   type: letter of the element type; function: mixed-case name; tag: instruction set, level and flags of the kernel's
//   name; data: the kernel's data block, an instance of its operation.
#pragma once

#include "vmath/frame/kernel.h"

namespace nax::vmath::avx512 {

// Precision and element by type letter.
namespace precision {
using s = Single;
using d = Double;
}  // namespace precision
namespace element {
using s = float;
using d = double;
}  // namespace element

}  // namespace nax::vmath::avx512

#define NAX_UNARY_KERNEL(type, function, tag, data)                                                             \
    extern "C" void nax_arq_kernel_##type##function##_##tag(int32_t n, const element::type* a, element::type* r) { \
        run<data>(n, Dense<precision::type, 1, 1>{{a}, {r}});                                                   \
    }                                                                                                           \
    extern "C" void nax_arq_kernel_##type##function##I_##tag(int32_t n, const element::type* a, int32_t inca,   \
                                                             element::type* r, int32_t incr) {                  \
        const Strided<precision::type, 1, 1> access{{a}, {r}, {inca}, {incr}};                                  \
        if (access.all_unit()) return nax_arq_kernel_##type##function##_##tag(n, a, r);                         \
        run<data>(n, access);                                                                                   \
    }

#define NAX_BINARY_KERNEL(type, function, tag, data)                                                            \
    extern "C" void nax_arq_kernel_##type##function##_##tag(int32_t n, const element::type* a,                  \
                                                            const element::type* b, element::type* r) {         \
        run<data>(n, Dense<precision::type, 2, 1>{{a, b}, {r}});                                                \
    }                                                                                                           \
    extern "C" void nax_arq_kernel_##type##function##I_##tag(int32_t n, const element::type* a, int32_t inca,   \
                                                             const element::type* b, int32_t incb,              \
                                                             element::type* r, int32_t incr) {                  \
        const Strided<precision::type, 2, 1> access{{a, b}, {r}, {inca, incb}, {incr}};                         \
        if (access.all_unit()) return nax_arq_kernel_##type##function##_##tag(n, a, b, r);                      \
        run<data>(n, access);                                                                                   \
    }

#define NAX_TWO_RESULT_KERNEL(type, function, tag, data)                                                        \
    extern "C" void nax_arq_kernel_##type##function##_##tag(int32_t n, const element::type* a,                  \
                                                            element::type* r1, element::type* r2) {             \
        run<data>(n, Dense<precision::type, 1, 2>{{a}, {r1, r2}});                                              \
    }                                                                                                           \
    extern "C" void nax_arq_kernel_##type##function##I_##tag(int32_t n, const element::type* a, int32_t inca,   \
                                                             element::type* r1, int32_t incr1,                  \
                                                             element::type* r2, int32_t incr2) {                \
        const Strided<precision::type, 1, 2> access{{a}, {r1, r2}, {inca}, {incr1, incr2}};                     \
        if (access.all_unit()) return nax_arq_kernel_##type##function##_##tag(n, a, r1, r2);                    \
        run<data>(n, access);                                                                                   \
    }
