// Log2:  log2(x) = e + log2(1/c) + log2(1 + r).
//
// The exponent is added as it is, so a power of two has an exact logarithm at every level. Steps: kernels.h.
#include "vmath/log/kernels.h"

namespace nax::vmath::NAX_ISA {
namespace {

// Coefficients of r^2 and up; least error on |r| <= 1/32, 2^-61.
constexpr double log2_double_ha[9] = {-0.7213475204444817,  0.48089834696297595, -0.3606737602222039,
                                      0.28853900827454215,  -0.2404491736660305, 0.20609901529897745,
                                      -0.18033649651614117, 0.16062134196157107, -0.14462367230502995};

alignas(64) constexpr LogHigh<Double, Base::Two, 4, 9> double_ha = {
    {log2_16_high, log2_16_low},
    log2_double_ha,
    Double::row(1.4426950408889634),     // 1/ln2
    Double::row(2.058780309571773e-17),  // the rest, fitted with the coefficients
    {},
    {},
};
alignas(64) constexpr LogLow<Double, Base::Two, 9> double_la = {log2_16, log2_double_la, {}};
alignas(64) constexpr LogLow<Double, Base::Two, 5> double_ep = {log2_16, log2_double_ep, {}};

alignas(64) constexpr LogHigh<Single, Base::Two, 5, 3> single_ha = {
    {log2_32f_high, log2_32f_low},
    log2_single_ha,
    Single::row(0x1.715476p+0f),  // 1/ln2
    Single::row(0x1.4ae0cp-26f),  // the rest
    {},
    {},
};
alignas(64) constexpr LogLow<Single, Base::Two, 4> single_la = {log2_16f, log2_single_la, {}};
alignas(64) constexpr LogLow<Single, Base::Two, 2> single_ep = {log2_16f, log2_single_ep, {}};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Log2, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Log2, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Log2, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Log2, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Log2, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Log2, Z0EP, single_ep)
