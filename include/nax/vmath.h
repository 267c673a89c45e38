/* Vector mathematics: element-wise functions of arrays. Generated from the list of records; don't edit.
 *
 * Names: _arq, a type letter, the function, I for the strided form, and a suffix for the accuracy.
 *   type       s float, d double, c and z pairs of them, real part first
 *   suffix     none or _HA    high accuracy, below one unit in the last place
 *              _21 or _50     lower accuracy: about 21 bits (s, c) or 50 bits (d, z)
 *              _11 or _26     enhanced performance: about 11 bits (s, c) or 26 bits (d, z)
 *              docs/accuracy.md has the bound and the measured error of each. Where a function has one kernel for
 *              several levels, their results agree bit for bit. The mode word does not choose: a caller who wants
 *              that takes entry nax_arq_kernel_GetTTableIndex() of the function's table (nax/vmath_kernels.h).
 * Arguments: n, the number of elements; input vectors a, b; result vectors r, or r1 and r2. In the strided form each
 *   vector is followed by its stride, counted in elements (pairs for complex types): element i is a[i inca]. A stride
 *   may be negative or, for inputs, zero. n of 0 or less does nothing. A result vector may be the same as an input
 *   vector (same start, same stride); no other overlap is allowed. Pointers and n are not checked.
 * Results: each is a function of its own element's arguments alone, bit for bit, whatever n, position, stride or
 *   alignment. NaN arguments give NaN and no status unless the function's line says otherwise. Denormals count as zero
 *   if the mode word says so (nax/mode.h).
 * Statuses: an element with a status is reported as nax/error.h tells and does not stop the call: 1 outside the domain,
 *   2 pole, 3 overflow, 4 underflow.
 * Cost: linear in n. Runs on the calling thread; any number of threads may call. */
#ifndef NAX_VMATH_H
#define NAX_VMATH_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct nax_complex_s { float real, imag; } nax_complex_s;
typedef struct nax_complex_z { double real, imag; } nax_complex_z;

/* Add: r = a + b, rounded to nearest.
 * Special values: as IEEE 754 addition. Statuses: none. */
void _arqsAdd(int32_t n, const float* a, const float* b, float* r);
void _arqsAdd_HA(int32_t n, const float* a, const float* b, float* r);
void _arqsAdd_21(int32_t n, const float* a, const float* b, float* r);
void _arqsAdd_11(int32_t n, const float* a, const float* b, float* r);
void _arqsAddI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsAddI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsAddI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsAddI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqdAdd(int32_t n, const double* a, const double* b, double* r);
void _arqdAdd_HA(int32_t n, const double* a, const double* b, double* r);
void _arqdAdd_50(int32_t n, const double* a, const double* b, double* r);
void _arqdAdd_26(int32_t n, const double* a, const double* b, double* r);
void _arqdAddI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdAddI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdAddI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdAddI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);

/* Sub: r = a - b, rounded to nearest.
 * Special values: as IEEE 754 subtraction. Statuses: none. */
void _arqsSub(int32_t n, const float* a, const float* b, float* r);
void _arqsSub_HA(int32_t n, const float* a, const float* b, float* r);
void _arqsSub_21(int32_t n, const float* a, const float* b, float* r);
void _arqsSub_11(int32_t n, const float* a, const float* b, float* r);
void _arqsSubI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsSubI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsSubI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsSubI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqdSub(int32_t n, const double* a, const double* b, double* r);
void _arqdSub_HA(int32_t n, const double* a, const double* b, double* r);
void _arqdSub_50(int32_t n, const double* a, const double* b, double* r);
void _arqdSub_26(int32_t n, const double* a, const double* b, double* r);
void _arqdSubI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdSubI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdSubI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdSubI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);

/* Mul: r = a b, rounded to nearest.
 * Special values: as IEEE 754 multiplication. Statuses: none. */
void _arqsMul(int32_t n, const float* a, const float* b, float* r);
void _arqsMul_HA(int32_t n, const float* a, const float* b, float* r);
void _arqsMul_21(int32_t n, const float* a, const float* b, float* r);
void _arqsMul_11(int32_t n, const float* a, const float* b, float* r);
void _arqsMulI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsMulI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsMulI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsMulI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqdMul(int32_t n, const double* a, const double* b, double* r);
void _arqdMul_HA(int32_t n, const double* a, const double* b, double* r);
void _arqdMul_50(int32_t n, const double* a, const double* b, double* r);
void _arqdMul_26(int32_t n, const double* a, const double* b, double* r);
void _arqdMulI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdMulI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdMulI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdMulI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);

/* Sqr: r = a a, rounded to nearest.
 * Special values: Inf for +-Inf. Statuses: none. */
void _arqsSqr(int32_t n, const float* a, float* r);
void _arqsSqr_HA(int32_t n, const float* a, float* r);
void _arqsSqr_21(int32_t n, const float* a, float* r);
void _arqsSqr_11(int32_t n, const float* a, float* r);
void _arqsSqrI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsSqrI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsSqrI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsSqrI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdSqr(int32_t n, const double* a, double* r);
void _arqdSqr_HA(int32_t n, const double* a, double* r);
void _arqdSqr_50(int32_t n, const double* a, double* r);
void _arqdSqr_26(int32_t n, const double* a, double* r);
void _arqdSqrI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdSqrI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdSqrI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdSqrI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Abs: r = |a|.
 * Special values: +0 for -0; a signalling NaN becomes quiet. Statuses: none. */
