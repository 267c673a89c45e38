// Scalar paths of the special functions: status 0 to 4, see frame/scalar.h.
#pragma once

#include <cstdint>

namespace nax::vmath {
int32_t vderf_cout_rare(const double* x, double* y);
int32_t vserf_cout_rare(const float* x, float* y);
int32_t vderfc_cout_rare(const double* x, double* y);
int32_t vserfc_cout_rare(const float* x, float* y);
int32_t vdcdfnorm_cout_rare(const double* x, double* y);
int32_t vscdfnorm_cout_rare(const float* x, float* y);
int32_t vderfinv_cout_rare(const double* x, double* y);
int32_t vserfinv_cout_rare(const float* x, float* y);
int32_t vderfcinv_cout_rare(const double* x, double* y);
int32_t vserfcinv_cout_rare(const float* x, float* y);
int32_t vdcdfnorminv_cout_rare(const double* x, double* y);
int32_t vscdfnorminv_cout_rare(const float* x, float* y);
int32_t vdlgamma_cout_rare(const double* x, double* y);
int32_t vslgamma_cout_rare(const float* x, float* y);
int32_t vdtgamma_cout_rare(const double* x, double* y);
int32_t vstgamma_cout_rare(const float* x, float* y);
int32_t vdexpint1_cout_rare(const double* x, double* y);
int32_t vsexpint1_cout_rare(const float* x, float* y);
}  // namespace nax::vmath
