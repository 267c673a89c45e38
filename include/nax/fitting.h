/* Data fitting: one-dimensional spline tasks. A task describes a partition x[0] .. x[nx-1] of an interval, ny functions
 * sampled on it, and the spline built for them. Construction fills coefficients, evaluation and integration read them.
 *
 * Conventions. Every entry returns 0, or a negative status of enum nax_df_status. Names with `_d` or `d` work on
 * double, their twins with `s` on float. Integer arguments are 64 bits wide. A task holds pointers and copies nothing:
 * partition, functions, conditions and coefficients stay the caller's and must outlive the task. A task carries no
 * lock: several threads may read one task, but none may edit it meanwhile. `threaders` may be null; then the call runs
 * on the calling thread, with the same result bits.
 *
 * Cells. nx points make cells 0 to nx: cell c holds x[c-1] <= site < x[c], cell 0 lies left of the partition, cell nx
 * right of it, and a site on the right end x[nx-1] belongs to cell nx-1. */
#ifndef NAX_FITTING_H
#define NAX_FITTING_H

#include <stdint.h>

#include "nax/status.h"

#include "nax/threaders.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct nax_df_task nax_df_task;

/* Partition hints (xhint). */
enum nax_df_partition_hint {
    NAX_DF_PARTITION_GENERAL = 0,       /* no hint */
    NAX_DF_PARTITION_NON_UNIFORM = 1,   /* as GENERAL; editing to it rebuilds the partition index */
    NAX_DF_PARTITION_QUASI_UNIFORM = 2, /* nearly equal steps */
    NAX_DF_PARTITION_UNIFORM = 4        /* equal steps; x holds the two ends only */
};

/* Storage of functions and coefficients (yhint, scoeffhint). 0 means ROWS. */
enum nax_df_storage_hint {
    NAX_DF_STORAGE_ROWS = 16,       /* function j starts at base + j * nx */
    NAX_DF_STORAGE_COLUMNS = 32,    /* functions only: function j at point i is base[i * ny + j] */
    NAX_DF_STORAGE_FIRST_ONLY = 128 /* only function 0 is set, the others follow by nax_df_kernel_dEditIdxPtr */
};

/* Spline types (s_type); s_order is 2 for linear, 3 for quadratic, 4 for cubic, 0 for steps and look-up. */
enum nax_df_spline_type {
    NAX_DF_TYPE_DEFAULT = 0,
    NAX_DF_TYPE_SUBBOTIN = 1,
    NAX_DF_TYPE_NATURAL = 2,
    NAX_DF_TYPE_HERMITE = 3,
    NAX_DF_TYPE_BESSEL = 4,
    NAX_DF_TYPE_AKIMA = 5,
    NAX_DF_TYPE_LOOK_UP = 6,
    NAX_DF_TYPE_STEP_RIGHT = 7, /* step function, continuous from the right */
    NAX_DF_TYPE_STEP_LEFT = 8,  /* step function, continuous from the left */
    NAX_DF_TYPE_HYMAN = 9
};

/* Internal conditions (ic_type). */
enum nax_df_internal_condition {
    NAX_DF_IC_NONE = 0,
    NAX_DF_IC_FIRST_DERIVATIVES = 1,  /* nx - 2 values at the interior points */
    NAX_DF_IC_SECOND_DERIVATIVES = 2, /* nx - 2 values at the interior points */
    NAX_DF_IC_SUBBOTIN_KNOTS = 8,     /* nx + 1 knots, the ends equal to the ends of the partition */
    NAX_DF_IC_UNIFORM_KNOTS = 12      /* first and last interior knot of a uniform sub-grid */
};

/* Boundary conditions (bc_type); the derivative types read two values from bc, left first. */
enum nax_df_boundary_condition {
    NAX_DF_BC_NONE = 0,
    NAX_DF_BC_NOT_A_KNOT = 1,
    NAX_DF_BC_FREE_END = 2,
    NAX_DF_BC_1ST_1ST = 12,
    NAX_DF_BC_1ST_2ND = 36,
    NAX_DF_BC_2ND_1ST = 24,
    NAX_DF_BC_2ND_2ND = 48,
    NAX_DF_BC_PERIODIC = 64,
    NAX_DF_BC_QUADRATIC_VALUE = 128 /* standard quadratic: bc[0] is the value at the middle of the first cell */
};

