// Exported names of a kernel: dense and strided form of one operation. A strided call in which every stride is one runs
// the dense form. The macros stand inside namespace nax::vmath::NAX_ISA.
//   type: letter of the element type; function: mixed-case name; tag: instruction set and level as records.def has them,
//   such as Z0HA; data: the kernel's data block, an instance of its operation.
#pragma once

#include "runtime/kernel_names.h"
#include "vmath/frame/kernel.h"

namespace nax::vmath::NAX_ISA {

// Precision and element by type letter.
namespace precision {
using s = Single;
using d = Double;
}  // namespace precision
namespace element {
using s = float;
using d = double;
}  // namespace element

}  // namespace nax::vmath::NAX_ISA

#define NAX_KERNEL_CAT(name, tag) NAX_KERNEL_CAT_(name, tag)
#define NAX_KERNEL_CAT_(name, tag) nax_arq_kernel_##name##_##tag
// The two names of a kernel, and what a report calls its function.
#define NAX_DENSE(type, function, tag) NAX_KERNEL_CAT(type##function, NAX_TAG_##tag)
#define NAX_STRIDED(type, function, tag) NAX_KERNEL_CAT(type##function##I, NAX_TAG_##tag)
#define NAX_REPORTED(type, function) "v" #type #function

#define NAX_UNARY_KERNEL(type, function, tag, data)                                                       \
    extern "C" void NAX_DENSE(type, function, tag)(int32_t n, const element::type* a, element::type* r) { \
        run<data>(n, Dense<precision::type, 1, 1>{{a}, {r}}, NAX_REPORTED(type, function));               \
    }                                                                                                     \
    extern "C" void NAX_STRIDED(type, function, tag)(int32_t n, const element::type* a, int32_t inca,     \
                                                     element::type* r, int32_t incr) {                    \
        const Strided<precision::type, 1, 1> access{{a}, {r}, {inca}, {incr}};                            \
        if (access.all_unit()) return NAX_DENSE(type, function, tag)(n, a, r);                            \
        run<data>(n, access, NAX_REPORTED(type, function));                                               \
    }

#define NAX_BINARY_KERNEL(type, function, tag, data)                                                        \
    extern "C" void NAX_DENSE(type, function, tag)(int32_t n, const element::type* a, const element::type* b, \
                                                   element::type* r) {                                      \
        run<data>(n, Dense<precision::type, 2, 1>{{a, b}, {r}}, NAX_REPORTED(type, function));              \
    }                                                                                                       \
    extern "C" void NAX_STRIDED(type, function, tag)(int32_t n, const element::type* a, int32_t inca,       \
                                                     const element::type* b, int32_t incb,                  \
                                                     element::type* r, int32_t incr) {                      \
        const Strided<precision::type, 2, 1> access{{a, b}, {r}, {inca, incb}, {incr}};                     \
        if (access.all_unit()) return NAX_DENSE(type, function, tag)(n, a, b, r);                           \
        run<data>(n, access, NAX_REPORTED(type, function));                                                 \
    }

#define NAX_TWO_RESULT_KERNEL(type, function, tag, data)                                                  \
    extern "C" void NAX_DENSE(type, function, tag)(int32_t n, const element::type* a, element::type* r1,  \
                                                   element::type* r2) {                                   \
        run<data>(n, Dense<precision::type, 1, 2>{{a}, {r1, r2}}, NAX_REPORTED(type, function));          \
    }                                                                                                     \
    extern "C" void NAX_STRIDED(type, function, tag)(int32_t n, const element::type* a, int32_t inca,     \
                                                     element::type* r1, int32_t incr1, element::type* r2, \
                                                     int32_t incr2) {                                     \
        const Strided<precision::type, 1, 2> access{{a}, {r1, r2}, {inca}, {incr1, incr2}};               \
        if (access.all_unit()) return NAX_DENSE(type, function, tag)(n, a, r1, r2);                       \
        run<data>(n, access, NAX_REPORTED(type, function));                                               \
    }
