// Log10:  log10(x) = e log10(2) + log10(1/c) + log10(1 + r).  Steps: kernels.h.
#include "vmath/log/kernels.h"

namespace nax::vmath::NAX_ISA {
namespace {

// Coefficients of r^2 and up; least error on |r| <= 1/32, 2^-56.
constexpr double log10_double_ha[8] = {-0.2171472409516245,   0.1447648273010781,   -0.10857362049503165,
                                       0.08685889642143198,   -0.07238234309339653, 0.06204196665719165,
                                       -0.054382729112418954, 0.04836154453005903};

alignas(64) constexpr LogHigh<Double, Base::Ten, 4, 8> double_ha = {
    {log10_16_high, log10_16_low},
    log10_double_ha,
    Double::row(0.4342944819032518),      // 1/ln10
    Double::row(1.112322122975008e-17),   // the rest, fitted with the coefficients
    Double::row(0.30102999566224753),     // log10(2) in 37 bits: its product with an exponent is exact
    Double::row(1.7336659603752853e-12),  // the rest
};
alignas(64) constexpr LogLow<Double, Base::Ten, 9> double_la = {log10_16, log10_double_la,
                                                                Double::row(0.3010299956639812)};
alignas(64) constexpr LogLow<Double, Base::Ten, 5> double_ep = {log10_16, log10_double_ep,
                                                                Double::row(0.3010299956639812)};

alignas(64) constexpr LogHigh<Single, Base::Ten, 5, 3> single_ha = {
    {log10_32f_high, log10_32f_low},
    log10_single_ha,
    Single::row(0x1.bcb7b2p-2f),    // 1/ln10
    Single::row(-0x1.5b235ep-27f),  // the rest
    Single::row(0x1.3441p-2f),      // log10(2), a multiple of 2^-18
    Single::row(0x1.a84fbcp-21f),   // the rest
};
alignas(64) constexpr LogLow<Single, Base::Ten, 4> single_la = {log10_16f, log10_single_la,
                                                                Single::row(0x1.344136p-2f)};
alignas(64) constexpr LogLow<Single, Base::Ten, 2> single_ep = {log10_16f, log10_single_ep,
                                                                Single::row(0x1.344136p-2f)};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Log10, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Log10, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Log10, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Log10, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Log10, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Log10, Z0EP, single_ep)
