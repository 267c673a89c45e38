#include "bench/vmath_header_rivals.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#ifdef NAX_HAVE_EIGEN
#include <Eigen/Core>
#include <unsupported/Eigen/SpecialFunctions>
#endif
#ifdef NAX_HAVE_XSIMD
#include <xsimd/xsimd.hpp>
#endif
#pragma GCC diagnostic pop

namespace nax::bench {
namespace {

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

}  // namespace

#define NAX_ARRAY(library, function, expression) \
    { #library, #function, library##_array < T, decltype([](const auto& x) { return expression; })> }
template <class T>
std::vector<ArrayRival<T>> header_rivals() {
    return {
#ifdef NAX_HAVE_EIGEN
        NAX_ARRAY(Eigen, Exp, x.exp()),     NAX_ARRAY(Eigen, Expm1, x.expm1()), NAX_ARRAY(Eigen, Ln, x.log()),
        NAX_ARRAY(Eigen, Log2, x.log2()),   NAX_ARRAY(Eigen, Log10, x.log10()), NAX_ARRAY(Eigen, Log1p, x.log1p()),
        NAX_ARRAY(Eigen, Sqrt, x.sqrt()),   NAX_ARRAY(Eigen, Inv, x.inverse()), NAX_ARRAY(Eigen, InvSqrt, x.rsqrt()),
        NAX_ARRAY(Eigen, Sin, x.sin()),     NAX_ARRAY(Eigen, Cos, x.cos()),     NAX_ARRAY(Eigen, Tan, x.tan()),
        NAX_ARRAY(Eigen, Asin, x.asin()),   NAX_ARRAY(Eigen, Acos, x.acos()),   NAX_ARRAY(Eigen, Atan, x.atan()),
        NAX_ARRAY(Eigen, Sinh, x.sinh()),   NAX_ARRAY(Eigen, Cosh, x.cosh()),   NAX_ARRAY(Eigen, Tanh, x.tanh()),
        NAX_ARRAY(Eigen, Erf, x.erf()),     NAX_ARRAY(Eigen, Erfc, x.erfc()),   NAX_ARRAY(Eigen, LGamma, x.lgamma()),
        NAX_ARRAY(Eigen, Floor, x.floor()), NAX_ARRAY(Eigen, Ceil, x.ceil()),   NAX_ARRAY(Eigen, Rint, x.rint()),
        NAX_ARRAY(Eigen, Abs, x.abs()),     NAX_ARRAY(Eigen, Sqr, x.square()),
#endif
#ifdef NAX_HAVE_XSIMD
        NAX_ARRAY(xsimd, Exp, xsimd::exp(x)),     NAX_ARRAY(xsimd, Exp2, xsimd::exp2(x)),
        NAX_ARRAY(xsimd, Exp10, xsimd::exp10(x)), NAX_ARRAY(xsimd, Expm1, xsimd::expm1(x)),
        NAX_ARRAY(xsimd, Ln, xsimd::log(x)),      NAX_ARRAY(xsimd, Log2, xsimd::log2(x)),
        NAX_ARRAY(xsimd, Log10, xsimd::log10(x)), NAX_ARRAY(xsimd, Log1p, xsimd::log1p(x)),
        NAX_ARRAY(xsimd, Sqrt, xsimd::sqrt(x)),   NAX_ARRAY(xsimd, Cbrt, xsimd::cbrt(x)),
        NAX_ARRAY(xsimd, Sin, xsimd::sin(x)),     NAX_ARRAY(xsimd, Cos, xsimd::cos(x)),
        NAX_ARRAY(xsimd, Tan, xsimd::tan(x)),     NAX_ARRAY(xsimd, Asin, xsimd::asin(x)),
        NAX_ARRAY(xsimd, Acos, xsimd::acos(x)),   NAX_ARRAY(xsimd, Atan, xsimd::atan(x)),
        NAX_ARRAY(xsimd, Sinh, xsimd::sinh(x)),   NAX_ARRAY(xsimd, Cosh, xsimd::cosh(x)),
        NAX_ARRAY(xsimd, Tanh, xsimd::tanh(x)),   NAX_ARRAY(xsimd, Asinh, xsimd::asinh(x)),
        NAX_ARRAY(xsimd, Acosh, xsimd::acosh(x)), NAX_ARRAY(xsimd, Atanh, xsimd::atanh(x)),
        NAX_ARRAY(xsimd, Erf, xsimd::erf(x)),     NAX_ARRAY(xsimd, Erfc, xsimd::erfc(x)),
        NAX_ARRAY(xsimd, Floor, xsimd::floor(x)), NAX_ARRAY(xsimd, Ceil, xsimd::ceil(x)),
        NAX_ARRAY(xsimd, Trunc, xsimd::trunc(x)), NAX_ARRAY(xsimd, Rint, xsimd::rint(x)),
        NAX_ARRAY(xsimd, Abs, xsimd::abs(x)),
#endif
    };
}

template std::vector<ArrayRival<float>> header_rivals();
template std::vector<ArrayRival<double>> header_rivals();

}  // namespace nax::bench
