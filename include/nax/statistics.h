/* Summary statistics: tasks, and the codes that all entries share.
 *
 * A task is a record of pointers. The caller creates it over an observation matrix, registers arrays for what it wants
 * with the editors, and runs compute entries, which read and write those arrays. The task copies nothing: arrays, and
 * the integers that say how large they are, must live as long as the task is used.
 *
 *     int32_t p = 3, n = 100, storage = NAX_SS_STORAGE_ROWS;
 *     double x[300], mean[3], raw2[3], variance[3];            ... variable j, observation i is x[j * n + i]
 *     nax_ss_task* task;
 *     if (__stodSSNewTask(&task, &p, &n, &storage, x, NULL, NULL, 0) != SsStatusOk) return;
 *     __stodSSEditMoments(task, mean, raw2, NULL, NULL, variance, NULL, NULL);
 *     _stodSSBasic(task, NAX_SS_ESTIMATE_CENTRAL_MOMENT2, NAX_SS_METHOD_ONE_PASS, NULL);
 *     __stoSSDeleteTask(&task);
 *
 * Entries beginning with __stod or _stod work in double, those with __stos or _stos in single precision. Integers that
 * a task points to are 32 bits wide, or 64 if the task was created so; hence the `const void*` of their arguments.
 *
 * Compute entries stand in nax/statistics_basic.h (moments, covariance and what is derived from it),
 * nax/statistics_order.h (quantiles, sorting, deviations, distances) and nax/statistics_robust.h (outliers, robust
 * covariance, missing values). All have the form
 *
 *     int32_t entry(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders* threaders);
 *
 * `estimates` asks for results by bits (enum nax_ss_estimate; an entry reads only its own), `method` says how, and
 * `threaders` is the table of nax/threaders.h, or null for the serial path. The result is 0 or a negative status.
 * Tests come before any write to a result. One task belongs to one thread at a time; different tasks are independent.
 */
#ifndef NAX_STATISTICS_H
#define NAX_STATISTICS_H

#include <stdint.h>

#include "nax/status.h"

#include "nax/threaders.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct nax_ss_task nax_ss_task;

/* Storage of an observation matrix. With one variable the two are the same. */
enum nax_ss_storage {
    NAX_SS_STORAGE_ROWS = 0x10000,   /* variable j, observation i at x[j * n + i] */
    NAX_SS_STORAGE_COLUMNS = 0x20000 /* at x[i * p + j] */
};

/* Storage of a symmetric p by p matrix. */
enum nax_ss_matrix_storage {
    NAX_SS_MATRIX_FULL = 0,  /* element (i, j) at c[i * p + j], all p * p */
    NAX_SS_MATRIX_LOWER = 1, /* row by row, (i, j) with j <= i at c[i * (i + 1) / 2 + j], p * (p + 1) / 2 in all */
    NAX_SS_MATRIX_UPPER = 2  /* row by row, (i, j) with j >= i */
};

