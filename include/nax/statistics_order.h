/* Summary statistics of order: quantiles, sorting, weighted median, absolute deviations, distances, stream quantiles.
 *
 *     int32_t p = 2, n = 1000, storage = NAX_SS_STORAGE_COLUMNS, m = 3;
 *     double x[2000], orders[3] = {0.25, 0.5, 0.75}, quartiles[6];
 *     nax_ss_task* task;
 *     __stodSSNewTask(&task, &p, &n, &storage, x, NULL, NULL, 0);
 *     __stodSSEditQuantiles(task, &m, orders, quartiles, NULL, NULL);
 *     _stodSSQuantiles(task, NAX_SS_ESTIMATE_QUANTILES, NAX_SS_METHOD_FAST, NULL);
 *     __stoSSDeleteTask(&task);
 *
 * The form of all entries, their statuses and codes are those of nax/statistics.h. Each works variable by variable, on
 * up to as many threads as there are variables; the caller's observations stay as they are, but for a sort in place.
 * Results depend on no thread count. p is the dimension, n the observation count, and "packed" means: where a mask
 * selects variables, the i-th selected one stands at place i.
 *
 * Order is that of the numbers, with -0 before 0 and NaNs at the ends: those with the sign bit first, the others last. A
 * null task gives SsStatusNullTask.
 */
#ifndef NAX_STATISTICS_ORDER_H
#define NAX_STATISTICS_ORDER_H

#include <stdint.h>

#include "nax/statistics.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Quantiles (estimate NAX_SS_ESTIMATE_QUANTILES) and all sorted values (NAX_SS_ESTIMATE_ORDER_STATISTICS); method
 * NAX_SS_METHOD_FAST. The quantile of order q of x(0) <= ... <= x(n-1) is x(k) + f (x(k+1) - x(k)) with k = trunc((n-1) q)
 * and f = fma(q, n-1, -k). m orders give `quantiles[i * m + r]`, packed; m = 0 and n = 0 give nothing. Order
 * statistics are an observation matrix in their own storage, packed: rows i * n + k, columns k * p + i. Where they are asked
 * for as well, quantiles come from (1-f) x(k) + f x(k+1), which may differ in the last bit. A quantile beside an infinite value
 * is that value or the finite neighbour, never NaN.
 *
 * Statuses: NoStorage, BadStorage of the observations; then for quantiles NoQuantiles, NoQuantileOrders,
 * BadQuantileOrders; for order statistics NoOrderStatistics, NoStorage, BadStorage; BadMethod; BadDimension,
 * BadObservationCount, NoObservations where these are null; Memory.
 * Time: linear in n for each variable; quantiles alone select and don't sort. Scratch: up to 2 n + 2 m reals a thread. */
int32_t _stodSSQuantiles(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);
int32_t _stosSSQuantiles(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);

/* Every selected variable sorted into `sorted` (parameter NAX_SS_SORTED), in the storage of NAX_SS_SORTED_STORAGE, packed;
 * method NAX_SS_METHOD_RADIX. `sorted` may be the observations themselves, in the same storage and without a mask.
 *
 * Statuses: NoSorted; NoStorage also for unequal storages in place; MaskInPlace; BadStorage; BadMethod; BadDimension,
 * BadObservationCount, NoObservations where these are null; Memory. */
int32_t _stodSSSort(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);
int32_t _stosSSSort(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);

/* Weighted quantile of the first of `quantile_orders`, q, for each of the p variables (the mask isn't looked at) into
 * `quantiles`. S is the sum of the weights; the values are sorted and their weights summed up to the first sum c >= S q, at
 * x(k). If c > S q: x(k) when nothing stands below it, else the interpolation between the last x(m) of positive weight
 * before it and x(k), by the sums there; for odd n with the sum before x(k) equal to (S - w(k)) q, x(k). If c = S q: x(k) for odd n
 * or the last one, else the mean of x(k) and the next value of positive weight. Estimates, method and threaders are
 * ignored. With unit weights and q = 0.5 it is the median.
 *
 * Statuses: those of a null pointer, NoStorage, NoWeights, NoQuantileOrders, NoQuantiles; Memory. Time linear in n; scratch 4 n reals. */
