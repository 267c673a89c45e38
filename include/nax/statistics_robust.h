/* Outliers, robust covariance, missing values, and the chi-square distribution behind them. Task, codes and editors:
 * nax/statistics.h.
 *
 *     double weights[100], params[3] = {2, 0.01, 0.005};
 *     int32_t three = 3;
 *     __stodSSEditOutDetect(task, &three, params, weights);
 *     if (_stodSSOutliersDetection(task, 0, NAX_SS_METHOD_BACON, NULL) == SsStatusOk) { ... weights[i] == 0: outlier i
 * }
 */
#ifndef NAX_STATISTICS_ROBUST_H
#define NAX_STATISTICS_ROBUST_H

#include "nax/statistics.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Outliers of a multivariate sample, by BACON (Billor, Hadi, Velleman 2000).
 *   estimates  not read
 *   method     NAX_SS_METHOD_BACON
 *   outlier_params  three reals:
 *     0  first subset: 1 the observations nearest to the mean in Mahalanobis distance, 2 (the default, and anything
 * else) those nearest to the medians 1  alpha, tail of the threshold, in [0, 1]; 0.05 2  beta, relative change of the
 * subset's size at which to stop, above 0; 0.005 Defaults stand in for values out of range, and for all three where the
 * array or its count of 3 is missing. outlier_weights receives the weight of each observation (1 without weights) or 0
 * for an outlier. With alpha = 0.05 some ten per cent of a clean sample may be marked: the threshold is that of one
 * observation, not of the largest of n. Threads: ranges of observations; the result doesn't depend on them but through
 * the rounding of the covariance. Status, in this order: NullTask, BadDimension, BadObservationCount (n below 5 p),
 * BadStorage (also missing), NoOutlierWeights, BadMethod, NoObservations, Memory; UnusableCovariance,
 * EigenvaluesFailed, FactorFailed, InverseFailed for degenerate samples; NoConvergence where no more than 4 p
 * observations are left, with the weights as they are then. Time O(n p^2) an iteration, a few iterations. */
int32_t _stodSSOutliersDetection(nax_ss_task* task, uint64_t estimates, uint64_t method,
                                 const nax_threaders* threaders);
int32_t _stosSSOutliersDetection(nax_ss_task* task, uint64_t estimates, uint64_t method,
                                 const nax_threaders* threaders);

/* Robust mean and covariance: the translated biweight S-estimator (Rocke 1996), started from an orthogonalised
 * Gnanadesikan-Kettenring estimate (Maronna, Zamar 2002).
 *   estimates  not read
 *   method     NAX_SS_METHOD_TBS
 *   robust_params  four reals:
 *     0  breakdown point, the share of outliers that the estimate can bear; at most (n - p)/(2 n), which is the default
 *     1  probability with which a clean observation gets no weight, in (0, 1); 0.001
 *     2  stop when no weight changes by more than this, relative to the largest; above 0; 0.001
 *     3  iterations at most; 0 gives the start itself; 100 for negative ones
 *     Defaults stand in for values out of range, and for all where the array or its count of 4 is missing.
 * For few variables the rejection probability can't be reached together with a high breakdown point; the biweight is
 * then the ordinary one of that breakdown point. Weights of the task are not read. Threads: variables, pairs of
 * variables, and ranges of observations. Status, in this order: NullTask, BadDimension, BadObservationCount (n not
 * above 2 p), NoStorage, BadStorage, NoRobustCovariance, NoRobustMean, NoStorage, BadStorage of the covariance,
 * BadMethod, NoObservations, Memory; EigenvaluesFailed also where half of a variable's values are equal;
 * UnusableCovariance, FactorFailed, InverseFailed for degenerate samples; NoConvergence where no observation keeps
 * weight. Results are untouched by a failure. Time O(n p^2) for the start and for each iteration; memory n p reals. */
int32_t _stodSSRobustCovariance(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);
int32_t _stosSSRobustCovariance(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);

/* Missing values by multiple imputation under a multivariate normal model: EM finds the mode of the parameters, then
 * data augmentation draws missing entries and parameters in turn. A missing entry is a negative quiet NaN, such as
 * -NAN; any other NaN counts as data. estimates  not read method     NAX_SS_METHOD_IMPUTATION missing_params  five
 * reals: 0  EM iterations at most; 50 unless above 0 1  T, iterations of each imputation; 30 unless above 0 2  EM
 * tolerance, the largest absolute change of a mean or covariance; 0.001 unless above 0 3  M, number of imputations 4 K,
 * number of missing entries in the matrix initial_estimates  optional: p means and a lower packed covariance (row by
 * row) to start EM from; taken if their count is p(p+3)/2, else means and variances of the observed values are the
 * start prior              optional, with a count of p(p+3)/2 + 2 at least: mean and lower packed scale matrix of the
 * prior mu ~ N(mean, Sigma/tau), Sigma ~ inverse Wishart(m, scale), then tau and m. Else tau 0, m = p, scale 0
 *   simulated_values   M blocks of K values; within a block observations with the same variables missing stand
 * together, in the order in which these patterns first appear; simulated_count is M K estimates          M times T
 * times a mean and a lower packed covariance; estimate_count is M T p(p+3)/2 One of the two results is enough. Equal
 * input gives equal output: the private stream has a fixed seed. Rows with nothing observed are imputed, but don't
 * count in EM. Weights are not read. Serial. Status, in this order: NullTask, BadDimension, BadStorage (also missing),
 * NoMissingParams, NoMissingParamCount, BadMissingParamCount, NoSimulatedCount, NoSimulatedValues, NothingRequested,
 * BadMethod, BadObservationCount, NoObservations, Memory, BadMissingCount, BadImputationCount, BadSimulatedCount,
 * BadEstimateCount, Memory; DrawFailed, DrawFactorFailed, DrawInverseFailed, with results written as far as they were
 * drawn. Time: an EM iteration O(n p^2 + patterns p^3), an iteration of an imputation the same and n p normals. */
int32_t _stodSSMissingValues(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);
int32_t _stosSSMissingValues(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);

/* Makes a full p by p covariance safely invertible, in place: where its smallest eigenvalue is not above 1e-15, a
 * hundredth of the smallest positive one is added to the diagonal. Only elements (i, j) with j >= i are valid
 * afterwards. Status: BadDimension, Memory, UnusableCovariance (no positive eigenvalue), EigenvaluesFailed. */
int32_t __stodTestCovRank(int64_t p, double* covariance);
int32_t __stosTestCovRank(int64_t p, float* covariance);
/* Inverts a full p by p covariance in place; elements (i, j) with j >= i are read, all are written.
 * Status: BadDimension, FactorFailed, InverseFailed. */
int32_t __stodInvCov(int64_t p, double* covariance);
int32_t __stosInvCov(int64_t p, float* covariance);

/* Chi-square distribution with `degrees` above 0: density, distribution function, and quantile (0 for probabilities
 * not above 0, infinity from 1 on). NaN for degrees not above 0. */
double __stodChi2PDF(double degrees, double x);
float __stosChi2PDF(float degrees, float x);
double __stodChi2CDF(double degrees, double x);
float __stosChi2CDF(float degrees, float x);
double __stodChi2ICDF(double degrees, double probability);
float __stosChi2ICDF(float degrees, float probability);
/* Regularised upper incomplete gamma function Q(a, x), a above 0. */
double _vdSSQ(double a, double x);
float _vsSSQ(float a, float x);

#ifdef __cplusplus
}
#endif
#endif