/* Bits of the estimate word. */
#define NAX_SS_ESTIMATE_MEAN (UINT64_C(1) << 0)
#define NAX_SS_ESTIMATE_RAW_MOMENT2 (UINT64_C(1) << 1)
#define NAX_SS_ESTIMATE_RAW_MOMENT3 (UINT64_C(1) << 2)
#define NAX_SS_ESTIMATE_RAW_MOMENT4 (UINT64_C(1) << 3)
#define NAX_SS_ESTIMATE_CENTRAL_MOMENT2 (UINT64_C(1) << 4)
#define NAX_SS_ESTIMATE_CENTRAL_MOMENT3 (UINT64_C(1) << 5)
#define NAX_SS_ESTIMATE_CENTRAL_MOMENT4 (UINT64_C(1) << 6)
#define NAX_SS_ESTIMATE_KURTOSIS (UINT64_C(1) << 7)
#define NAX_SS_ESTIMATE_SKEWNESS (UINT64_C(1) << 8)
#define NAX_SS_ESTIMATE_VARIATION (UINT64_C(1) << 9)
#define NAX_SS_ESTIMATE_MINIMUM (UINT64_C(1) << 10)
#define NAX_SS_ESTIMATE_MAXIMUM (UINT64_C(1) << 11)
#define NAX_SS_ESTIMATE_COVARIANCE (UINT64_C(1) << 12)
#define NAX_SS_ESTIMATE_CORRELATION (UINT64_C(1) << 13)
#define NAX_SS_ESTIMATE_POOLED_COVARIANCE (UINT64_C(1) << 14)
#define NAX_SS_ESTIMATE_GROUP_COVARIANCE (UINT64_C(1) << 15)
#define NAX_SS_ESTIMATE_QUANTILES (UINT64_C(1) << 16)
#define NAX_SS_ESTIMATE_ORDER_STATISTICS (UINT64_C(1) << 17)
#define NAX_SS_ESTIMATE_PARTIAL_COVARIANCE (UINT64_C(1) << 20)
#define NAX_SS_ESTIMATE_PARTIAL_CORRELATION (UINT64_C(1) << 21)
#define NAX_SS_ESTIMATE_SUM (UINT64_C(1) << 25)
#define NAX_SS_ESTIMATE_RAW_SUM2 (UINT64_C(1) << 26)
#define NAX_SS_ESTIMATE_RAW_SUM3 (UINT64_C(1) << 27)
#define NAX_SS_ESTIMATE_RAW_SUM4 (UINT64_C(1) << 28)
#define NAX_SS_ESTIMATE_CENTRAL_SUM2 (UINT64_C(1) << 29)
#define NAX_SS_ESTIMATE_CENTRAL_SUM3 (UINT64_C(1) << 30)
#define NAX_SS_ESTIMATE_CENTRAL_SUM4 (UINT64_C(1) << 31)
#define NAX_SS_ESTIMATE_CROSS_PRODUCT (UINT64_C(1) << 32)
#define NAX_SS_ESTIMATE_MEDIAN_ABSOLUTE_DEVIATION (UINT64_C(1) << 33)
#define NAX_SS_ESTIMATE_MEAN_ABSOLUTE_DEVIATION (UINT64_C(1) << 34)
#define NAX_SS_ESTIMATE_POOLED_MEAN (UINT64_C(1) << 35)
#define NAX_SS_ESTIMATE_GROUP_MEAN (UINT64_C(1) << 36)

/* Masks of the method word; an entry that doesn't know a mask answers BadMethod. */
#define NAX_SS_METHOD_FAST UINT64_C(0x1)                 /* plain sums of powers */
#define NAX_SS_METHOD_ONE_PASS UINT64_C(0x2)             /* updates of the moments, stable */
#define NAX_SS_METHOD_PARAMETRIZATION UINT64_C(0x4)      /* nearest usable correlation matrix */
#define NAX_SS_METHOD_TBS UINT64_C(0x8)                  /* translated biweight S-estimator */
#define NAX_SS_METHOD_IMPUTATION UINT64_C(0x10)          /* multiple imputation */
#define NAX_SS_METHOD_BACON UINT64_C(0x20)               /* outliers by growing a clean subset */
#define NAX_SS_METHOD_STREAM UINT64_C(0x40)              /* stream quantiles */
#define NAX_SS_METHOD_STREAM_FAST UINT64_C(0x80)         /* stream quantiles, second mode */
#define NAX_SS_METHOD_USER_MEAN UINT64_C(0x100)          /* sums of powers about a mean that the caller supplies */
#define NAX_SS_METHOD_FROM_CROSS_PRODUCT UINT64_C(0x200) /* covariance and correlation from cross-products */
#define NAX_SS_METHOD_FROM_SUMS UINT64_C(0x400)          /* moments from sums */
#define NAX_SS_METHOD_RADIX UINT64_C(0x100000)           /* radix sort */

/* Parameter ids. Those marked "integers" are set by __stoiSSEditTask, all others by the editor of the task's
 * precision. */
