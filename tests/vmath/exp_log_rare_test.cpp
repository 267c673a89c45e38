// Scalar paths of the exponentials and logarithms over their whole range, not only where the kernels need them.
#include <gtest/gtest.h>

#include <cfenv>
#include <cfloat>
#include <cmath>
#include <functional>

#include "tests/lib/ulp.h"
#include "vmath/exp/exp_rare.h"
#include "vmath/log/log_rare.h"

namespace nax::testing {
namespace {

template <class T>
struct RareCase {
    const char* function;
    int32_t (*rare)(const T*, T*);
    T low, high;
    double bound;  // in ulp
};

constexpr RareCase<double> kDouble[] = {
    {"Exp", vmath::vdexp_cout_rare, -745.2, 709.782712893384, 0.52},
    {"Exp", vmath::vdexp_cout_rare, -745.2, -700.0, 0.52},
    {"Exp2", vmath::vdexp2_cout_rare, -1075.5, 0x1.fffffffffffffp+9, 0.52},
    {"Exp2", vmath::vdexp2_cout_rare, -1076.0, -1021.0, 0.52},
    {"Exp10", vmath::vdexp10_cout_rare, -323.7, 308.2547155599167, 0.53},
    {"Exp10", vmath::vdexp10_cout_rare, -323.7, -307.0, 0.53},
    {"Expm1", vmath::vdexpm1_cout_rare, -50.0, 709.782712893384, 0.52},
    {"Expm1", vmath::vdexpm1_cout_rare, -1.0, 1.0, 0.52},
    {"Expm1", vmath::vdexpm1_cout_rare, 707.0, 709.782712893384, 0.52},
    {"Ln", vmath::vdln_cout_rare, 0x1p-1074, DBL_MAX, 0.52},
    {"Ln", vmath::vdln_cout_rare, 0.5, 2.0, 0.52},
    {"Log2", vmath::vdlog2_cout_rare, 0x1p-1074, DBL_MAX, 0.52},
    {"Log2", vmath::vdlog2_cout_rare, 0.5, 2.0, 0.53},
    {"Log10", vmath::vdlog10_cout_rare, 0x1p-1074, DBL_MAX, 0.52},
    {"Log10", vmath::vdlog10_cout_rare, 0.5, 2.0, 0.53},
    {"Log1p", vmath::vdlog1p_cout_rare, -0x1.fffffffffffffp-1, DBL_MAX, 0.52},
    {"Log1p", vmath::vdlog1p_cout_rare, -0.5, 1.0, 0.52},
    {"Logb", vmath::vdlogb_cout_rare, 0x1p-1074, DBL_MAX, 0},
};

constexpr RareCase<float> kSingle[] = {
    {"Exp", vmath::vsexp_cout_rare, -104.0f, 88.72283f, 0.5001},
    {"Exp2", vmath::vsexp2_cout_rare, -150.5f, 0x1.fffffep+6f, 0.5001},
    {"Exp10", vmath::vsexp10_cout_rare, -45.5f, 38.531837f, 0.5001},
    {"Expm1", vmath::vsexpm1_cout_rare, -30.0f, 88.72283f, 0.5001},
    {"Ln", vmath::vsln_cout_rare, 0x1p-149f, FLT_MAX, 0.5001},
    {"Log2", vmath::vslog2_cout_rare, 0x1p-149f, FLT_MAX, 0.5001},
    {"Log10", vmath::vslog10_cout_rare, 0x1p-149f, FLT_MAX, 0.5001},
    {"Log1p", vmath::vslog1p_cout_rare, -0x1.fffffep-1f, FLT_MAX, 0.5001},
    {"Logb", vmath::vslogb_cout_rare, 0x1p-149f, FLT_MAX, 0},
};

// The status that an argument of the cases above deserves.
template <class T>
int32_t deserved_status(const char* function, T x, T y) {
    if (function[0] == 'L') return 0;
    if (std::isinf(y)) return 3;
    const double exact = find_reference(function)->in_double(static_cast<double>(x));
    return std::fabs(exact) < static_cast<double>(std::numeric_limits<T>::min()) && x != 0 ? 4 : 0;
}

template <class T, size_t N>
void check(const RareCase<T> (&cases)[N]) {
    constexpr int count = 5000;
    std::vector<T> points(count);
    for (const RareCase<T>& c : cases) {
        SCOPED_TRACE(c.function);
        sample(c.low, c.high, 7, points.data(), count);
        const Reference& reference = *find_reference(c.function);
        for (const T x : points) {
            T y;
            const int32_t status = c.rare(&x, &y);
            const double error = sizeof(T) == 8
                                     ? exact_ulp_error(reference, static_cast<double>(x), static_cast<double>(y))
                                     : ulp_error(static_cast<float>(y), reference.in_double(static_cast<double>(x)));
            ASSERT_LE(error, c.bound) << "at " << x;
            ASSERT_EQ(status, deserved_status(c.function, x, y)) << "at " << x;
        }
    }
}

TEST(ExpLogRare, DoubleIsAccurateAndHasTheRightStatus) { check(kDouble); }
TEST(ExpLogRare, SingleIsAccurateAndHasTheRightStatus) { check(kSingle); }

TEST(ExpLogRare, ErrorsRaiseTheirExceptionFlag) {
    const auto flags = [](int32_t (*rare)(const double*, double*), double x) {
        double y;
        std::feclearexcept(FE_ALL_EXCEPT);
        rare(&x, &y);
        return std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_UNDERFLOW);
    };
    EXPECT_EQ(flags(vmath::vdexp_cout_rare, 800.0), FE_OVERFLOW);
    EXPECT_EQ(flags(vmath::vdexp_cout_rare, -800.0), FE_UNDERFLOW);
    EXPECT_EQ(flags(vmath::vdexp_cout_rare, -720.3), FE_UNDERFLOW);
    EXPECT_EQ(flags(vmath::vdexp_cout_rare, NAN), 0);
    EXPECT_EQ(flags(vmath::vdexpm1_cout_rare, 800.0), FE_OVERFLOW);
    for (const auto rare : {vmath::vdln_cout_rare, vmath::vdlog2_cout_rare, vmath::vdlog10_cout_rare}) {
        EXPECT_EQ(flags(rare, 0.0), FE_DIVBYZERO);
        EXPECT_EQ(flags(rare, -2.0), FE_INVALID);
        EXPECT_EQ(flags(rare, -HUGE_VAL), FE_INVALID);
        EXPECT_EQ(flags(rare, HUGE_VAL), 0);
    }
    EXPECT_EQ(flags(vmath::vdlog1p_cout_rare, -1.0), FE_DIVBYZERO);
    EXPECT_EQ(flags(vmath::vdlog1p_cout_rare, -3.0), FE_INVALID);
    EXPECT_EQ(flags(vmath::vdlogb_cout_rare, 0.0), FE_DIVBYZERO);
}

}  // namespace
}  // namespace nax::testing
