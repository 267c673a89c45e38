// Scalar paths of the trigonometric functions; statuses as in nax/error.h. Right for every argument; only infinities
// have a status.
#pragma once

#include <cstdint>

namespace nax::vmath {

int32_t vdsin_cout_rare(const double* x, double* y);
int32_t vssin_cout_rare(const float* x, float* y);
int32_t vdcos_cout_rare(const double* x, double* y);
int32_t vscos_cout_rare(const float* x, float* y);
int32_t vdsincos_cout_rare(const double* x, double* sine, double* cosine);
int32_t vssincos_cout_rare(const float* x, float* sine, float* cosine);
int32_t vdtan_cout_rare(const double* x, double* y);
int32_t vstan_cout_rare(const float* x, float* y);
int32_t vdsind_cout_rare(const double* x, double* y);
int32_t vssind_cout_rare(const float* x, float* y);
int32_t vdcosd_cout_rare(const double* x, double* y);
int32_t vscosd_cout_rare(const float* x, float* y);
int32_t vdtand_cout_rare(const double* x, double* y);
int32_t vstand_cout_rare(const float* x, float* y);
int32_t vdsinpi_cout_rare(const double* x, double* y);
int32_t vssinpi_cout_rare(const float* x, float* y);
int32_t vdcospi_cout_rare(const double* x, double* y);
int32_t vscospi_cout_rare(const float* x, float* y);
int32_t vdtanpi_cout_rare(const double* x, double* y);
int32_t vstanpi_cout_rare(const float* x, float* y);

}  // namespace nax::vmath
