/* Construction of splines: each entry fills the coefficient arrays of a task (nax/fitting.h) from its partition, its
 * functions and its conditions.
 *
 * Arguments of all entries
 *   task       with nx, x, y, scoeff set; bc_type, bc, ic_type, ic as the spline needs them
 *   format     not read
 *   method     0
 *   threaders  threads to use, or null; the coefficients are the same bits with any number of threads
 * Conditions are one set for all functions. Coefficients of a cell stand together, lowest power first, in t = site - x[i].
 *
 * Status, in the order of the tests: DfStatusNullTask; DfStatusBadMethod (linear, quadratic and natural); DfStatusBadNx;
 * DfStatusBadYHint; DfStatusBadBcType; DfStatusBadBc (bc null for types 12, 24, 36, 48, and for 64 in the default and
 * Hermite splines); DfStatusBadIc (ic null for these two); DfStatusBadY, DfStatusBadCoeff (an array or one of its
 * pointers null); DfStatusBadPeriodicVal (type 64 and first and last value of a function differ); DfStatusMemory. Up to
 * here no coefficient is written. Time is proportional to nx times ny. */
#ifndef NAX_FITTING_CONSTRUCTION_H
#define NAX_FITTING_CONSTRUCTION_H

#include <stdint.h>

#include "nax/fitting.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Chords between the points: 2 coefficients, nx >= 2. bc_type 64 only asks that each function's ends agree; other types
 * aren't looked at. */
int32_t nax_df_kernel_dDFLinearSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);
int32_t nax_df_kernel_sDFLinearSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);

/* Quadratic splines: 3 coefficients.
 * s_type 0, standard: breakpoints at the points, nx - 1 cells, bc_type 128 with bc[0] the value at the middle of the first
 *   cell. That value's error neither grows nor decays along the spline.
 * s_type 1, Subbotin (Yu. N. Subbotin, Proc. Steklov Inst. Math. 88 (1967)): a parabola around each point, nx cells, joined
 *   at knots between the points. ic_type must have bit 8: ic holds nx + 1 knots, the first and last equal to the ends of
 *   the partition (null: the middles of the intervals); with bit 4 in addition ic holds the first and last interior
 *   knot of a uniform sub-grid. bc_type 12, 24, 36, 48 with first or second derivatives at the ends.
 * Further status: DfStatusBadMethod (s_type neither), DfStatusBadIcType, DfStatusBadIc (a knot not strictly inside its
 * interval), DfStatusSolverFailure (zero pivot: earlier functions are complete, later ones untouched). */
int32_t nax_df_kernel_dDFQuadraticSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);
int32_t nax_df_kernel_sDFQuadraticSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);

/* Cubic spline from second derivatives at the interior points, given in ic (nx - 2 values); nx >= 3. Boundary types 1, 2,
 * 12, 24, 36, 48, 64 (bc[0]: the second derivative at both ends). */
int32_t nax_df_kernel_dDFDefaultCubicSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);
int32_t nax_df_kernel_sDFDefaultCubicSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);

/* The twice continuously differentiable cubic spline through the points; nx >= 2, for not-a-knot ends nx >= 3 (three points
 * give the parabola through them). Boundary types 1, 2 (the natural ends), 12, 24, 36, 48, 64.
 * Further status: DfStatusSolverFailure (points that coincide). */
int32_t nax_df_kernel_dDFNaturalCubicSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);
int32_t nax_df_kernel_sDFNaturalCubicSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);

/* Cubic spline from first derivatives at the interior points, given in ic (nx - 2 values); nx >= 3. Boundary types 0, 1, 2,
 * 12, 24, 36, 48, 64 (bc[0]: the slope at both ends). */
int32_t nax_df_kernel_dDFHermiteCubicSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);
int32_t nax_df_kernel_sDFHermiteCubicSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);

/* Bessel's spline: slopes of parabolas through three points (C. de Boor, A Practical Guide to Splines, 1978); nx >= 4.
 * Boundary types 0, 1, 2, 12, 24, 36, 48, 64. */
int32_t nax_df_kernel_dDFBesselCubicSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);
int32_t nax_df_kernel_sDFBesselCubicSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);

/* Akima's spline (J. ACM 17 (1970) 589-602); nx >= 5. Boundary types 0, 1, 2, 12, 24, 36, 48, 64. Weights whose sum is
 * below 1e-10 count as equal, which is an absolute limit: scale functions of tiny values. */
int32_t nax_df_kernel_dDFAkimaCubicSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);
int32_t nax_df_kernel_sDFAkimaCubicSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);

