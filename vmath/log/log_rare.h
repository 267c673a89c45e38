// Scalar paths of the logarithms: one element, any argument, result and status.
#pragma once

#include <cstdint>

namespace nax::vmath {

// Each stores the result for *x in *y and returns the status: 0, 1 (argument below the domain) or 2 (pole).
int32_t vdln_cout_rare(const double* x, double* y);
int32_t vdlog2_cout_rare(const double* x, double* y);
int32_t vdlog10_cout_rare(const double* x, double* y);
int32_t vdlog1p_cout_rare(const double* x, double* y);
int32_t vsln_cout_rare(const float* x, float* y);
int32_t vslog2_cout_rare(const float* x, float* y);
int32_t vslog10_cout_rare(const float* x, float* y);
int32_t vslog1p_cout_rare(const float* x, float* y);
// Status 1 for zero, 0 for every other argument.
int32_t vdlogb_cout_rare(const double* x, double* y);
int32_t vslogb_cout_rare(const float* x, float* y);

// ln(1 + high + low) where high >= 0 and low is within an ulp of it; `doublings` ln2 more. For inverse hyperbolics.
double ln1p_of_pair(double high, double low, double doublings = 0.0);

}  // namespace nax::vmath
