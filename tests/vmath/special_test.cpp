// What the special functions promise beyond accuracy and single special values: statuses on both sides of every limit,
// right results with reporting off, symmetry, exact values, the scalar paths over the whole range.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <vector>

#include "nax/error.h"
#include "nax/mode.h"
#include "tests/lib/accuracy.h"
#include "vmath/special/special_rare.h"

namespace nax::testing {
namespace {

class Special : public ::testing::Test {
protected:
    void SetUp() override { _arqSetMode(ARQ_ERRMODE_IGNORE | ARQ_DENORMALS_KEEP); }
    void TearDown() override {
        _arqSetMode(ARQ_ERRMODE_DEFAULT | ARQ_DENORMALS_KEEP);
        _arqClearErrStatus();
    }
};

template <class T>
constexpr char kLetter = sizeof(T) == 8 ? 'd' : 's';

template <class T>
T call_one(const char* function, int slot, T x) {
    T y = 0;
    reinterpret_cast<Kernel<T>>(find_record(kLetter<T> + std::string(function))->ttab[slot])(1, &x, &y);
    return y;
}

// The status must follow from the exact result: overflow beyond the largest number, underflow where it rounds to 0.
template <class T>
void check_limit(const char* function, T limit) {
    const Reference& reference = *find_reference(function);
    T up = limit, down = limit;
    int kinds = 0;
    for (int step = 0; step < 6; ++step) {
        up = std::nextafter(up, std::numeric_limits<T>::infinity());
        down = std::nextafter(down, -std::numeric_limits<T>::infinity());
        for (const T x : {up, down}) {
            mpfr_t argument, value;
            mpfr_init2(argument, 53);
            mpfr_init2(value, 160);
            mpfr_set_d(argument, static_cast<double>(x), MPFR_RNDN);
            reference.exact(value, argument, MPFR_RNDN);
            // Half an ulp beyond the largest number; half the smallest denormal, a tie that goes to 0.
            constexpr bool wide = sizeof(T) == 8;
            mpfr_abs(value, value, MPFR_RNDN);
            mpfr_set_d(argument, wide ? DBL_MAX : static_cast<double>(FLT_MAX), MPFR_RNDN);
            mpfr_prec_round(argument, 60, MPFR_RNDN);
            mpfr_t half;
            mpfr_init2(half, 53);
            mpfr_set_ui_2exp(half, 1, wide ? 970 : 103, MPFR_RNDN);
            mpfr_add(argument, argument, half, MPFR_RNDN);
            const int expected = mpfr_greaterequal_p(value, argument)                   ? ARQ_STATUS_OVERFLOW
                                 : mpfr_cmp_ui_2exp(value, 1, wide ? -1075 : -150) <= 0 ? ARQ_STATUS_UNDERFLOW
                                                                                        : 0;
            mpfr_clears(argument, value, half, nullptr);
            kinds |= expected == 0 ? 1 : 2;
            for (int slot = 0; slot < kSlots; ++slot) {
                _arqClearErrStatus();
                const T y = call_one(function, slot, x);
                EXPECT_EQ(_arqGetErrStatus(), expected) << function << " " << x << " " << kLevels[slot];
                EXPECT_EQ(std::isinf(y), expected == ARQ_STATUS_OVERFLOW) << function << " " << x;
                EXPECT_EQ(y == 0, expected == ARQ_STATUS_UNDERFLOW) << function << " " << x;
            }
        }
    }
    EXPECT_EQ(kinds, 3) << "no limit of " << function << " at " << limit;
}

TEST_F(Special, StatusesTurnExactlyAtTheLimits) {
    check_limit("Erfc", 27.226017111108366);
    check_limit("CdfNorm", -38.485408335567335);
    check_limit("ExpInt1", 738.5272098491088);
    check_limit("TGamma", 171.6243769563027);
    check_limit("LGamma", 2.5599833278516383e305);
    check_limit("Erfc", 10.0541949f);
    check_limit("CdfNorm", -14.1701855f);
    check_limit("ExpInt1", 99.3633771f);
    check_limit("TGamma", 35.0400984f);
    check_limit("LGamma", 4.08500337e36f);
}

// With reporting off the kernels answer alone: infinities at poles, NaN outside the domain, and accurate values where
// the scalar path alone computes them.
template <class T>
void check_without_reports() {
    constexpr T inf = std::numeric_limits<T>::infinity(), eps = std::numeric_limits<T>::epsilon();
    _arqSetMode(ARQ_ERRMODE_NOERR | ARQ_DENORMALS_KEEP);
    for (int slot = 0; slot < kSlots; ++slot) {
        SCOPED_TRACE(kLevels[slot]);
        EXPECT_EQ(call_one("ErfInv", slot, T(1)), inf);
        EXPECT_EQ(call_one("ErfInv", slot, T(-1)), -inf);
        EXPECT_EQ(call_one("ErfcInv", slot, T(0)), inf);
        EXPECT_EQ(call_one("ErfcInv", slot, T(2)), -inf);
        EXPECT_EQ(call_one("CdfNormInv", slot, T(0)), -inf);
        EXPECT_EQ(call_one("CdfNormInv", slot, T(1)), inf);
        for (const char* function : {"ErfInv", "ErfcInv", "CdfNormInv"})
            for (const T x : {T(2) + 2 * eps, T(-1) - eps, T(1e30), T(-1e30), inf, -inf})
                EXPECT_TRUE(std::isnan(call_one(function, slot, x))) << function << " " << x;
        // Tiny probabilities: the value at the end of the grid or the true one.
        EXPECT_GT(call_one("ErfcInv", slot, T(1e-30)), T(5.8));
        EXPECT_LT(call_one("CdfNormInv", slot, T(1e-30)), T(-8.2));
        EXPECT_NEAR(call_one("ErfInv", slot, T(1e-20)) / T(8.862269254527580e-21), 1, 1e-3);
        EXPECT_EQ(call_one("Erfc", slot, T(30)), 0);
        EXPECT_EQ(call_one("CdfNorm", slot, T(-40)), 0);
        EXPECT_EQ(call_one("TGamma", slot, T(0)), inf);
        EXPECT_EQ(call_one("TGamma", slot, T(200)), inf);
        EXPECT_TRUE(std::isnan(call_one("TGamma", slot, T(-3))));
        EXPECT_NEAR(call_one("TGamma", slot, T(-1.5)), T(2.363271801207355), 1e-6);
        EXPECT_EQ(call_one("LGamma", slot, T(-3)), inf);
        EXPECT_NEAR(call_one("LGamma", slot, T(-0.5)), T(1.265512123484645), 1e-6);
        EXPECT_EQ(call_one("ExpInt1", slot, T(0)), inf);
        EXPECT_TRUE(std::isnan(call_one("ExpInt1", slot, T(-1))));
        EXPECT_NEAR(call_one("ExpInt1", slot, T(1e-10)) / T(22.44863526503694), 1, 1e-6);
        EXPECT_EQ(_arqGetErrStatus(), 0);
    }
}

TEST_F(Special, ReportingOffLeavesTheRightKindOfResult) {
    check_without_reports<double>();
    check_without_reports<float>();
}

template <class T>
void check_symmetry() {
    for (int slot = 0; slot < kSlots; ++slot)
        for (T x = T(0x1p-12); x < 1; x *= T(1.0371)) {
            EXPECT_EQ(call_one("Erf", slot, -x), -call_one("Erf", slot, x)) << x;
            EXPECT_EQ(call_one("ErfInv", slot, -x), -call_one("ErfInv", slot, x)) << x;
            // 1 - s and 1 + s exactly
            const T s = static_cast<T>(std::nearbyint(x * 4096) / 4096);
            EXPECT_EQ(call_one("ErfcInv", slot, 1 + s), -call_one("ErfcInv", slot, 1 - s)) << s;
            EXPECT_EQ(call_one("CdfNormInv", slot, (1 + s) / 2), -call_one("CdfNormInv", slot, (1 - s) / 2)) << s;
        }
}

TEST_F(Special, SymmetricToTheLastBit) {
    check_symmetry<double>();
    check_symmetry<float>();
}

TEST_F(Special, FactorialsAreCorrectlyRounded) {
    long double factorial = 1;
    for (int n = 1; n <= 25; ++n) {
        EXPECT_EQ(call_one("TGamma", 1, static_cast<double>(n)), static_cast<double>(factorial)) << n;
        EXPECT_EQ(call_one("TGamma", 1, static_cast<float>(n)), static_cast<float>(factorial)) << n;
        factorial *= n;
    }
}

// The scalar paths answer for any argument, also where the kernels never ask them.
TEST_F(Special, ScalarPathsAreAccurateEverywhere) {
    const struct {
        const char* function;
        int32_t (*path)(const double*, double*);
        double ulp;
    } paths[] = {{"Erf", vmath::vderf_cout_rare, 0.75},         {"Erfc", vmath::vderfc_cout_rare, 0.85},
                 {"CdfNorm", vmath::vdcdfnorm_cout_rare, 0.85}, {"ErfInv", vmath::vderfinv_cout_rare, 0.62},
                 {"ErfcInv", vmath::vderfcinv_cout_rare, 0.62}, {"CdfNormInv", vmath::vdcdfnorminv_cout_rare, 0.62},
                 {"TGamma", vmath::vdtgamma_cout_rare, 0.85}};
    for (const auto& row : paths) {
        const Reference& reference = *find_reference(row.function);
        for (const Interval& interval : find_accuracy_row(std::string("d") + row.function)->intervals) {
            double points[60];
            sample(interval.low, interval.high, 5, points, 60);
            for (const double x : points) {
                double y;
                row.path(&x, &y);
                ASSERT_LE(exact_ulp_error(reference, x, y), row.ulp) << row.function << " " << x;
            }
        }
    }
}

// Ordinary arguments and quiet NaN leave no exception flag, also where denormal sums arise on the way.
template <class T>
void check_flags() {
    for (const char* function : {"Erf", "Erfc", "CdfNorm", "ErfInv", "ErfcInv", "CdfNormInv"})
        for (int slot = 0; slot < kSlots; ++slot) {
            std::vector<T> x(64);
            const bool quantile = function[std::string(function).size() - 1] == 'v';
            sample(quantile ? T(0.01) : T(-5), quantile ? T(0.99) : T(5), 3, x.data(), 64);
            if (function[3] == '\0' || function[3] == 'c') x.push_back(std::numeric_limits<T>::denorm_min());
            if (!quantile) x.push_back(std::numeric_limits<T>::quiet_NaN());
            if (std::string(function) == "ErfcInv") x[64] = 1;
            std::vector<T> y(x.size());
            constexpr unsigned all_flags = 0x3F;
            __builtin_ia32_ldmxcsr(__builtin_ia32_stmxcsr() & ~all_flags);
            reinterpret_cast<Kernel<T>>(find_record(kLetter<T> + std::string(function))->ttab[slot])(
                static_cast<int32_t>(x.size()), x.data(), y.data());
            const unsigned flags = __builtin_ia32_stmxcsr() & all_flags;
            EXPECT_EQ(flags, 0u) << kLetter<T> << function << " " << kLevels[slot];
        }
}

TEST_F(Special, OrdinaryArgumentsRaiseNoFlag) {
    check_flags<double>();
    check_flags<float>();
}

}  // namespace
}  // namespace nax::testing