/* Hyman's monotone spline (SIAM J. Sci. Stat. Comput. 4 (1983) 645-654): Bessel's slopes, filtered so that each cell
 * between two interior points is monotone; nx >= 4. Boundary types 0, 1, 2, 12, 24, 36, 48, 64. */
int32_t nax_df_kernel_dDFHymanCubicSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);
int32_t nax_df_kernel_sDFHymanCubicSpline1D(nax_df_task* task, int64_t format, int64_t method, const nax_threaders* threaders);

/* --- Kernels ------------------------------------------------------------------------------------------------------
 * What the entries choose from once their checks are done. A name is made of the family, the layout of the functions
 * (YCols, YRows), the grid (NoUniformGrid, UniformGrid) and, where a family has a kernel for each, the boundary type
 * (NotAKnot, FreeEnd, 1st1st, 1st2nd, 2nd1st, 2nd2nd, Periodic); Subbotin splines have the sub-grid before the layout.
 * Akima, Bessel, Hyman and Hermite kernels take the boundary type as an index in that order, 7 for no condition. A kernel
 * reads the precision from the task and checks nothing that the entry has checked; status DfStatusOk,
 * DfStatusBadPeriodicVal, DfStatusMemory, DfStatusSolverFailure, and DfStatusBadIc for Subbotin knots. Names with
 * `Threader` are the bodies of the parallel loops; their context is the library's own. */
#define NAX_DF_DECLARE_KERNEL(name) int32_t name(nax_df_task* task, const nax_threaders* threaders);
#define NAX_DF_DECLARE_LOCAL_KERNEL(name) int32_t name(nax_df_task* task, int64_t boundary, const nax_threaders* threaders);
#define NAX_DF_DECLARE_BODY(name) void name(int64_t item, int thread, int threads, void* context);
#define NAX_DF_DECLARE_DERIVATIVE_ENDS(declare, stem) \
    declare(stem##1st1st) declare(stem##1st2nd) declare(stem##2nd1st) declare(stem##2nd2nd)
#define NAX_DF_DECLARE_ENDS(declare, stem) \
    declare(stem##NotAKnot) declare(stem##FreeEnd) NAX_DF_DECLARE_DERIVATIVE_ENDS(declare, stem) declare(stem##Periodic)
#define NAX_DF_DECLARE_LOCAL(family, grid) \
    NAX_DF_DECLARE_LOCAL_KERNEL(_v1DCS##family##grid) NAX_DF_DECLARE_BODY(_v1DCS##family##Threader##grid)
#define NAX_DF_DECLARE_CONSTRUCTION(grid)                                                       \
    NAX_DF_DECLARE_KERNEL(_v1DLSLinear##grid) NAX_DF_DECLARE_BODY(_v1DLinearThreader##grid)     \
    NAX_DF_DECLARE_KERNEL(_v1DQSStd##grid)                                                      \
    NAX_DF_DECLARE_DERIVATIVE_ENDS(NAX_DF_DECLARE_KERNEL, _v1DQSSubbNoUniformSubgrid##grid)     \
    NAX_DF_DECLARE_DERIVATIVE_ENDS(NAX_DF_DECLARE_KERNEL, _v1DQSSubbUniformSubgrid##grid)       \
    NAX_DF_DECLARE_ENDS(NAX_DF_DECLARE_KERNEL, _v1DCSDefault##grid)                             \
    NAX_DF_DECLARE_ENDS(NAX_DF_DECLARE_KERNEL, _v1DCSNatural##grid)                             \
    NAX_DF_DECLARE_ENDS(NAX_DF_DECLARE_BODY, _v1DCSNaturalThreader##grid)                       \
    NAX_DF_DECLARE_LOCAL(Akima, grid) NAX_DF_DECLARE_LOCAL(Bessel, grid)                        \
    NAX_DF_DECLARE_LOCAL(Hyman, grid) NAX_DF_DECLARE_LOCAL(Hermite, grid)
NAX_DF_DECLARE_CONSTRUCTION(YColsNoUniformGrid)
NAX_DF_DECLARE_CONSTRUCTION(YColsUniformGrid)
NAX_DF_DECLARE_CONSTRUCTION(YRowsNoUniformGrid)
NAX_DF_DECLARE_CONSTRUCTION(YRowsUniformGrid)
#undef NAX_DF_DECLARE_CONSTRUCTION
#undef NAX_DF_DECLARE_LOCAL
#undef NAX_DF_DECLARE_ENDS
#undef NAX_DF_DECLARE_DERIVATIVE_ENDS
#undef NAX_DF_DECLARE_BODY
#undef NAX_DF_DECLARE_LOCAL_KERNEL
#undef NAX_DF_DECLARE_KERNEL

#ifdef __cplusplus
}
#endif

#endif
