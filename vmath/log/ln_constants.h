// Series and constants of Ln, which Log1p shares.
#pragma once

#include "vmath/frame/polynomial.h"
#include "vmath/log/log_coefficients.inc"

namespace nax::vmath::NAX_ISA {

// ln(1 + r) = r + r^2 P(r). Double HA and LA: |r| <= 1/32, 2^-56. Double EP: 2^-31.5. Single HA: |r| <= 1/64, 2^-28.3.
// Single EP: |r| <= 1/32, 2^-14.5.
inline constexpr double ln_double_full[8] = {-0.4999999999999968, 0.33333333333332005,  -0.2500000000437373,
                                             0.20000000009280938, -0.16666650546695666, 0.14285690939597326,
                                             -0.125220000081181,  0.11135561406034511};
inline constexpr double ln_double_ep[4] = {-0.4999999502783749, 0.33333322249022734, -0.2502036072575226,
                                           0.20024438577708045};
inline constexpr float ln_single_ha[3] = {-0.5f, 0.3333825469017029f, -0.2500615119934082f};
inline constexpr float ln_single_ep[2] = {-0.4994935691356659f, 0.3112337291240692f};

// ln2 whose high part times an exponent is exact: 36 and 15 bits.
inline constexpr double ln2_double_high = 0.6931471805582987, ln2_double_low = 1.6465949582866463e-12;
inline constexpr float ln2_single_high = 0.693145751953125f, ln2_single_low = 1.428606765330187e-06f;
inline constexpr double ln2_double = 0.6931471805599453;
inline constexpr float ln2_single = 0.6931471824645996f;

}  // namespace nax::vmath::NAX_ISA