void _arqsAbs(int32_t n, const float* a, float* r);
void _arqsAbs_HA(int32_t n, const float* a, float* r);
void _arqsAbs_21(int32_t n, const float* a, float* r);
void _arqsAbs_11(int32_t n, const float* a, float* r);
void _arqsAbsI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsAbsI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsAbsI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsAbsI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdAbs(int32_t n, const double* a, double* r);
void _arqdAbs_HA(int32_t n, const double* a, double* r);
void _arqdAbs_50(int32_t n, const double* a, double* r);
void _arqdAbs_26(int32_t n, const double* a, double* r);
void _arqdAbsI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdAbsI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdAbsI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdAbsI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Ceil: r = the smallest integer not below a.
 * Special values: -0 for -1 < a <= -0; +-Inf stays. Statuses: none. */
void _arqsCeil(int32_t n, const float* a, float* r);
void _arqsCeil_HA(int32_t n, const float* a, float* r);
void _arqsCeil_21(int32_t n, const float* a, float* r);
void _arqsCeil_11(int32_t n, const float* a, float* r);
void _arqsCeilI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsCeilI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsCeilI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsCeilI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdCeil(int32_t n, const double* a, double* r);
void _arqdCeil_HA(int32_t n, const double* a, double* r);
void _arqdCeil_50(int32_t n, const double* a, double* r);
void _arqdCeil_26(int32_t n, const double* a, double* r);
void _arqdCeilI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdCeilI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdCeilI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdCeilI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Floor: r = the largest integer not above a.
 * Special values: -0 stays; +-Inf stays. Statuses: none. */
void _arqsFloor(int32_t n, const float* a, float* r);
void _arqsFloor_HA(int32_t n, const float* a, float* r);
void _arqsFloor_21(int32_t n, const float* a, float* r);
void _arqsFloor_11(int32_t n, const float* a, float* r);
void _arqsFloorI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsFloorI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsFloorI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsFloorI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdFloor(int32_t n, const double* a, double* r);
void _arqdFloor_HA(int32_t n, const double* a, double* r);
void _arqdFloor_50(int32_t n, const double* a, double* r);
void _arqdFloor_26(int32_t n, const double* a, double* r);
void _arqdFloorI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdFloorI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdFloorI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdFloorI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Trunc: r = a without its fraction.
 * Special values: a zero has the sign of a; +-Inf stays. Statuses: none. */
void _arqsTrunc(int32_t n, const float* a, float* r);
void _arqsTrunc_HA(int32_t n, const float* a, float* r);
void _arqsTrunc_21(int32_t n, const float* a, float* r);
void _arqsTrunc_11(int32_t n, const float* a, float* r);
void _arqsTruncI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsTruncI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsTruncI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsTruncI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdTrunc(int32_t n, const double* a, double* r);
void _arqdTrunc_HA(int32_t n, const double* a, double* r);
void _arqdTrunc_50(int32_t n, const double* a, double* r);
void _arqdTrunc_26(int32_t n, const double* a, double* r);
void _arqdTruncI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdTruncI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdTruncI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdTruncI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Rint: r = a rounded to the nearest integer, ties to even.
 * Special values: a zero has the sign of a; +-Inf stays. Statuses: none. */
void _arqsRint(int32_t n, const float* a, float* r);
void _arqsRint_HA(int32_t n, const float* a, float* r);
void _arqsRint_21(int32_t n, const float* a, float* r);
void _arqsRint_11(int32_t n, const float* a, float* r);
void _arqsRintI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsRintI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsRintI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsRintI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdRint(int32_t n, const double* a, double* r);
void _arqdRint_HA(int32_t n, const double* a, double* r);
void _arqdRint_50(int32_t n, const double* a, double* r);
void _arqdRint_26(int32_t n, const double* a, double* r);
void _arqdRintI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdRintI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdRintI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdRintI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* NearbyInt: r = a rounded to the nearest integer, ties to even.
 * Special values: a zero has the sign of a; +-Inf stays. Statuses: none. */
void _arqsNearbyInt(int32_t n, const float* a, float* r);
void _arqsNearbyInt_HA(int32_t n, const float* a, float* r);
void _arqsNearbyInt_21(int32_t n, const float* a, float* r);
void _arqsNearbyInt_11(int32_t n, const float* a, float* r);
void _arqsNearbyIntI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsNearbyIntI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsNearbyIntI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsNearbyIntI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdNearbyInt(int32_t n, const double* a, double* r);
void _arqdNearbyInt_HA(int32_t n, const double* a, double* r);
void _arqdNearbyInt_50(int32_t n, const double* a, double* r);
void _arqdNearbyInt_26(int32_t n, const double* a, double* r);
void _arqdNearbyIntI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdNearbyIntI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdNearbyIntI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdNearbyIntI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Round: r = a rounded to the nearest integer, ties away from zero.
 * Special values: a zero has the sign of a; +-Inf stays. Statuses: none. */
