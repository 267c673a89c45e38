// What the inverse trigonometric and hyperbolic functions promise beyond accuracy and single special values: statuses
// on both sides of every limit, results without reports, flags, symmetry, neighbours of a rare lane.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "nax/error.h"
#include "nax/mode.h"
#include "tests/lib/accuracy.h"

namespace nax::testing {
namespace {

constexpr const char* kOdd[] = {"Asin", "Asinpi", "Atan", "Atanpi", "Sinh", "Tanh", "Asinh", "Atanh"};
constexpr const char* kAll[] = {"Asin",  "Asinpi", "Atan", "Atanpi", "Sinh", "Tanh",
                                "Asinh", "Atanh",  "Acos", "Acospi", "Cosh", "Acosh"};

class Invtrig : public ::testing::Test {
protected:
    void SetUp() override {
        _arqSetMode(ARQ_ERRMODE_IGNORE | ARQ_DENORMALS_KEEP);
        _arqClearErrStatus();
    }
    void TearDown() override {
        _arqSetMode(ARQ_ERRMODE_DEFAULT | ARQ_DENORMALS_KEEP);
        _arqClearErrStatus();
    }
};

template <class T>
Kernel<T> kernel(const std::string& function, int slot) {
    return reinterpret_cast<Kernel<T>>(find_record((sizeof(T) == 8 ? "d" : "s") + function)->ttab[slot]);
}

template <class T>
T call_one(const char* function, int slot, T x) {
    T y = 0;
    kernel<T>(function, slot)(1, &x, &y);
    return y;
}

template <class T>
T above(T x) {
    return std::nextafter(x, std::numeric_limits<T>::infinity());
}
template <class T>
T below(T x) {
    return std::nextafter(x, -std::numeric_limits<T>::infinity());
}

// Status and kind of the result at one argument, with reports and without.
template <class T>
void expect_outcome(const char* function, T x, int32_t status, bool finite) {
    for (int slot = 0; slot < kSlots; ++slot) {
        SCOPED_TRACE(std::string(function) + " " + kLevels[slot] + " of " + std::to_string(static_cast<double>(x)));
        _arqSetMode(ARQ_ERRMODE_IGNORE | ARQ_DENORMALS_KEEP);
        _arqClearErrStatus();
        const T y = call_one(function, slot, x);
        EXPECT_EQ(_arqGetErrStatus(), status);
        EXPECT_EQ(std::isfinite(y), finite);
        _arqSetMode(ARQ_ERRMODE_NOERR | ARQ_DENORMALS_KEEP);
        _arqClearErrStatus();
        const T quiet = call_one(function, slot, x);
        EXPECT_EQ(_arqGetErrStatus(), 0);
        EXPECT_EQ(std::isfinite(quiet), finite);
        EXPECT_EQ(std::isnan(quiet), std::isnan(y));
        if (std::isinf(y)) {
            EXPECT_EQ(quiet, y);
        }
    }
}

template <class T>
void check_limits() {
    constexpr T inf = std::numeric_limits<T>::infinity(), max = std::numeric_limits<T>::max();
    for (const char* function : {"Asin", "Acos", "Asinpi", "Acospi"})
        for (const T sign : {T(1), T(-1)}) {
            expect_outcome(function, sign, 0, true);
            expect_outcome(function, sign * below(T(1)), 0, true);
            expect_outcome(function, sign * above(T(1)), 1, false);
            expect_outcome(function, sign * inf, 1, false);
        }
    for (const T sign : {T(1), T(-1)}) {
        expect_outcome("Atanh", sign * below(T(1)), 0, true);
        expect_outcome("Atanh", sign, 2, false);
        expect_outcome("Atanh", sign * above(T(1)), 1, false);
        for (const char* function : {"Sinh", "Cosh"}) {
            // the largest argument with a finite result
            const T largest = static_cast<T>(sizeof(T) == 8 ? 0x1.633ce8fb9f87dp+9 : 0x1.65a9f8p+6);
            expect_outcome(function, sign * largest, 0, true);
            expect_outcome(function, sign * above(largest), 3, false);
            expect_outcome(function, sign * max, 3, false);
            expect_outcome(function, sign * inf, 0, false);
        }
        for (const char* function : {"Atan", "Atanpi", "Tanh", "Asinh"}) expect_outcome(function, sign * max, 0, true);
    }
    expect_outcome("Acosh", T(1), 0, true);
    expect_outcome("Acosh", below(T(1)), 1, false);
    expect_outcome("Acosh", max, 0, true);
    expect_outcome("Acosh", inf, 0, false);
}

TEST_F(Invtrig, StatusesTurnExactlyAtTheLimitsWithAndWithoutReports) {
    check_limits<double>();
    check_limits<float>();
}

// Arguments of all intervals of the accuracy rows.
template <class T>
std::vector<T> arguments(const char* function, int count) {
    std::vector<T> x;
    for (const Interval& interval :
         find_accuracy_row((sizeof(T) == 8 ? "d" : "s") + std::string(function))->intervals) {
        x.resize(x.size() + static_cast<size_t>(count));
        sample(static_cast<T>(interval.low), static_cast<T>(interval.high), 5,
               &x[x.size() - static_cast<size_t>(count)], count);
    }
    return x;
}

template <class T>
void check_symmetry() {
    for (const char* function : kOdd)
        for (int slot = 0; slot < kSlots; ++slot) {
            std::vector<T> x = arguments<T>(function, 64), y(x.size()), mirrored(x.size());
            const auto n = static_cast<int32_t>(x.size());
            kernel<T>(function, slot)(n, x.data(), y.data());
            for (T& v : x) v = -v;
            kernel<T>(function, slot)(n, x.data(), mirrored.data());
            for (size_t i = 0; i < x.size(); ++i) ASSERT_EQ(mirrored[i], -y[i]) << function << " at " << x[i];
        }
}

TEST_F(Invtrig, OddFunctionsAreOdd) {
    check_symmetry<double>();
    check_symmetry<float>();
}

// A rare lane leaves its neighbours as they are without it.
template <class T>
void check_neighbours() {
    constexpr T inf = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
    for (const char* function : kAll)
        for (int slot = 0; slot < kSlots; ++slot) {
            std::vector<T> x = arguments<T>(function, 16), alone(x.size()), together(x.size());
            const auto n = static_cast<int32_t>(x.size());
            kernel<T>(function, slot)(n, x.data(), alone.data());
            const T strange[] = {inf, -inf, nan, T(-1), T(1), T(2), T(1e30f), T(-90)};
            for (size_t i = 0; i < x.size(); i += 3) x[i] = strange[i / 3 % std::size(strange)];
            kernel<T>(function, slot)(n, x.data(), together.data());
            for (size_t i = 0; i < x.size(); ++i)
                if (i % 3 != 0) {
                    ASSERT_EQ(together[i], alone[i]) << function << " " << kLevels[slot] << " at " << x[i];
                }
        }
}

TEST_F(Invtrig, RareLanesDontDisturbTheirNeighbours) {
    check_neighbours<double>();
    check_neighbours<float>();
}

// Ordinary arguments leave no exception flag.
template <class T>
void check_flags() {
    for (const char* function : kAll)
        for (int slot = 0; slot < kSlots; ++slot) {
            std::vector<T> x = arguments<T>(function, 32), y(x.size());
            // the scalar path of large results raises inexact as any scalar code does
            std::erase_if(x, [&](T v) {
                return std::string(function).find('h') != std::string::npos
                           ? std::fabs(v) > T(80)
                           : std::fabs(v) < std::numeric_limits<T>::min() * 1e20f;
            });
            x.push_back(std::numeric_limits<T>::quiet_NaN());
            constexpr unsigned all_flags = 0x3F;
            __builtin_ia32_ldmxcsr(__builtin_ia32_stmxcsr() & ~all_flags);
            kernel<T>(function, slot)(static_cast<int32_t>(x.size()), x.data(), y.data());
            const unsigned flags = __builtin_ia32_stmxcsr() & all_flags;
            EXPECT_EQ(flags, 0u) << function << " " << kLevels[slot];
        }
}

TEST_F(Invtrig, OrdinaryArgumentsRaiseNoFlag) {
    check_flags<double>();
    check_flags<float>();
}

// Half-turns are exact where the angle is: multiples of 1/4 and 1/2.
template <class T>
void check_exact_half_turns() {
    constexpr T inf = std::numeric_limits<T>::infinity();
    for (int slot = 0; slot < kSlots; ++slot) {
        EXPECT_EQ(call_one("Asinpi", slot, T(1)), T(0.5));
        EXPECT_EQ(call_one("Acospi", slot, T(-1)), T(1));
        EXPECT_EQ(call_one("Acospi", slot, T(0)), T(0.5));
        EXPECT_EQ(call_one("Atanpi", slot, T(-1)), T(-0.25));
    }
    EXPECT_EQ(call_one("Atanpi", 1, inf), T(0.5));
    EXPECT_EQ(call_one("Asinpi", 1, T(0.5)), T(1) / T(6));
    EXPECT_EQ(call_one("Acospi", 1, T(0.5)), T(1) / T(3));
    EXPECT_EQ(call_one("Acospi", 1, T(-0.5)), T(2) / T(3));
}

TEST_F(Invtrig, HalfTurnsOfSimpleAnglesAreExact) {
    check_exact_half_turns<double>();
    check_exact_half_turns<float>();
}

TEST_F(Invtrig, DoubleSinhHasOneKernelForLAAndEP) {
    const Record& record = *find_record("dSinh");
    EXPECT_EQ(record.ttab[2], record.ttab[0]);
    EXPECT_NE(record.ttab[1], record.ttab[0]);
}

}  // namespace
}  // namespace nax::testing