/* Attribute ids of editors and queries. */
enum nax_df_attribute {
    NAX_DF_ATTRIBUTE_X = 1,
    NAX_DF_ATTRIBUTE_Y = 2,
    NAX_DF_ATTRIBUTE_IC = 3,
    NAX_DF_ATTRIBUTE_BC = 4,
    NAX_DF_ATTRIBUTE_SCOEFF = 5,
    NAX_DF_ATTRIBUTE_NX = 14,
    NAX_DF_ATTRIBUTE_XHINT = 15,
    NAX_DF_ATTRIBUTE_NY = 16,
    NAX_DF_ATTRIBUTE_YHINT = 17,
    NAX_DF_ATTRIBUTE_S_ORDER = 18,
    NAX_DF_ATTRIBUTE_S_TYPE = 19,
    NAX_DF_ATTRIBUTE_IC_TYPE = 20,
    NAX_DF_ATTRIBUTE_BC_TYPE = 21,
    NAX_DF_ATTRIBUTE_SCOEFFHINT = 22,
    NAX_DF_ATTRIBUTE_CHECK_FLAG = 23
};

/* --- Tasks ------------------------------------------------------------------------------------------------------- */

/* Creates a task.
 *   task       out; written as soon as the record exists, also when a later step fails
 *   nx, x      partition, nx >= 2 ascending values (two for xhint 4)
 *   xhint      enum nax_df_partition_hint
 *   ny, y      functions, in the storage that yhint tells; ny 0 with y null makes a task for search alone
 *   yhint      0 or enum nax_df_storage_hint
 *   int_width  0: cells, derivative flags and queried values are 32-bit integers, else 64-bit
 * Status, tested in this order: BadNx, BadX, BadXHint, BadY (y null) or BadNy (y given with ny 0, ny negative),
 * BadYHint, Memory. After Memory a non-null *task must still go to nax_df_kernel_DeleteTask. Time O(nx) for the
 * partition index of a task that isn't uniform, which takes about 10 bytes a point. */
int32_t nax_df_kernel_dNewTask1D(nax_df_task** task, int64_t nx, const double* x, int64_t xhint, int64_t ny,
                                 const double* y, int64_t yhint, int64_t int_width);
int32_t nax_df_kernel_sNewTask1D(nax_df_task** task, int64_t nx, const float* x, int64_t xhint, int64_t ny,
                                 const float* y, int64_t yhint, int64_t int_width);

/* Frees the task with what it owns and sets *task to null. Status: NullTask. */
int32_t nax_df_kernel_DeleteTask(nax_df_task** task);

/* Describes the spline of a task: order, type, boundary and internal conditions, and where its coefficients go.
 * scoeff may be null; else function j's coefficients start at scoeff + j * cells * s_order with nx - 1 cells (nx for a
 * Subbotin spline), cell after cell, lowest power first, in the local variable site - x[i]. With scoeffhint 128 only
 * function 0 is set.
 * Status, tested in this order, earlier stores staying in force: NullTask; BadOrder (negative), BadType (negative);
 * BadBc (bc null unless bc_type is 0, 1, 2 or 64); BadIcType (ic without ic_type), BadIc (ic_type without ic); BadNy
 * (ny 0 with scoeff given), Memory. scoeffhint isn't tested. */
int32_t nax_df_kernel_dEditPPSpline1D(nax_df_task* task, int64_t s_order, int64_t s_type, int64_t bc_type,
                                      const double* bc, int64_t ic_type, const double* ic, double* scoeff,
                                      int64_t scoeffhint);
int32_t nax_df_kernel_sEditPPSpline1D(nax_df_task* task, int64_t s_order, int64_t s_type, int64_t bc_type,
                                      const float* bc, int64_t ic_type, const float* ic, float* scoeff,
                                      int64_t scoeffhint);

