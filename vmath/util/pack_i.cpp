// y[i] = a[i inca].
#include "vmath/util/selection.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class T>
void pack_by_stride(int64_t n, const T* a, int64_t inca, T* y, int32_t flag) {
    by_integer_width(n, flag, [=](auto width, int64_t length) {
        const int64_t stride = static_cast<decltype(width)>(inca);
        if (stride == 1) return copy_elements(length, a, y);
#pragma GCC unroll 8
        for (int64_t i = 0; i < length; ++i) y[i] = a[i * stride];
    });
}

}  // namespace

NAX_PACK_KERNEL(s, PackI, int64_t, pack_by_stride)
NAX_PACK_KERNEL(d, PackI, int64_t, pack_by_stride)
NAX_PACK_KERNEL(c, PackI, int64_t, pack_by_stride)
NAX_PACK_KERNEL(z, PackI, int64_t, pack_by_stride)

}  // namespace nax::vmath::NAX_ISA
