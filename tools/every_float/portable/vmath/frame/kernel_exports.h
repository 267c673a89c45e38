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
void evaluate(const float* x, float* y, uint16_t* rare, int vectors) {
    const auto& op = kData;
    for (int v = 0; v < vectors; ++v) {
        __m512 result;
        if constexpr (requires { op.rare; }) {
            rare[v] = op.eval(load(x + v * Single::lanes), result);
        } else {
            op.eval(load(x + v * Single::lanes), result);
            rare[v] = 0;
        }
        store(y + v * Single::lanes, result);
    }
}

template <class E, const auto& kData>
bool enter(const char* record, const char* tag) {
    if constexpr (std::is_same_v<E, Single>) {
        tools::Kernel kernel = {record, {tag + 2, 2}, evaluate<kData>, nullptr};
        if constexpr (requires { kData.rare; }) kernel.rare = RareFunction<float>(kData.rare).one_input;
        tools::kernels().push_back(kernel);
    }
    return true;
}

namespace precision {
using s = Single;
using d = Double;
}  // namespace precision

}  // namespace nax::vmath::avx512

#define NAX_UNARY_KERNEL(type, function, tag, data) \
    static const bool type##function##_##tag = enter<precision::type, data>(#type #function, #tag);
