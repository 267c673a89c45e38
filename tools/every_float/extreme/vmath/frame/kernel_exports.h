// Stands before the library's header of this name: kernels are noted for the sweep instead of exported. The build gives
// namespace and error of the reciprocal.
#pragma once

#include "tools/every_float/kernels.h"
#include "vmath/frame/kernel.h"

namespace nax::vmath::NAX_ISA {

namespace precision {
using s = Single;
using d = Double;
}  // namespace precision
namespace element {
using s = float;
using d = double;
}  // namespace element

}  // namespace nax::vmath::NAX_ISA

#define NAX_UNARY_KERNEL(type, function, tag, data)                                                                    \
    static const nax::tools::Registration registration_##type##function##tag(                                         \
        #type[0], #function, #tag, NAX_RECIPROCAL_ERROR < 0 ? nax::tools::Reciprocal::kLow : nax::tools::Reciprocal::kHigh, \
        +[](int32_t n, const element::type* a, element::type* r) {                                                     \
            run<data>(n, Dense<precision::type, 1, 1>{{a}, {r}}, "");                                                  \
        });
