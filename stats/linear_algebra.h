// BLAS and LAPACK in both precisions under one name each, column-major like the routines themselves. Sizes are those of
// the packages, 32 bits: callers cut long data into blocks.
#pragma once

#include <cstddef>
#include <cstdint>

// The Fortran symbols. Compilers of Fortran pass the length of every character argument behind the others.
#define NAX_BLAS_ROUTINES(s, T)                                                                                        \
    void s##syrk_(const char*, const char*, const int*, const int*, const T*, const T*, const int*, const T*, T*,      \
                  const int*, std::size_t, std::size_t);                                                               \
    void s##syr_(const char*, const int*, const T*, const T*, const int*, T*, const int*, std::size_t);                \
    void s##gemm_(const char*, const char*, const int*, const int*, const int*, const T*, const T*, const int*,        \
                  const T*, const int*, const T*, T*, const int*, std::size_t, std::size_t);                           \
    void s##gemv_(const char*, const int*, const int*, const T*, const T*, const int*, const T*, const int*, const T*, \
                  T*, const int*, std::size_t);                                                                        \
    void s##symm_(const char*, const char*, const int*, const int*, const T*, const T*, const int*, const T*,          \
                  const int*, const T*, T*, const int*, std::size_t, std::size_t);                                     \
    void s##trmm_(const char*, const char*, const char*, const char*, const int*, const int*, const T*, const T*,      \
                  const int*, T*, const int*, std::size_t, std::size_t, std::size_t, std::size_t);                     \
    void s##potrf_(const char*, const int*, T*, const int*, int*, std::size_t);                                        \
    void s##potri_(const char*, const int*, T*, const int*, int*, std::size_t);                                        \
    void s##trtri_(const char*, const char*, const int*, T*, const int*, int*, std::size_t, std::size_t);              \
    void s##syev_(const char*, const char*, const int*, T*, const int*, T*, T*, const int*, int*, std::size_t,         \
                  std::size_t);                                                                                        \
    void s##spevd_(const char*, const char*, const int*, T*, T*, T*, const int*, T*, const int*, int*, const int*,     \
                   int*, std::size_t, std::size_t);

extern "C" {
NAX_BLAS_ROUTINES(d, double)
NAX_BLAS_ROUTINES(s, float)
}
#undef NAX_BLAS_ROUTINES

namespace nax::stats {

#define NAX_BLAS_WRAPPERS(s, T)                                                                                        \
    /* C := alpha A A' + beta C, or with trans 'T' alpha A' A + beta C; one triangle of C. */                          \
    inline void syrk(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, T beta, T* c, int ldc) {       \
        s##syrk_(&uplo, &trans, &n, &k, &alpha, a, &lda, &beta, c, &ldc, 1, 1);                                        \
    }                                                                                                                  \
    /* A := alpha x x' + A; one triangle. */                                                                           \
    inline void syr(char uplo, int n, T alpha, const T* x, T* a, int lda) {                                            \
        const int one = 1;                                                                                             \
        s##syr_(&uplo, &n, &alpha, x, &one, a, &lda, 1);                                                               \
    }                                                                                                                  \
    inline void gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, \
                     T beta, T* c, int ldc) {                                                                          \
        s##gemm_(&transa, &transb, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc, 1, 1);                        \
    }                                                                                                                  \
    inline void gemv(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, T beta, T* y) {               \
        const int one = 1;                                                                                             \
        s##gemv_(&trans, &m, &n, &alpha, a, &lda, x, &one, &beta, y, &one, 1);                                         \
    }                                                                                                                  \
    inline void symm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta,    \
                     T* c, int ldc) {                                                                                  \
        s##symm_(&side, &uplo, &m, &n, &alpha, a, &lda, b, &ldb, &beta, c, &ldc, 1, 1);                                \
    }                                                                                                                  \
    inline void trmm(char side, char uplo, char trans, char diag, int m, int n, T alpha, const T* a, int lda, T* b,    \
                     int ldb) {                                                                                        \
        s##trmm_(&side, &uplo, &trans, &diag, &m, &n, &alpha, a, &lda, b, &ldb, 1, 1, 1, 1);                           \
    }                                                                                                                  \
    /* Those below return LAPACK's info: 0 for success. */                                                             \
    inline int potrf(char uplo, int n, T* a, int lda) {                                                                \
        int info = 0;                                                                                                  \
        s##potrf_(&uplo, &n, a, &lda, &info, 1);                                                                       \
        return info;                                                                                                   \
    }                                                                                                                  \
    inline int potri(char uplo, int n, T* a, int lda) {                                                                \
        int info = 0;                                                                                                  \
        s##potri_(&uplo, &n, a, &lda, &info, 1);                                                                       \
        return info;                                                                                                   \
    }                                                                                                                  \
    inline int trtri(char uplo, char diag, int n, T* a, int lda) {                                                     \
        int info = 0;                                                                                                  \
        s##trtri_(&uplo, &diag, &n, a, &lda, &info, 1, 1);                                                             \
        return info;                                                                                                   \
    }                                                                                                                  \
    /* Eigenvalues ascending in w, with job 'V' the vectors in the columns of a. */                                    \
    inline int syev(char job, char uplo, int n, T* a, int lda, T* w, T* work, int lwork) {                             \
        int info = 0;                                                                                                  \
        s##syev_(&job, &uplo, &n, a, &lda, w, work, &lwork, &info, 1, 1);                                              \
        return info;                                                                                                   \
    }                                                                                                                  \
    inline int spevd(char job, char uplo, int n, T* packed, T* w, T* z, int ldz, T* work, int lwork, int* iwork,       \
                     int liwork) {                                                                                     \
        int info = 0;                                                                                                  \
        s##spevd_(&job, &uplo, &n, packed, w, z, &ldz, work, &lwork, iwork, &liwork, &info, 1, 1);                     \
        return info;                                                                                                   \
    }

NAX_BLAS_WRAPPERS(d, double)
NAX_BLAS_WRAPPERS(s, float)
#undef NAX_BLAS_WRAPPERS

}  // namespace nax::stats
