// y[iy[i]] = a[i], in ascending order of i: of several elements for one place the last one stays.
#include "vmath/util/selection.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class T>
void unpack_by_index(int64_t n, const T* a, T* y, const void* iy, int32_t flag) {
    by_integer_width(n, flag, [=](auto width, int64_t length) {
        const auto* const index = static_cast<const decltype(width)*>(iy);
#pragma GCC unroll 8
        for (int64_t i = 0; i < length; ++i) y[index[i]] = a[i];
    });
}

}  // namespace

NAX_UNPACK_KERNEL(s, UnpackV, const void*, unpack_by_index)
NAX_UNPACK_KERNEL(d, UnpackV, const void*, unpack_by_index)
NAX_UNPACK_KERNEL(c, UnpackV, const void*, unpack_by_index)
NAX_UNPACK_KERNEL(z, UnpackV, const void*, unpack_by_index)

}  // namespace nax::vmath::NAX_ISA