enum nax_ss_parameter {
    NAX_SS_DIMENSION = 1,           /* integers; p, number of variables */
    NAX_SS_OBSERVATION_COUNT = 2,   /* integers; n, number of observations */
    NAX_SS_OBSERVATIONS = 3,        /* the observation matrix, n times p */
    NAX_SS_OBSERVATION_STORAGE = 4, /* integers; storage code of the observation matrix */
    NAX_SS_VARIABLE_MASK = 5, /* integers; p integers; a variable with a nonzero entry is selected. Null selects all */
    NAX_SS_WEIGHTS = 6,       /* n observation weights; null means 1 for all */
    NAX_SS_MEAN = 7,          /* p means */
    NAX_SS_RAW_MOMENT2 = 8,   /* p raw moments of order 2 */
    NAX_SS_RAW_MOMENT3 = 9,   /* p raw moments of order 3 */
    NAX_SS_RAW_MOMENT4 = 10,  /* p raw moments of order 4 */
    NAX_SS_CENTRAL_MOMENT2 = 11,      /* p variances */
    NAX_SS_CENTRAL_MOMENT3 = 12,      /* p central moments of order 3 */
    NAX_SS_CENTRAL_MOMENT4 = 13,      /* p central moments of order 4 */
    NAX_SS_KURTOSIS = 14,             /* p excess kurtoses */
    NAX_SS_SKEWNESS = 15,             /* p skewnesses */
    NAX_SS_MINIMUM = 16,              /* p reals: seeds, then least values */
    NAX_SS_MAXIMUM = 17,              /* p reals: seeds, then greatest values */
    NAX_SS_VARIATION = 18,            /* p variation coefficients */
    NAX_SS_COVARIANCE = 19,           /* p by p covariance matrix */
    NAX_SS_COVARIANCE_STORAGE = 20,   /* integers; matrix storage code of the covariance */
    NAX_SS_CORRELATION = 21,          /* p by p correlation matrix with the variances on its diagonal */
    NAX_SS_CORRELATION_STORAGE = 22,  /* integers; matrix storage code of the correlation */
    NAX_SS_ACCUMULATED_WEIGHTS = 23,  /* two reals: the weights of all blocks so far summed, their squares summed */
    NAX_SS_QUANTILE_ORDER_COUNT = 24, /* integers; m, number of quantile orders */
    NAX_SS_QUANTILE_ORDERS = 25,      /* m orders in [0, 1] */
    NAX_SS_QUANTILES = 26,            /* m quantiles for each selected variable, one variable after the other */
    NAX_SS_ORDER_STATISTICS = 27,     /* the n sorted values of each selected variable */
    NAX_SS_GROUP_INDICES = 28,        /* integers; n integers: the group of each observation, from 0 */
    NAX_SS_POOLED_COVARIANCE_STORAGE = 29, /* integers; its matrix storage code */
    NAX_SS_POOLED_MEAN = 30,               /* p pooled means */
    NAX_SS_POOLED_COVARIANCE = 31,         /* p by p pooled covariance matrix */
    NAX_SS_GROUP_COVARIANCE_INDICES =
        32,                  /* integers; one integer a group: 1 asks for its mean and covariance, 0 does not */
    NAX_SS_GROUP_MEANS = 33, /* p means for each marked group, one group after the other */
    NAX_SS_GROUP_COVARIANCE_STORAGE = 34,  /* integers; matrix storage code of the groups' covariances */
    NAX_SS_GROUP_COVARIANCE = 35,          /* a covariance matrix for each marked group, one after the other */
    NAX_SS_ROBUST_COVARIANCE_STORAGE = 36, /* integers; matrix storage code of the robust covariance */
    NAX_SS_ROBUST_PARAM_COUNT = 37,        /* integers; number of robust parameters, 4 */
    NAX_SS_ROBUST_PARAMS = 38,             /* breakdown point, rejection probability, stopping criterion, iterations */
    NAX_SS_ROBUST_COVARIANCE = 39,         /* p by p robust covariance matrix */
    NAX_SS_ROBUST_MEAN = 40,               /* p robust means */
    NAX_SS_OUTLIER_PARAM_COUNT = 41,       /* integers; number of outlier parameters, 3 */
    NAX_SS_OUTLIER_PARAMS = 42,            /* subset method, tail probability, stopping criterion */
    NAX_SS_OUTLIER_WEIGHTS = 43,           /* n weights: 0 for an outlier */
    NAX_SS_ORDER_STATISTICS_STORAGE = 44,  /* integers; storage code of the order statistics */
    NAX_SS_CONDITIONING_INDICES =
        45, /* integers; p integers: 1 a variable of the result, -1 a conditioning one, 0 neither */
    NAX_SS_PARTIAL_COVARIANCE = 46,          /* p by p matrix; elements of variables marked 1 are written */
    NAX_SS_PARTIAL_COVARIANCE_STORAGE = 47,  /* integers; matrix storage code of the partial covariance */
    NAX_SS_PARTIAL_CORRELATION = 48,         /* likewise, with the partial variances on its diagonal */
    NAX_SS_PARTIAL_CORRELATION_STORAGE = 49, /* integers; matrix storage code of the partial correlation */
    NAX_SS_MISSING_PARAM_COUNT = 50,         /* integers; must hold 5 */
    NAX_SS_MISSING_PARAMS = 51, /* EM iterations, augmentation iterations, EM tolerance, imputations, missing entries */
    NAX_SS_INITIAL_ESTIMATE_COUNT = 52,           /* integers; p(p+3)/2 */
    NAX_SS_INITIAL_ESTIMATES = 53,                /* p means, then a packed covariance, to start EM from */
    NAX_SS_SIMULATED_COUNT = 54,                  /* integers; imputations times missing entries */
    NAX_SS_SIMULATED_VALUES = 55,                 /* imputed values */
    NAX_SS_ESTIMATE_COUNT = 56,                   /* integers; imputations times iterations times p(p+3)/2 */
    NAX_SS_ESTIMATES = 57,                        /* mean and packed covariance of each iteration */
    NAX_SS_PRIOR_COUNT = 58,                      /* integers; (p(p+3)+4)/2 at least */
    NAX_SS_PRIOR = 59,                            /* prior mean, packed scale matrix, then tau and m */
    NAX_SS_PARAMETRIZED_CORRELATION = 60,         /* p by p result of the parametrization */
    NAX_SS_PARAMETRIZED_CORRELATION_STORAGE = 61, /* integers; its matrix storage code */
    NAX_SS_STREAM_PARAM_COUNT = 62,               /* integers; must hold 1 */
    NAX_SS_STREAM_PARAMS = 63,                    /* one real: the rank accuracy epsilon */
    NAX_SS_STREAM_ORDER_COUNT = 64,               /* integers; number of orders of a stream quantile run */
    NAX_SS_STREAM_ORDERS = 65,                    /* those orders, in [0, 1] */
    NAX_SS_STREAM_QUANTILES = 66,                 /* quantiles of the stream, packed as quantiles */
    NAX_SS_SUM = 67,                              /* p sums */
    NAX_SS_RAW_SUM2 = 68,                         /* p sums of squares */
    NAX_SS_RAW_SUM3 = 69,                         /* p sums of cubes */
    NAX_SS_RAW_SUM4 = 70,                         /* p sums of fourth powers */
    NAX_SS_CENTRAL_SUM2 = 71,                     /* p sums of squares of deviations from the mean */
    NAX_SS_CENTRAL_SUM3 = 72,                     /* p sums of cubes of deviations */
    NAX_SS_CENTRAL_SUM4 = 73,                     /* p sums of fourth powers of deviations */
    NAX_SS_CROSS_PRODUCT = 74,                    /* p by p matrix of sums of products of deviations */
    NAX_SS_CROSS_PRODUCT_STORAGE = 75,            /* integers; matrix storage code of the cross-products */
    NAX_SS_MEDIAN_ABSOLUTE_DEVIATION = 76,        /* p median absolute deviations */
    NAX_SS_MEAN_ABSOLUTE_DEVIATION = 77,          /* p mean absolute deviations */
    NAX_SS_SORTED = 78,                           /* sorted values of each selected variable */
    NAX_SS_SORTED_STORAGE = 79                    /* integers; storage code of the sorted values */
};

