/* Moments, extremes, covariance, and what is derived from covariance. Task, codes and editors: nax/statistics.h. */
#ifndef NAX_STATISTICS_BASIC_H
#define NAX_STATISTICS_BASIC_H

#include "nax/statistics.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Means, raw and central moments, sums, kurtosis, skewness, variation, covariance, correlation and cross-products.
 *   estimates  bits 0 to 9, 12, 13 and 25 to 32
 *   method     one of
 *                NAX_SS_METHOD_ONE_PASS   moments updated observation by observation: one pass, stable for any offset
 *                NAX_SS_METHOD_FAST       plain sums of powers: fastest; digits are lost where the mean is large
 *                                         against the deviations
 *                NAX_SS_METHOD_USER_MEAN  sums of powers of deviations from the mean that `mean` holds
 *              or, without data, NAX_SS_METHOD_FROM_SUMS or NAX_SS_METHOD_FROM_CROSS_PRODUCT
 * With W the sum of the weights w_i, W2 that of their squares, and m the mean:
 *   raw moment k      sum w_i x_i^k / W                          raw sum k: the same without / W
 *   central moment 2  sum w_i (x_i - m)^2 / (W - W2/W)           the unbiased variance, n - 1 for unit weights
 *   central moments   sum w_i (x_i - m)^k / W, k = 3, 4          central sums: without divisor
 *   kurtosis          c4/c2^2 - 3, skewness c3/c2^1.5, variation sqrt(c2)/m
 *   cross-products    sum w_i (x_i - m)(x_i - m)', covariance: the same / (W - W2/W); correlation: off the diagonal
 *                     c_ij / sqrt(c_ii c_jj), on it the variances
 * A result needs arrays of others too: central moments and what follows from them the mean and raw moments, covariance
 * and correlation the mean (see docs/statistics.md). Elements of variables that the mask leaves out keep what they
 * held. Data in blocks: with accumulated_weights registered and 0, 0 before the first call, a call with the same
 * request and the same arrays goes on where the last one ended. The first block of covariances should hold two
 * observations or more. Without weights the observations count as 1 each. Where all weights are zero, sums are zero and
 * nothing is divided. Threads: the observations are split in equal ranges, merged in thread order; equal thread counts
 * give equal bits. Status, in this order: NullTask, BadDimension, BadMethod, the first missing array,
 * BadObservationCount, NoObservations, NoStorage, BadStorage (or NoAccumulatedWeights without data), NoStorage of a
 * matrix, Memory. Time O(n p), with matrices O(n p^2). */
int32_t _stodSSBasic(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);
int32_t _stosSSBasic(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);

/* Least and greatest value of each variable.
 *   estimates  NAX_SS_ESTIMATE_MINIMUM, NAX_SS_ESTIMATE_MAXIMUM
 *   method     NAX_SS_METHOD_FAST or NAX_SS_METHOD_ONE_PASS
 * The arrays are seeds as well as results: set them before the first call, to infinities or to the first observation;
 * further blocks then go on from there. NaN is not propagated reliably. Serial.
 * Status, in this order: NullTask, NoStorage, BadStorage, NoMinimum, NoMaximum, BadMethod, BadDimension,
 * BadObservationCount, NoObservations, Memory. Time O(n p). */
int32_t _stodSSMinmax(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);
int32_t _stosSSMinmax(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);

/* Means and covariances of groups of observations, and pooled over the groups.
 *   estimates  NAX_SS_ESTIMATE_POOLED_COVARIANCE (with the mean), _POOLED_MEAN, _GROUP_COVARIANCE (with the means),
 *              _GROUP_MEAN
 *   method     NAX_SS_METHOD_ONE_PASS
 * group_indices has a group number from 0 for each observation; the number of groups G is the largest plus 1.
 * group_covariance_indices has G integers; the groups marked 1 get a mean and a covariance, packed in the order of
 * their numbers. Pooled mean: that of all observations. Pooled covariance: the groups' cross-products summed, divided
 * by the sum of their W - W2/W, n - G for unit weights and no empty group. A marked group without observations gets
 * zeros. Threads: equal ranges of observations, merged in order. Status, in this order: NullTask, NoStorage,
 * BadStorage, NoGroupIndices, NoPooledMean, NoStorage, NoPooledCovariance, NoGroupIndices, NoGroupMeans, NoStorage,
 * NoGroupCovariance, BadMethod, BadDimension, BadObservationCount, NoObservations, BadGroupIndices, Memory. Time O(n
 * p^2), memory O(G p^2) a thread. */
int32_t _stodSSPooledCovariance(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);
int32_t _stosSSPooledCovariance(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);

/* Covariance and correlation of some variables given others, from a covariance, or else from a correlation that this
 * library made (with the variances on its diagonal).
 *   estimates  NAX_SS_ESTIMATE_PARTIAL_COVARIANCE, NAX_SS_ESTIMATE_PARTIAL_CORRELATION
 *   method     NAX_SS_METHOD_FAST
 * conditioning_indices has p integers: 1 a variable Y of the result, -1 a conditioning variable Z, 0 neither. The
 * result, C_YY - C_YZ C_ZZ^-1 C_ZY, is p by p; elements of pairs marked 1 are written, at the variables' own places.
 * The diagonal of the correlation holds the partial variances. Status, in this order: NullTask, NoCovariance (neither
 * matrix), NoStorage, NoConditioningIndices, NoPartialCovariance, NoStorage, NoPartialCorrelation, NoStorage,
 * BadMethod, BadDimension, NoConditioning (no variable of one kind), Memory, UnusableCovariance (C_ZZ not positive
 * definite). Time O(p^3). */
int32_t _stodSSPartialCovariance(nax_ss_task* task, uint64_t estimates, uint64_t method,
                                 const nax_threaders* threaders);
int32_t _stosSSPartialCovariance(nax_ss_task* task, uint64_t estimates, uint64_t method,
                                 const nax_threaders* threaders);

/* A usable correlation matrix near `correlation`: eigenvalues below 1e-14 are lifted to it, and the diagonal is scaled
 * to
 * 1. The diagonal of the input doesn't matter. The result may overwrite the input in the same storage.
 *   estimates  not read
 *   method     NAX_SS_METHOD_PARAMETRIZATION
 * Status, in this order: NullTask, BadDimension, NoCorrelation, NoStorage, BadStorage, NoParametrizedCorrelation,
 * NoStorage, BadStorage (also: one array under two codes), BadMethod, Memory, ParametrizationFailed (no eigenvalue
 * reaches 1e-14, or none was found); the result is then untouched. Time O(p^3). */
int32_t _stodSSCorParametrization(nax_ss_task* task, uint64_t estimates, uint64_t method,
                                  const nax_threaders* threaders);
int32_t _stosSSCorParametrization(nax_ss_task* task, uint64_t estimates, uint64_t method,
                                  const nax_threaders* threaders);

#ifdef __cplusplus
}
#endif
#endif
