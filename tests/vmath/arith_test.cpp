// Arithmetic, rounding and selection against the C library: the same bits for random numbers of all exponents.
#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "nax/error.h"
#include "nax/mode.h"
#include "tests/lib/vmath_records.h"

namespace nax::testing {
namespace {

template <class T>
using BitsOf = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;

template <class T>
T from_random_bits(std::mt19937_64& random) {
    const auto bits = static_cast<BitsOf<T>>(random());
    T x;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

// Pairs with a quotient up to 2^spread in size, with now and then an exact multiple or half-way case.
template <class T>
struct QuotientPairs {
    std::vector<T> a, b;

    QuotientPairs(std::size_t count, int spread, uint64_t seed) {
        std::mt19937_64 random(seed);
        std::uniform_real_distribution<T> mantissa(1, 2);
        for (std::size_t i = 0; i < count; ++i) {
            const int exponent = static_cast<int>(random() % 60) - 30;
            const int difference = static_cast<int>(random() % static_cast<unsigned>(spread + 3)) - 2;
            T divisor = std::ldexp(mantissa(random), exponent);
            T dividend = std::ldexp(mantissa(random), exponent + difference);
            if (i % 5 == 0) divisor = std::ldexp(std::floor(divisor * 256), exponent);
            if (i % 5 == 0) dividend = divisor * static_cast<T>(random() % 2048) / 2;
            a.push_back(random() % 2 ? dividend : -dividend);
            b.push_back(random() % 2 ? divisor : -divisor);
        }
    }
};

template <class T>
::testing::AssertionResult same_or_nan(T found, T expected, T a, T b) {
    if (found != found && expected != expected) return ::testing::AssertionSuccess();
    if (std::memcmp(&found, &expected, sizeof found) == 0) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "of " << a << ", " << b << ": found " << found << ", expected " << expected;
}

// The C library of some versions loses the sign of a zero remainder by a denormal.
template <class T>
T remainder_of(T a, T b) {
    const T r = std::remainder(a, b);
    return r == 0 ? std::copysign(r, a) : r;
}

template <class T>
struct Reference {
    const char* name;
    T (*value)(T a, T b);
};

template <class T>
const std::vector<Reference<T>>& references() {
    static const std::vector<Reference<T>> all = {
        {"Add", [](T a, T b) { return a + b; }},
        {"Sub", [](T a, T b) { return a - b; }},
        {"Mul", [](T a, T b) { return a * b; }},
        {"Sqr", [](T a, T) { return a * a; }},
        {"Abs", [](T a, T) { return std::fabs(a); }},
        {"Ceil", [](T a, T) { return std::ceil(a); }},
        {"Floor", [](T a, T) { return std::floor(a); }},
        {"Trunc", [](T a, T) { return std::trunc(a); }},
        {"Rint", [](T a, T) { return std::nearbyint(a); }},
        {"NearbyInt", [](T a, T) { return std::nearbyint(a); }},
        {"Round", [](T a, T) { return std::round(a); }},
        {"Frac", [](T a, T) { return std::isinf(a) ? std::copysign(T{0}, a) : a - std::trunc(a); }},
        {"CopySign", [](T a, T b) { return std::copysign(a, b); }},
        {"NextAfter", [](T a, T b) { return std::nextafter(a, b); }},
        {"Fdim", [](T a, T b) { return std::fdim(a, b); }},
        {"Fmax", [](T a, T b) { return b != b   ? a
                                       : a != a ? b
                                                : std::fmax(a, b); }},
        {"Fmin", [](T a, T b) { return b != b   ? a
                                       : a != a ? b
                                                : std::fmin(a, b); }},
        {"MaxMag", [](T a, T b) { return std::fabs(a) > std::fabs(b) || b != b ? a : b; }},
        {"MinMag", [](T a, T b) { return std::fabs(a) < std::fabs(b) || b != b ? a : b; }},
        {"Fmod", [](T a, T b) { return std::fmod(a, b); }},
        {"Remainder", remainder_of<T>},
    };
    return all;
}

template <class T>
void check(const std::string& name, T (*expected)(T, T), const std::vector<T>& a, const std::vector<T>& b) {
    const Record* const record = find_record((sizeof(T) == 4 ? 's' : 'd') + name);
    ASSERT_NE(record, nullptr) << name;
    std::vector<T> r(a.size());
    Arguments arguments;
    arguments.n = static_cast<int32_t>(a.size());
    arguments.in[0] = a.data();
    arguments.in[1] = b.data();
    arguments.out[0] = r.data();
    call(*record, record->stubs[0], arguments);
    for (std::size_t i = 0; i < a.size(); ++i)
        ASSERT_TRUE(same_or_nan(r[i], expected(a[i], b[i]), a[i], b[i])) << name << ", element " << i;
}

template <class T>
void check_all(std::size_t count, uint64_t seed) {
    std::mt19937_64 random(seed);
    std::vector<T> a, b;
    for (std::size_t i = 0; i < count; ++i) {
        // Half the pairs are near 1, where rounding has something to do.
        const T near = std::uniform_real_distribution<T>(-50, 50)(random);
        a.push_back(i % 2 ? near : from_random_bits<T>(random));
        b.push_back(i % 2 ? from_random_bits<T>(random) : near);
    }
    for (const Reference<T>& reference : references<T>()) check<T>(reference.name, reference.value, a, b);
}

// Quotients from the short path over several reduction steps to those that overflow.
template <class T>
void check_quotients(std::size_t count, uint64_t seed) {
    std::mt19937_64 random(seed);
    QuotientPairs<T> any(0, 0, 0);
    for (std::size_t i = 0; i < count; ++i) {
        any.a.push_back(from_random_bits<T>(random));
        any.b.push_back(i % 2 ? from_random_bits<T>(random) : std::numeric_limits<T>::denorm_min() * T(i));
    }
    check<T>(
        "Fmod", [](T a, T b) { return std::fmod(a, b); }, any.a, any.b);
    check<T>("Remainder", remainder_of<T>, any.a, any.b);
    for (const int spread : {4, 22, 54, 90}) {
        const QuotientPairs<T> pairs(count, spread, seed + static_cast<uint64_t>(spread));
        check<T>(
            "Fmod", [](T a, T b) { return std::fmod(a, b); }, pairs.a, pairs.b);
        check<T>("Remainder", remainder_of<T>, pairs.a, pairs.b);
    }
}

class Arith : public ::testing::Test {
protected:
    void SetUp() override { _arqSetMode(ARQ_ERRMODE_IGNORE); }
    void TearDown() override {
        _arqSetMode(ARQ_ERRMODE_DEFAULT);
        _arqClearErrStatus();
    }
};

TEST_F(Arith, MatchesTheLibrarySingle) { check_all<float>(4000, 11); }
TEST_F(Arith, MatchesTheLibraryDouble) { check_all<double>(4000, 12); }
TEST_F(Arith, QuotientsSingle) { check_quotients<float>(4000, 21); }
TEST_F(Arith, QuotientsDouble) { check_quotients<double>(4000, 22); }

class ArithFull : public Arith {};

TEST_F(ArithFull, MatchesTheLibrary) {
    check_all<float>(1000000, 31);
    check_all<double>(1000000, 32);
}
TEST_F(ArithFull, Quotients) {
    check_quotients<float>(500000, 41);
    check_quotients<double>(500000, 42);
}

// The flags of a step: underflow for results below the normal numbers, overflow for Inf, none otherwise. Alone and among
// ordinary lanes, so that every path through the kernel is met.
template <class T>
void check_step_flags() {
    using Limits = std::numeric_limits<T>;
    const Record* const record = find_record(sizeof(T) == 4 ? "sNextAfter" : "dNextAfter");
    struct Step {
        T a, b;
        int flag;
    };
    const T tiny = Limits::min(), denormal = Limits::denorm_min(), most = Limits::max(), inf = Limits::infinity();
    for (const Step& step :
         {Step{0, 1, FE_UNDERFLOW}, Step{-0.0, -1, FE_UNDERFLOW}, Step{tiny, 0, FE_UNDERFLOW}, Step{-tiny, 0, FE_UNDERFLOW},
          Step{denormal, 1, FE_UNDERFLOW}, Step{3 * denormal, 0, FE_UNDERFLOW}, Step{most, inf, FE_OVERFLOW},
          Step{-most, -inf, FE_OVERFLOW}, Step{1, 2, 0}, Step{-1, 2, 0}, Step{inf, 0, 0}, Step{tiny, 1, 0}, Step{2, 2, 0}})
        for (const int n : {1, 3, 16, 40}) {
            std::vector<T> a(static_cast<std::size_t>(n), T(1.5)), b(a.size(), T(3)), r(a.size());
            a[a.size() / 2] = step.a, b[b.size() / 2] = step.b;
            Arguments arguments;
            arguments.n = n;
            arguments.in[0] = a.data();
            arguments.in[1] = b.data();
            arguments.out[0] = r.data();
            std::feclearexcept(FE_ALL_EXCEPT);
            call(*record, record->stubs[0], arguments);
            EXPECT_EQ(std::fetestexcept(FE_UNDERFLOW | FE_OVERFLOW | FE_INVALID | FE_DIVBYZERO), step.flag)
                << step.a << " to " << step.b << " among " << n;
        }
}
TEST_F(Arith, NextAfterRaisesTheFlagsOfItsResult) {
    check_step_flags<float>();
    check_step_flags<double>();
}

TEST_F(Arith, ModfSplitsIntoWholeAndFraction) {
    std::mt19937_64 random(5);
    std::vector<double> a, whole(1000), fraction(1000);
    for (int i = 0; i < 1000; ++i) a.push_back(std::uniform_real_distribution<double>(-1e3, 1e3)(random));
    Arguments arguments{1000, {a.data(), nullptr}, {whole.data(), fraction.data()}, {1, 1}, {1, 1}, {}, {}};
    const Record* const record = find_record("dModf");
    call(*record, record->stubs[0], arguments);
    for (std::size_t i = 0; i < 1000; ++i) {
        EXPECT_EQ(whole[i], std::trunc(a[i]));
        EXPECT_EQ(fraction[i], a[i] - std::trunc(a[i]));
    }
}

// With reports off the scalar path is never asked: the vector code alone ignores a NaN and keeps a dividend below Inf.
TEST_F(Arith, NanAndInfinityAreSettledWithReportsOff) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
    const double a[4] = {nan, -5, -5, inf}, b[4] = {-5, nan, inf, -5};
    const struct {
        const char* name;
        double r[4];
    } cases[] = {{"dFmax", {-5, -5, inf, inf}}, {"dFmin", {-5, -5, -5, -5}},    {"dMaxMag", {-5, -5, inf, inf}},
                 {"dMinMag", {-5, -5, -5, -5}}, {"dFmod", {nan, nan, -5, nan}}, {"dRemainder", {nan, nan, -5, nan}},
                 {"dFdim", {nan, nan, 0, inf}}};
    _arqSetMode(ARQ_ERRMODE_NOERR);
    for (const auto& expected : cases) {
        double r[4];
        Arguments arguments{4, {a, b}, {r, nullptr}, {1, 1}, {1, 1}, {}, {}};
        const Record* const record = find_record(expected.name);
        call(*record, record->stubs[0], arguments);
        for (int i = 0; i < 4; ++i) EXPECT_TRUE(same_or_nan(r[i], expected.r[i], a[i], b[i])) << expected.name;
    }
}

// Vector code raises no exception flag; only the scalar path of rare elements does.
TEST_F(Arith, VectorCodeRaisesNoFlag) {
    std::vector<double> a, b, r(64);
    for (int i = 0; i < 64; ++i) a.push_back(i % 7 == 0 ? 5e-324 * i : 1.0 / (i + 3)), b.push_back(3.7 * i + 1);
    for (const char* name :
         {"dAdd", "dMul", "dSqr", "dRint", "dCeil", "dRound", "dFmod", "dRemainder", "dFrac", "dFdim"}) {
        const Record* const record = find_record(name);
        Arguments arguments{64, {a.data(), b.data()}, {r.data(), r.data()}, {1, 1}, {1, 1}, {}, {}};
        uint32_t word = 0x1F80;
        asm volatile("ldmxcsr %0" : : "m"(word) : "memory");
        call(*record, record->stubs[0], arguments);
        asm volatile("stmxcsr %0" : "=m"(word) : : "memory");
        EXPECT_EQ(word & 0x3F, 0u) << name;
    }
}

}  // namespace
}  // namespace nax::testing