/* --- Tasks ------------------------------------------------------------------------------------------------------- */

/* Creates a task.
 *   task           out; null after Memory
 *   p              number of variables, at least 1
 *   n              number of observations, at least 1
 *   x_storage      enum nax_ss_storage
 *   x              the observations, n * p reals; null for a task that works on results alone, and n and x_storage
 *                  are then not looked at
 *   weights        n weights, or null
 *   indices        p integers that select variables, or null for all
 *   wide_integers  0: the integers of the task are 32 bits wide, else 64
 * Status, in this order: NullTask, BadDimension, NoStorage, BadStorage, BadObservationCount, Memory. */
int32_t __stodSSNewTask(nax_ss_task** task, const void* p, const void* n, const void* x_storage, double* x,
                        double* weights, const void* indices, uint32_t wide_integers);
int32_t __stosSSNewTask(nax_ss_task** task, const void* p, const void* n, const void* x_storage, float* x,
                        float* weights, const void* indices, uint32_t wide_integers);

/* Deletes a task and what it owns, and sets *task to null; the caller's arrays stay. *task must be a task: it is not
 * tested. Status: NullTask when `task` itself is null. */
int32_t __stoSSDeleteTask(nax_ss_task** task);

/* Registers one array. `id` is of enum nax_ss_parameter. A null value gives the status of the missing parameter
 * (docs/statistics.md lists them) and changes nothing, so an editor never clears a field. The sum answers NoMean.
 * Status: NullTask, UnknownParameter, then that of a null value. */