void _arqsRound(int32_t n, const float* a, float* r);
void _arqsRound_HA(int32_t n, const float* a, float* r);
void _arqsRound_21(int32_t n, const float* a, float* r);
void _arqsRound_11(int32_t n, const float* a, float* r);
void _arqsRoundI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsRoundI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsRoundI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsRoundI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdRound(int32_t n, const double* a, double* r);
void _arqdRound_HA(int32_t n, const double* a, double* r);
void _arqdRound_50(int32_t n, const double* a, double* r);
void _arqdRound_26(int32_t n, const double* a, double* r);
void _arqdRoundI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdRoundI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdRoundI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdRoundI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Frac: r = a - trunc(a), with the sign of a.
 * Special values: +0 for integers; +0 for +Inf, -0 for -Inf. Statuses: none. */
void _arqsFrac(int32_t n, const float* a, float* r);
void _arqsFrac_HA(int32_t n, const float* a, float* r);
void _arqsFrac_21(int32_t n, const float* a, float* r);
void _arqsFrac_11(int32_t n, const float* a, float* r);
void _arqsFracI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsFracI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsFracI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsFracI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdFrac(int32_t n, const double* a, double* r);
void _arqdFrac_HA(int32_t n, const double* a, double* r);
void _arqdFrac_50(int32_t n, const double* a, double* r);
void _arqdFrac_26(int32_t n, const double* a, double* r);
void _arqdFracI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdFracI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdFracI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdFracI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Modf: r1 = trunc(a), r2 = a - r1.
 * Special values: r2 is +0 for integers; +-Inf gives +-Inf and +-0. Statuses: none. */
void _arqsModf(int32_t n, const float* a, float* r1, float* r2);
void _arqsModf_HA(int32_t n, const float* a, float* r1, float* r2);
void _arqsModf_21(int32_t n, const float* a, float* r1, float* r2);
void _arqsModf_11(int32_t n, const float* a, float* r1, float* r2);
void _arqsModfI(int32_t n, const float* a, int32_t inca, float* r1, int32_t incr1, float* r2, int32_t incr2);
void _arqsModfI_HA(int32_t n, const float* a, int32_t inca, float* r1, int32_t incr1, float* r2, int32_t incr2);
void _arqsModfI_21(int32_t n, const float* a, int32_t inca, float* r1, int32_t incr1, float* r2, int32_t incr2);
void _arqsModfI_11(int32_t n, const float* a, int32_t inca, float* r1, int32_t incr1, float* r2, int32_t incr2);
void _arqdModf(int32_t n, const double* a, double* r1, double* r2);
void _arqdModf_HA(int32_t n, const double* a, double* r1, double* r2);
void _arqdModf_50(int32_t n, const double* a, double* r1, double* r2);
void _arqdModf_26(int32_t n, const double* a, double* r1, double* r2);
void _arqdModfI(int32_t n, const double* a, int32_t inca, double* r1, int32_t incr1, double* r2, int32_t incr2);
void _arqdModfI_HA(int32_t n, const double* a, int32_t inca, double* r1, int32_t incr1, double* r2, int32_t incr2);
void _arqdModfI_50(int32_t n, const double* a, int32_t inca, double* r1, int32_t incr1, double* r2, int32_t incr2);
void _arqdModfI_26(int32_t n, const double* a, int32_t inca, double* r1, int32_t incr1, double* r2, int32_t incr2);

/* CopySign: r = |a| with the sign of b.
 * Special values: bits of NaN and denormals pass unchanged. Statuses: none. */
void _arqsCopySign(int32_t n, const float* a, const float* b, float* r);
void _arqsCopySign_HA(int32_t n, const float* a, const float* b, float* r);
void _arqsCopySign_21(int32_t n, const float* a, const float* b, float* r);
void _arqsCopySign_11(int32_t n, const float* a, const float* b, float* r);
void _arqsCopySignI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsCopySignI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsCopySignI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsCopySignI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqdCopySign(int32_t n, const double* a, const double* b, double* r);
void _arqdCopySign_HA(int32_t n, const double* a, const double* b, double* r);
void _arqdCopySign_50(int32_t n, const double* a, const double* b, double* r);
void _arqdCopySign_26(int32_t n, const double* a, const double* b, double* r);
void _arqdCopySignI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdCopySignI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdCopySignI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdCopySignI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);

/* NextAfter: r = the number next to a on the way to b.
 * Special values: b where a equals b; NaN if either is NaN. Statuses: 3 where r is infinite, 4 where r is zero or
 *   denormal, except where a equals b. */
void _arqsNextAfter(int32_t n, const float* a, const float* b, float* r);
void _arqsNextAfter_HA(int32_t n, const float* a, const float* b, float* r);
void _arqsNextAfter_21(int32_t n, const float* a, const float* b, float* r);
void _arqsNextAfter_11(int32_t n, const float* a, const float* b, float* r);
void _arqsNextAfterI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsNextAfterI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsNextAfterI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsNextAfterI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqdNextAfter(int32_t n, const double* a, const double* b, double* r);
void _arqdNextAfter_HA(int32_t n, const double* a, const double* b, double* r);
void _arqdNextAfter_50(int32_t n, const double* a, const double* b, double* r);
void _arqdNextAfter_26(int32_t n, const double* a, const double* b, double* r);
void _arqdNextAfterI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdNextAfterI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdNextAfterI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdNextAfterI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);

/* Fdim: r = a - b where a > b, else +0.
 * Special values: NaN if either is NaN. Statuses: none. */
