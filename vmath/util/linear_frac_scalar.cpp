// r = (scalea a + shifta) / (scaleb b + shiftb), in 128-bit registers.
//
// Single precision: with the denominator d and the numerator u, y0 the processor's 12-bit reciprocal of d,
//   y = 2 y0 - d y0 y0,  r = u y:
// one Newton step, relative error below 2^-22 and no true quotient by design; a zero, infinite or huge denominator
// gives what the reciprocal makes of it. Double precision divides. Where a scale is zero both divide: a constant
// denominator makes the result an affine function of a when shiftb is one, and a constant numerator stays finite over
// denominators whose reciprocal is denormal.
#include <emmintrin.h>

#include "simd/isa.h"
#include "vmath/frame/call_environment.h"

namespace nax::vmath::NAX_ISA {
namespace {

struct Single {
    using T = float;
    using Vector = __m128;
    static constexpr int lanes = 4;
    static Vector row(T x) { return _mm_set1_ps(x); }
    static Vector load(const T* p) { return _mm_loadu_ps(p); }
    static void store(T* p, Vector x) { _mm_storeu_ps(p, x); }
    static Vector quotient(Vector u, Vector d) {
        const Vector y0 = _mm_rcp_ps(d);
        const Vector y = (y0 + y0) - d * y0 * y0;
        return u * y;
    }
};

struct Double {
    using T = double;
    using Vector = __m128d;
    static constexpr int lanes = 2;
    static Vector row(T x) { return _mm_set1_pd(x); }
    static Vector load(const T* p) { return _mm_loadu_pd(p); }
    static void store(T* p, Vector x) { _mm_storeu_pd(p, x); }
    static Vector quotient(Vector u, Vector d) { return u / d; }
};

// An input vector: whole vectors, or the first `count` lanes with the last of them repeated, so that no lane raises a
// flag that no element raises.
template <class E>
struct Input {
    using T = typename E::T;
    const T* start;
    int64_t stride;

    typename E::Vector read(int64_t i, int count) const {
        if (stride == 1 && count == E::lanes) return E::load(start + i);
        T lanes[E::lanes];
        for (int lane = 0; lane < E::lanes; ++lane)
            lanes[lane] = start[(i + (lane < count ? lane : count - 1)) * stride];
        return E::load(lanes);
    }
};

template <class E, class Value>
void fill(int32_t n, typename E::T* r, int64_t stride, Value value) {
    using T = typename E::T;
    for (int64_t i = 0; i < n; i += E::lanes) {
        const int count = n - i < E::lanes ? static_cast<int>(n - i) : E::lanes;
        const auto result = value(i, count);
        if (stride == 1 && count == E::lanes) {
            E::store(r + i, result);
            continue;
        }
        T lanes[E::lanes];
        E::store(lanes, result);
        for (int lane = 0; lane < count; ++lane) r[(i + lane) * stride] = lanes[lane];
    }
}

template <class E, class T = typename E::T>
void linear_frac(int32_t n, Input<E> a, Input<E> b, T scalea, T shifta, T scaleb, T shiftb, T* r, int64_t incr) {
    if (n <= 0) return;
    X87Scope x87;
    x87.mask_exceptions();
    const MxcsrScope<true> mxcsr(nax_arq_kernel_GetMode());
    const auto scale_a = E::row(scalea), shift_a = E::row(shifta), scale_b = E::row(scaleb), shift_b = E::row(shiftb);
    const auto numerator = [=](int64_t i, int count) { return a.read(i, count) * scale_a + shift_a; };
    const auto denominator = [=](int64_t i, int count) { return b.read(i, count) * scale_b + shift_b; };

    // A vector whose scale is zero is not read.
    if (scaleb == 0 && scalea == 0)
        fill<E>(n, r, incr, [=](int64_t, int) { return shift_a / shift_b; });
    else if (scaleb == 0)
        fill<E>(n, r, incr, [=](int64_t i, int count) { return numerator(i, count) / shift_b; });
    else if (scalea == 0)
        fill<E>(n, r, incr, [=](int64_t i, int count) { return shift_a / denominator(i, count); });
    else
        fill<E>(n, r, incr,
                [=](int64_t i, int count) { return E::quotient(numerator(i, count), denominator(i, count)); });
}

}  // namespace
}  // namespace nax::vmath::NAX_ISA

extern "C" {

void nax_arq_kernel_sLinearFrac_EXHAynn(int32_t n, const float* a, const float* b, float scalea, float shifta,
                                        float scaleb, float shiftb, float* r) {
    nax::vmath::NAX_ISA::linear_frac<nax::vmath::NAX_ISA::Single>(n, {a, 1}, {b, 1}, scalea, shifta, scaleb, shiftb, r, 1);
}
void nax_arq_kernel_dLinearFrac_EXHAynn(int32_t n, const double* a, const double* b, double scalea, double shifta,
                                        double scaleb, double shiftb, double* r) {
    nax::vmath::NAX_ISA::linear_frac<nax::vmath::NAX_ISA::Double>(n, {a, 1}, {b, 1}, scalea, shifta, scaleb, shiftb, r, 1);
}
void nax_arq_kernel_sLinearFracI_EXHAynn(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb,
                                         float scalea, float shifta, float scaleb, float shiftb, float* r,
                                         int32_t incr) {
    nax::vmath::NAX_ISA::linear_frac<nax::vmath::NAX_ISA::Single>(n, {a, inca}, {b, incb}, scalea, shifta, scaleb, shiftb, r,
                                                            incr);
}
void nax_arq_kernel_dLinearFracI_EXHAynn(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb,
                                         double scalea, double shifta, double scaleb, double shiftb, double* r,
                                         int32_t incr) {
    nax::vmath::NAX_ISA::linear_frac<nax::vmath::NAX_ISA::Double>(n, {a, inca}, {b, incb}, scalea, shifta, scaleb, shiftb, r,
                                                            incr);
}
}
