// Scalar paths of the exponentials: one element, any argument, result and status.
#pragma once

#include <cstdint>

namespace nax::vmath {

// Each stores the result for *x in *y and returns the status: 0, 3 (overflow) or 4 (underflow).
int32_t vdexp_cout_rare(const double* x, double* y);
int32_t vdexp2_cout_rare(const double* x, double* y);
int32_t vdexp10_cout_rare(const double* x, double* y);
int32_t vdexpm1_cout_rare(const double* x, double* y);
int32_t vsexp_cout_rare(const float* x, float* y);
int32_t vsexp2_cout_rare(const float* x, float* y);
int32_t vsexp10_cout_rare(const float* x, float* y);
int32_t vsexpm1_cout_rare(const float* x, float* y);

}  // namespace nax::vmath