void _arqsFdim(int32_t n, const float* a, const float* b, float* r);
void _arqsFdim_HA(int32_t n, const float* a, const float* b, float* r);
void _arqsFdim_21(int32_t n, const float* a, const float* b, float* r);
void _arqsFdim_11(int32_t n, const float* a, const float* b, float* r);
void _arqsFdimI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsFdimI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsFdimI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsFdimI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqdFdim(int32_t n, const double* a, const double* b, double* r);
void _arqdFdim_HA(int32_t n, const double* a, const double* b, double* r);
void _arqdFdim_50(int32_t n, const double* a, const double* b, double* r);
void _arqdFdim_26(int32_t n, const double* a, const double* b, double* r);
void _arqdFdimI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdFdimI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdFdimI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdFdimI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);

/* Fmax: r = the larger of a and b.
 * Special values: a single NaN is ignored; of two zeros b. Statuses: none. */
void _arqsFmax(int32_t n, const float* a, const float* b, float* r);
void _arqsFmax_HA(int32_t n, const float* a, const float* b, float* r);
void _arqsFmax_21(int32_t n, const float* a, const float* b, float* r);
void _arqsFmax_11(int32_t n, const float* a, const float* b, float* r);
void _arqsFmaxI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsFmaxI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsFmaxI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsFmaxI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqdFmax(int32_t n, const double* a, const double* b, double* r);
void _arqdFmax_HA(int32_t n, const double* a, const double* b, double* r);
void _arqdFmax_50(int32_t n, const double* a, const double* b, double* r);
void _arqdFmax_26(int32_t n, const double* a, const double* b, double* r);
void _arqdFmaxI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdFmaxI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdFmaxI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdFmaxI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);

/* Fmin: r = the smaller of a and b.
 * Special values: a single NaN is ignored; of two zeros b. Statuses: none. */
void _arqsFmin(int32_t n, const float* a, const float* b, float* r);
void _arqsFmin_HA(int32_t n, const float* a, const float* b, float* r);
void _arqsFmin_21(int32_t n, const float* a, const float* b, float* r);
void _arqsFmin_11(int32_t n, const float* a, const float* b, float* r);
void _arqsFminI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsFminI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsFminI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsFminI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqdFmin(int32_t n, const double* a, const double* b, double* r);
void _arqdFmin_HA(int32_t n, const double* a, const double* b, double* r);
void _arqdFmin_50(int32_t n, const double* a, const double* b, double* r);
void _arqdFmin_26(int32_t n, const double* a, const double* b, double* r);
void _arqdFminI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdFminI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdFminI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdFminI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);

/* MaxMag: r = the argument of larger magnitude, the larger one if the magnitudes agree.
 * Special values: a single NaN is ignored. Statuses: none. */
void _arqsMaxMag(int32_t n, const float* a, const float* b, float* r);
void _arqsMaxMag_HA(int32_t n, const float* a, const float* b, float* r);
void _arqsMaxMag_21(int32_t n, const float* a, const float* b, float* r);
void _arqsMaxMag_11(int32_t n, const float* a, const float* b, float* r);
void _arqsMaxMagI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsMaxMagI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsMaxMagI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsMaxMagI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqdMaxMag(int32_t n, const double* a, const double* b, double* r);
void _arqdMaxMag_HA(int32_t n, const double* a, const double* b, double* r);
void _arqdMaxMag_50(int32_t n, const double* a, const double* b, double* r);
void _arqdMaxMag_26(int32_t n, const double* a, const double* b, double* r);
void _arqdMaxMagI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdMaxMagI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdMaxMagI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdMaxMagI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);

/* MinMag: r = the argument of smaller magnitude, the smaller one if the magnitudes agree.
 * Special values: a single NaN is ignored. Statuses: none. */
void _arqsMinMag(int32_t n, const float* a, const float* b, float* r);
void _arqsMinMag_HA(int32_t n, const float* a, const float* b, float* r);
void _arqsMinMag_21(int32_t n, const float* a, const float* b, float* r);
void _arqsMinMag_11(int32_t n, const float* a, const float* b, float* r);
void _arqsMinMagI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsMinMagI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsMinMagI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsMinMagI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqdMinMag(int32_t n, const double* a, const double* b, double* r);
void _arqdMinMag_HA(int32_t n, const double* a, const double* b, double* r);
void _arqdMinMag_50(int32_t n, const double* a, const double* b, double* r);
void _arqdMinMag_26(int32_t n, const double* a, const double* b, double* r);
void _arqdMinMagI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdMinMagI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdMinMagI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdMinMagI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);

/* Fmod: r = a - n b, n = a/b without its fraction; exact, with the sign of a.
 * Special values: a for infinite b; NaN for zero b, infinite a or NaN. Statuses: 2 for b = 0 and for infinite a. */
void _arqsFmod(int32_t n, const float* a, const float* b, float* r);
void _arqsFmod_HA(int32_t n, const float* a, const float* b, float* r);
void _arqsFmod_21(int32_t n, const float* a, const float* b, float* r);
void _arqsFmod_11(int32_t n, const float* a, const float* b, float* r);
void _arqsFmodI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsFmodI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsFmodI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsFmodI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqdFmod(int32_t n, const double* a, const double* b, double* r);
void _arqdFmod_HA(int32_t n, const double* a, const double* b, double* r);
void _arqdFmod_50(int32_t n, const double* a, const double* b, double* r);
void _arqdFmod_26(int32_t n, const double* a, const double* b, double* r);
void _arqdFmodI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdFmodI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdFmodI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdFmodI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);

