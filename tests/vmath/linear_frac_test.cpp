// The ratio of two affine functions: accuracy, constant numerators and denominators, control words.
#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "nax/error.h"
#include "tests/lib/vmath_records.h"

namespace nax::testing {
namespace {

struct Scalars {
    double scalea, shifta, scaleb, shiftb;
};

template <class T>
std::vector<T> linear_frac(const std::vector<T>& a, const std::vector<T>& b, const Scalars& s) {
    const Record* const record = find_record(sizeof(T) == 4 ? "sLinearFrac" : "dLinearFrac");
    std::vector<T> r(a.size());
    Arguments arguments;
    arguments.n = static_cast<int32_t>(a.size());
    arguments.in[0] = a.data();
    arguments.in[1] = b.data();
    arguments.out[0] = r.data();
    const double scalars[4] = {s.scalea, s.shifta, s.scaleb, s.shiftb};
    std::copy(scalars, scalars + 4, arguments.linear);
    call(*record, record->stubs[0], arguments);
    return r;
}

template <class T>
class LinearFrac : public ::testing::Test {};
using Types = ::testing::Types<float, double>;
TYPED_TEST_SUITE(LinearFrac, Types);

// One Newton step from a 12-bit reciprocal in single, a division in double; no cancellation in these arguments.
TYPED_TEST(LinearFrac, IsTheQuotient) {
    using T = TypeParam;
    std::mt19937_64 random(8);
    std::uniform_real_distribution<T> uniform(T(0.25), 8);
    std::vector<T> a(1003), b(1003);
    for (std::size_t i = 0; i < a.size(); ++i) a[i] = uniform(random), b[i] = uniform(random);
    const double bound = sizeof(T) == 4 ? std::ldexp(1.0, -21) : std::ldexp(1.0, -51);
    for (const Scalars& s : {Scalars{1.5, 2, 0.5, 3}, Scalars{1, 0, 1, 0}, Scalars{0, 2, 0.5, 3}}) {
        const std::vector<T> r = linear_frac<T>(a, b, s);
        for (std::size_t i = 0; i < a.size(); ++i) {
            const long double exact = (static_cast<long double>(s.scalea) * a[i] + s.shifta) /
                                      (static_cast<long double>(s.scaleb) * b[i] + s.shiftb);
            ASSERT_NEAR(static_cast<double>(r[i] / exact), 1.0, bound) << i;
        }
    }
}

// A constant denominator divides, so that a denominator of one leaves the affine function as it is; b is not read.
TYPED_TEST(LinearFrac, ConstantDenominatorGivesTheAffineFunction) {
    using T = TypeParam;
    std::vector<T> a, b(37, std::numeric_limits<T>::quiet_NaN());
    for (int i = 0; i < 37; ++i) a.push_back(T(i) / 7 - 2);
    const std::vector<T> r = linear_frac<T>(a, b, {3, 0.5, 0, 1});
    const std::vector<T> constant = linear_frac<T>(b, b, {0, 3, 0, 4});
    for (std::size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(r[i], a[i] * 3 + T(0.5)) << i;
        EXPECT_EQ(constant[i], T(0.75)) << i;
    }
}

// A constant numerator is divided too: denominators of any finite size give the formula's value, those with a denormal
// reciprocal included.
TYPED_TEST(LinearFrac, ConstantNumeratorIsDividedAtEveryScale) {
    using T = TypeParam;
    const int most = std::numeric_limits<T>::max_exponent - 1;
    std::vector<T> b;
    for (int exponent = -most + 1; exponent <= most; ++exponent) b.push_back(std::ldexp(T(1.37), exponent));
    b.push_back(T(1e38));
    for (const double numerator : {1.0, -3.5, 1e10, 1e-10}) {
        const std::vector<T> r = linear_frac<T>(b, b, {0, numerator, 1, 0});
        for (std::size_t i = 0; i < b.size(); ++i) EXPECT_EQ(r[i], T(numerator) / b[i]) << b[i];
    }
}

// The flags are those of the elements, one by one: what fills the last vector raises none.
TYPED_TEST(LinearFrac, FlagsDoNotDependOnTheLength) {
    using T = TypeParam;
    const auto flags_of = [](const std::vector<T>& a, const std::vector<T>& b, const Scalars& s) {
        std::feclearexcept(FE_ALL_EXCEPT);
        linear_frac<T>(a, b, s);
        return std::fetestexcept(FE_ALL_EXCEPT);
    };
    // Each set of scalars makes trouble of the value 1, or of 0, and none of the elements.
    for (const Scalars& s : {Scalars{1, 0, 1, -1}, Scalars{1, 0, 1, 0}, Scalars{0, 1, 1, -1}, Scalars{0, 1, 1, 0},
                             Scalars{3e38, 3e38, 1, 0}, Scalars{1, 0, 0, 4}})
        for (const T value : {T(0), T(0.5), T(1), T(2)})
            for (std::size_t n = 2; n <= 9; ++n) {
                const std::vector<T> a(n, value), b(n, value);
                EXPECT_EQ(flags_of(a, b, s), flags_of({value}, {value}, s)) << value << ", n " << n;
            }
}

TYPED_TEST(LinearFrac, ZeroDenominatorReportsNothing) {
    using T = TypeParam;
    _arqSetErrStatus(77);
    const std::vector<T> r = linear_frac<T>({1, 2, 3, 4, 5}, {0, 0, 1, 0, 1}, {1, 0, 1, 0});
    EXPECT_EQ(_arqClearErrStatus(), 77);
    EXPECT_FALSE(std::isfinite(r[0]));
    EXPECT_NEAR(static_cast<double>(r[2]), 3.0, 1e-5);
}

}  // namespace
}  // namespace nax::testing
