// What the trigonometric functions promise beyond accuracy on intervals and single special values: the nearest
// arguments to multiples of a quarter turn, every binade, exact values, SinCos, the limits between reductions, results
// without reports.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "nax/error.h"
#include "nax/mode.h"
#include "tests/lib/accuracy.h"
#include "tests/lib/near_multiples.h"

namespace nax::testing {
namespace {

constexpr const char* kRadians[] = {"Sin", "Cos", "Tan"};
constexpr const char* kAll[] = {"Sin", "Cos", "Tan", "Sind", "Cosd", "Tand", "Sinpi", "Cospi", "Tanpi"};

template <class T>
constexpr char kLetter = sizeof(T) == 8 ? 'd' : 's';

template <class T>
using TwoResults = void (*)(int32_t n, const T* a, T* sine, T* cosine);

class Trig : public ::testing::Test {
protected:
    void SetUp() override { _arqSetMode(ARQ_ERRMODE_IGNORE | ARQ_DENORMALS_KEEP); }
    void TearDown() override {
        _arqSetMode(ARQ_ERRMODE_DEFAULT | ARQ_DENORMALS_KEEP);
        _arqClearErrStatus();
    }
};

template <class T>
std::vector<T> call(const char* function, int slot, const std::vector<T>& x) {
    std::vector<T> y(x.size());
    const Record& record = *find_record(kLetter<T> + std::string(function));
    reinterpret_cast<Kernel<T>>(record.ttab[slot])(static_cast<int32_t>(x.size()), x.data(), y.data());
    return y;
}
template <class T>
T call_one(const char* function, int slot, T x) {
    return call<T>(function, slot, {x})[0];
}

// Every level of a function at the points, against its bound in the accuracy rows.
template <class T>
void expect_accurate(const char* function, const std::vector<T>& x) {
    const std::string name = kLetter<T> + std::string(function);
    for (int slot = 0; slot < kSlots; ++slot) {
        ErrorStats stats;
        measure(reinterpret_cast<Kernel<T>>(find_record(name)->ttab[slot]), *find_reference(function), x.data(),
                static_cast<int>(x.size()), stats);
        EXPECT_LE(stats.max, find_accuracy_row(name)->bounds[slot])
            << name << " " << kLevels[slot] << " at " << stats.worst;
    }
}

void check_nearest(int step, int count) {
    std::vector<double> x;
    for (int e = 0; e < 1024; e += step)
        for (const double near : nearest_to_quarter_turns(e, count)) x.insert(x.end(), {near, -near});
    ASSERT_GT(x.size(), 100u);
    for (const char* function : kRadians) expect_accurate(function, x);
}
TEST_F(Trig, NearestToMultiplesOfAQuarterTurn) { check_nearest(5, 4); }
class TrigFull : public Trig {};
TEST_F(TrigFull, TheSixtyFourNearestOfEveryBinade) { check_nearest(1, 64); }

// Random arguments of every binade, and both sides of its ends.
template <class T>
void check_binades() {
    std::mt19937_64 random(11);
    std::vector<T> x;
    for (int e = std::numeric_limits<T>::min_exponent; e < std::numeric_limits<T>::max_exponent; ++e) {
        const T start = std::ldexp(T(1), e);
        x.insert(x.end(), {start, std::nextafter(start, T(0))});
        for (int k = 0; k < 3; ++k)
            x.push_back(start * static_cast<T>(1 + 0.999 * static_cast<double>(random() >> 11) * 0x1p-53));
    }
    for (const char* function : kAll) expect_accurate(function, x);
}
TEST_F(Trig, EveryBinade) {
    check_binades<double>();
    check_binades<float>();
}

// HA and LA meet what is exact in degrees and half turns; of zeros, ones and poles all levels do (see the special
// values).
template <class T>
void check_exact() {
    for (int slot = 0; slot < 2; ++slot)
        for (const T turns : {T(0), T(1), T(17), T(-4), T(4660)}) {
            SCOPED_TRACE(std::string(kLevels[slot]) + " " + std::to_string(turns));
            const T degrees = 360 * turns, half_turns = 2 * turns;
            for (const T a : {T(30), T(150), T(-210)}) EXPECT_EQ(call_one("Sind", slot, degrees + a), T(0.5)) << a;
            for (const T a : {T(210), T(-30)}) EXPECT_EQ(call_one("Sind", slot, degrees + a), T(-0.5)) << a;
            for (const T a : {T(60), T(-60), T(300)}) EXPECT_EQ(call_one("Cosd", slot, degrees + a), T(0.5)) << a;
            for (const T a : {T(120), T(240)}) EXPECT_EQ(call_one("Cosd", slot, degrees + a), T(-0.5)) << a;
            for (const T a : {T(45), T(225), T(-135)}) EXPECT_EQ(call_one("Tand", slot, degrees + a), T(1)) << a;
            for (const T a : {T(135), T(-45)}) EXPECT_EQ(call_one("Tand", slot, degrees + a), T(-1)) << a;
            for (const T a : {T(0.25), T(1.25), T(-0.75)})
                EXPECT_EQ(call_one("Tanpi", slot, half_turns + a), T(1)) << a;
            for (const T a : {T(0.75), T(-0.25)}) EXPECT_EQ(call_one("Tanpi", slot, half_turns + a), T(-1)) << a;
        }
    for (int slot = 0; slot < kSlots; ++slot)
        for (const T turns : {T(0), T(1), T(17), T(-4), T(4660)}) {
            EXPECT_EQ(call_one("Sind", slot, 360 * turns + 90), T(1));
            EXPECT_EQ(call_one("Sind", slot, 360 * turns - 90), T(-1));
            EXPECT_EQ(call_one("Sinpi", slot, 2 * turns + T(0.5)), T(1));
            EXPECT_EQ(call_one("Sinpi", slot, 2 * turns - T(0.5)), T(-1));
        }
}
TEST_F(Trig, ExactValuesOfDegreesAndHalfTurns) {
    check_exact<double>();
    check_exact<float>();
}

// SinCos against the references; its HA results are those of Sin and Cos.
template <class T>
void check_sin_cos() {
    const std::string name = std::string(1, kLetter<T>) + "SinCos";
    std::vector<T> x(4000);
    for (const T limit : {T(0.8), T(10), T(10000), std::numeric_limits<T>::max()}) {
        sample(-limit, limit, 3, x.data(), static_cast<int>(x.size()));
        for (int slot = 0; slot < kSlots; ++slot) {
            std::vector<T> y[2] = {x, x};
            reinterpret_cast<TwoResults<T>>(find_record(name)->ttab[slot])(static_cast<int32_t>(x.size()), x.data(),
                                                                           y[0].data(), y[1].data());
            for (int k = 0; k < 2; ++k) {
                const double bound = find_accuracy_row(kLetter<T> + std::string(kRadians[k]))->bounds[slot];
                if (slot == 1 && sizeof(T) == 8) {
                    EXPECT_EQ(y[k], call(kRadians[k], slot, x));
                }
                for (size_t i = 0; i < x.size(); ++i) {
                    const double error = exact_ulp_error(*find_reference(kRadians[k]), x[i], y[k][i]);
                    // EP's cosine has a series of its own here, within the level's bits.
                    const double allowed = slot == 2 ? (sizeof(T) == 8 ? 0x1p27 : 0x1p13) : slot == 1 ? 0.62 : bound;
                    ASSERT_LE(error, allowed) << name << " " << kLevels[slot] << " at " << x[i];
                }
            }
        }
    }
}
TEST_F(Trig, SineAndCosineTogether) {
    check_sin_cos<double>();
    check_sin_cos<float>();
}

// The limits between reductions are exact: results on both sides are accurate, whatever shares the vector.
template <class T>
void check_limits() {
    const bool single = sizeof(T) == 4;
    std::vector<T> x;
    for (const T limit :
         {single ? T(10000) : T(0x1p24), T(0x1p24), single ? T(0x1p20) : T(0x1p46), single ? T(0x1p27) : T(0x1p56)})
        for (const T side :
             {limit, std::nextafter(limit, T(0)), std::nextafter(limit, std::numeric_limits<T>::infinity())})
            x.insert(x.end(), {side, -side});
    for (const char* function : kAll) expect_accurate(function, x);
}
TEST_F(Trig, LimitsOfTheShortReduction) {
    check_limits<double>();
    check_limits<float>();
}

// A huge, infinite or NaN lane leaves its neighbours as they are alone, at every place; huge lanes are accurate and
// never reported.
template <class T>
void check_neighbours() {
    const T inf = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
    for (const char* function : kAll)
        for (int slot = 0; slot < kSlots; ++slot)
            for (const T guest : {T(1e22), std::numeric_limits<T>::max(), inf, nan}) {
                std::vector<T> x(70);
                for (size_t i = 0; i < x.size(); ++i) x[i] = T(0.37) * static_cast<T>(i) - 5;
                const std::vector<T> alone = call(function, slot, x);
                for (size_t place = 0; place < x.size(); place += 7) {
                    std::vector<T> with = x;
                    with[place] = guest;
                    _arqClearErrStatus();
                    std::vector<T> y = call(function, slot, with);
                    EXPECT_EQ(_arqGetErrStatus(), guest == inf ? 1 : 0) << function << " " << guest;
                    EXPECT_EQ(std::isfinite(y[place]), std::isfinite(guest));
                    y[place] = alone[place];
                    ASSERT_EQ(y, alone) << function << " " << kLevels[slot] << " " << guest << " at " << place;
                }
            }
}
TEST_F(Trig, HugeLanesLeaveTheirNeighboursAlone) {
    check_neighbours<double>();
    check_neighbours<float>();
}

// With reporting off the results are the same, and NaN where there is none.
template <class T>
void check_without_reports() {
    const T max = std::numeric_limits<T>::max(), inf = std::numeric_limits<T>::infinity();
    const std::vector<T> x = {
        T(0.5), T(1e5), T(1e22), -max, max, T(1e9), -inf, inf, std::numeric_limits<T>::quiet_NaN()};
    for (const char* function : kAll)
        for (int slot = 0; slot < kSlots; ++slot) {
            const std::vector<T> reported = call(function, slot, x);
            _arqSetMode(ARQ_ERRMODE_NOERR | ARQ_DENORMALS_KEEP);
            _arqClearErrStatus();
            const std::vector<T> silent = call(function, slot, x);
            EXPECT_EQ(_arqGetErrStatus(), 0);
            _arqSetMode(ARQ_ERRMODE_IGNORE | ARQ_DENORMALS_KEEP);
            for (size_t i = 0; i < x.size(); ++i) {
                if (i < 6)
                    EXPECT_EQ(silent[i], reported[i]) << function << " " << kLevels[slot] << " at " << x[i];
                else
                    EXPECT_TRUE(std::isnan(silent[i])) << function << " " << kLevels[slot] << " at " << x[i];
            }
        }
}
TEST_F(Trig, ReportingOffChangesNoResult) {
    check_without_reports<double>();
    check_without_reports<float>();
}

}  // namespace
}  // namespace nax::testing
