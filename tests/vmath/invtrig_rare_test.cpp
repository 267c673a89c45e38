// Scalar paths of the inverse trigonometric and hyperbolic functions over their whole range, not only where the kernels
// need them.
#include "vmath/invtrig/invtrig_rare.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <cfloat>
#include <cmath>
#include <vector>

#include "tests/lib/ulp.h"

namespace nax::testing {
namespace {

template <class T>
struct RareCase {
    const char* function;
    int32_t (*rare)(const T*, T*);
    T low, high;
    double bound;  // in ulp
};

// A denormal result in half-turns is rounded twice.
constexpr RareCase<double> kDouble[] = {
    {"Asin", vmath::vdasin_cout_rare, -1.0, 1.0, 0.52},
    {"Asin", vmath::vdasin_cout_rare, 0x1p-32, 0x1p-24, 0.52},
    {"Acos", vmath::vdacos_cout_rare, -1.0, 1.0, 0.52},
    {"Acos", vmath::vdacos_cout_rare, 0x1p-64, 0x1p-50, 0.52},
    {"Asinpi", vmath::vdasinpi_cout_rare, -1.0, 1.0, 0.76},
    {"Asinpi", vmath::vdasinpi_cout_rare, 0x1p-32, 0x1p-24, 0.52},
    {"Acospi", vmath::vdacospi_cout_rare, -1.0, 1.0, 0.52},
    {"Atan", vmath::vdatan_cout_rare, -DBL_MAX, DBL_MAX, 0.52},
    {"Atan", vmath::vdatan_cout_rare, -4.0, 4.0, 0.52},
    {"Atan", vmath::vdatan_cout_rare, 0x1p+50, 0x1p+64, 0.52},
    {"Atanpi", vmath::vdatanpi_cout_rare, -DBL_MAX, DBL_MAX, 0.76},
    {"Atanpi", vmath::vdatanpi_cout_rare, -4.0, 4.0, 0.52},
    {"Sinh", vmath::vdsinh_cout_rare, -710.4758600739439, 710.4758600739439, 0.52},
    {"Sinh", vmath::vdsinh_cout_rare, -1.0, 1.0, 0.52},
    {"Sinh", vmath::vdsinh_cout_rare, 38.0, 42.0, 0.52},
    {"Sinh", vmath::vdsinh_cout_rare, 709.0, 710.4758600739439, 0.52},
    {"Cosh", vmath::vdcosh_cout_rare, -710.4758600739439, 710.4758600739439, 0.52},
    {"Cosh", vmath::vdcosh_cout_rare, -1.0, 1.0, 0.52},
    {"Tanh", vmath::vdtanh_cout_rare, -30.0, 30.0, 0.52},
    {"Tanh", vmath::vdtanh_cout_rare, -0.1, 0.1, 0.52},
    {"Asinh", vmath::vdasinh_cout_rare, -DBL_MAX, DBL_MAX, 0.52},
    {"Asinh", vmath::vdasinh_cout_rare, -2.0, 2.0, 0.53},
    {"Asinh", vmath::vdasinh_cout_rare, 0x1p+29, 0x1p+31, 0.52},
    {"Acosh", vmath::vdacosh_cout_rare, 1.0, DBL_MAX, 0.53},
    {"Acosh", vmath::vdacosh_cout_rare, 1.0, 1.001, 0.53},
    {"Acosh", vmath::vdacosh_cout_rare, 1.0, 20.0, 0.53},
    {"Atanh", vmath::vdatanh_cout_rare, -0x1.fffffffffffffp-1, 0x1.fffffffffffffp-1, 0.53},
    {"Atanh", vmath::vdatanh_cout_rare, -0.02, 0.02, 0.53},
};

constexpr RareCase<float> kSingle[] = {
    {"Asin", vmath::vsasin_cout_rare, -1.0f, 1.0f, 0.5001},
    {"Acos", vmath::vsacos_cout_rare, -1.0f, 1.0f, 0.5001},
    {"Asinpi", vmath::vsasinpi_cout_rare, -1.0f, 1.0f, 0.5001},
    {"Acospi", vmath::vsacospi_cout_rare, -1.0f, 1.0f, 0.5001},
    {"Atan", vmath::vsatan_cout_rare, -FLT_MAX, FLT_MAX, 0.5001},
    {"Atanpi", vmath::vsatanpi_cout_rare, -FLT_MAX, FLT_MAX, 0.5001},
    {"Sinh", vmath::vssinh_cout_rare, -89.41598f, 89.41598f, 0.5001},
    {"Cosh", vmath::vscosh_cout_rare, -89.41598f, 89.41598f, 0.5001},
    {"Tanh", vmath::vstanh_cout_rare, -20.0f, 20.0f, 0.5001},
    {"Asinh", vmath::vsasinh_cout_rare, -FLT_MAX, FLT_MAX, 0.5001},
    {"Acosh", vmath::vsacosh_cout_rare, 1.0f, FLT_MAX, 0.5001},
    {"Atanh", vmath::vsatanh_cout_rare, -0x1.fffffep-1f, 0x1.fffffep-1f, 0.5001},
};

template <class T, size_t N>
void check(const RareCase<T> (&cases)[N]) {
    constexpr int count = 4000;
    std::vector<T> points(count);
    for (const RareCase<T>& c : cases) {
        SCOPED_TRACE(c.function);
        sample(c.low, c.high, 7, points.data(), count);
        const Reference& reference = *find_reference(c.function);
        for (const T x : points) {
            T y;
            ASSERT_EQ(c.rare(&x, &y), 0) << "at " << x;
            const double error = sizeof(T) == 8
                                     ? exact_ulp_error(reference, static_cast<double>(x), static_cast<double>(y))
                                     : ulp_error(static_cast<float>(y), reference.in_double(static_cast<double>(x)));
            ASSERT_LE(error, c.bound) << std::hexfloat << "at " << x;
        }
    }
}

TEST(InvtrigRare, DoubleIsAccurate) { check(kDouble); }
TEST(InvtrigRare, SingleIsAccurate) { check(kSingle); }

TEST(InvtrigRare, ErrorsHaveStatusAndExceptionFlag) {
    const auto outcome = [](int32_t (*rare)(const double*, double*), double x) {
        double y;
        std::feclearexcept(FE_ALL_EXCEPT);
        const int32_t status = rare(&x, &y);
        return std::pair<int, int>(status, std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_UNDERFLOW));
    };
    using Pair = std::pair<int, int>;
    for (const auto rare : {vmath::vdasin_cout_rare, vmath::vdacos_cout_rare, vmath::vdasinpi_cout_rare,
                            vmath::vdacospi_cout_rare, vmath::vdatanh_cout_rare})
        for (const double x : {0x1.0000000000001p+0, -2.0, HUGE_VAL, -HUGE_VAL})
            EXPECT_EQ(outcome(rare, x), Pair(1, FE_INVALID)) << x;
    for (const double x : {0x1.fffffffffffffp-1, 0.0, -3.0, -HUGE_VAL})
        EXPECT_EQ(outcome(vmath::vdacosh_cout_rare, x), Pair(1, FE_INVALID)) << x;
    for (const double x : {1.0, -1.0}) EXPECT_EQ(outcome(vmath::vdatanh_cout_rare, x), Pair(2, FE_DIVBYZERO)) << x;
    for (const auto rare : {vmath::vdsinh_cout_rare, vmath::vdcosh_cout_rare}) {
        for (const double x : {0x1.633ce8fb9f87ep+9, -800.0, DBL_MAX})
            EXPECT_EQ(outcome(rare, x), Pair(3, FE_OVERFLOW)) << x;
        for (const double x : {0x1.633ce8fb9f87dp+9, HUGE_VAL, -HUGE_VAL}) EXPECT_EQ(outcome(rare, x), Pair(0, 0)) << x;
    }
}

}  // namespace
}  // namespace nax::testing