/* Remainder: r = a - n b, n = the integer nearest to a/b, ties to even; exact, |r| <= |b|/2.
 * Special values: a zero has the sign of a; a for infinite b; NaN for zero b, infinite a or NaN. Statuses: 1 for b
 *   = 0. */
void _arqsRemainder(int32_t n, const float* a, const float* b, float* r);
void _arqsRemainder_HA(int32_t n, const float* a, const float* b, float* r);
void _arqsRemainder_21(int32_t n, const float* a, const float* b, float* r);
void _arqsRemainder_11(int32_t n, const float* a, const float* b, float* r);
void _arqsRemainderI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsRemainderI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsRemainderI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqsRemainderI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void _arqdRemainder(int32_t n, const double* a, const double* b, double* r);
void _arqdRemainder_HA(int32_t n, const double* a, const double* b, double* r);
void _arqdRemainder_50(int32_t n, const double* a, const double* b, double* r);
void _arqdRemainder_26(int32_t n, const double* a, const double* b, double* r);
void _arqdRemainderI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdRemainderI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdRemainderI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void _arqdRemainderI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);

/* LinearFrac: r = (scalea a + shifta) / (scaleb b + shiftb), in single precision with one Newton step for the
 *   reciprocal.
 * Special values: a zero denominator gives what the reciprocal gives; b is not used where scaleb is 0, nor a where
 *   scalea is 0. Statuses: none. */
void _arqsLinearFrac(int32_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r);
void _arqsLinearFrac_HA(int32_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r);
void _arqsLinearFrac_21(int32_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r);
void _arqsLinearFrac_11(int32_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r);
void _arqsLinearFracI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float scalea, float shifta, float scaleb, float shiftb, float* r, int32_t incr);
void _arqsLinearFracI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float scalea, float shifta, float scaleb, float shiftb, float* r, int32_t incr);
void _arqsLinearFracI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float scalea, float shifta, float scaleb, float shiftb, float* r, int32_t incr);
void _arqsLinearFracI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float scalea, float shifta, float scaleb, float shiftb, float* r, int32_t incr);
void _arqdLinearFrac(int32_t n, const double* a, const double* b, double scalea, double shifta, double scaleb, double shiftb, double* r);
void _arqdLinearFrac_HA(int32_t n, const double* a, const double* b, double scalea, double shifta, double scaleb, double shiftb, double* r);
void _arqdLinearFrac_50(int32_t n, const double* a, const double* b, double scalea, double shifta, double scaleb, double shiftb, double* r);
void _arqdLinearFrac_26(int32_t n, const double* a, const double* b, double scalea, double shifta, double scaleb, double shiftb, double* r);
void _arqdLinearFracI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double scalea, double shifta, double scaleb, double shiftb, double* r, int32_t incr);
void _arqdLinearFracI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double scalea, double shifta, double scaleb, double shiftb, double* r, int32_t incr);
void _arqdLinearFracI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double scalea, double shifta, double scaleb, double shiftb, double* r, int32_t incr);
void _arqdLinearFracI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double scalea, double shifta, double scaleb, double shiftb, double* r, int32_t incr);

/* PackI: y[i] = a[i inca], 0 <= i < n. */
void _arqsPackI(int32_t n, const float* a, int32_t inca, float* y);
void _arqsPackI_HA(int32_t n, const float* a, int32_t inca, float* y);
void _arqsPackI_21(int32_t n, const float* a, int32_t inca, float* y);
void _arqsPackI_11(int32_t n, const float* a, int32_t inca, float* y);
void _arqdPackI(int32_t n, const double* a, int32_t inca, double* y);
void _arqdPackI_HA(int32_t n, const double* a, int32_t inca, double* y);
void _arqdPackI_50(int32_t n, const double* a, int32_t inca, double* y);
void _arqdPackI_26(int32_t n, const double* a, int32_t inca, double* y);
void _arqcPackI(int32_t n, const nax_complex_s* a, int32_t inca, nax_complex_s* y);
void _arqcPackI_HA(int32_t n, const nax_complex_s* a, int32_t inca, nax_complex_s* y);
void _arqcPackI_21(int32_t n, const nax_complex_s* a, int32_t inca, nax_complex_s* y);
void _arqcPackI_11(int32_t n, const nax_complex_s* a, int32_t inca, nax_complex_s* y);
void _arqzPackI(int32_t n, const nax_complex_z* a, int32_t inca, nax_complex_z* y);
void _arqzPackI_HA(int32_t n, const nax_complex_z* a, int32_t inca, nax_complex_z* y);
void _arqzPackI_50(int32_t n, const nax_complex_z* a, int32_t inca, nax_complex_z* y);
void _arqzPackI_26(int32_t n, const nax_complex_z* a, int32_t inca, nax_complex_z* y);

