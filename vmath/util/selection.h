// Shared by the pack group: element types, and the two integer widths of lengths, indices and masks.
//
// Elements are moved, never computed with, so complex numbers travel as pairs. Gathers and scatters cost more than
// single moves on the processors we know; only the mask forms, which compress and expand in registers, use vectors.
#pragma once

#include <cstdint>

namespace nax::vmath::NAX_ISA {

template <class T>
struct Pair {
    T real, imag;
};

namespace packed {
using s = float;
using d = double;
using c = Pair<float>;
using z = Pair<double>;
}  // namespace packed

// With flag 1 lengths, strides, indices and masks are 32-bit integers, with any other value 64-bit. `body` gets a value
// of the width at hand and the length.
template <class Body>
inline void by_integer_width(int64_t n, int32_t flag, Body body) {
    if (flag == 1)
        body(int32_t{}, int64_t{static_cast<int32_t>(n)});
    else
        body(int64_t{}, n);
}

// y[i] = a[i] for 0 <= i < n; the compiler's block copy, without its call for a handful of elements.
template <class T>
inline void copy_elements(int64_t n, const T* a, T* y) {
    if (n > 0) __builtin_memmove(y, a, static_cast<uint64_t>(n) * sizeof(T));
}

}  // namespace nax::vmath::NAX_ISA

// The kernels of one member for the four types; `argument` is the type of the selector argument.
#define NAX_PACK_KERNEL(type, function, argument, body)                                                            \
    extern "C" void nax_arq_kernel_##type##function##_Z0HAynn(int64_t n, const packed::type* a, argument selector, \
                                                              packed::type* y, int32_t flag) {                     \
        body(n, a, selector, y, flag);                                                                             \
    }
#define NAX_UNPACK_KERNEL(type, function, argument, body)                                                          \
    extern "C" void nax_arq_kernel_##type##function##_Z0HAynn(int64_t n, const packed::type* a, packed::type* y,   \
                                                              argument selector, int32_t flag) {                   \
        body(n, a, y, selector, flag);                                                                             \
    }
