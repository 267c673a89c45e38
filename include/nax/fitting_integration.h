/* Integration of splines: definite integrals of all functions of a task (nax/fitting.h) over pairs of limits. */
#ifndef NAX_FITTING_INTEGRATION_H
#define NAX_FITTING_INTEGRATION_H

#include <stdint.h>

#include "nax/fitting.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A caller's own integral over a part of the axis. The *n intervals are llim[i] <= rlim[i], in the cells lcell[i] and
 * rcell[i] (0 for an interval left of the partition, nx right of it); the integral of function j over interval i goes to
 * r[j * n + i]. The library gives it the sign of the pair and adds it to the rest. A negative value stops the call and is
 * its status. May be called from several threads at once. */
typedef int32_t (*nax_df_integration_callback_d)(const int64_t* n, const int64_t* lcell, const double* llim,
                                                 const int64_t* rcell, const double* rlim, double* r, void* parameters,
                                                 void* reserved);
typedef int32_t (*nax_df_integration_callback_s)(const int64_t* n, const int64_t* lcell, const float* llim,
                                                 const int64_t* rcell, const float* rlim, float* r, void* parameters,
                                                 void* reserved);

/* Layout of the integrals. Mind that 0 means limit-major here. */
enum nax_df_integral_hint {
    NAX_DF_INTEGRALS_BY_FUNCTION = 16, /* r[j * nlim + i]; 128 too */
    NAX_DF_INTEGRALS_BY_LIMIT = 32     /* r[i * ny + j]; 0 too */
};

/* Integrals of all functions from llim[i] to rlim[i].
 *   method                   not read
 *   nlim                     pairs
 *   llim, llimhint           left limits; hints as for sites: 4 equally spaced (two ends), 64 ascending
 *   rlim, rlimhint           right limits; a right limit below the left one gives the negative integral
 *   left_hint, right_hint    data hints of the two searches, or null
 *   r, rhint                 nlim * ny integrals; enum nax_df_integral_hint
 *   left, right, interior    callbacks for the parts of an interval left of x[0], right of x[nx-1] and between, each null
 *                            or with its parameters; without one the spline serves, outside by its end polynomials
 *   search                   the caller's search, or null
 *   threaders                threads to use, or null; the result is the same bits with any number of threads
 * Splines: order 2; 3 of type 0 or 1; 4 of type 0, 2, 3, 4, 5, 9; above 4; order 0 of type 7 and 8 (steps, which read the
 * function data), other types but look-up when all three callbacks are given.
 * Status, in this order: NullTask, BadType, BadDataHint, BadIntegralHint, BadX (task without partition), BadY (steps: no
 * data), BadCoeff (other splines: no coefficients), BadSite and NullOutput (limits, r null with nlim above 0), Memory;
 * then negative statuses of callbacks, where r holds what was completed.
 * Accuracy: cells between the limits are added with twice the working precision, so that the result is that of the exact
 * sum of the rounded cell integrals but for a few units in the last place.
 * Time per pair: two searches and a constant, after O(nx) per function; where the limits are so close or so few that
 * their cells are fewer than nx, O(cells between them) instead. */
int32_t nax_df_kernel_dDFIntegrate1D(const nax_df_task* task, int64_t method, int64_t nlim, const double* llim,
                                     int64_t llimhint, const double* rlim, int64_t rlimhint, const double* left_hint,
                                     const double* right_hint, double* r, int64_t rhint, nax_df_integration_callback_d left,
                                     void* left_parameters, nax_df_integration_callback_d right, void* right_parameters,
                                     nax_df_integration_callback_d interior, void* interior_parameters,
                                     nax_df_search_callback_d search, void* search_parameters,
                                     const nax_threaders* threaders);
int32_t nax_df_kernel_sDFIntegrate1D(const nax_df_task* task, int64_t method, int64_t nlim, const float* llim,
                                     int64_t llimhint, const float* rlim, int64_t rlimhint, const float* left_hint,
                                     const float* right_hint, float* r, int64_t rhint, nax_df_integration_callback_s left,
                                     void* left_parameters, nax_df_integration_callback_s right, void* right_parameters,
                                     nax_df_integration_callback_s interior, void* interior_parameters,
                                     nax_df_search_callback_s search, void* search_parameters,
                                     const nax_threaders* threaders);

/* The evaluators of one block of at most 128 pairs for one function, and the body of the parallel loop; `CB` members
 * also add what callbacks computed. Contexts are the library's own records (fit/integrate/integral.h). Status 0. */
#define NAX_DF_DECLARE_INTEGRAL(name)                                                                           \
    int32_t name(const void* call, int64_t function, const void* block, void* r, int64_t stride);               \
    int32_t name##CB(const void* call, int64_t function, const void* block, void* r, int64_t stride);
#define NAX_DF_DECLARE_INTEGRALS(prefix)                                                                        \
    NAX_DF_DECLARE_INTEGRAL(prefix##LinearSpline) NAX_DF_DECLARE_INTEGRAL(prefix##QuadSpline)                   \
    NAX_DF_DECLARE_INTEGRAL(prefix##CubSpline) NAX_DF_DECLARE_INTEGRAL(prefix##SubbSpline)                      \
    NAX_DF_DECLARE_INTEGRAL(prefix##ArbSpline) NAX_DF_DECLARE_INTEGRAL(prefix##PwLSpline)                       \
    NAX_DF_DECLARE_INTEGRAL(prefix##PwRSpline)
NAX_DF_DECLARE_INTEGRALS(nax_df_kernel_d_Integrate)
NAX_DF_DECLARE_INTEGRALS(nax_df_kernel_s_Integrate)
#undef NAX_DF_DECLARE_INTEGRALS
#undef NAX_DF_DECLARE_INTEGRAL
void _v1DIntegrThreader(int64_t item, int thread, int threads, void* context);
void _v1DIntegrThreaderCB(int64_t item, int thread, int threads, void* context);

/* Pairs from which a call goes parallel when a side is searched as sorted, by evaluator. */
extern const int64_t _dfIntegrThreadThresholdsSortedSearch[8];

#ifdef __cplusplus
}
#endif

#endif
