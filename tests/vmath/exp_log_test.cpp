// What the exponentials and logarithms promise beyond accuracy and single special values: statuses on both sides of
// every limit, vector results where reports are off, flags, exact results.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <vector>

#include "nax/error.h"
#include "nax/mode.h"
#include "tests/lib/accuracy.h"

namespace nax::testing {
namespace {

constexpr const char* kExponentials[] = {"Exp", "Exp2", "Exp10", "Expm1"};
constexpr const char* kLogarithms[] = {"Ln", "Log2", "Log10", "Log1p"};

class ExpLog : public ::testing::Test {
protected:
    void SetUp() override { _arqSetMode(ARQ_ERRMODE_IGNORE | ARQ_DENORMALS_KEEP); }
    void TearDown() override {
        _arqSetMode(ARQ_ERRMODE_DEFAULT | ARQ_DENORMALS_KEEP);
        _arqClearErrStatus();
    }
};

const Record& record(char type, const char* function) { return *find_record(type + std::string(function)); }

template <class T>
T call_one(const Record& r, int slot, T x) {
    T y = 0;
    reinterpret_cast<Kernel<T>>(r.ttab[slot])(1, &x, &y);
    return y;
}

template <class T>
constexpr char kLetter = sizeof(T) == 8 ? 'd' : 's';

// Every kernel of the named functions.
template <class T, size_t N, class Check>
void for_each_kernel(const char* const (&functions)[N], Check check) {
    for (const char* function : functions)
        for (int slot = 0; slot < kSlots; ++slot) {
            SCOPED_TRACE(std::string(1, kLetter<T>) + function + " " + kLevels[slot]);
            check(function, record(kLetter<T>, function), slot);
        }
}

// The floats or doubles around x.
template <class T>
std::vector<T> neighbours(T x) {
    std::vector<T> points = {x};
    for (T up = x, down = x; points.size() < 9;) {
        points.push_back(up = std::nextafter(up, std::numeric_limits<T>::infinity()));
        points.push_back(down = std::nextafter(down, -std::numeric_limits<T>::infinity()));
    }
    return points;
}

// Base-b logarithms of the limits: largest number, smallest normal, half the smallest denormal.
template <class T>
std::vector<T> limits_of(const char* function) {
    const std::string name = function;
    const double base = name == "Exp2" ? 1.0 : name == "Exp10" ? std::log10(2.0) : std::log(2.0);
    using L = std::numeric_limits<T>;
    std::vector<T> limits = {static_cast<T>(base * L::max_exponent)};
    if (name != "Expm1") {
        limits.push_back(static_cast<T>(base * (L::min_exponent - 1)));
        limits.push_back(static_cast<T>(base * (L::min_exponent - L::digits - 1)));
    }
    return limits;
}

template <class T>
void check_statuses() {
    for_each_kernel<T>(kExponentials, [](const char* function, const Record& r, int slot) {
        for (const T limit : limits_of<T>(function))
            for (const T x : neighbours(limit)) {
                const long double exact = find_reference(function)->in_long_double(static_cast<long double>(x));
                const bool overflow = static_cast<T>(exact) > std::numeric_limits<T>::max();
                const bool underflow = std::fabs(exact) < static_cast<long double>(std::numeric_limits<T>::min());
                _arqClearErrStatus();
                const T y = call_one(r, slot, x);
                EXPECT_EQ(_arqGetErrStatus(), overflow ? 3 : underflow ? 4 : 0) << x;
                EXPECT_EQ(std::isinf(y), overflow) << x;
            }
    });
}

TEST_F(ExpLog, StatusesTurnExactlyAtTheLimits) {
    check_statuses<double>();
    check_statuses<float>();
}

// With reporting off the vector code alone answers; it must still be right in kind.
template <class T>
void check_without_reports() {
    constexpr T inf = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN(),
                max = std::numeric_limits<T>::max();
    _arqSetMode(ARQ_ERRMODE_NOERR | ARQ_DENORMALS_KEEP);
    for_each_kernel<T>(kExponentials, [&](const char* function, const Record& r, int slot) {
        const T bottom = std::string(function) == "Expm1" ? T(-1) : T(0);
        for (const T x : {T(1100), T(3e4), T(1e15), T(1e17), T(3e19), T(1e38), max, inf}) {
            EXPECT_EQ(call_one(r, slot, x), inf) << x;
            EXPECT_EQ(call_one(r, slot, -x), bottom) << -x;
        }
        // Every step of the table, just beyond overflow.
        const T limit = limits_of<T>(function)[0];
        for (T x = limit * T(1.0001); x < limit * T(1.01); x *= 1 + T(1) / 65536)
            ASSERT_EQ(call_one(r, slot, x), inf) << x;
        EXPECT_TRUE(std::isnan(call_one(r, slot, nan)));
        // Large finite and denormal results are accurate.
        for (const T x : {limit * T(0.9995), limits_of<T>(function).back() * T(0.97)}) {
            const auto exact = find_reference(function)->in_long_double(static_cast<long double>(x));
            EXPECT_NEAR(static_cast<double>(call_one(r, slot, x) / exact), 1.0, 0.03) << x;
        }
        EXPECT_EQ(_arqGetErrStatus(), 0);
    });
    for_each_kernel<T>(kLogarithms, [&](const char* function, const Record& r, int slot) {
        const T pole = std::string(function) == "Log1p" ? T(-1) : T(0);
        EXPECT_EQ(call_one(r, slot, pole), -inf);
        EXPECT_EQ(call_one(r, slot, inf), inf);
        for (const T x : {-max, -inf, nan}) EXPECT_TRUE(std::isnan(call_one(r, slot, x))) << x;
        for (T below = T(0x1p-20); below < T(0x1p20); below *= T(1.37))  // every binade, all over the table
            EXPECT_TRUE(std::isnan(call_one(r, slot, pole - below))) << below;
        EXPECT_EQ(_arqGetErrStatus(), 0);
    });
}

TEST_F(ExpLog, VectorCodeAloneGivesTheRightKindOfResult) {
    check_without_reports<double>();
    check_without_reports<float>();
}

// Ordinary arguments, denormals and quiet NaN leave no exception flag, also where results are inexact or denormal sums
// arise on the way.
template <class T>
void check_flags() {
    constexpr const char* all[] = {"Exp", "Exp2", "Exp10", "Expm1", "Ln", "Log2", "Log10", "Log1p", "Logb"};
    using L = std::numeric_limits<T>;
    for_each_kernel<T>(all, [](const char* function, const Record& r, int slot) {
        const bool logarithm = function[0] == 'L';
        std::vector<T> x;
        for (const Interval& interval : find_accuracy_row(r.name())->intervals) {
            // Exponentials beyond their limits are the scalar path's, whose flags are meant.
            const double cap = std::string(function) == "Exp10" ? (sizeof(T) == 8 ? 300 : 37)
                               : sizeof(T) == 8                 ? 700
                                                                : 86;
            const auto low = static_cast<T>(logarithm ? interval.low : std::max(interval.low, -cap));
            const auto high = static_cast<T>(logarithm ? interval.high : std::min(interval.high, cap));
            if (!(low < high)) continue;
            x.resize(x.size() + 64);
            sample(low, high, 3, &x[x.size() - 64], 64);
        }
        const bool denormals_rare = std::string(function) == "Logb";
        if (!denormals_rare) x.insert(x.end(), {L::denorm_min(), L::min() / 2});
        if (!logarithm || std::string(function) == "Log1p") x.insert(x.end(), {-L::denorm_min(), T(0), -T(0)});
        // NaN is rare where the test for rare lanes is unordered; a quiet one raises nothing there either.
        x.push_back(L::quiet_NaN());
        std::erase_if(x, [&](T v) { return denormals_rare && std::fpclassify(v) == FP_SUBNORMAL; });
        std::vector<T> y(x.size());
        constexpr unsigned all_flags = 0x3F;  // with that of denormal operands, which <cfenv> doesn't know
        __builtin_ia32_ldmxcsr(__builtin_ia32_stmxcsr() & ~all_flags);
        reinterpret_cast<Kernel<T>>(r.ttab[slot])(static_cast<int32_t>(x.size()), x.data(), y.data());
        const unsigned flags = __builtin_ia32_stmxcsr() & all_flags;
        EXPECT_EQ(flags, 0u);
    });
}

TEST_F(ExpLog, OrdinaryArgumentsRaiseNoFlag) {
    check_flags<double>();
    check_flags<float>();
}

TEST_F(ExpLog, OneKernelServesAllLevelsOfExp2Exp10AndLogb) {
    for (const char* function : {"Exp2", "Exp10", "Logb"})
        for (const char type : {'s', 'd'}) {
            const Record& r = record(type, function);
            EXPECT_EQ(r.ttab[0], r.ttab[1]) << r.name();
            EXPECT_EQ(r.ttab[2], r.ttab[1]) << r.name();
        }
}

template <class T>
void check_exact_powers() {
    using L = std::numeric_limits<T>;
    for (int k = L::min_exponent - L::digits; k < L::max_exponent; ++k) {
        const T power = std::ldexp(T(1), k);
        for (int slot = 0; slot < kSlots; ++slot) {
            ASSERT_EQ(call_one(record(kLetter<T>, "Log2"), slot, power), static_cast<T>(k)) << kLevels[slot];
            ASSERT_EQ(call_one(record(kLetter<T>, "Exp2"), slot, static_cast<T>(k)), power) << k;
            ASSERT_EQ(call_one(record(kLetter<T>, "Logb"), slot, power), static_cast<T>(k)) << k;
        }
    }
}

TEST_F(ExpLog, PowersOfTwoAreExact) {
    check_exact_powers<double>();
    check_exact_powers<float>();
}

// exp is monotone to the last bit where the table index changes, at HA.
TEST_F(ExpLog, HighAccuracyNeverStepsBackAcrossATableStep) {
    for (int step = -64; step <= 64; ++step) {
        const double x = step * std::log(2.0) / 16;
        std::vector<double> points(64), results(64);
        double p = x;
        for (int i = 0; i < 32; ++i) p = std::nextafter(p, -1e9);
        for (double& point : points) point = p = std::nextafter(p, 1e9);
        reinterpret_cast<Kernel<double>>(record('d', "Exp").ttab[1])(64, points.data(), results.data());
        for (size_t i = 1; i < points.size(); ++i)
            EXPECT_GE(results[i] - results[i - 1], -results[i] * DBL_EPSILON) << points[i];
    }
}

}  // namespace
}  // namespace nax::testing
