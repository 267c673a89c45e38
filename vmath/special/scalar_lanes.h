// Lanes that only the scalar path can compute, whether or not something is to be reported of them.
#pragma once

#include "vmath/frame/kernel.h"

namespace nax::vmath::NAX_ISA {

// Results of the suspect lanes from `function`; returns those with a status. They are computed once more where they are
// reported, so the exception flags raised here don't count.
template <class E>
[[gnu::noinline]] typename E::Mask settle_by_scalar(typename E::Vector x, typename E::Mask suspect,
                                                    typename E::Vector& y,
                                                    int32_t (*function)(const typename E::Element*,
                                                                        typename E::Element*)) {
    using T = typename E::Element;
    alignas(64) T arguments[E::lanes], results[E::lanes], statuses[E::lanes] = {};
    store(arguments, x);
    store(results, y);
    uint32_t flags;
    asm volatile("stmxcsr %0" : "=m"(flags) : : "memory");
    for (uint32_t lanes = lane_bits(suspect); lanes != 0; lanes &= lanes - 1) {
        const int lane = __builtin_ctz(lanes);
        statuses[lane] = static_cast<T>(function(&arguments[lane], &results[lane]));
    }
    asm volatile("ldmxcsr %0" : : "m"(flags) : "memory");
    y = load(results);
    return not_equal(load(statuses), E::row(0));
}

}  // namespace nax::vmath::NAX_ISA
