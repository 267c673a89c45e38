// Scalar paths of the rounding and selection functions. Each takes pointers to one element's arguments and results and
// returns a status, 0 if nothing is wrong. Those of Fmax, Fmin, MaxMag, MinMag and Fdim expect the vector result in *r
// and correct it where an argument is NaN.
#pragma once

#include <cstdint>

extern "C" {

int32_t vsfrac_cout_rare(const float* a, float* r);
int32_t vdfrac_cout_rare(const double* a, double* r);
int32_t vsmodf_cout_rare(const float* a, float* whole, float* fraction);
int32_t vdmodf_cout_rare(const double* a, double* whole, double* fraction);
int32_t vsfmax_cout_rare(const float* a, const float* b, float* r);
int32_t vdfmax_cout_rare(const double* a, const double* b, double* r);
int32_t vsfmin_cout_rare(const float* a, const float* b, float* r);
int32_t vdfmin_cout_rare(const double* a, const double* b, double* r);
int32_t vsmaxmag_cout_rare(const float* a, const float* b, float* r);
int32_t vdmaxmag_cout_rare(const double* a, const double* b, double* r);
int32_t vsminmag_cout_rare(const float* a, const float* b, float* r);
int32_t vdminmag_cout_rare(const double* a, const double* b, double* r);
int32_t vsfdim_cout_rare(const float* a, const float* b, float* r);
int32_t vdfdim_cout_rare(const double* a, const double* b, double* r);
int32_t vsnextafter_cout_rare(const float* a, const float* b, float* r);
int32_t vdnextafter_cout_rare(const double* a, const double* b, double* r);
int32_t vsfmod_cout_rare(const float* a, const float* b, float* r);
int32_t vdfmod_cout_rare(const double* a, const double* b, double* r);
int32_t vsremainder_cout_rare(const float* a, const float* b, float* r);
int32_t vdremainder_cout_rare(const double* a, const double* b, double* r);
}