int32_t __stodSSEditTask(nax_ss_task* task, int32_t id, double* value);
int32_t __stosSSEditTask(nax_ss_task* task, int32_t id, float* value);
int32_t __stoiSSEditTask(nax_ss_task* task, int32_t id, const void* value);

/* Editors of several arrays at once. A null argument leaves its field alone. Status: NullTask. */

/* The mean, raw moments of orders 2 to 4, central moments of orders 2 to 4: p reals each. */
int32_t __stodSSEditMoments(nax_ss_task* task, double* mean, double* raw_moment2, double* raw_moment3,
                            double* raw_moment4, double* central_moment2, double* central_moment3,
                            double* central_moment4);
int32_t __stosSSEditMoments(nax_ss_task* task, float* mean, float* raw_moment2, float* raw_moment3, float* raw_moment4,
                            float* central_moment2, float* central_moment3, float* central_moment4);

/* Sums, and sums of powers and of powers of deviations. */
int32_t __stodSSEditSums(nax_ss_task* task, double* sum, double* raw_sum2, double* raw_sum3, double* raw_sum4,
                         double* central_sum2, double* central_sum3, double* central_sum4);
int32_t __stosSSEditSums(nax_ss_task* task, float* sum, float* raw_sum2, float* raw_sum3, float* raw_sum4,
                         float* central_sum2, float* central_sum3, float* central_sum4);

/* Mean, covariance and correlation with their storage codes. */
int32_t __stodSSEditCovCor(nax_ss_task* task, double* mean, double* covariance, const void* covariance_storage,
                           double* correlation, const void* correlation_storage);
int32_t __stosSSEditCovCor(nax_ss_task* task, float* mean, float* covariance, const void* covariance_storage,
                           float* correlation, const void* correlation_storage);

/* Mean, sum, and cross-products with their storage code. */
int32_t __stodSSEditCP(nax_ss_task* task, double* mean, double* sum, double* cross_product,
                       const void* cross_product_storage);
int32_t __stosSSEditCP(nax_ss_task* task, float* mean, float* sum, float* cross_product,
                       const void* cross_product_storage);

