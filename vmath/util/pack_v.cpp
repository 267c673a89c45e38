// y[i] = a[ia[i]].
#include "vmath/util/selection.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class T>
void pack_by_index(int64_t n, const T* a, const void* ia, T* y, int32_t flag) {
    by_integer_width(n, flag, [=](auto width, int64_t length) {
        const auto* const index = static_cast<const decltype(width)*>(ia);
#pragma GCC unroll 8
        for (int64_t i = 0; i < length; ++i) y[i] = a[index[i]];
    });
}

}  // namespace

NAX_PACK_KERNEL(s, PackV, const void*, pack_by_index)
NAX_PACK_KERNEL(d, PackV, const void*, pack_by_index)
NAX_PACK_KERNEL(c, PackV, const void*, pack_by_index)
NAX_PACK_KERNEL(z, PackV, const void*, pack_by_index)

}  // namespace nax::vmath::NAX_ISA
