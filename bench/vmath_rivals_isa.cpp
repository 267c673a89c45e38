// The rivals for the instruction set that the file is compiled for; the build makes one object for each.
#include <cmath>

#include "bench/vmath_rivals.h"
#include "simd/simd.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#ifdef NAX_HAVE_BOOST
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/expint.hpp>
#endif
#ifdef NAX_HAVE_EIGEN
#include <Eigen/Core>
#include <unsupported/Eigen/SpecialFunctions>
#endif
#ifdef NAX_HAVE_XSIMD
#include <xsimd/xsimd.hpp>
#endif
#pragma GCC diagnostic pop

namespace nax::bench {
namespace NAX_ISA {
namespace {

// As the compiler makes it; strides of one are spelt out so that it can vectorise.
template <class T, class Function>
void plain_loop(int64_t n, const T* __restrict a, int64_t inca, const T* __restrict b, int64_t incb, T* __restrict r,
                int64_t incr) {
    if (inca == 1 && incb == 1 && incr == 1) {
        for (int64_t i = 0; i < n; ++i) r[i] = Function()(a[i], b[i]);
    } else {
        for (int64_t i = 0; i < n; ++i) r[i * incr] = Function()(a[i * inca], b[i * incb]);
    }
}

template <class E, class T>
void apply_unary(void* function, int64_t n, const T* a, T* r) {
    const auto f = reinterpret_cast<typename E::Vector (*)(typename E::Vector)>(function);
    int64_t i = 0;
    for (; i + E::lanes <= n; i += E::lanes) simd::store(r + i, f(simd::load(a + i)));
    const auto left = static_cast<int>(n - i);
    if (left > 0) simd::store(r + i, left, f(simd::load(a + i, left)));
}
template <class E, class T>
void apply_binary(void* function, int64_t n, const T* a, const T* b, T* r) {
    const auto f = reinterpret_cast<typename E::Vector (*)(typename E::Vector, typename E::Vector)>(function);
    int64_t i = 0;
    for (; i + E::lanes <= n; i += E::lanes) simd::store(r + i, f(simd::load(a + i), simd::load(b + i)));
    const auto left = static_cast<int>(n - i);
    if (left > 0) simd::store(r + i, left, f(simd::load(a + i, left), simd::load(b + i, left)));
}

// Loops in the language; the compiler vectorises what it can, calls of the C library stay scalar.
#define NAX_PLAIN(function, expression)                                                            \
    {                                                                                              \
#function, plain_loop < T, decltype([](T a, [[maybe_unused]] T b) { return expression; })> \
    }
template <class T>
std::vector<PlainLoop<T>> plain_loops() {
    return {NAX_PLAIN(Add, a + b),
            NAX_PLAIN(Sub, a - b),
            NAX_PLAIN(Mul, a * b),
            NAX_PLAIN(Div, a / b),
            NAX_PLAIN(Sqr, a * a),
            NAX_PLAIN(Inv, 1 / a),
            NAX_PLAIN(Abs, std::fabs(a)),
            NAX_PLAIN(Sqrt, std::sqrt(a)),
            NAX_PLAIN(InvSqrt, 1 / std::sqrt(a)),
            NAX_PLAIN(Cbrt, std::cbrt(a)),
            NAX_PLAIN(InvCbrt, 1 / std::cbrt(a)),
            NAX_PLAIN(Pow2o3, std::cbrt(a * a)),
            NAX_PLAIN(Pow3o2, a* std::sqrt(a)),
            NAX_PLAIN(Pow, std::pow(a, b)),
            NAX_PLAIN(Powr, std::pow(a, b)),
            NAX_PLAIN(Powx, std::pow(a, T(2.5))),
            NAX_PLAIN(Hypot, std::hypot(a, b)),
            NAX_PLAIN(Ceil, std::ceil(a)),
            NAX_PLAIN(Floor, std::floor(a)),
            NAX_PLAIN(Trunc, std::trunc(a)),
            NAX_PLAIN(Rint, std::rint(a)),
            NAX_PLAIN(NearbyInt, std::nearbyint(a)),
            NAX_PLAIN(Round, std::round(a)),
            NAX_PLAIN(Frac, a - std::trunc(a)),
            NAX_PLAIN(CopySign, std::copysign(a, b)),
            NAX_PLAIN(Fmax, std::fmax(a, b)),
            NAX_PLAIN(Fmin, std::fmin(a, b)),
            NAX_PLAIN(Fdim, std::fdim(a, b)),
            NAX_PLAIN(NextAfter, std::nextafter(a, b)),
            NAX_PLAIN(Fmod, std::fmod(a, b)),
            NAX_PLAIN(Remainder, std::remainder(a, b)),
            NAX_PLAIN(Exp, std::exp(a)),
            NAX_PLAIN(Exp2, std::exp2(a)),
            NAX_PLAIN(Expm1, std::expm1(a)),
            NAX_PLAIN(Ln, std::log(a)),
            NAX_PLAIN(Log2, std::log2(a)),
            NAX_PLAIN(Log10, std::log10(a)),
            NAX_PLAIN(Log1p, std::log1p(a)),
            NAX_PLAIN(Asin, std::asin(a)),
            NAX_PLAIN(Acos, std::acos(a)),
            NAX_PLAIN(Atan, std::atan(a)),
            NAX_PLAIN(Sinh, std::sinh(a)),
            NAX_PLAIN(Cosh, std::cosh(a)),
            NAX_PLAIN(Tanh, std::tanh(a)),
            NAX_PLAIN(Asinh, std::asinh(a)),
            NAX_PLAIN(Acosh, std::acosh(a)),
            NAX_PLAIN(Atanh, std::atanh(a)),
            NAX_PLAIN(Atan2, std::atan2(a, b)),
            NAX_PLAIN(Logb, std::logb(a)),
            NAX_PLAIN(Erf, std::erf(a)),
            NAX_PLAIN(Erfc, std::erfc(a)),
            NAX_PLAIN(CdfNorm, T(0.5) * std::erfc(a * T(-0.70710678118654752))),
            NAX_PLAIN(LGamma, std::lgamma(a)),
            NAX_PLAIN(TGamma, std::tgamma(a)),
#ifdef NAX_HAVE_BOOST
            NAX_PLAIN(ErfInv, boost::math::erf_inv(a)),
            NAX_PLAIN(ErfcInv, boost::math::erfc_inv(a)),
            NAX_PLAIN(CdfNormInv, T(-1.4142135623730950) * boost::math::erfc_inv(2 * a)),
            NAX_PLAIN(ExpInt1, boost::math::expint(1, a)),
#endif
            NAX_PLAIN(LinearFrac, (a * T(1.25) + T(0.5)) / (b * T(0.75) + T(3)))};
}

#ifdef NAX_HAVE_EIGEN
template <class T, class Function>
void Eigen_array(int64_t n, const T* a, T* r) {
    using Array = Eigen::Array<T, Eigen::Dynamic, 1>;
    Eigen::Map<Array>(r, n) = Function()(Eigen::Map<const Array>(a, n));
}
#endif

#ifdef NAX_HAVE_XSIMD
// The rest of fewer than a vector goes through a padded one.
template <class T, class Function>
void xsimd_array(int64_t n, const T* a, T* r) {
    using Batch = xsimd::batch<T>;
    constexpr auto lanes = static_cast<int64_t>(Batch::size);
    int64_t i = 0;
    for (; i + lanes <= n; i += lanes) Function()(Batch::load_unaligned(a + i)).store_unaligned(r + i);
    if (i == n) return;
    alignas(64) T rest[lanes];
    for (int64_t k = 0; k < lanes; ++k) rest[k] = i + k < n ? a[i + k] : T(0.75);
    Function()(Batch::load_aligned(rest)).store_aligned(rest);
    for (int64_t k = 0; i + k < n; ++k) r[i + k] = rest[k];
}
#endif

#define NAX_ARRAY(library, function, expression)                                                      \
    {                                                                                                 \
#library, #function, library##_array < T, decltype([](const auto& x) { return expression; })> \
    }
template <class T>
std::vector<ArrayRival<T>> arrays() {
    return {
#ifdef NAX_HAVE_EIGEN
        NAX_ARRAY(Eigen, Exp, x.exp()),
        NAX_ARRAY(Eigen, Expm1, x.expm1()),
        NAX_ARRAY(Eigen, Ln, x.log()),
        NAX_ARRAY(Eigen, Log2, x.log2()),
        NAX_ARRAY(Eigen, Log10, x.log10()),
        NAX_ARRAY(Eigen, Log1p, x.log1p()),
        NAX_ARRAY(Eigen, Sqrt, x.sqrt()),
        NAX_ARRAY(Eigen, Inv, x.inverse()),
        NAX_ARRAY(Eigen, InvSqrt, x.rsqrt()),
        NAX_ARRAY(Eigen, Sin, x.sin()),
        NAX_ARRAY(Eigen, Cos, x.cos()),
        NAX_ARRAY(Eigen, Tan, x.tan()),
        NAX_ARRAY(Eigen, Asin, x.asin()),
        NAX_ARRAY(Eigen, Acos, x.acos()),
        NAX_ARRAY(Eigen, Atan, x.atan()),
        NAX_ARRAY(Eigen, Sinh, x.sinh()),
        NAX_ARRAY(Eigen, Cosh, x.cosh()),
        NAX_ARRAY(Eigen, Tanh, x.tanh()),
        NAX_ARRAY(Eigen, Erf, x.erf()),
        NAX_ARRAY(Eigen, Erfc, x.erfc()),
        NAX_ARRAY(Eigen, LGamma, x.lgamma()),
        NAX_ARRAY(Eigen, Floor, x.floor()),
        NAX_ARRAY(Eigen, Ceil, x.ceil()),
        NAX_ARRAY(Eigen, Rint, x.rint()),
        NAX_ARRAY(Eigen, CdfNormInv, x.ndtri()),
        NAX_ARRAY(Eigen, Abs, x.abs()),
        NAX_ARRAY(Eigen, Sqr, x.square()),
#endif
#ifdef NAX_HAVE_XSIMD
        NAX_ARRAY(xsimd, Exp, xsimd::exp(x)),
        NAX_ARRAY(xsimd, Exp2, xsimd::exp2(x)),
        NAX_ARRAY(xsimd, Exp10, xsimd::exp10(x)),
        NAX_ARRAY(xsimd, Expm1, xsimd::expm1(x)),
        NAX_ARRAY(xsimd, Ln, xsimd::log(x)),
        NAX_ARRAY(xsimd, Log2, xsimd::log2(x)),
        NAX_ARRAY(xsimd, Log10, xsimd::log10(x)),
        NAX_ARRAY(xsimd, Log1p, xsimd::log1p(x)),
        NAX_ARRAY(xsimd, Sqrt, xsimd::sqrt(x)),
        NAX_ARRAY(xsimd, Cbrt, xsimd::cbrt(x)),
        NAX_ARRAY(xsimd, Sin, xsimd::sin(x)),
        NAX_ARRAY(xsimd, Cos, xsimd::cos(x)),
        NAX_ARRAY(xsimd, Tan, xsimd::tan(x)),
        NAX_ARRAY(xsimd, Asin, xsimd::asin(x)),
        NAX_ARRAY(xsimd, Acos, xsimd::acos(x)),
        NAX_ARRAY(xsimd, Atan, xsimd::atan(x)),
        NAX_ARRAY(xsimd, Sinh, xsimd::sinh(x)),
        NAX_ARRAY(xsimd, Cosh, xsimd::cosh(x)),
        NAX_ARRAY(xsimd, Tanh, xsimd::tanh(x)),
        NAX_ARRAY(xsimd, Asinh, xsimd::asinh(x)),
        NAX_ARRAY(xsimd, Acosh, xsimd::acosh(x)),
        NAX_ARRAY(xsimd, Atanh, xsimd::atanh(x)),
        NAX_ARRAY(xsimd, Erf, xsimd::erf(x)),
        NAX_ARRAY(xsimd, Erfc, xsimd::erfc(x)),
        NAX_ARRAY(xsimd, Floor, xsimd::floor(x)),
        NAX_ARRAY(xsimd, Ceil, xsimd::ceil(x)),
        NAX_ARRAY(xsimd, Trunc, xsimd::trunc(x)),
        NAX_ARRAY(xsimd, Rint, xsimd::rint(x)),
        NAX_ARRAY(xsimd, Abs, xsimd::abs(x)),
#endif
    };
}

}  // namespace

template <class T>
Rivals<T> rivals() {
    constexpr bool single = sizeof(T) == 4;
    using E = std::conditional_t<single, simd::Single, simd::Double>;
#ifdef __AVX512F__
    const char* const suffix = "avx512f";
#else
    const char* const suffix = "avx2";
#endif
    const std::string lanes = std::to_string(E::lanes);
    return {plain_loops<T>(),
            arrays<T>(),
            apply_unary<E, T>,
            apply_binary<E, T>,
            (E::lanes * sizeof(T) == 64 ? "_ZGVeN" : "_ZGVdN") + lanes,
            (single ? "f" : "d") + lanes,
            suffix};
}

}  // namespace NAX_ISA

template <>
[[gnu::visibility("default")]] Rivals<float> make_rivals() {
    return NAX_ISA::rivals<float>();
}
template <>
[[gnu::visibility("default")]] Rivals<double> make_rivals() {
    return NAX_ISA::rivals<double>();
}

}  // namespace nax::bench