/* PackV: y[i] = a[ia[i]], 0 <= i < n. */
void _arqsPackV(int32_t n, const float* a, const int32_t* ia, float* y);
void _arqsPackV_HA(int32_t n, const float* a, const int32_t* ia, float* y);
void _arqsPackV_21(int32_t n, const float* a, const int32_t* ia, float* y);
void _arqsPackV_11(int32_t n, const float* a, const int32_t* ia, float* y);
void _arqdPackV(int32_t n, const double* a, const int32_t* ia, double* y);
void _arqdPackV_HA(int32_t n, const double* a, const int32_t* ia, double* y);
void _arqdPackV_50(int32_t n, const double* a, const int32_t* ia, double* y);
void _arqdPackV_26(int32_t n, const double* a, const int32_t* ia, double* y);
void _arqcPackV(int32_t n, const nax_complex_s* a, const int32_t* ia, nax_complex_s* y);
void _arqcPackV_HA(int32_t n, const nax_complex_s* a, const int32_t* ia, nax_complex_s* y);
void _arqcPackV_21(int32_t n, const nax_complex_s* a, const int32_t* ia, nax_complex_s* y);
void _arqcPackV_11(int32_t n, const nax_complex_s* a, const int32_t* ia, nax_complex_s* y);
void _arqzPackV(int32_t n, const nax_complex_z* a, const int32_t* ia, nax_complex_z* y);
void _arqzPackV_HA(int32_t n, const nax_complex_z* a, const int32_t* ia, nax_complex_z* y);
void _arqzPackV_50(int32_t n, const nax_complex_z* a, const int32_t* ia, nax_complex_z* y);
void _arqzPackV_26(int32_t n, const nax_complex_z* a, const int32_t* ia, nax_complex_z* y);

/* PackM: for each non-zero ma[i], 0 <= i < n, the next element of y takes a[i]. */
void _arqsPackM(int32_t n, const float* a, const int32_t* ma, float* y);
void _arqsPackM_HA(int32_t n, const float* a, const int32_t* ma, float* y);
void _arqsPackM_21(int32_t n, const float* a, const int32_t* ma, float* y);
void _arqsPackM_11(int32_t n, const float* a, const int32_t* ma, float* y);
void _arqdPackM(int32_t n, const double* a, const int32_t* ma, double* y);
void _arqdPackM_HA(int32_t n, const double* a, const int32_t* ma, double* y);
void _arqdPackM_50(int32_t n, const double* a, const int32_t* ma, double* y);
void _arqdPackM_26(int32_t n, const double* a, const int32_t* ma, double* y);
void _arqcPackM(int32_t n, const nax_complex_s* a, const int32_t* ma, nax_complex_s* y);
void _arqcPackM_HA(int32_t n, const nax_complex_s* a, const int32_t* ma, nax_complex_s* y);
void _arqcPackM_21(int32_t n, const nax_complex_s* a, const int32_t* ma, nax_complex_s* y);
void _arqcPackM_11(int32_t n, const nax_complex_s* a, const int32_t* ma, nax_complex_s* y);
void _arqzPackM(int32_t n, const nax_complex_z* a, const int32_t* ma, nax_complex_z* y);
void _arqzPackM_HA(int32_t n, const nax_complex_z* a, const int32_t* ma, nax_complex_z* y);
void _arqzPackM_50(int32_t n, const nax_complex_z* a, const int32_t* ma, nax_complex_z* y);
void _arqzPackM_26(int32_t n, const nax_complex_z* a, const int32_t* ma, nax_complex_z* y);

/* UnpackI: y[i incy] = a[i], 0 <= i < n. */
void _arqsUnpackI(int32_t n, const float* a, float* y, int32_t incy);
void _arqsUnpackI_HA(int32_t n, const float* a, float* y, int32_t incy);
void _arqsUnpackI_21(int32_t n, const float* a, float* y, int32_t incy);
void _arqsUnpackI_11(int32_t n, const float* a, float* y, int32_t incy);
void _arqdUnpackI(int32_t n, const double* a, double* y, int32_t incy);
void _arqdUnpackI_HA(int32_t n, const double* a, double* y, int32_t incy);
void _arqdUnpackI_50(int32_t n, const double* a, double* y, int32_t incy);
void _arqdUnpackI_26(int32_t n, const double* a, double* y, int32_t incy);
void _arqcUnpackI(int32_t n, const nax_complex_s* a, nax_complex_s* y, int32_t incy);
void _arqcUnpackI_HA(int32_t n, const nax_complex_s* a, nax_complex_s* y, int32_t incy);
void _arqcUnpackI_21(int32_t n, const nax_complex_s* a, nax_complex_s* y, int32_t incy);
void _arqcUnpackI_11(int32_t n, const nax_complex_s* a, nax_complex_s* y, int32_t incy);
void _arqzUnpackI(int32_t n, const nax_complex_z* a, nax_complex_z* y, int32_t incy);
void _arqzUnpackI_HA(int32_t n, const nax_complex_z* a, nax_complex_z* y, int32_t incy);
void _arqzUnpackI_50(int32_t n, const nax_complex_z* a, nax_complex_z* y, int32_t incy);
void _arqzUnpackI_26(int32_t n, const nax_complex_z* a, nax_complex_z* y, int32_t incy);

