// y[i incy] = a[i].
#include "vmath/util/selection.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class T>
void unpack_by_stride(int64_t n, const T* a, T* y, int64_t incy, int32_t flag) {
    by_integer_width(n, flag, [=](auto width, int64_t length) {
        const int64_t stride = static_cast<decltype(width)>(incy);
        if (stride == 1) return copy_elements(length, a, y);
#pragma GCC unroll 8
        for (int64_t i = 0; i < length; ++i) y[i * stride] = a[i];
    });
}

}  // namespace

NAX_UNPACK_KERNEL(s, UnpackI, int64_t, unpack_by_stride)
NAX_UNPACK_KERNEL(d, UnpackI, int64_t, unpack_by_stride)
NAX_UNPACK_KERNEL(c, UnpackI, int64_t, unpack_by_stride)
NAX_UNPACK_KERNEL(z, UnpackI, int64_t, unpack_by_stride)

}  // namespace nax::vmath::NAX_ISA