/* Replaces one of the pointers x, y, ic, bc, scoeff (attribute 1 to 5). y and scoeff set the pointers of all functions
 * from the stored ny and hints. A new x doesn't rebuild the partition index: edit xhint to 1 for that, after x and nx.
 * Status: NullTask, BadAttribute, the attribute's status for a null pointer, BadNy (scoeff of a task without
 * functions), Memory. */
int32_t nax_df_kernel_dEditPtr(nax_df_task* task, int64_t attribute, const double* pointer);
int32_t nax_df_kernel_sEditPtr(nax_df_task* task, int64_t attribute, const float* pointer);

/* Replaces the pointer of one function: data (attribute 2) or coefficients (5).
 * Status: NullTask, BadYHint (data of a column-stored task), BadAttribute, BadIndex (outside 0 .. ny-1), BadY or
 * BadCoeff (pointer null, or no pointers set yet). */
int32_t nax_df_kernel_dEditIdxPtr(nax_df_task* task, int64_t attribute, int64_t index, const double* pointer);
int32_t nax_df_kernel_sEditIdxPtr(nax_df_task* task, int64_t attribute, int64_t index, const float* pointer);

/* Replaces an integer attribute (14 to 23). Editing xhint to 1 rebuilds the partition index from the stored x and nx,
 * so a task that was uniform needs its new x first.
 * Status: NullTask, BadAttribute, the attribute's own status, Memory. */
int32_t nax_df_kernel_iEditVal(nax_df_task* task, int64_t attribute, int64_t value);

/* Reads a pointer attribute (1 to 5; the first function's pointer for y and scoeff).
 * Status: NullTask, NullOutput, BadAttribute. */
int32_t nax_df_kernel_dQueryPtr(const nax_df_task* task, int64_t attribute, double** pointer);
int32_t nax_df_kernel_sQueryPtr(const nax_df_task* task, int64_t attribute, float** pointer);

/* Reads the pointer of one function (attribute 2 or 5). An index equal to ny passes and yields null.
 * Status: NullTask, NullOutput, BadIndex, BadAttribute, BadYHint (data of a column-stored task). */
int32_t nax_df_kernel_dQueryIdxPtr(const nax_df_task* task, int64_t attribute, int64_t index, double** pointer);
int32_t nax_df_kernel_sQueryIdxPtr(const nax_df_task* task, int64_t attribute, int64_t index, float** pointer);

/* Reads an integer attribute (14 to 23) into 32 bits when the task's int_width is 0, else into 64.
 * Status: NullTask, NullOutput, BadAttribute. */
int32_t nax_df_kernel_iQueryVal(const nax_df_task* task, int64_t attribute, void* value);

/* --- Cell search ------------------------------------------------------------------------------------------------- */

/* A caller's own search. Fills cell[i] and flag[i] for the *nsite sites. A negative return value stops the call and is
 * its status; DfStatusExactResult says that all cells are final; any other value says that those with a non-zero flag
 * are, and that the others are guesses. A guess c is kept for a site exactly on x[c]. */
typedef int32_t (*nax_df_search_callback_d)(const int64_t* nsite, const double* site, int64_t* cell, int32_t* flag,
                                            void* parameters, void* reserved);
typedef int32_t (*nax_df_search_callback_s)(const int64_t* nsite, const float* site, int64_t* cell, int32_t* flag,
                                            void* parameters, void* reserved);

/* Site hints; other values say nothing about the sites. */
enum nax_df_site_hint {
    NAX_DF_SITES_UNIFORM = 4, /* site holds the two ends of nsite equally spaced sites */
    NAX_DF_SITES_SORTED = 64  /* ascending; unsorted sites then get wrong cells, but nothing worse */
};

