// Accuracy of Atan2 and Atan2pi over the plane: ratios at every threshold of the algorithm in all octants, magnitudes
// over the whole range, results among the denormals. (Special values are in specials_invtrig.def.)
#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "nax/error.h"
#include "nax/mode.h"
#include "tests/lib/accuracy.h"
#include "vmath/invtrig/invtrig_rare.h"

namespace nax::testing {
namespace {

template <class T>
using BinaryKernel = void (*)(int32_t n, const T* a, const T* b, T* r);

template <class T>
struct Plane {
    std::vector<T> y, x;
    void add(T a, T b) {
        // every sign
        for (const T s : {T(1), T(-1)})
            for (const T t : {T(1), T(-1)}) {
                y.push_back(s * a);
                x.push_back(t * b);
            }
    }
};

// Magnitudes whose ratio is q or close to it, at a scale of 2^exponent, with either one the larger.
template <class T>
void add_ratios(Plane<T>& plane, T q, int exponent, std::mt19937_64& random) {
    std::uniform_real_distribution<double> mantissa(1, 2);
    for (int i = 0; i < 6; ++i) {
        const T large = std::ldexp(static_cast<T>(mantissa(random)), exponent);
        T small = large * q;
        for (int step = 0; step < i; ++step) small = std::nextafter(small, i % 2 == 0 ? T(0) : large);
        plane.add(small, large);
        plane.add(large, small);
    }
}

template <class T>
Plane<T> thresholds() {
    using L = std::numeric_limits<T>;
    Plane<T> plane;
    std::mt19937_64 random(11);
    const int scales[] = {
        0, 20, -20, L::max_exponent - 3, L::max_exponent - 9, L::min_exponent + 2, L::min_exponent + 27};
    for (const int scale : scales)
        for (const double q : {0.25, 0.5, 0.75, 1.0, 0.125, 0.0625, 0.4375, 0.6875, 1e-3, 0x1p-12, 0x1p-30})
            add_ratios(plane, static_cast<T>(q), scale, random);
    // both sides of the limits of the vector code: smallest and largest magnitude, distance of exponents
    const int smallest = sizeof(T) == 8 ? -900 : -100, largest = sizeof(T) == 8 ? 1000 : 120;
    const int span = sizeof(T) == 8 ? 900 : 90;
    for (int near = -2; near <= 2; ++near)
        for (const int low : {smallest, smallest + 40, -10})
            for (const int high : {smallest, largest, low + span}) {
                if (high + near >= L::max_exponent) continue;
                plane.add(std::ldexp(T(1.37), low), std::ldexp(T(1.11), high + near));
                plane.add(std::ldexp(T(1.93), high + near), std::ldexp(T(1.5), low));
            }
    return plane;
}

// Exponents over the whole range, and such that results are denormals.
template <class T>
Plane<T> everywhere() {
    using L = std::numeric_limits<T>;
    Plane<T> plane;
    std::mt19937_64 random(12);
    std::uniform_real_distribution<double> mantissa(1, 2);
    std::uniform_int_distribution<int> exponent(L::min_exponent - 1, L::max_exponent - 1), near(-4, 4);
    const auto number = [&](int e) { return std::ldexp(static_cast<T>(mantissa(random)), e); };
    for (int i = 0; i < 500; ++i) {
        const int e = exponent(random);
        plane.add(number(e), number(exponent(random)));
        plane.add(number(e), number(std::min(e + near(random), L::max_exponent - 1)));
        // a quotient between the smallest denormal and some binades above the smallest normal number
        const int low = L::min_exponent - L::digits + i % (L::digits + 6);
        const int high = std::max(e, 0);
        if (low + high < L::max_exponent) plane.add(number(low + high), number(high));
        plane.add(L::denorm_min() * static_cast<T>(1 + i % 97), number(e));
        plane.add(L::denorm_min() * static_cast<T>(1 + i % 89), L::denorm_min() * static_cast<T>(1 + i % 83));
    }
    return plane;
}

template <class T>
double error_of(bool half_turns, T y, T x, T result) {
    mpfr_t a, b, angle;
    mpfr_inits2(53, a, b, static_cast<mpfr_ptr>(nullptr));
    mpfr_init2(angle, 160);
    mpfr_set_d(a, static_cast<double>(y), MPFR_RNDN);
    mpfr_set_d(b, static_cast<double>(x), MPFR_RNDN);
    (half_turns ? mpfr_atan2pi : mpfr_atan2)(angle, a, b, MPFR_RNDN);
    const double error = ulp_distance(angle, result);
    mpfr_clears(a, b, angle, static_cast<mpfr_ptr>(nullptr));
    return error;
}

template <class T>
struct Bounds {
    const char* function;
    bool half_turns;
    double ulp[kSlots];
};
constexpr Bounds<double> kDouble[] = {{"Atan2", false, {3.2, 0.70, 1.0e7}}, {"Atan2pi", true, {3.2, 0.78, 1.0e7}}};
constexpr Bounds<float> kSingle[] = {{"Atan2", false, {3.5, 0.70, 1500}}, {"Atan2pi", true, {4.0, 0.78, 1500}}};

template <class T, size_t N>
void check(const Bounds<T> (&all)[N], const Plane<T>& plane) {
    _arqSetMode(ARQ_ERRMODE_IGNORE | ARQ_DENORMALS_KEEP);
    _arqClearErrStatus();
    std::vector<T> result(plane.y.size());
    for (const Bounds<T>& bounds : all)
        for (int slot = 0; slot < kSlots; ++slot) {
            const Record& record = *find_record((sizeof(T) == 8 ? "d" : "s") + std::string(bounds.function));
            reinterpret_cast<BinaryKernel<T>>(record.ttab[slot])(static_cast<int32_t>(result.size()), plane.y.data(),
                                                                 plane.x.data(), result.data());
            double worst = 0;
            size_t at = 0;
            for (size_t i = 0; i < result.size(); ++i) {
                ASSERT_EQ(std::signbit(result[i]), std::signbit(plane.y[i]));
                const double error = error_of(bounds.half_turns, plane.y[i], plane.x[i], result[i]);
                if (error > worst) {
                    worst = error;
                    at = i;
                }
            }
            EXPECT_LE(worst, bounds.ulp[slot]) << record.name() << " " << kLevels[slot] << std::hexfloat << " at ("
                                               << plane.y[at] << ", " << plane.x[at] << "): " << result[at];
        }
    EXPECT_EQ(_arqGetErrStatus(), 0);
    _arqSetMode(ARQ_ERRMODE_DEFAULT | ARQ_DENORMALS_KEEP);
}

TEST(Atan2, DoubleAtEveryThreshold) { check(kDouble, thresholds<double>()); }
TEST(Atan2, SingleAtEveryThreshold) { check(kSingle, thresholds<float>()); }
TEST(Atan2, DoubleOverTheWholeRange) { check(kDouble, everywhere<double>()); }
TEST(Atan2, SingleOverTheWholeRange) { check(kSingle, everywhere<float>()); }

// A result depends on the point's direction alone.
TEST(Atan2, PowersOfTwoLeaveTheAngle) {
    const BinaryKernel<double> kernel = reinterpret_cast<BinaryKernel<double>>(find_record("dAtan2")->ttab[1]);
    for (const double q : {0.1, 0.26, 0.7, 0.999, 3.0, 1e9})
        for (const double x : {1.0, -1.0}) {
            double expected;
            kernel(1, &q, &x, &expected);
            for (int e = -800; e <= 800; e += 50) {
                const double height = std::ldexp(q, e), width = std::ldexp(x, e);
                double angle;
                kernel(1, &height, &width, &angle);
                EXPECT_EQ(angle, expected) << q << " " << x << " " << e;
            }
        }
}

template <class T>
void check_scalar(int32_t (*rare)(const T*, const T*, T*), bool half_turns, double bound) {
    for (const Plane<T>& plane : {thresholds<T>(), everywhere<T>()})
        for (size_t i = 0; i < plane.y.size(); ++i) {
            T result;
            ASSERT_EQ(rare(&plane.y[i], &plane.x[i], &result), 0);
            ASSERT_LE(error_of(half_turns, plane.y[i], plane.x[i], result), bound)
                << std::hexfloat << plane.y[i] << " " << plane.x[i] << " " << result;
        }
}

TEST(Atan2, ScalarPathIsAccurateEverywhere) {
    check_scalar<double>(vmath::vdatan2_cout_rare, false, 0.52);
    check_scalar<double>(vmath::vdatan2pi_cout_rare, true, 0.76);  // a denormal is rounded twice
    check_scalar<float>(vmath::vsatan2_cout_rare, false, 0.5001);
    check_scalar<float>(vmath::vsatan2pi_cout_rare, true, 0.5001);
}

}  // namespace
}  // namespace nax::testing