int32_t _stodSSWMedian(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);
int32_t _stosSSWMedian(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);

/* Median absolute deviation from the median (estimate NAX_SS_ESTIMATE_MEDIAN_ABSOLUTE_DEVIATION, method NAX_SS_METHOD_FAST)
 * and mean absolute deviation from the mean (NAX_SS_ESTIMATE_MEAN_ABSOLUTE_DEVIATION, method NAX_SS_METHOD_FAST, or
 * NAX_SS_METHOD_USER_MEAN with the caller's `mean`), unweighted and without a scale factor; variable j's result stands at
 * place j.
 *
 * Statuses: BadDimension, BadObservationCount, NoStorage, BadStorage, NoObservations; NoMedianAbsoluteDeviation, BadMethod;
 * NoMeanAbsoluteDeviation, BadMethod, NoMean; Memory. Where both are asked for, the second one's status is returned. */
int32_t _stodSSMAD(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);
int32_t _stosSSMAD(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);

/* Mahalanobis distances of a range of observations, for layers that fill the private fields of the record. */
int32_t _stodSSMahDistance(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);
int32_t _stosSSMahDistance(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);

/* Quantiles of data that arrive in blocks. Each call adds the n observations of the task (n = 0 adds nothing) to summaries
 * that the task owns, and with NAX_SS_METHOD_STREAM reads the quantiles of all data so far; NAX_SS_METHOD_STREAM_FAST only
 * adds. The quantile of order q of N values is an element of the data whose rank (from 1) is within epsilon N of
 * max(1, floor(q N)), epsilon = stream_params[0]; quantiles are packed, m a variable. N = 0 writes nothing.
 * Between calls p, epsilon and the selected variables stay the same.
 *
 *     double epsilon = 0.001, orders[2] = {0.5, 0.99}, quantiles[2];
 *     int32_t one = 1, two = 2;
 *     __stodSSEditStreamQuantiles(task, &two, orders, quantiles, &one, &epsilon);
 *     while (read_block(x, &n))
 *         _stodSSStreamQuantiles(task, 0, NAX_SS_METHOD_STREAM_FAST, NULL);
 *     n = 0;
 *     _stodSSStreamQuantiles(task, 0, NAX_SS_METHOD_STREAM, NULL);
 *
 * Statuses: BadObservationCount (missing or negative); for n above 0 NoObservations, NoStorage, BadStorage;
 * NoStreamQuantiles, NoStreamOrders, BadStreamOrders, NoStreamParamCount, BadStreamParamCount, BadStreamOrders for an
 * order outside [0, 1], NoStreamParams, BadMethod, BadStreamAccuracy; BadVariableMask for a variable that the
 * summaries left out; Memory, with what had been added kept.
 * Source: levels of growing weight after Munro and Paterson (Theor. Comput. Sci. 12, 1980) and Manku, Rajagopalan and
 * Lindsay (SIGMOD 1998). Memory: up to 16 / epsilon values exactly, then growing with a power of the logarithm of
 * epsilon N. */
int32_t _stodSSStreamQuantiles(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);
int32_t _stosSSStreamQuantiles(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);
/* Frees the summaries; deletion of the task does so by itself. */
int32_t __stoSQuantilesFreeBuffers(nax_ss_task* task);

/* Quicksorts in place, without scratch: of n elements, of n elements `stride` apart, of keys with a payload that moves along.
 * The selection leaves the array partly sorted and returns the element of rank k, 0 <= k < n. NaNs may end anywhere, and the
 * order of -0 and 0 is open. */
void __stodQSort(int64_t n, double* array);
void __stosQSort(int64_t n, float* array);
void __stodQSortStep(int64_t n, double* array, int64_t stride);
void __stosQSortStep(int64_t n, float* array, int64_t stride);
double __stodQSortSelect(int64_t n, double* array, int64_t k);
float __stosQSortSelect(int64_t n, float* array, int64_t k);
void _vdSSQuickMapSort(int64_t n, double* keys, double* payload);
void _vsSSQuickMapSort(int64_t n, float* keys, float* payload);

#ifdef __cplusplus
}
#endif
#endif
