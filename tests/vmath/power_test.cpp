// What powers, roots and quotients promise beyond accuracy and single special values: Powx as the functions it hands
// over to, reports of a scalar exponent, exact results, results without reporting.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "nax/error.h"
#include "nax/mode.h"
#include "tests/lib/accuracy.h"
#include "vmath/power/power_rare.h"

namespace nax::testing {
namespace {

template <class T>
constexpr char kLetter = sizeof(T) == 8 ? 'd' : 's';

struct LastReport {
    int count;
    int32_t status, index;
    double a1, a2, r1;
    std::string name;
} last;
int32_t note_report(arq_error_record* record) {
    last = {last.count + 1, record->status, record->index, record->a1, record->a2, record->r1, record->name};
    return 0;
}

class Power : public ::testing::Test {
protected:
    void SetUp() override {
        _arqSetMode(ARQ_ERRMODE_CALLBACK | ARQ_DENORMALS_KEEP);
        _arqSetErrorCallBack(note_report);
        _arqClearErrStatus();
        last = {};
    }
    void TearDown() override {
        _arqClearErrorCallBack();
        _arqSetMode(ARQ_ERRMODE_DEFAULT | ARQ_DENORMALS_KEEP);
        _arqClearErrStatus();
    }
};

// Positive and negative numbers of all sizes, zeros, limits and NaN.
template <class T>
std::vector<T> arguments(int count) {
    using Limits = std::numeric_limits<T>;
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> exponent(Limits::min_exponent - 8, Limits::max_exponent - 1),
        ordinary(-3, 3);
    std::vector<T> x = {0, -T(0), Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
                        1, -1,    Limits::max(),      Limits::min(),       Limits::denorm_min()};
    while (static_cast<int>(x.size()) < count) {
        x.push_back(static_cast<T>(std::exp2(exponent(random))));
        x.push_back(static_cast<T>(ordinary(random)));
    }
    return x;
}

template <class T>
std::vector<T> call_powx(int slot, const std::vector<T>& x, T b, int stride) {
    const auto n = static_cast<int32_t>(x.size()) / stride;
    std::vector<T> y(x.size(), T(7));
    const Record& record = *find_record(std::string(1, kLetter<T>) + (stride == 1 ? "Powx" : "PowxI"));
    if (stride == 1)
        reinterpret_cast<void (*)(int32_t, const T*, T, T*)>(record.ttab[slot])(n, x.data(), b, y.data());
    else
        reinterpret_cast<void (*)(int32_t, const T*, int32_t, T, T*, int32_t)>(record.ttab[slot])(n, x.data(), stride,
                                                                                                  b, y.data(), stride);
    return y;
}

template <class T>
std::vector<T> call_unary(const char* function, int slot, const std::vector<T>& x, int stride) {
    const auto n = static_cast<int32_t>(x.size()) / stride;
    std::vector<T> y(x.size(), T(7));
    const Record& record = *find_record(kLetter<T> + std::string(function) + (stride == 1 ? "" : "I"));
    if (stride == 1)
        reinterpret_cast<void (*)(int32_t, const T*, T*)>(record.ttab[slot])(n, x.data(), y.data());
    else
        reinterpret_cast<void (*)(int32_t, const T*, int32_t, T*, int32_t)>(record.ttab[slot])(n, x.data(), stride,
                                                                                               y.data(), stride);
    return y;
}

template <class T>
std::vector<T> call_pow(int slot, const std::vector<T>& x, T b) {
    std::vector<T> y(x.size()), exponents(x.size(), b);
    const Record& record = *find_record(kLetter<T> + std::string("Pow"));
    reinterpret_cast<void (*)(int32_t, const T*, const T*, T*)>(record.ttab[slot])(
        static_cast<int32_t>(x.size()), x.data(), exponents.data(), y.data());
    return y;
}

template <class T>
::testing::AssertionResult same_bits(const std::vector<T>& a, const std::vector<T>& b) {
    for (size_t i = 0; i < a.size(); ++i)
        if (std::memcmp(&a[i], &b[i], sizeof(T)) != 0 && !(a[i] != a[i] && b[i] != b[i]))
            return ::testing::AssertionFailure() << a[i] << " and " << b[i] << " at " << i;
    return ::testing::AssertionSuccess();
}

// The level whose kernel stands in a slot of Powx: the float record has that of HA in the slot of LA.
template <class T>
int level_of(int slot) {
    return sizeof(T) == 4 && slot == 0 ? 1 : slot;
}

template <class T>
void check_handed_over() {
    struct Row {
        T b;
        const char* function;
        bool ep_only;
    };
    const Row rows[] = {{T(-1), "Inv", false},     {T(0.5), "Sqrt", false},  {T(-0.5), "InvSqrt", false},
                        {T(1.5), "Pow3o2", false}, {T(1) / 3, "Cbrt", true}, {T(-1) / 3, "InvCbrt", true},
                        {T(2) / 3, "Pow2o3", true}};
    const std::vector<T> x = arguments<T>(200);
    for (const Row& row : rows)
        for (int slot = 0; slot < kSlots; ++slot)
            for (const int stride : {1, 3}) {
                SCOPED_TRACE(std::string(1, kLetter<T>) + row.function + " slot " + std::to_string(slot));
                const auto y = call_powx(slot, x, row.b, stride);
                if (!row.ep_only || slot == 2) {
                    EXPECT_TRUE(same_bits(y, call_unary(row.function, level_of<T>(slot), x, stride)));
                } else if (stride == 1) {
                    EXPECT_TRUE(same_bits(y, call_pow(level_of<T>(slot), x, row.b)));
                }
            }
}
TEST_F(Power, PowxIsTheFunctionItHandsOverTo) {
    check_handed_over<float>();
    check_handed_over<double>();
}

template <class T>
T repeated(T x, int k) {
    if (k == 0) return 1;
    if (k == 1) return x;
    const T half = repeated(x, k / 2);
    return k % 2 == 0 ? half * half : repeated(x, k - 1) * x;
}

template <class T>
void check_whole_exponents() {
    const std::vector<T> x = arguments<T>(200);
    for (int slot = 0; slot < kSlots; ++slot) {
        const int level = level_of<T>(slot);
        for (int k = -5; k <= 10; ++k) {
            if (k == -1) continue;
            SCOPED_TRACE(std::string(1, kLetter<T>) + " slot " + std::to_string(slot) + " b " + std::to_string(k));
            const bool product = k >= 0 && k <= (level == 1 ? 2 : 9), quotient = level != 1 && k >= -4 && k < 0;
            const auto y = call_powx(slot, x, T(k), 1);
            if (!product && !quotient) {
                EXPECT_TRUE(same_bits(y, call_pow(level, x, T(k))));
                continue;
            }
            std::vector<T> expected;
            for (const T a : x) expected.push_back(repeated(a, std::abs(k)));
            if (quotient) expected = call_unary("Inv", level, expected, 1);
            EXPECT_TRUE(same_bits(y, expected));
            auto strided = call_powx(slot, x, T(k), 3);
            for (size_t i = 0; i < x.size() / 3; ++i) {
                EXPECT_TRUE(same_bits(std::vector<T>{strided[3 * i]}, std::vector<T>{expected[3 * i]}));
                EXPECT_EQ(strided[3 * i + 1], T(7));
            }
        }
        EXPECT_TRUE(same_bits(call_powx(slot, x, -T(0), 1), std::vector<T>(x.size(), T(1))));
    }
}
TEST_F(Power, WholeExponentsOfPowxAreProducts) {
    check_whole_exponents<float>();
    check_whole_exponents<double>();
}

template <class T>
void check_reports() {
    const char letter = kLetter<T>;
    for (int slot = 0; slot < kSlots; ++slot)
        for (const int stride : {1, 2}) {
            std::vector<T> x(static_cast<size_t>(21 * stride), T(1.25));
            x[static_cast<size_t>(18 * stride)] = T(-2);
            last = {};
            auto y = call_powx(slot, x, T(0.3), stride);
            EXPECT_EQ(last.count, 1);
            EXPECT_EQ(last.status, ARQ_STATUS_DOMAIN);
            EXPECT_EQ(last.index, 18);
            EXPECT_EQ(last.a1, -2.0);
            EXPECT_EQ(last.a2, static_cast<double>(T(0.3)));
            EXPECT_EQ(last.name, std::string("v") + letter + "Powx");
            EXPECT_NE(y[static_cast<size_t>(18 * stride)], y[static_cast<size_t>(18 * stride)]);
            // handed over: the other function's name and terms
            x[static_cast<size_t>(18 * stride)] = 0;
            last = {};
            y = call_powx(slot, x, T(-0.5), stride);
            EXPECT_EQ(last.count, 1);
            EXPECT_EQ(last.status, ARQ_STATUS_SINGULARITY);
            EXPECT_EQ(last.index, 18);
            EXPECT_EQ(last.a2, 0.0);
            EXPECT_EQ(last.name, std::string("v") + letter + "InvSqrt");
        }
    // An exponent beside which the filler of a last partial vector would overflow.
    last = {};
    for (int slot = 0; slot < kSlots; ++slot)
        for (const T y : call_powx(slot, std::vector<T>(3, T(1)), -std::numeric_limits<T>::max(), 1))
            EXPECT_EQ(y, T(1));
    EXPECT_EQ(last.count, 0);
}
TEST_F(Power, ReportsOfPowx) {
    check_reports<float>();
    check_reports<double>();
}

// Vector code makes nothing of these, so they are settled with reporting off, too.
TEST_F(Power, PowIsRightWithoutReporting) {
    _arqSetMode(ARQ_ERRMODE_NOERR | ARQ_DENORMALS_KEEP);
    constexpr double inf = std::numeric_limits<double>::infinity();
    for (int slot = 0; slot < kSlots; ++slot) {
        const std::vector<double> y = call_pow(slot, {-2.0, 0.0, inf, 2.0, 0x1p-1074, 1e300}, 3.0);
        EXPECT_EQ(y[0], -8.0);
        EXPECT_EQ(y[1], 0.0);
        EXPECT_EQ(y[2], inf);
        EXPECT_NEAR(y[3], 8.0, 8e-7);
        EXPECT_EQ(y[4], 0.0);
        EXPECT_EQ(y[5], inf);
    }
    EXPECT_EQ(last.count, 0);
    EXPECT_EQ(_arqGetErrStatus(), 0);
}

// HA of roots and quotients is the correctly rounded result.
template <class T>
void check_correctly_rounded() {
    const std::vector<T> x = arguments<T>(4000);
    std::vector<T> roots, reciprocals, quotients(x.size()), divisors(x.rbegin(), x.rend()), expected;
    for (size_t i = 0; i < x.size(); ++i) {
        roots.push_back(std::sqrt(x[i]));
        reciprocals.push_back(1 / x[i]);
        expected.push_back(x[i] / divisors[i]);
    }
    EXPECT_TRUE(same_bits(call_unary("Sqrt", 1, x, 1), roots));
    EXPECT_TRUE(same_bits(call_unary("Inv", 1, x, 1), reciprocals));
    const Record& div = *find_record(kLetter<T> + std::string("Div"));
    reinterpret_cast<void (*)(int32_t, const T*, const T*, T*)>(div.ttab[1])(static_cast<int32_t>(x.size()), x.data(),
                                                                             divisors.data(), quotients.data());
    EXPECT_TRUE(same_bits(quotients, expected));
}
TEST_F(Power, RootsAndQuotientsAreCorrectlyRounded) {
    check_correctly_rounded<float>();
    check_correctly_rounded<double>();
}

// The largest arguments with finite results.
TEST_F(Power, Pow3o2NextToOverflow) {
    EXPECT_TRUE(std::isfinite(call_unary("Pow3o2", 1, std::vector<double>{0x1.965fea53d6e3cp+682}, 1)[0]));
    EXPECT_TRUE(std::isinf(call_unary("Pow3o2", 1, std::vector<double>{0x1.965fea53d6e3ep+682}, 1)[0]));
    EXPECT_TRUE(std::isfinite(call_unary("Pow3o2", 1, std::vector<float>{0x1.428a2ep+85f}, 1)[0]));
    EXPECT_TRUE(std::isinf(call_unary("Pow3o2", 1, std::vector<float>{0x1.428a32p+85f}, 1)[0]));
}

TEST_F(Power, CubesHaveExactRoots) {
    for (int k = -1000; k <= 1000; ++k) {
        const double cube = static_cast<double>(k) * k * k;
        EXPECT_EQ(call_unary("Cbrt", 1, std::vector<double>{cube}, 1)[0], k);
        EXPECT_EQ(call_unary("Pow2o3", 1, std::vector<double>{cube}, 1)[0], static_cast<double>(k) * k);
        if (std::abs(k) < 256) {
            EXPECT_EQ(call_unary("Cbrt", 1, std::vector<float>{static_cast<float>(cube)}, 1)[0], static_cast<float>(k));
        }
    }
}

// A result depends on its own arguments alone, also where a neighbour sends the block another way.
template <class T>
void check_neighbours() {
    const T odd[] = {0, -T(1), std::numeric_limits<T>::infinity(), std::numeric_limits<T>::denorm_min(),
                     std::numeric_limits<T>::max()};
    for (const char* function : {"Sqrt", "InvSqrt", "Inv", "Cbrt", "InvCbrt", "Pow2o3", "Pow3o2"})
        for (int slot = 0; slot < kSlots; ++slot) {
            const std::vector<T> x = arguments<T>(300);
            const auto together = call_unary(function, slot, x, 1);
            std::vector<T> mixed;
            for (size_t i = 0; i < x.size(); ++i) {
                mixed.push_back(x[i]);
                mixed.push_back(odd[i % 5]);
            }
            const auto apart = call_unary(function, slot, mixed, 1);
            for (size_t i = 0; i < x.size(); ++i)
                EXPECT_TRUE(same_bits(std::vector<T>{together[i]}, std::vector<T>{apart[2 * i]}))
                    << function << " slot " << slot;
        }
}
TEST_F(Power, NeighboursChangeNothing) {
    _arqSetMode(ARQ_ERRMODE_NOERR | ARQ_DENORMALS_KEEP);
    check_neighbours<float>();
    check_neighbours<double>();
}

// The scalar paths hold for ordinary arguments, too.
TEST_F(Power, ScalarPathsOverTheirWholeRange) {
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> exponent(-1070, 1023), power(-1080, 1024);
    double worst[3] = {};
    for (int i = 0; i < 4000; ++i) {
        const double x = i % 3 == 0 ? 1 + std::exp2(-exponent(random) / 20 - 60) : std::exp2(exponent(random));
        const double y = x == 1 ? 3 : power(random) / std::log2(x);
        double r;
        vmath::vdpow_cout_rare(&x, &y, &r);
        worst[0] = std::fmax(worst[0], exact_ulp_error(mpfr_pow, x, y, r));
        vmath::vdinvcbrt_cout_rare(&x, &r);
        worst[1] = std::fmax(worst[1], exact_ulp_error(*find_reference("InvCbrt"), x, r));
        vmath::vdinvsqrt_cout_rare(&x, &r);
        worst[2] = std::fmax(worst[2], exact_ulp_error(*find_reference("InvSqrt"), x, r));
    }
    EXPECT_LT(worst[0], 0.56);
    EXPECT_LT(worst[1], 0.56);
    EXPECT_LT(worst[2], 0.56);
    EXPECT_GT(worst[0], 0.4);
}

}  // namespace
}  // namespace nax::testing
