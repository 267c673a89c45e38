// Scalar paths of the powers, roots and quotients: one element, any argument, result and status.
#pragma once

#include <cstdint>

namespace nax::vmath {

// Status 1 below zero.
int32_t vdsqrt_cout_rare(const double* x, double* y);
int32_t vssqrt_cout_rare(const float* x, float* y);
int32_t vdpow3o2_cout_rare(const double* x, double* y);
int32_t vspow3o2_cout_rare(const float* x, float* y);
// Status 1 below zero, 2 for zeros.
int32_t vdinvsqrt_cout_rare(const double* x, double* y);
int32_t vsinvsqrt_cout_rare(const float* x, float* y);
// Status 2 for zeros, of Div for a zero divisor whatever is divided.
int32_t vdinv_cout_rare(const double* x, double* y);
int32_t vsinv_cout_rare(const float* x, float* y);
int32_t vdinvcbrt_cout_rare(const double* x, double* y);
int32_t vsinvcbrt_cout_rare(const float* x, float* y);
int32_t vddiv_cout_rare(const double* a, const double* b, double* y);
int32_t vsdiv_cout_rare(const float* a, const float* b, float* y);
// Status 1 where there is no real power and for negative powers of zero, 3 and 4 beyond the ends of the range.
int32_t vdpow_cout_rare(const double* x, const double* y, double* r);
int32_t vspow_cout_rare(const float* x, const float* y, float* r);
// The same with e^(y ln x) at the limits: a zero base has no status, and 1 no more than 0 a say beside Inf or NaN.
int32_t vdpowr_cout_rare(const double* x, const double* y, double* r);
int32_t vspowr_cout_rare(const float* x, const float* y, float* r);

}  // namespace nax::vmath