/* UnpackV: y[iy[i]] = a[i], 0 <= i < n; of several elements for one place the last one stays. */
void _arqsUnpackV(int32_t n, const float* a, float* y, const int32_t* iy);
void _arqsUnpackV_HA(int32_t n, const float* a, float* y, const int32_t* iy);
void _arqsUnpackV_21(int32_t n, const float* a, float* y, const int32_t* iy);
void _arqsUnpackV_11(int32_t n, const float* a, float* y, const int32_t* iy);
void _arqdUnpackV(int32_t n, const double* a, double* y, const int32_t* iy);
void _arqdUnpackV_HA(int32_t n, const double* a, double* y, const int32_t* iy);
void _arqdUnpackV_50(int32_t n, const double* a, double* y, const int32_t* iy);
void _arqdUnpackV_26(int32_t n, const double* a, double* y, const int32_t* iy);
void _arqcUnpackV(int32_t n, const nax_complex_s* a, nax_complex_s* y, const int32_t* iy);
void _arqcUnpackV_HA(int32_t n, const nax_complex_s* a, nax_complex_s* y, const int32_t* iy);
void _arqcUnpackV_21(int32_t n, const nax_complex_s* a, nax_complex_s* y, const int32_t* iy);
void _arqcUnpackV_11(int32_t n, const nax_complex_s* a, nax_complex_s* y, const int32_t* iy);
void _arqzUnpackV(int32_t n, const nax_complex_z* a, nax_complex_z* y, const int32_t* iy);
void _arqzUnpackV_HA(int32_t n, const nax_complex_z* a, nax_complex_z* y, const int32_t* iy);
void _arqzUnpackV_50(int32_t n, const nax_complex_z* a, nax_complex_z* y, const int32_t* iy);
void _arqzUnpackV_26(int32_t n, const nax_complex_z* a, nax_complex_z* y, const int32_t* iy);

/* UnpackM: for each non-zero my[i], 0 <= i < n, y[i] takes the next element of a; the others are not touched. */
void _arqsUnpackM(int32_t n, const float* a, float* y, const int32_t* my);
void _arqsUnpackM_HA(int32_t n, const float* a, float* y, const int32_t* my);
void _arqsUnpackM_21(int32_t n, const float* a, float* y, const int32_t* my);
void _arqsUnpackM_11(int32_t n, const float* a, float* y, const int32_t* my);
void _arqdUnpackM(int32_t n, const double* a, double* y, const int32_t* my);
void _arqdUnpackM_HA(int32_t n, const double* a, double* y, const int32_t* my);
void _arqdUnpackM_50(int32_t n, const double* a, double* y, const int32_t* my);
void _arqdUnpackM_26(int32_t n, const double* a, double* y, const int32_t* my);
void _arqcUnpackM(int32_t n, const nax_complex_s* a, nax_complex_s* y, const int32_t* my);
void _arqcUnpackM_HA(int32_t n, const nax_complex_s* a, nax_complex_s* y, const int32_t* my);
void _arqcUnpackM_21(int32_t n, const nax_complex_s* a, nax_complex_s* y, const int32_t* my);
void _arqcUnpackM_11(int32_t n, const nax_complex_s* a, nax_complex_s* y, const int32_t* my);
void _arqzUnpackM(int32_t n, const nax_complex_z* a, nax_complex_z* y, const int32_t* my);
void _arqzUnpackM_HA(int32_t n, const nax_complex_z* a, nax_complex_z* y, const int32_t* my);
void _arqzUnpackM_50(int32_t n, const nax_complex_z* a, nax_complex_z* y, const int32_t* my);
void _arqzUnpackM_26(int32_t n, const nax_complex_z* a, nax_complex_z* y, const int32_t* my);

/* Exp: r = e^a.
 * Special values: +Inf for +Inf, +0 for -Inf. Statuses: 3 on overflow, 4 where r is denormal or zero for finite a. */
void _arqsExp(int32_t n, const float* a, float* r);
void _arqsExp_HA(int32_t n, const float* a, float* r);
void _arqsExp_21(int32_t n, const float* a, float* r);
void _arqsExp_11(int32_t n, const float* a, float* r);
void _arqsExpI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsExpI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsExpI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsExpI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdExp(int32_t n, const double* a, double* r);
void _arqdExp_HA(int32_t n, const double* a, double* r);
void _arqdExp_50(int32_t n, const double* a, double* r);
void _arqdExp_26(int32_t n, const double* a, double* r);
void _arqdExpI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdExpI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdExpI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdExpI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Exp2: r = 2^a.
 * Special values: +Inf for +Inf, +0 for -Inf. Statuses: 3 on overflow, 4 where r is denormal or zero for finite a. */