/* What partial covariance reads and writes. */
int32_t __stodSSEditPartialCovCor(nax_ss_task* task, const void* conditioning_indices, double* covariance,
                                  const void* covariance_storage, double* correlation, const void* correlation_storage,
                                  double* partial_covariance, const void* partial_covariance_storage,
                                  double* partial_correlation, const void* partial_correlation_storage);
int32_t __stosSSEditPartialCovCor(nax_ss_task* task, const void* conditioning_indices, float* covariance,
                                  const void* covariance_storage, float* correlation, const void* correlation_storage,
                                  float* partial_covariance, const void* partial_covariance_storage,
                                  float* partial_correlation, const void* partial_correlation_storage);

/* Quantiles and order statistics. */
int32_t __stodSSEditQuantiles(nax_ss_task* task, const void* quantile_order_count, double* quantile_orders,
                              double* quantiles, double* order_statistics, const void* order_statistics_storage);
int32_t __stosSSEditQuantiles(nax_ss_task* task, const void* quantile_order_count, float* quantile_orders,
                              float* quantiles, float* order_statistics, const void* order_statistics_storage);

/* Quantiles of data that arrive in blocks. */
int32_t __stodSSEditStreamQuantiles(nax_ss_task* task, const void* stream_order_count, double* stream_orders,
                                    double* stream_quantiles, const void* stream_param_count, double* stream_params);
int32_t __stosSSEditStreamQuantiles(nax_ss_task* task, const void* stream_order_count, float* stream_orders,
                                    float* stream_quantiles, const void* stream_param_count, float* stream_params);

/* Groups, pooled and group results. The two storage codes go through __stoiSSEditTask. */
int32_t __stodSSEditPooledCovariance(nax_ss_task* task, const void* group_indices, double* pooled_mean,
                                     double* pooled_covariance, const void* group_covariance_indices,
                                     double* group_means, double* group_covariance);
int32_t __stosSSEditPooledCovariance(nax_ss_task* task, const void* group_indices, float* pooled_mean,
                                     float* pooled_covariance, const void* group_covariance_indices, float* group_means,
                                     float* group_covariance);

/* Imputation of missing values. */
int32_t __stodSSEditMissingVals(nax_ss_task* task, const void* missing_param_count, double* missing_params,
                                const void* initial_estimate_count, double* initial_estimates, const void* prior_count,
                                double* prior, const void* simulated_count, double* simulated_values,
                                const void* estimate_count, double* estimates);
int32_t __stosSSEditMissingVals(nax_ss_task* task, const void* missing_param_count, float* missing_params,
                                const void* initial_estimate_count, float* initial_estimates, const void* prior_count,
                                float* prior, const void* simulated_count, float* simulated_values,
                                const void* estimate_count, float* estimates);

/* Outlier detection. */
int32_t __stodSSEditOutDetect(nax_ss_task* task, const void* outlier_param_count, double* outlier_params,
                              double* outlier_weights);
int32_t __stosSSEditOutDetect(nax_ss_task* task, const void* outlier_param_count, float* outlier_params,
                              float* outlier_weights);

/* Robust mean and covariance. */
int32_t __stodSSEditRCov(nax_ss_task* task, const void* robust_covariance_storage, const void* robust_param_count,
                         double* robust_params, double* robust_covariance, double* robust_mean);
int32_t __stosSSEditRCov(nax_ss_task* task, const void* robust_covariance_storage, const void* robust_param_count,
                         float* robust_params, float* robust_covariance, float* robust_mean);

/* Parametrization of a correlation matrix. */
int32_t __stodSSEditMtxParametrz(nax_ss_task* task, double* correlation, const void* correlation_storage,
                                 double* parametrized_correlation, const void* parametrized_correlation_storage);
int32_t __stosSSEditMtxParametrz(nax_ss_task* task, float* correlation, const void* correlation_storage,
                                 float* parametrized_correlation, const void* parametrized_correlation_storage);

#ifdef __cplusplus
}
#endif
#endif
