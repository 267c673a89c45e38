// Rivals of the vector functions: loops that the compiler vectorises, the C library one element at a time, and the
// vector libraries libmvec and SLEEF where they are installed.
#pragma once

#include <dlfcn.h>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <immintrin.h>
#pragma GCC diagnostic pop

#include <cmath>
#include <cstdint>
#include <string>

namespace nax::bench {

// What the functions below are compiled for; they run only on hosts that have it.
#define NAX_BENCH_TARGET [[gnu::target("arch=x86-64-v4,prefer-vector-width=512"), gnu::optimize("O3")]]

template <class T>
using Loop = void (*)(int64_t n, const T* a, int64_t inca, const T* b, int64_t incb, T* r, int64_t incr);

// r[i] = Function(a[i], b[i]), as the compiler makes it; strides of one are spelt out so that it can vectorise.
template <class T, class Function>
NAX_BENCH_TARGET void plain_loop(int64_t n, const T* __restrict a, int64_t inca, const T* __restrict b, int64_t incb,
                                 T* __restrict r, int64_t incr) {
    if (inca == 1 && incb == 1 && incr == 1) {
        for (int64_t i = 0; i < n; ++i) r[i] = Function()(a[i], b[i]);
    } else {
        for (int64_t i = 0; i < n; ++i) r[i * incr] = Function()(a[i * inca], b[i * incb]);
    }
}

// A function of whole vectors applied to a dense array; the rest of fewer than a vector goes through a padded one.
using VectorUnaryDouble = __m512d (*)(__m512d);
using VectorUnarySingle = __m512 (*)(__m512);
using VectorBinaryDouble = __m512d (*)(__m512d, __m512d);
using VectorBinarySingle = __m512 (*)(__m512, __m512);

NAX_BENCH_TARGET inline void apply_vectors(void* function, int64_t n, const double* a, double* r) {
    const auto f = reinterpret_cast<VectorUnaryDouble>(function);
    for (int64_t i = 0; i < n; i += 8) {
        const auto lanes = static_cast<__mmask8>(n - i >= 8 ? 0xFF : (1 << (n - i)) - 1);
        _mm512_mask_storeu_pd(r + i, lanes, f(_mm512_mask_loadu_pd(_mm512_set1_pd(0.75), lanes, a + i)));
    }
}
NAX_BENCH_TARGET inline void apply_vectors(void* function, int64_t n, const float* a, float* r) {
    const auto f = reinterpret_cast<VectorUnarySingle>(function);
    for (int64_t i = 0; i < n; i += 16) {
        const auto lanes = static_cast<__mmask16>(n - i >= 16 ? 0xFFFF : (1 << (n - i)) - 1);
        _mm512_mask_storeu_ps(r + i, lanes, f(_mm512_mask_loadu_ps(_mm512_set1_ps(0.75f), lanes, a + i)));
    }
}
NAX_BENCH_TARGET inline void apply_vectors(void* function, int64_t n, const double* a, const double* b, double* r) {
    const auto f = reinterpret_cast<VectorBinaryDouble>(function);
    for (int64_t i = 0; i < n; i += 8) {
        const auto lanes = static_cast<__mmask8>(n - i >= 8 ? 0xFF : (1 << (n - i)) - 1);
        const __m512d fill = _mm512_set1_pd(0.75);
        _mm512_mask_storeu_pd(r + i, lanes,
                              f(_mm512_mask_loadu_pd(fill, lanes, a + i), _mm512_mask_loadu_pd(fill, lanes, b + i)));
    }
}
NAX_BENCH_TARGET inline void apply_vectors(void* function, int64_t n, const float* a, const float* b, float* r) {
    const auto f = reinterpret_cast<VectorBinarySingle>(function);
    for (int64_t i = 0; i < n; i += 16) {
        const auto lanes = static_cast<__mmask16>(n - i >= 16 ? 0xFFFF : (1 << (n - i)) - 1);
        const __m512 fill = _mm512_set1_ps(0.75f);
        _mm512_mask_storeu_ps(r + i, lanes,
                              f(_mm512_mask_loadu_ps(fill, lanes, a + i), _mm512_mask_loadu_ps(fill, lanes, b + i)));
    }
}

// Addresses in libraries that may be missing; null then.
inline void* libmvec_function(const std::string& name, bool single, int inputs) {
    static void* const library = dlopen("libmvec.so.1", RTLD_NOW);
    if (library == nullptr || name.empty()) return nullptr;
    const std::string symbol = std::string("_ZGVeN") + (single ? "16" : "8") + (inputs == 2 ? "vv_" : "v_") + name +
                               (single ? "f" : "");
    return dlsym(library, symbol.c_str());
}
// `name` with its accuracy, such as "exp" and "_u10".
inline void* sleef_function(const std::string& name, const std::string& accuracy, bool single) {
    static void* const library = dlopen("libsleef.so.3", RTLD_NOW);
    if (library == nullptr || name.empty()) return nullptr;
    const std::string symbol = "Sleef_" + name + (single ? "f16" : "d8") + accuracy;
    if (void* const found = dlsym(library, (symbol + "avx512f").c_str())) return found;
    return dlsym(library, symbol.c_str());
}

}  // namespace nax::bench
