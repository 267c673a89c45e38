// The tridiagonal solvers under their exported names.
#include "fit/construct/tridiagonal.h"

#include "nax/abi/tridiagonal.h"

namespace nax::fit {
namespace {

template <class T>
void solve_systems(int64_t n, int64_t systems, T* sub, T* diagonal, T* super, T* rhs, int64_t leading, int64_t* info) {
    *info = n < 0 ? -1 : systems < 0 ? -2 : leading < n || leading < 1 ? -7 : 0;
    if (*info != 0 || n == 0) return;
    if (systems == 1) {
        *info = eliminate<T, true>(n, sub, diagonal, super, rhs);
        if (*info == 0) backward(n, sub, diagonal, super, rhs);
        return;
    }
    *info = eliminate<T, false>(n, sub, diagonal, super, nullptr);
    for (int64_t j = 0; *info == 0 && j < systems; ++j) solve_factored(n, sub, diagonal, super, rhs + j * leading);
}

template <class T>
void factor(int64_t n, T* sub, T* diagonal, T* super, int64_t* info) {
    *info = n < 0 ? -1 : 0;
    if (n > 0) *info = eliminate<T, false>(n, sub, diagonal, super, nullptr);
}

template <class T>
void solve_with_factors(char transposed, int64_t n, int64_t systems, const T* sub, const T* inverse, const T* super, T* rhs,
                        int64_t leading, int64_t* info) {
    const bool plain = transposed == 'N' || transposed == 'n';
    const bool turned = transposed == 'T' || transposed == 't' || transposed == 'C' || transposed == 'c';
    *info = !plain && !turned ? -1 : n < 0 ? -2 : systems < 0 ? -3 : leading < n || leading < 1 ? -8 : 0;
    if (*info != 0 || n == 0) return;
    for (int64_t j = 0; j < systems; ++j)
        solve_factored(n, plain ? sub : super, inverse, plain ? super : sub, rhs + j * leading);
}

}  // namespace
}  // namespace nax::fit

extern "C" {

void ddtsvb_4dfl(const int64_t* n, const int64_t* nrhs, double* dl, double* d, double* du, double* b, const int64_t* ldb,
                 int64_t* info) {
    nax::fit::solve_systems(*n, *nrhs, dl, d, du, b, *ldb, info);
}
void sdtsvb_4dfl(const int64_t* n, const int64_t* nrhs, float* dl, float* d, float* du, float* b, const int64_t* ldb,
                 int64_t* info) {
    nax::fit::solve_systems(*n, *nrhs, dl, d, du, b, *ldb, info);
}
void ddttrfb_4dfl(const int64_t* n, double* dl, double* d, double* du, int64_t* info) {
    nax::fit::factor(*n, dl, d, du, info);
}
void sdttrfb_4dfl(const int64_t* n, float* dl, float* d, float* du, int64_t* info) {
    nax::fit::factor(*n, dl, d, du, info);
}
void ddttrsb_4dfl(const char* trans, const int64_t* n, const int64_t* nrhs, const double* dl, const double* d,
                  const double* du, double* b, const int64_t* ldb, int64_t* info) {
    nax::fit::solve_with_factors(*trans, *n, *nrhs, dl, d, du, b, *ldb, info);
}
void sdttrsb_4dfl(const char* trans, const int64_t* n, const int64_t* nrhs, const float* dl, const float* d, const float* du,
                  float* b, const int64_t* ldb, int64_t* info) {
    nax::fit::solve_with_factors(*trans, *n, *nrhs, dl, d, du, b, *ldb, info);
}

}  // extern "C"