/* Finds the cell of each site.
 *   method      not read
 *   data_hint   null, or an array whose element 1 is 0 (no hint) or 1 (most sites lie near the cell in element 4)
 *   cell        out: nsite 32-bit integers when the task's int_width is 0, else 64-bit
 *   callback    null, or the caller's search with its parameters; called for 128 sites at a time and once for the rest
 *   reserved    zero
 * Status: NullTask, BadX, BadDataHint, BadSite and NullOutput (site, cell null with nsite above 0), Memory, and the
 * negative statuses of the callback. A NaN site gets some cell from 0 to nx.
 * Time per site: O(1) for uniform, nearly uniform and sorted cases and on average for a partition of moderate density
 * changes, else O(log nx). */
int32_t nax_df_kernel_dDFSearch1D(const nax_df_task* task, int64_t method, int64_t nsite, const double* site,
                                  int64_t sitehint, const double* data_hint, void* cell,
                                  nax_df_search_callback_d callback, void* parameters, void* reserved,
                                  const nax_threaders* threaders);
int32_t nax_df_kernel_sDFSearch1D(const nax_df_task* task, int64_t method, int64_t nsite, const float* site,
                                  int64_t sitehint, const float* data_hint, void* cell,
                                  nax_df_search_callback_s callback, void* parameters, void* reserved,
                                  const nax_threaders* threaders);

/* Per-block search kernels, one family per algorithm: Uniform, QuasiUniform, Sorted, Peak, Hybrid, UserDef, UniUserDef.
 * They search the sites of one block on the calling thread and are what evaluation and integration are made of.
 *   nx, x       partition (its two ends for Uniform and UniUserDef)
 *   position    Sorted: in, where the walk starts; out, where it ended. Others: not read
 *   callback    UserDef, UniUserDef: the caller's search with its parameters. Others: not read
 *   bin_table   Hybrid: the partition index of a task, or null. Others: not read
 *   cell        out, 32-bit integers for the member `32`, else 64-bit
 *   flags       bit 0: 64-bit integers; bit 1: the cells go to a caller's array (only then can they be 32 bits wide)
 *   scale       (nx - 1) / (x[last] - x[0]) for Uniform, UniUserDef and QuasiUniform, the task's bins per unit of x for
 *               Hybrid, the peak cell for Peak
 * `64Pack` differs from `64` in the width of the arithmetic: nx must be below 2^31 - 1. Status: 0, or a negative status
 * of the callback. */
#define NAX_DF_DECLARE_SEARCH_MEMBER(type, callback_type, name)                                 \
    int32_t name(int64_t nx, const type* x, int64_t nsite, const type* site, int64_t* position, \
                 callback_type callback, void* parameters, const int64_t* bin_table, void* cell, type scale);
