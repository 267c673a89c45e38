// Scalar paths of the inverse trigonometric and the hyperbolic functions: one element, any argument, result and status.
#pragma once

#include <cstdint>

namespace nax::vmath {

// Each stores the result for *x (for *y and *x) in *r and returns the status.
// 0 or 1 (size above 1):
int32_t vdasin_cout_rare(const double* x, double* r);
int32_t vdacos_cout_rare(const double* x, double* r);
int32_t vdasinpi_cout_rare(const double* x, double* r);
int32_t vdacospi_cout_rare(const double* x, double* r);
int32_t vsasin_cout_rare(const float* x, float* r);
int32_t vsacos_cout_rare(const float* x, float* r);
int32_t vsasinpi_cout_rare(const float* x, float* r);
int32_t vsacospi_cout_rare(const float* x, float* r);
// Always 0:
int32_t vdatan_cout_rare(const double* x, double* r);
int32_t vdatanpi_cout_rare(const double* x, double* r);
int32_t vdatan2_cout_rare(const double* y, const double* x, double* r);
int32_t vdatan2pi_cout_rare(const double* y, const double* x, double* r);
int32_t vdasinh_cout_rare(const double* x, double* r);
int32_t vdtanh_cout_rare(const double* x, double* r);
int32_t vsatan_cout_rare(const float* x, float* r);
int32_t vsatanpi_cout_rare(const float* x, float* r);
int32_t vsatan2_cout_rare(const float* y, const float* x, float* r);
int32_t vsatan2pi_cout_rare(const float* y, const float* x, float* r);
int32_t vsasinh_cout_rare(const float* x, float* r);
int32_t vstanh_cout_rare(const float* x, float* r);
// 0 or 3 (overflow):
int32_t vdsinh_cout_rare(const double* x, double* r);
int32_t vdcosh_cout_rare(const double* x, double* r);
int32_t vssinh_cout_rare(const float* x, float* r);
int32_t vscosh_cout_rare(const float* x, float* r);
// 0 or 1 (below 1):
int32_t vdacosh_cout_rare(const double* x, double* r);
int32_t vsacosh_cout_rare(const float* x, float* r);
// 0, 1 (size above 1) or 2 (size 1):
int32_t vdatanh_cout_rare(const double* x, double* r);
int32_t vsatanh_cout_rare(const float* x, float* r);

}  // namespace nax::vmath
