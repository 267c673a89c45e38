/* General tridiagonal systems by Gaussian elimination without pivoting, from both ends towards the middle row.
 *
 * Meant for systems whose rows are diagonally dominant, like those of spline construction; others may meet a small pivot
 * and lose accuracy. `dl` holds the n-1 elements below the diagonal, `d` the n of the diagonal, `du` the n-1 above it;
 * `b` holds right-hand sides by columns, `ldb` elements apart (at least n and 1). All three diagonals are overwritten.
 *
 * `info` becomes 0, -k when argument number k is not acceptable, or the row (from 1) whose pivot is zero; in that case the
 * solution isn't computed. Time is proportional to n times the number of columns. */
#ifndef NAX_TRIDIAGONAL_H
#define NAX_TRIDIAGONAL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Solves A X = B; b becomes X. */
void ddtsvb_4dfl(const int64_t* n, const int64_t* nrhs, double* dl, double* d, double* du, double* b, const int64_t* ldb,
                 int64_t* info);
void sdtsvb_4dfl(const int64_t* n, const int64_t* nrhs, float* dl, float* d, float* du, float* b, const int64_t* ldb,
                 int64_t* info);

/* Factors A for the next two functions: d becomes the inverse pivots, dl and du the multipliers. */
void ddttrfb_4dfl(const int64_t* n, double* dl, double* d, double* du, int64_t* info);
void sdttrfb_4dfl(const int64_t* n, float* dl, float* d, float* du, int64_t* info);

/* Solves A X = B (trans "N") or A' X = B ("T" or "C") with the factors; b becomes X. */
void ddttrsb_4dfl(const char* trans, const int64_t* n, const int64_t* nrhs, const double* dl, const double* d,
                  const double* du, double* b, const int64_t* ldb, int64_t* info);
void sdttrsb_4dfl(const char* trans, const int64_t* n, const int64_t* nrhs, const float* dl, const float* d, const float* du,
                  float* b, const int64_t* ldb, int64_t* info);

#ifdef __cplusplus
}
#endif

#endif