#define NAX_DF_DECLARE_SEARCH(prefix, type, callback_type, algorithm)                                          \
    int32_t nax_df_kernel_##prefix##DF##algorithm##Search1D(                                                   \
        int64_t nx, const type* x, int64_t nsite, const type* site, int64_t* position, callback_type callback, \
        void* parameters, const int64_t* bin_table, void* cell, int64_t flags, type scale);                    \
    NAX_DF_DECLARE_SEARCH_MEMBER(type, callback_type, nax_df_kernel_##prefix##DF##algorithm##Search1D32)       \
    NAX_DF_DECLARE_SEARCH_MEMBER(type, callback_type, nax_df_kernel_##prefix##DF##algorithm##Search1D64Pack)   \
    NAX_DF_DECLARE_SEARCH_MEMBER(type, callback_type, nax_df_kernel_##prefix##DF##algorithm##Search1D64)
#define NAX_DF_DECLARE_SEARCH_BOTH(algorithm)                             \
    NAX_DF_DECLARE_SEARCH(d, double, nax_df_search_callback_d, algorithm) \
    NAX_DF_DECLARE_SEARCH(s, float, nax_df_search_callback_s, algorithm)
NAX_DF_DECLARE_SEARCH_BOTH(Uniform)
NAX_DF_DECLARE_SEARCH_BOTH(QuasiUniform)
NAX_DF_DECLARE_SEARCH_BOTH(Sorted)
NAX_DF_DECLARE_SEARCH_BOTH(Peak)
NAX_DF_DECLARE_SEARCH_BOTH(Hybrid)
NAX_DF_DECLARE_SEARCH_BOTH(UserDef)
NAX_DF_DECLARE_SEARCH_BOTH(UniUserDef)
#undef NAX_DF_DECLARE_SEARCH_MEMBER
#undef NAX_DF_DECLARE_SEARCH
#undef NAX_DF_DECLARE_SEARCH_BOTH

/* --- Evaluation -------------------------------------------------------------------------------------------------- */

/* A caller's own evaluation of the sites left of the partition, right of it, or within. Called once for all functions
 * with up to 64 sites of a block: fills r[(j * *nsite + i) * nder + d] for function j, site i and requested derivative
 * d (nder 1 and the value alone when no order is requested). May be called on several threads at once. A negative
 * return value stops the call and is its status. */
typedef int32_t (*nax_df_interpolation_callback_d)(const int64_t* nsite, const int64_t* cell, const double* site,
                                                   double* r, void* parameters, void* reserved);
typedef int32_t (*nax_df_interpolation_callback_s)(const int64_t* nsite, const int64_t* cell, const float* site,
                                                   float* r, void* parameters, void* reserved);

/* Job of an evaluation. */
enum nax_df_job {
    NAX_DF_JOB_EVALUATE = 1,
    NAX_DF_JOB_STORE_CELLS = 2, /* may be added to EVALUATE: the cells are stored too */
    NAX_DF_JOB_GIVEN_CELLS = 4  /* alone: the cell array is an input and no search is made */
};

/* Layout of results, for function j, site i, slot d among the nder requested orders. */
enum nax_df_result_hint {
    NAX_DF_RESULT_FUNCTIONS = 16,   /* (j * nsite + i) * nder + d; also 0 and 128 */
    NAX_DF_RESULT_PLANES = 32,      /* (j * nder + d) * nsite + i */
    NAX_DF_RESULT_SITES = 256,      /* (i * ny + j) * nder + d */
    NAX_DF_RESULT_SITE_ORDERS = 512 /* (i * nder + d) * ny + j */
};

/* Values and derivatives of all functions of a task with built coefficients, at nsite sites.
 *
 *   job            enum nax_df_job
 *   method         not read
 *   nsite, site    the sites, or the two ends of nsite equally spaced ones
 *   sitehint       0 or enum nax_df_site_hint
 *   ndorder        number of flags in dorder
 *   dorder         flags of 0 or 1, 32-bit integers when the task's int_width is 0, else 64-bit: entry 0 asks for the
 *                  value, entry k for the k-th derivative. null, or no flag set, asks for the value
 *   data_hint      as for the search
 *   r              out: nsite * ny * nder elements, nder being the number of flags set. Requested orders are packed in
 *                  ascending order; those that the spline doesn't have are zero
 *   rhint          enum nax_df_result_hint, the layout of r
 *   cell           out with STORE_CELLS, in with GIVEN_CELLS, else not read: nsite integers as for the search. Given
 *                  numbers outside 0 .. nx count as the nearest cell
 *   left, right, interior
 *                  callbacks for the sites left of the partition, right of it and within, each null or with its
 *                  parameters. Without one, the first and last polynomial reach sites outside the partition
 *   search         null, or the caller's search with its parameters, as for nax_df_kernel_dDFSearch1D
 *   threaders      null, or where threads come from
 *
 * Splines by s_order: 2 linear; 3 quadratic (s_type 0 or 1); 4 cubic (s_type 0, 2, 3, 4, 5, 9); above 4 polynomials of
 * that many coefficients; 0 with s_type 7 or 8 step functions and 6 look-up, which read the function data; 0 with another
 * type when all three callbacks are given. Look-up takes sites that are partition points, within 2^-40 on a uniform
 * partition.
 *
 * Status, tested in this order: NullTask, BadX, BadType, BadDataHint, BadResultHint. Then, where there are sites: BadSite
 * (site null), NullOutput (r null with functions, or a needed cell array null), BadOrder (more coefficients than an
 * address space holds), BadCoeff or BadY (a function without coefficients or data), Memory. While evaluating: negative
 * statuses of callbacks; for look-up BadSite, BadDerivCount (not exactly one order), BadDerivOrder (not the value). After
 * a failure r holds what was completed.
 *
 * Time: the search, plus O(ny * nder) for each site. Calls of up to 64 sites take no memory; more than 1024 sites are
 * shared out to threads.
 *
 *     double site = 0.5, value;
 *     int32_t status = nax_df_kernel_dDFInterpolate1D(task, NAX_DF_JOB_EVALUATE, 0, 1, &site, 0, 0, 0, 0, &value,
 *                                                     NAX_DF_RESULT_FUNCTIONS, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0); */
int32_t nax_df_kernel_dDFInterpolate1D(const nax_df_task* task, int64_t job, int64_t method, int64_t nsite,
                                       const double* site, int64_t sitehint, int64_t ndorder, const void* dorder,
                                       const double* data_hint, double* r, int64_t rhint, void* cell,
                                       nax_df_interpolation_callback_d left, void* left_parameters,
                                       nax_df_interpolation_callback_d right, void* right_parameters,
                                       nax_df_interpolation_callback_d interior, void* interior_parameters,
                                       nax_df_search_callback_d search, void* search_parameters,
                                       const nax_threaders* threaders);
int32_t nax_df_kernel_sDFInterpolate1D(const nax_df_task* task, int64_t job, int64_t method, int64_t nsite,
                                       const float* site, int64_t sitehint, int64_t ndorder, const void* dorder,
                                       const float* data_hint, float* r, int64_t rhint, void* cell,
                                       nax_df_interpolation_callback_s left, void* left_parameters,
                                       nax_df_interpolation_callback_s right, void* right_parameters,
                                       nax_df_interpolation_callback_s interior, void* interior_parameters,
                                       nax_df_search_callback_s search, void* search_parameters,
                                       const nax_threaders* threaders);

/* Evaluators of one block of at most 64 sites for one function, the stages that nax_df_kernel_dDFInterpolate1D is made
 * of: members for 32-bit and 64-bit cells, and `CB` members that merge in the results of callbacks. `block` is the
 * library's own record (fit/eval/evaluator.h); status as for the entry. */
#define NAX_DF_DECLARE_EVALUATOR(prefix, evaluator)                                              \
    int32_t nax_df_kernel_##prefix##_##evaluator##SplineEval32(void* block, int64_t function);   \
    int32_t nax_df_kernel_##prefix##_##evaluator##SplineEval64(void* block, int64_t function);   \
    int32_t nax_df_kernel_##prefix##_##evaluator##SplineEval32CB(void* block, int64_t function); \
    int32_t nax_df_kernel_##prefix##_##evaluator##SplineEval64CB(void* block, int64_t function);
NAX_DF_DECLARE_EVALUATOR(d, Linear)
NAX_DF_DECLARE_EVALUATOR(s, Linear)
NAX_DF_DECLARE_EVALUATOR(d, Quadratic)
NAX_DF_DECLARE_EVALUATOR(s, Quadratic)
NAX_DF_DECLARE_EVALUATOR(d, Cubic)
NAX_DF_DECLARE_EVALUATOR(s, Cubic)
NAX_DF_DECLARE_EVALUATOR(d, QuadSubb)
NAX_DF_DECLARE_EVALUATOR(s, QuadSubb)
NAX_DF_DECLARE_EVALUATOR(d, Arbitr)
NAX_DF_DECLARE_EVALUATOR(s, Arbitr)
NAX_DF_DECLARE_EVALUATOR(d, StepLeft)
NAX_DF_DECLARE_EVALUATOR(s, StepLeft)
NAX_DF_DECLARE_EVALUATOR(d, StepRight)
NAX_DF_DECLARE_EVALUATOR(s, StepRight)
NAX_DF_DECLARE_EVALUATOR(d, LookUp)
NAX_DF_DECLARE_EVALUATOR(s, LookUp)
#undef NAX_DF_DECLARE_EVALUATOR

#ifdef __cplusplus
}
#endif

#include "nax/fitting_construction.h"
#include "nax/fitting_integration.h"

#endif