void _arqsExp2(int32_t n, const float* a, float* r);
void _arqsExp2_HA(int32_t n, const float* a, float* r);
void _arqsExp2_21(int32_t n, const float* a, float* r);
void _arqsExp2_11(int32_t n, const float* a, float* r);
void _arqsExp2I(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsExp2I_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsExp2I_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsExp2I_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdExp2(int32_t n, const double* a, double* r);
void _arqdExp2_HA(int32_t n, const double* a, double* r);
void _arqdExp2_50(int32_t n, const double* a, double* r);
void _arqdExp2_26(int32_t n, const double* a, double* r);
void _arqdExp2I(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdExp2I_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdExp2I_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdExp2I_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Exp10: r = 10^a.
 * Special values: +Inf for +Inf, +0 for -Inf. Statuses: 3 on overflow, 4 where r is denormal or zero for finite a. */
void _arqsExp10(int32_t n, const float* a, float* r);
void _arqsExp10_HA(int32_t n, const float* a, float* r);
void _arqsExp10_21(int32_t n, const float* a, float* r);
void _arqsExp10_11(int32_t n, const float* a, float* r);
void _arqsExp10I(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsExp10I_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsExp10I_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsExp10I_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdExp10(int32_t n, const double* a, double* r);
void _arqdExp10_HA(int32_t n, const double* a, double* r);
void _arqdExp10_50(int32_t n, const double* a, double* r);
void _arqdExp10_26(int32_t n, const double* a, double* r);
void _arqdExp10I(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdExp10I_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdExp10I_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdExp10I_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Expm1: r = e^a - 1, without cancellation near 0.
 * Special values: +Inf for +Inf, -1 for -Inf. Statuses: 3 on overflow. */
void _arqsExpm1(int32_t n, const float* a, float* r);
void _arqsExpm1_HA(int32_t n, const float* a, float* r);
void _arqsExpm1_21(int32_t n, const float* a, float* r);
void _arqsExpm1_11(int32_t n, const float* a, float* r);
void _arqsExpm1I(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsExpm1I_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsExpm1I_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsExpm1I_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdExpm1(int32_t n, const double* a, double* r);
void _arqdExpm1_HA(int32_t n, const double* a, double* r);
void _arqdExpm1_50(int32_t n, const double* a, double* r);
void _arqdExpm1_26(int32_t n, const double* a, double* r);
void _arqdExpm1I(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdExpm1I_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdExpm1I_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdExpm1I_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Ln: r = the natural logarithm of a.
 * Special values: +Inf for +Inf; -Inf for +-0; NaN for a < 0. Statuses: 1 for a < 0, 2 for a = 0. */
void _arqsLn(int32_t n, const float* a, float* r);
void _arqsLn_HA(int32_t n, const float* a, float* r);
void _arqsLn_21(int32_t n, const float* a, float* r);
void _arqsLn_11(int32_t n, const float* a, float* r);
void _arqsLnI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsLnI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsLnI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsLnI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdLn(int32_t n, const double* a, double* r);
void _arqdLn_HA(int32_t n, const double* a, double* r);
void _arqdLn_50(int32_t n, const double* a, double* r);
void _arqdLn_26(int32_t n, const double* a, double* r);
void _arqdLnI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdLnI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdLnI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdLnI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Log2: r = the logarithm of a to base 2.
 * Special values: +Inf for +Inf; -Inf for +-0; NaN for a < 0. Statuses: 1 for a < 0, 2 for a = 0. */
void _arqsLog2(int32_t n, const float* a, float* r);
void _arqsLog2_HA(int32_t n, const float* a, float* r);
void _arqsLog2_21(int32_t n, const float* a, float* r);
void _arqsLog2_11(int32_t n, const float* a, float* r);
void _arqsLog2I(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsLog2I_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsLog2I_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsLog2I_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdLog2(int32_t n, const double* a, double* r);
void _arqdLog2_HA(int32_t n, const double* a, double* r);
void _arqdLog2_50(int32_t n, const double* a, double* r);
void _arqdLog2_26(int32_t n, const double* a, double* r);
void _arqdLog2I(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdLog2I_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdLog2I_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdLog2I_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Log10: r = the logarithm of a to base 10.
 * Special values: +Inf for +Inf; -Inf for +-0; NaN for a < 0. Statuses: 1 for a < 0, 2 for a = 0. */
void _arqsLog10(int32_t n, const float* a, float* r);
void _arqsLog10_HA(int32_t n, const float* a, float* r);
void _arqsLog10_21(int32_t n, const float* a, float* r);
void _arqsLog10_11(int32_t n, const float* a, float* r);
void _arqsLog10I(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsLog10I_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsLog10I_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsLog10I_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdLog10(int32_t n, const double* a, double* r);
void _arqdLog10_HA(int32_t n, const double* a, double* r);
void _arqdLog10_50(int32_t n, const double* a, double* r);
void _arqdLog10_26(int32_t n, const double* a, double* r);
void _arqdLog10I(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdLog10I_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdLog10I_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdLog10I_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Log1p: r = ln(1 + a), without cancellation near 0.
 * Special values: +Inf for +Inf; -Inf for -1; NaN for a < -1; -0 stays. Statuses: 1 for a < -1, 2 for a = -1. */
void _arqsLog1p(int32_t n, const float* a, float* r);
void _arqsLog1p_HA(int32_t n, const float* a, float* r);
void _arqsLog1p_21(int32_t n, const float* a, float* r);
void _arqsLog1p_11(int32_t n, const float* a, float* r);
void _arqsLog1pI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsLog1pI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsLog1pI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsLog1pI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdLog1p(int32_t n, const double* a, double* r);
void _arqdLog1p_HA(int32_t n, const double* a, double* r);
void _arqdLog1p_50(int32_t n, const double* a, double* r);
void _arqdLog1p_26(int32_t n, const double* a, double* r);
void _arqdLog1pI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdLog1pI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdLog1pI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdLog1pI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

/* Logb: r = the exponent of a: floor of log2 |a|.
 * Special values: +Inf for +-Inf; -Inf for +-0. Statuses: 1 for a = 0. */
void _arqsLogb(int32_t n, const float* a, float* r);
void _arqsLogb_HA(int32_t n, const float* a, float* r);
void _arqsLogb_21(int32_t n, const float* a, float* r);
void _arqsLogb_11(int32_t n, const float* a, float* r);
void _arqsLogbI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsLogbI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsLogbI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqsLogbI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void _arqdLogb(int32_t n, const double* a, double* r);
void _arqdLogb_HA(int32_t n, const double* a, double* r);
void _arqdLogb_50(int32_t n, const double* a, double* r);
void _arqdLogb_26(int32_t n, const double* a, double* r);
void _arqdLogbI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdLogbI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdLogbI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void _arqdLogbI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);

#ifdef __cplusplus
}
#endif
#endif
