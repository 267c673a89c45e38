/* Kernels and dispatch tables behind nax/vmath.h, for layers that dispatch on their own. Generated; don't edit.
 *
 * Each record is two objects side by side:
 *   nax_arq_kernel_<name>_ttab   three kernels: slot 0 lower accuracy, 1 high accuracy, 2 enhanced performance
 *   nax_arq_kernel_<name>_ctab   the cost of one element in these slots, on one scale for all functions (about 2.9 to
 *                                a nanosecond at 3.7 GHz), and four bytes of zero
 * Tables are constants. Kernel names end in the instruction set (Z0 AVX-512, L9 AVX2, E9 AVX, EX one element at a time),
 * the level and three flag letters without meaning. Arguments and results are those of the functions in nax/vmath.h;
 * kernels of the pack group take a last argument: 1 for lengths, strides, indices and masks of 32-bit integers, any
 * other value for 64-bit ones. */
#ifndef NAX_VMATH_KERNELS_H
#define NAX_VMATH_KERNELS_H

#include "nax/vmath.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef void (*nax_kernel)(void); /* to be cast to the record's signature */

void nax_arq_kernel_sAdd_Z0HAynn(int32_t n, const float* a, const float* b, float* r);
extern nax_kernel nax_arq_kernel_sAdd_ttab[3];
extern float nax_arq_kernel_sAdd_ctab[4];
void nax_arq_kernel_sAddI_Z0HAynn(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sAddI_ttab[3];
extern float nax_arq_kernel_sAddI_ctab[4];
void nax_arq_kernel_dAdd_Z0HAynn(int32_t n, const double* a, const double* b, double* r);
extern nax_kernel nax_arq_kernel_dAdd_ttab[3];
extern float nax_arq_kernel_dAdd_ctab[4];
void nax_arq_kernel_dAddI_Z0HAynn(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dAddI_ttab[3];
extern float nax_arq_kernel_dAddI_ctab[4];

void nax_arq_kernel_sSub_Z0HAynn(int32_t n, const float* a, const float* b, float* r);
extern nax_kernel nax_arq_kernel_sSub_ttab[3];
extern float nax_arq_kernel_sSub_ctab[4];
void nax_arq_kernel_sSubI_Z0HAynn(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sSubI_ttab[3];
extern float nax_arq_kernel_sSubI_ctab[4];
void nax_arq_kernel_dSub_Z0HAynn(int32_t n, const double* a, const double* b, double* r);
extern nax_kernel nax_arq_kernel_dSub_ttab[3];
extern float nax_arq_kernel_dSub_ctab[4];
void nax_arq_kernel_dSubI_Z0HAynn(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dSubI_ttab[3];
extern float nax_arq_kernel_dSubI_ctab[4];

void nax_arq_kernel_sMul_Z0HAynn(int32_t n, const float* a, const float* b, float* r);
extern nax_kernel nax_arq_kernel_sMul_ttab[3];
extern float nax_arq_kernel_sMul_ctab[4];
void nax_arq_kernel_sMulI_Z0HAynn(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sMulI_ttab[3];
extern float nax_arq_kernel_sMulI_ctab[4];
void nax_arq_kernel_dMul_Z0HAynn(int32_t n, const double* a, const double* b, double* r);
extern nax_kernel nax_arq_kernel_dMul_ttab[3];
extern float nax_arq_kernel_dMul_ctab[4];
void nax_arq_kernel_dMulI_Z0HAynn(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dMulI_ttab[3];
extern float nax_arq_kernel_dMulI_ctab[4];

void nax_arq_kernel_sSqr_Z0HAynn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sSqr_ttab[3];
extern float nax_arq_kernel_sSqr_ctab[4];
void nax_arq_kernel_sSqrI_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sSqrI_ttab[3];
extern float nax_arq_kernel_sSqrI_ctab[4];
void nax_arq_kernel_dSqr_Z0HAynn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dSqr_ttab[3];
extern float nax_arq_kernel_dSqr_ctab[4];
void nax_arq_kernel_dSqrI_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dSqrI_ttab[3];
extern float nax_arq_kernel_dSqrI_ctab[4];

void nax_arq_kernel_sAbs_Z0HAynn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sAbs_ttab[3];
extern float nax_arq_kernel_sAbs_ctab[4];
void nax_arq_kernel_sAbsI_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sAbsI_ttab[3];
extern float nax_arq_kernel_sAbsI_ctab[4];
void nax_arq_kernel_dAbs_Z0HAynn(int32_t n, const double* a, double* r);
void nax_arq_kernel_dAbs_Z0EPnnn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dAbs_ttab[3];
extern float nax_arq_kernel_dAbs_ctab[4];
void nax_arq_kernel_dAbsI_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void nax_arq_kernel_dAbsI_Z0EPnnn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dAbsI_ttab[3];
extern float nax_arq_kernel_dAbsI_ctab[4];

void nax_arq_kernel_sCeil_Z0HAynn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sCeil_ttab[3];
extern float nax_arq_kernel_sCeil_ctab[4];
void nax_arq_kernel_sCeilI_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sCeilI_ttab[3];
extern float nax_arq_kernel_sCeilI_ctab[4];
void nax_arq_kernel_dCeil_Z0HAynn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dCeil_ttab[3];
extern float nax_arq_kernel_dCeil_ctab[4];
void nax_arq_kernel_dCeilI_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dCeilI_ttab[3];
extern float nax_arq_kernel_dCeilI_ctab[4];

void nax_arq_kernel_sFloor_Z0HAynn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sFloor_ttab[3];
extern float nax_arq_kernel_sFloor_ctab[4];
void nax_arq_kernel_sFloorI_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sFloorI_ttab[3];
extern float nax_arq_kernel_sFloorI_ctab[4];
void nax_arq_kernel_dFloor_Z0HAynn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dFloor_ttab[3];
extern float nax_arq_kernel_dFloor_ctab[4];
void nax_arq_kernel_dFloorI_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dFloorI_ttab[3];
extern float nax_arq_kernel_dFloorI_ctab[4];

void nax_arq_kernel_sTrunc_Z0HAynn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sTrunc_ttab[3];
extern float nax_arq_kernel_sTrunc_ctab[4];
void nax_arq_kernel_sTruncI_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sTruncI_ttab[3];
extern float nax_arq_kernel_sTruncI_ctab[4];
void nax_arq_kernel_dTrunc_Z0HAynn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dTrunc_ttab[3];
extern float nax_arq_kernel_dTrunc_ctab[4];
void nax_arq_kernel_dTruncI_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dTruncI_ttab[3];
extern float nax_arq_kernel_dTruncI_ctab[4];

void nax_arq_kernel_sRint_Z0HAynn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sRint_ttab[3];
extern float nax_arq_kernel_sRint_ctab[4];
void nax_arq_kernel_sRintI_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sRintI_ttab[3];
extern float nax_arq_kernel_sRintI_ctab[4];
void nax_arq_kernel_dRint_Z0HAynn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dRint_ttab[3];
extern float nax_arq_kernel_dRint_ctab[4];
void nax_arq_kernel_dRintI_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dRintI_ttab[3];
extern float nax_arq_kernel_dRintI_ctab[4];

void nax_arq_kernel_sNearbyInt_Z0HAynn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sNearbyInt_ttab[3];
extern float nax_arq_kernel_sNearbyInt_ctab[4];
void nax_arq_kernel_sNearbyIntI_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sNearbyIntI_ttab[3];
extern float nax_arq_kernel_sNearbyIntI_ctab[4];
void nax_arq_kernel_dNearbyInt_Z0HAynn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dNearbyInt_ttab[3];
extern float nax_arq_kernel_dNearbyInt_ctab[4];
void nax_arq_kernel_dNearbyIntI_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dNearbyIntI_ttab[3];
extern float nax_arq_kernel_dNearbyIntI_ctab[4];

void nax_arq_kernel_sRound_Z0HAynn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sRound_ttab[3];
extern float nax_arq_kernel_sRound_ctab[4];
void nax_arq_kernel_sRoundI_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sRoundI_ttab[3];
extern float nax_arq_kernel_sRoundI_ctab[4];
void nax_arq_kernel_dRound_Z0HAynn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dRound_ttab[3];
extern float nax_arq_kernel_dRound_ctab[4];
void nax_arq_kernel_dRoundI_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dRoundI_ttab[3];
extern float nax_arq_kernel_dRoundI_ctab[4];

void nax_arq_kernel_sFrac_Z0HAynn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sFrac_ttab[3];
extern float nax_arq_kernel_sFrac_ctab[4];
void nax_arq_kernel_sFracI_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sFracI_ttab[3];
extern float nax_arq_kernel_sFracI_ctab[4];
void nax_arq_kernel_dFrac_Z0HAynn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dFrac_ttab[3];
extern float nax_arq_kernel_dFrac_ctab[4];
void nax_arq_kernel_dFracI_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dFracI_ttab[3];
extern float nax_arq_kernel_dFracI_ctab[4];

void nax_arq_kernel_sModf_Z0HAynn(int32_t n, const float* a, float* r1, float* r2);
extern nax_kernel nax_arq_kernel_sModf_ttab[3];
extern float nax_arq_kernel_sModf_ctab[4];
void nax_arq_kernel_sModfI_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r1, int32_t incr1, float* r2, int32_t incr2);
extern nax_kernel nax_arq_kernel_sModfI_ttab[3];
extern float nax_arq_kernel_sModfI_ctab[4];
void nax_arq_kernel_dModf_Z0HAynn(int32_t n, const double* a, double* r1, double* r2);
extern nax_kernel nax_arq_kernel_dModf_ttab[3];
extern float nax_arq_kernel_dModf_ctab[4];
void nax_arq_kernel_dModfI_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r1, int32_t incr1, double* r2, int32_t incr2);
extern nax_kernel nax_arq_kernel_dModfI_ttab[3];
extern float nax_arq_kernel_dModfI_ctab[4];

void nax_arq_kernel_sCopySign_Z0HAynn(int32_t n, const float* a, const float* b, float* r);
extern nax_kernel nax_arq_kernel_sCopySign_ttab[3];
extern float nax_arq_kernel_sCopySign_ctab[4];
void nax_arq_kernel_sCopySignI_Z0HAynn(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sCopySignI_ttab[3];
extern float nax_arq_kernel_sCopySignI_ctab[4];
void nax_arq_kernel_dCopySign_Z0HAynn(int32_t n, const double* a, const double* b, double* r);
extern nax_kernel nax_arq_kernel_dCopySign_ttab[3];
extern float nax_arq_kernel_dCopySign_ctab[4];
void nax_arq_kernel_dCopySignI_Z0HAynn(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dCopySignI_ttab[3];
extern float nax_arq_kernel_dCopySignI_ctab[4];

void nax_arq_kernel_sNextAfter_Z0HAynn(int32_t n, const float* a, const float* b, float* r);
extern nax_kernel nax_arq_kernel_sNextAfter_ttab[3];
extern float nax_arq_kernel_sNextAfter_ctab[4];
void nax_arq_kernel_sNextAfterI_Z0HAynn(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sNextAfterI_ttab[3];
extern float nax_arq_kernel_sNextAfterI_ctab[4];
void nax_arq_kernel_dNextAfter_Z0HAynn(int32_t n, const double* a, const double* b, double* r);
extern nax_kernel nax_arq_kernel_dNextAfter_ttab[3];
extern float nax_arq_kernel_dNextAfter_ctab[4];
void nax_arq_kernel_dNextAfterI_Z0HAynn(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dNextAfterI_ttab[3];
extern float nax_arq_kernel_dNextAfterI_ctab[4];

void nax_arq_kernel_sFdim_Z0HAynn(int32_t n, const float* a, const float* b, float* r);
extern nax_kernel nax_arq_kernel_sFdim_ttab[3];
extern float nax_arq_kernel_sFdim_ctab[4];
void nax_arq_kernel_sFdimI_Z0HAynn(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sFdimI_ttab[3];
extern float nax_arq_kernel_sFdimI_ctab[4];
void nax_arq_kernel_dFdim_Z0HAynn(int32_t n, const double* a, const double* b, double* r);
extern nax_kernel nax_arq_kernel_dFdim_ttab[3];
extern float nax_arq_kernel_dFdim_ctab[4];
void nax_arq_kernel_dFdimI_Z0HAynn(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dFdimI_ttab[3];
extern float nax_arq_kernel_dFdimI_ctab[4];

void nax_arq_kernel_sFmax_Z0HAynn(int32_t n, const float* a, const float* b, float* r);
extern nax_kernel nax_arq_kernel_sFmax_ttab[3];
extern float nax_arq_kernel_sFmax_ctab[4];
void nax_arq_kernel_sFmaxI_Z0HAynn(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sFmaxI_ttab[3];
extern float nax_arq_kernel_sFmaxI_ctab[4];
void nax_arq_kernel_dFmax_Z0HAynn(int32_t n, const double* a, const double* b, double* r);
extern nax_kernel nax_arq_kernel_dFmax_ttab[3];
extern float nax_arq_kernel_dFmax_ctab[4];
void nax_arq_kernel_dFmaxI_Z0HAynn(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dFmaxI_ttab[3];
extern float nax_arq_kernel_dFmaxI_ctab[4];

void nax_arq_kernel_sFmin_Z0HAynn(int32_t n, const float* a, const float* b, float* r);
extern nax_kernel nax_arq_kernel_sFmin_ttab[3];
extern float nax_arq_kernel_sFmin_ctab[4];
void nax_arq_kernel_sFminI_Z0HAynn(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sFminI_ttab[3];
extern float nax_arq_kernel_sFminI_ctab[4];
void nax_arq_kernel_dFmin_Z0HAynn(int32_t n, const double* a, const double* b, double* r);
extern nax_kernel nax_arq_kernel_dFmin_ttab[3];
extern float nax_arq_kernel_dFmin_ctab[4];
void nax_arq_kernel_dFminI_Z0HAynn(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dFminI_ttab[3];
extern float nax_arq_kernel_dFminI_ctab[4];

void nax_arq_kernel_sMaxMag_Z0HAynn(int32_t n, const float* a, const float* b, float* r);
extern nax_kernel nax_arq_kernel_sMaxMag_ttab[3];
extern float nax_arq_kernel_sMaxMag_ctab[4];
void nax_arq_kernel_sMaxMagI_Z0HAynn(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sMaxMagI_ttab[3];
extern float nax_arq_kernel_sMaxMagI_ctab[4];
void nax_arq_kernel_dMaxMag_Z0HAynn(int32_t n, const double* a, const double* b, double* r);
extern nax_kernel nax_arq_kernel_dMaxMag_ttab[3];
extern float nax_arq_kernel_dMaxMag_ctab[4];
void nax_arq_kernel_dMaxMagI_Z0HAynn(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dMaxMagI_ttab[3];
extern float nax_arq_kernel_dMaxMagI_ctab[4];

void nax_arq_kernel_sMinMag_Z0HAynn(int32_t n, const float* a, const float* b, float* r);
extern nax_kernel nax_arq_kernel_sMinMag_ttab[3];
extern float nax_arq_kernel_sMinMag_ctab[4];
void nax_arq_kernel_sMinMagI_Z0HAynn(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sMinMagI_ttab[3];
extern float nax_arq_kernel_sMinMagI_ctab[4];
void nax_arq_kernel_dMinMag_Z0HAynn(int32_t n, const double* a, const double* b, double* r);
extern nax_kernel nax_arq_kernel_dMinMag_ttab[3];
extern float nax_arq_kernel_dMinMag_ctab[4];
void nax_arq_kernel_dMinMagI_Z0HAynn(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dMinMagI_ttab[3];
extern float nax_arq_kernel_dMinMagI_ctab[4];

void nax_arq_kernel_sFmod_Z0HAynn(int32_t n, const float* a, const float* b, float* r);
extern nax_kernel nax_arq_kernel_sFmod_ttab[3];
extern float nax_arq_kernel_sFmod_ctab[4];
void nax_arq_kernel_sFmodI_Z0HAynn(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sFmodI_ttab[3];
extern float nax_arq_kernel_sFmodI_ctab[4];
void nax_arq_kernel_dFmod_Z0HAynn(int32_t n, const double* a, const double* b, double* r);
extern nax_kernel nax_arq_kernel_dFmod_ttab[3];
extern float nax_arq_kernel_dFmod_ctab[4];
void nax_arq_kernel_dFmodI_Z0HAynn(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dFmodI_ttab[3];
extern float nax_arq_kernel_dFmodI_ctab[4];

void nax_arq_kernel_sRemainder_Z0HAynn(int32_t n, const float* a, const float* b, float* r);
extern nax_kernel nax_arq_kernel_sRemainder_ttab[3];
extern float nax_arq_kernel_sRemainder_ctab[4];
void nax_arq_kernel_sRemainderI_Z0HAynn(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sRemainderI_ttab[3];
extern float nax_arq_kernel_sRemainderI_ctab[4];
void nax_arq_kernel_dRemainder_Z0HAynn(int32_t n, const double* a, const double* b, double* r);
extern nax_kernel nax_arq_kernel_dRemainder_ttab[3];
extern float nax_arq_kernel_dRemainder_ctab[4];
void nax_arq_kernel_dRemainderI_Z0HAynn(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dRemainderI_ttab[3];
extern float nax_arq_kernel_dRemainderI_ctab[4];

void nax_arq_kernel_sLinearFrac_EXHAynn(int32_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r);
extern nax_kernel nax_arq_kernel_sLinearFrac_ttab[3];
extern float nax_arq_kernel_sLinearFrac_ctab[4];
void nax_arq_kernel_sLinearFracI_EXHAynn(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float scalea, float shifta, float scaleb, float shiftb, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sLinearFracI_ttab[3];
extern float nax_arq_kernel_sLinearFracI_ctab[4];
void nax_arq_kernel_dLinearFrac_EXHAynn(int32_t n, const double* a, const double* b, double scalea, double shifta, double scaleb, double shiftb, double* r);
extern nax_kernel nax_arq_kernel_dLinearFrac_ttab[3];
extern float nax_arq_kernel_dLinearFrac_ctab[4];
void nax_arq_kernel_dLinearFracI_EXHAynn(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double scalea, double shifta, double scaleb, double shiftb, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dLinearFracI_ttab[3];
extern float nax_arq_kernel_dLinearFracI_ctab[4];

void nax_arq_kernel_sPackI_Z0HAynn(int64_t n, const float* a, int64_t inca, float* y, int32_t flag);
extern nax_kernel nax_arq_kernel_sPackI_ttab[3];
extern float nax_arq_kernel_sPackI_ctab[4];
void nax_arq_kernel_dPackI_Z0HAynn(int64_t n, const double* a, int64_t inca, double* y, int32_t flag);
extern nax_kernel nax_arq_kernel_dPackI_ttab[3];
extern float nax_arq_kernel_dPackI_ctab[4];
void nax_arq_kernel_cPackI_Z0HAynn(int64_t n, const nax_complex_s* a, int64_t inca, nax_complex_s* y, int32_t flag);
extern nax_kernel nax_arq_kernel_cPackI_ttab[3];
extern float nax_arq_kernel_cPackI_ctab[4];
void nax_arq_kernel_zPackI_Z0HAynn(int64_t n, const nax_complex_z* a, int64_t inca, nax_complex_z* y, int32_t flag);
extern nax_kernel nax_arq_kernel_zPackI_ttab[3];
extern float nax_arq_kernel_zPackI_ctab[4];

void nax_arq_kernel_sPackV_Z0HAynn(int64_t n, const float* a, const void* ia, float* y, int32_t flag);
extern nax_kernel nax_arq_kernel_sPackV_ttab[3];
extern float nax_arq_kernel_sPackV_ctab[4];
void nax_arq_kernel_dPackV_Z0HAynn(int64_t n, const double* a, const void* ia, double* y, int32_t flag);
extern nax_kernel nax_arq_kernel_dPackV_ttab[3];
extern float nax_arq_kernel_dPackV_ctab[4];
void nax_arq_kernel_cPackV_Z0HAynn(int64_t n, const nax_complex_s* a, const void* ia, nax_complex_s* y, int32_t flag);
extern nax_kernel nax_arq_kernel_cPackV_ttab[3];
extern float nax_arq_kernel_cPackV_ctab[4];
void nax_arq_kernel_zPackV_Z0HAynn(int64_t n, const nax_complex_z* a, const void* ia, nax_complex_z* y, int32_t flag);
extern nax_kernel nax_arq_kernel_zPackV_ttab[3];
extern float nax_arq_kernel_zPackV_ctab[4];

void nax_arq_kernel_sPackM_Z0HAynn(int64_t n, const float* a, const void* ma, float* y, int32_t flag);
extern nax_kernel nax_arq_kernel_sPackM_ttab[3];
extern float nax_arq_kernel_sPackM_ctab[4];
void nax_arq_kernel_dPackM_Z0HAynn(int64_t n, const double* a, const void* ma, double* y, int32_t flag);
extern nax_kernel nax_arq_kernel_dPackM_ttab[3];
extern float nax_arq_kernel_dPackM_ctab[4];
void nax_arq_kernel_cPackM_Z0HAynn(int64_t n, const nax_complex_s* a, const void* ma, nax_complex_s* y, int32_t flag);
extern nax_kernel nax_arq_kernel_cPackM_ttab[3];
extern float nax_arq_kernel_cPackM_ctab[4];
void nax_arq_kernel_zPackM_Z0HAynn(int64_t n, const nax_complex_z* a, const void* ma, nax_complex_z* y, int32_t flag);
extern nax_kernel nax_arq_kernel_zPackM_ttab[3];
extern float nax_arq_kernel_zPackM_ctab[4];

void nax_arq_kernel_sUnpackI_Z0HAynn(int64_t n, const float* a, float* y, int64_t incy, int32_t flag);
extern nax_kernel nax_arq_kernel_sUnpackI_ttab[3];
extern float nax_arq_kernel_sUnpackI_ctab[4];
void nax_arq_kernel_dUnpackI_Z0HAynn(int64_t n, const double* a, double* y, int64_t incy, int32_t flag);
extern nax_kernel nax_arq_kernel_dUnpackI_ttab[3];
extern float nax_arq_kernel_dUnpackI_ctab[4];
void nax_arq_kernel_cUnpackI_Z0HAynn(int64_t n, const nax_complex_s* a, nax_complex_s* y, int64_t incy, int32_t flag);
extern nax_kernel nax_arq_kernel_cUnpackI_ttab[3];
extern float nax_arq_kernel_cUnpackI_ctab[4];
void nax_arq_kernel_zUnpackI_Z0HAynn(int64_t n, const nax_complex_z* a, nax_complex_z* y, int64_t incy, int32_t flag);
extern nax_kernel nax_arq_kernel_zUnpackI_ttab[3];
extern float nax_arq_kernel_zUnpackI_ctab[4];

void nax_arq_kernel_sUnpackV_Z0HAynn(int64_t n, const float* a, float* y, const void* iy, int32_t flag);
extern nax_kernel nax_arq_kernel_sUnpackV_ttab[3];
extern float nax_arq_kernel_sUnpackV_ctab[4];
void nax_arq_kernel_dUnpackV_Z0HAynn(int64_t n, const double* a, double* y, const void* iy, int32_t flag);
extern nax_kernel nax_arq_kernel_dUnpackV_ttab[3];
extern float nax_arq_kernel_dUnpackV_ctab[4];
void nax_arq_kernel_cUnpackV_Z0HAynn(int64_t n, const nax_complex_s* a, nax_complex_s* y, const void* iy, int32_t flag);
extern nax_kernel nax_arq_kernel_cUnpackV_ttab[3];
extern float nax_arq_kernel_cUnpackV_ctab[4];
void nax_arq_kernel_zUnpackV_Z0HAynn(int64_t n, const nax_complex_z* a, nax_complex_z* y, const void* iy, int32_t flag);
extern nax_kernel nax_arq_kernel_zUnpackV_ttab[3];
extern float nax_arq_kernel_zUnpackV_ctab[4];

void nax_arq_kernel_sUnpackM_Z0HAynn(int64_t n, const float* a, float* y, const void* my, int32_t flag);
extern nax_kernel nax_arq_kernel_sUnpackM_ttab[3];
extern float nax_arq_kernel_sUnpackM_ctab[4];
void nax_arq_kernel_dUnpackM_Z0HAynn(int64_t n, const double* a, double* y, const void* my, int32_t flag);
extern nax_kernel nax_arq_kernel_dUnpackM_ttab[3];
extern float nax_arq_kernel_dUnpackM_ctab[4];
void nax_arq_kernel_cUnpackM_Z0HAynn(int64_t n, const nax_complex_s* a, nax_complex_s* y, const void* my, int32_t flag);
extern nax_kernel nax_arq_kernel_cUnpackM_ttab[3];
extern float nax_arq_kernel_cUnpackM_ctab[4];
void nax_arq_kernel_zUnpackM_Z0HAynn(int64_t n, const nax_complex_z* a, nax_complex_z* y, const void* my, int32_t flag);
extern nax_kernel nax_arq_kernel_zUnpackM_ttab[3];
extern float nax_arq_kernel_zUnpackM_ctab[4];

void nax_arq_kernel_sExp_Z0LAynn(int32_t n, const float* a, float* r);
void nax_arq_kernel_sExp_Z0HAynn(int32_t n, const float* a, float* r);
void nax_arq_kernel_sExp_Z0EPnnn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sExp_ttab[3];
extern float nax_arq_kernel_sExp_ctab[4];
void nax_arq_kernel_sExpI_Z0LAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void nax_arq_kernel_sExpI_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void nax_arq_kernel_sExpI_Z0EPnnn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sExpI_ttab[3];
extern float nax_arq_kernel_sExpI_ctab[4];
void nax_arq_kernel_dExp_Z0LAynn(int32_t n, const double* a, double* r);
void nax_arq_kernel_dExp_Z0HAynn(int32_t n, const double* a, double* r);
void nax_arq_kernel_dExp_Z0EPnnn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dExp_ttab[3];
extern float nax_arq_kernel_dExp_ctab[4];
void nax_arq_kernel_dExpI_Z0LAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void nax_arq_kernel_dExpI_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void nax_arq_kernel_dExpI_Z0EPnnn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dExpI_ttab[3];
extern float nax_arq_kernel_dExpI_ctab[4];

void nax_arq_kernel_sExp2_Z0HAynn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sExp2_ttab[3];
extern float nax_arq_kernel_sExp2_ctab[4];
void nax_arq_kernel_sExp2I_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sExp2I_ttab[3];
extern float nax_arq_kernel_sExp2I_ctab[4];
void nax_arq_kernel_dExp2_Z0HAynn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dExp2_ttab[3];
extern float nax_arq_kernel_dExp2_ctab[4];
void nax_arq_kernel_dExp2I_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dExp2I_ttab[3];
extern float nax_arq_kernel_dExp2I_ctab[4];

void nax_arq_kernel_sExp10_Z0HAynn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sExp10_ttab[3];
extern float nax_arq_kernel_sExp10_ctab[4];
void nax_arq_kernel_sExp10I_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sExp10I_ttab[3];
extern float nax_arq_kernel_sExp10I_ctab[4];
void nax_arq_kernel_dExp10_Z0HAynn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dExp10_ttab[3];
extern float nax_arq_kernel_dExp10_ctab[4];
void nax_arq_kernel_dExp10I_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dExp10I_ttab[3];
extern float nax_arq_kernel_dExp10I_ctab[4];

void nax_arq_kernel_sExpm1_Z0LAynn(int32_t n, const float* a, float* r);
void nax_arq_kernel_sExpm1_Z0HAynn(int32_t n, const float* a, float* r);
void nax_arq_kernel_sExpm1_Z0EPnnn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sExpm1_ttab[3];
extern float nax_arq_kernel_sExpm1_ctab[4];
void nax_arq_kernel_sExpm1I_Z0LAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void nax_arq_kernel_sExpm1I_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void nax_arq_kernel_sExpm1I_Z0EPnnn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sExpm1I_ttab[3];
extern float nax_arq_kernel_sExpm1I_ctab[4];
void nax_arq_kernel_dExpm1_Z0LAynn(int32_t n, const double* a, double* r);
void nax_arq_kernel_dExpm1_Z0HAynn(int32_t n, const double* a, double* r);
void nax_arq_kernel_dExpm1_Z0EPnnn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dExpm1_ttab[3];
extern float nax_arq_kernel_dExpm1_ctab[4];
void nax_arq_kernel_dExpm1I_Z0LAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void nax_arq_kernel_dExpm1I_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void nax_arq_kernel_dExpm1I_Z0EPnnn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dExpm1I_ttab[3];
extern float nax_arq_kernel_dExpm1I_ctab[4];

void nax_arq_kernel_sLn_Z0LAynn(int32_t n, const float* a, float* r);
void nax_arq_kernel_sLn_Z0HAynn(int32_t n, const float* a, float* r);
void nax_arq_kernel_sLn_Z0EPnnn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sLn_ttab[3];
extern float nax_arq_kernel_sLn_ctab[4];
void nax_arq_kernel_sLnI_Z0LAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void nax_arq_kernel_sLnI_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void nax_arq_kernel_sLnI_Z0EPnnn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sLnI_ttab[3];
extern float nax_arq_kernel_sLnI_ctab[4];
void nax_arq_kernel_dLn_Z0LAynn(int32_t n, const double* a, double* r);
void nax_arq_kernel_dLn_Z0HAynn(int32_t n, const double* a, double* r);
void nax_arq_kernel_dLn_Z0EPnnn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dLn_ttab[3];
extern float nax_arq_kernel_dLn_ctab[4];
void nax_arq_kernel_dLnI_Z0LAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void nax_arq_kernel_dLnI_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void nax_arq_kernel_dLnI_Z0EPnnn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dLnI_ttab[3];
extern float nax_arq_kernel_dLnI_ctab[4];

void nax_arq_kernel_sLog2_Z0LAynn(int32_t n, const float* a, float* r);
void nax_arq_kernel_sLog2_Z0HAynn(int32_t n, const float* a, float* r);
void nax_arq_kernel_sLog2_Z0EPnnn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sLog2_ttab[3];
extern float nax_arq_kernel_sLog2_ctab[4];
void nax_arq_kernel_sLog2I_Z0LAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void nax_arq_kernel_sLog2I_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void nax_arq_kernel_sLog2I_Z0EPnnn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sLog2I_ttab[3];
extern float nax_arq_kernel_sLog2I_ctab[4];
void nax_arq_kernel_dLog2_Z0LAynn(int32_t n, const double* a, double* r);
void nax_arq_kernel_dLog2_Z0HAynn(int32_t n, const double* a, double* r);
void nax_arq_kernel_dLog2_Z0EPnnn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dLog2_ttab[3];
extern float nax_arq_kernel_dLog2_ctab[4];
void nax_arq_kernel_dLog2I_Z0LAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void nax_arq_kernel_dLog2I_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void nax_arq_kernel_dLog2I_Z0EPnnn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dLog2I_ttab[3];
extern float nax_arq_kernel_dLog2I_ctab[4];

void nax_arq_kernel_sLog10_Z0LAynn(int32_t n, const float* a, float* r);
void nax_arq_kernel_sLog10_Z0HAynn(int32_t n, const float* a, float* r);
void nax_arq_kernel_sLog10_Z0EPnnn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sLog10_ttab[3];
extern float nax_arq_kernel_sLog10_ctab[4];
void nax_arq_kernel_sLog10I_Z0LAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void nax_arq_kernel_sLog10I_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void nax_arq_kernel_sLog10I_Z0EPnnn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sLog10I_ttab[3];
extern float nax_arq_kernel_sLog10I_ctab[4];
void nax_arq_kernel_dLog10_Z0LAynn(int32_t n, const double* a, double* r);
void nax_arq_kernel_dLog10_Z0HAynn(int32_t n, const double* a, double* r);
void nax_arq_kernel_dLog10_Z0EPnnn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dLog10_ttab[3];
extern float nax_arq_kernel_dLog10_ctab[4];
void nax_arq_kernel_dLog10I_Z0LAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void nax_arq_kernel_dLog10I_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void nax_arq_kernel_dLog10I_Z0EPnnn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dLog10I_ttab[3];
extern float nax_arq_kernel_dLog10I_ctab[4];

void nax_arq_kernel_sLog1p_Z0LAynn(int32_t n, const float* a, float* r);
void nax_arq_kernel_sLog1p_Z0HAynn(int32_t n, const float* a, float* r);
void nax_arq_kernel_sLog1p_Z0EPnnn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sLog1p_ttab[3];
extern float nax_arq_kernel_sLog1p_ctab[4];
void nax_arq_kernel_sLog1pI_Z0LAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void nax_arq_kernel_sLog1pI_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void nax_arq_kernel_sLog1pI_Z0EPnnn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sLog1pI_ttab[3];
extern float nax_arq_kernel_sLog1pI_ctab[4];
void nax_arq_kernel_dLog1p_Z0LAynn(int32_t n, const double* a, double* r);
void nax_arq_kernel_dLog1p_Z0HAynn(int32_t n, const double* a, double* r);
void nax_arq_kernel_dLog1p_Z0EPnnn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dLog1p_ttab[3];
extern float nax_arq_kernel_dLog1p_ctab[4];
void nax_arq_kernel_dLog1pI_Z0LAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void nax_arq_kernel_dLog1pI_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void nax_arq_kernel_dLog1pI_Z0EPnnn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dLog1pI_ttab[3];
extern float nax_arq_kernel_dLog1pI_ctab[4];

void nax_arq_kernel_sLogb_Z0HAynn(int32_t n, const float* a, float* r);
extern nax_kernel nax_arq_kernel_sLogb_ttab[3];
extern float nax_arq_kernel_sLogb_ctab[4];
void nax_arq_kernel_sLogbI_Z0HAynn(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern nax_kernel nax_arq_kernel_sLogbI_ttab[3];
extern float nax_arq_kernel_sLogbI_ctab[4];
void nax_arq_kernel_dLogb_Z0HAynn(int32_t n, const double* a, double* r);
extern nax_kernel nax_arq_kernel_dLogb_ttab[3];
extern float nax_arq_kernel_dLogb_ctab[4];
void nax_arq_kernel_dLogbI_Z0HAynn(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern nax_kernel nax_arq_kernel_dLogbI_ttab[3];
extern float nax_arq_kernel_dLogbI_ctab[4];

#ifdef __cplusplus
}
#endif
#endif
