// Scalar paths of the trigonometric functions over the whole range, not only where the kernels need them.
#include "vmath/trig/trig_rare.h"

#include <gtest/gtest.h>
#include <mpfr.h>

#include <cfenv>
#include <cfloat>
#include <cmath>
#include <limits>
#include <random>

#include "tests/lib/near_multiples.h"
#include "tests/lib/ulp.h"
#include "vmath/trig/reduce_pio2.h"

namespace nax::testing {
namespace {

template <class T>
struct RareCase {
    const char* function;
    int32_t (*rare)(const T*, T*);
};
constexpr RareCase<double> kDouble[] = {
    {"Sin", vmath::vdsin_cout_rare},     {"Cos", vmath::vdcos_cout_rare},     {"Tan", vmath::vdtan_cout_rare},
    {"Sind", vmath::vdsind_cout_rare},   {"Cosd", vmath::vdcosd_cout_rare},   {"Tand", vmath::vdtand_cout_rare},
    {"Sinpi", vmath::vdsinpi_cout_rare}, {"Cospi", vmath::vdcospi_cout_rare}, {"Tanpi", vmath::vdtanpi_cout_rare},
};
constexpr RareCase<float> kSingle[] = {
    {"Sin", vmath::vssin_cout_rare},     {"Cos", vmath::vscos_cout_rare},     {"Tan", vmath::vstan_cout_rare},
    {"Sind", vmath::vssind_cout_rare},   {"Cosd", vmath::vscosd_cout_rare},   {"Tand", vmath::vstand_cout_rare},
    {"Sinpi", vmath::vssinpi_cout_rare}, {"Cospi", vmath::vscospi_cout_rare}, {"Tanpi", vmath::vstanpi_cout_rare},
};

template <class T>
void expect_accurate(const RareCase<T>& c, T x, double bound) {
    T y;
    ASSERT_EQ(c.rare(&x, &y), 0);
    const Reference& reference = *find_reference(c.function);
    const double error = sizeof(T) == 8 ? exact_ulp_error(reference, static_cast<double>(x), static_cast<double>(y))
                                        : ulp_error(static_cast<float>(y), reference.in_double(static_cast<double>(x)));
    ASSERT_LE(error, bound) << c.function << " at " << x;
}

template <class T, size_t N>
void check(const RareCase<T> (&cases)[N], double bound) {
    constexpr T limits[] = {T(0.1), T(1000), T(0x1p17), T(0x1p30), std::numeric_limits<T>::max()};
    std::vector<T> points(1000);
    for (const RareCase<T>& c : cases)
        for (const T limit : limits) {
            sample(-limit, limit, 5, points.data(), static_cast<int>(points.size()));
            // Where the result is denormal half an ulp more is lost.
            for (const T x : points)
                if (std::fabs(x) > std::numeric_limits<T>::min() * T(0x1p60)) expect_accurate(c, x, bound);
        }
}

TEST(TrigRare, DoubleIsAccurate) { check(kDouble, 0.51); }
TEST(TrigRare, SingleIsAccurate) { check(kSingle, 0.5001); }

TEST(TrigRare, DoubleIsAccurateNextToMultiplesOfAQuarterTurn) {
    for (int e = 0; e < 1024; e += 3)
        for (const double x : nearest_to_quarter_turns(e, 2))
            for (int k = 0; k < 3; ++k) expect_accurate(kDouble[k], x, 0.51);
}

TEST(TrigRare, TinyArgumentsStayAndRaiseTheirFlags) {
    const auto flags = [](int32_t (*rare)(const double*, double*), double x) {
        double y;
        std::feclearexcept(FE_ALL_EXCEPT);
        EXPECT_EQ(rare(&x, &y), std::isinf(x) ? 1 : 0);
        const int raised = std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_INEXACT);
        EXPECT_TRUE(y == x || !std::isfinite(x));
        return raised;
    };
    for (const auto rare : {vmath::vdsin_cout_rare, vmath::vdtan_cout_rare}) {
        EXPECT_EQ(flags(rare, 0x1p-300), FE_INEXACT);
        EXPECT_EQ(flags(rare, 0x1p-1040), FE_INEXACT);
        EXPECT_EQ(flags(rare, -0x1p-1074), FE_INEXACT);
        EXPECT_EQ(flags(rare, 0.0), 0);
        EXPECT_EQ(flags(rare, HUGE_VAL), FE_INVALID);
        EXPECT_EQ(flags(rare, NAN), 0);
    }
}

// x - quadrant pi/2, the remainder to 2^-90 of itself.
void expect_reduced(double x) {
    vmath::DoubleWord r;
    const int32_t quadrant = __internal_reduce_pio2d(&r, x);
    ASSERT_GE(quadrant, 0);
    ASSERT_LE(quadrant, 3);
    mpfr_t value, quarter;
    mpfr_init2(value, 1400);
    mpfr_init2(quarter, 1400);
    mpfr_const_pi(quarter, MPFR_RNDN);
    mpfr_mul_ui(quarter, quarter, 2, MPFR_RNDN);
    mpfr_set_d(value, x, MPFR_RNDN);
    mpfr_fmod(value, value, quarter, MPFR_RNDN);  // less whole turns
    mpfr_div_ui(quarter, quarter, 4, MPFR_RNDN);
    mpfr_mul_si(quarter, quarter, quadrant, MPFR_RNDN);
    mpfr_sub(value, value, quarter, MPFR_RNDN);
    mpfr_const_pi(quarter, MPFR_RNDN);
    mpfr_mul_ui(quarter, quarter, 2, MPFR_RNDN);
    mpfr_remainder(value, value, quarter, MPFR_RNDN);
    const double size = std::fabs(mpfr_get_d(value, MPFR_RNDN));
    EXPECT_LE(size, 0.7854) << x;
    mpfr_sub_d(value, value, r.high, MPFR_RNDN);
    mpfr_sub_d(value, value, r.low, MPFR_RNDN);
    EXPECT_LE(std::fabs(mpfr_get_d(value, MPFR_RNDN)), std::ldexp(size, -90)) << x;
    EXPECT_LE(std::fabs(r.low), std::fabs(r.high) * 0x1p-52);
    mpfr_clears(value, quarter, nullptr);
}

TEST(TrigRare, LongReductionKeepsTwoDoubles) {
    std::mt19937_64 random(7);
    for (int e = 0; e < 1024; e += 2) {
        const double x = std::ldexp(1.0 + static_cast<double>(random() >> 12) * 0x1p-52, e);
        expect_reduced(x);
        expect_reduced(-x);
        if (e % 16 == 0) expect_reduced(nearest_to_quarter_turns(e, 1).front());
    }
    for (const double limit : {0x1p+17, 0x1p+30, DBL_MAX}) {
        expect_reduced(limit);
        expect_reduced(std::nextafter(limit, 0.0));
    }
}

}  // namespace
}  // namespace nax::testing
