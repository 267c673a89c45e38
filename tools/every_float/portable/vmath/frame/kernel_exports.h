// Stands before the header of this name: a kernel of one float argument enters the list of kernels.h instead of being
// exported. Kernels of doubles are compiled and left.
#pragma once

#include "tools/every_float/kernels.h"
#include "vmath/frame/kernel.h"

#ifdef __clang__
#pragma clang diagnostic ignored "-Wunused-const-variable"  // what only the frame reads
#endif

namespace nax::vmath::avx512 {

template <const auto& kData>
void run_dense(int32_t n, const float* x, float* y) {
    run<kData>(n, Dense<Single, 1, 1>{{x}, {y}});
}

template <class E, const auto& kData>
bool enter(const char* record, const char* tag) {
    if constexpr (std::is_same_v<E, Single>) tools::kernels().push_back({record, {tag + 2, 2}, run_dense<kData>});
    return true;
}

namespace precision {
using s = Single;
using d = Double;
}  // namespace precision

}  // namespace nax::vmath::avx512

#define NAX_UNARY_KERNEL(type, function, tag, data) \
    static const bool type##function##_##tag = enter<precision::type, data>(#type #function, #tag);
