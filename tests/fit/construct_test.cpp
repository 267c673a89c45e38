// Properties of the splines that construction builds: data reproduced, smoothness, boundary conditions, and the slopes of
// each family against formulas of their own in long double.
#include <gtest/gtest.h>

#include "tests/fit/spline_case.h"

namespace {

using namespace nax::test;

template <class T>
class Construct : public testing::Test {
protected:
    // Runs a check on every combination of boundary, size, partition and storage.
    template <class Check>
    static void for_all(const Family& family, const std::vector<int64_t>& sizes, Check check) {
        for (const int64_t boundary : family.boundaries)
            for (const int64_t size : sizes)
                for (const int mask : {0, 1, 2, 3}) {
                    const int64_t nx = size < family.minimum ? family.minimum : size;
                    if (&family == &kNatural && nx == 2 && boundary == 1) continue;
                    const bool uniform = (mask & 1) != 0, columns = (mask & 2) != 0;
                    SplineCase<T> s = make_case<T>(family, boundary, nx, nx > 100 ? 5 : 3, uniform, columns);
                    SCOPED_TRACE(std::string(family.name) + " boundary " + std::to_string(boundary) + " nx " + std::to_string(nx) +
                                 (uniform ? " uniform" : "") + (columns ? " columns" : ""));
                    ASSERT_EQ(s.build(), 0);
                    check(s);
                    if (testing::Test::HasFatalFailure()) return;
                }
    }
};
using Precisions = testing::Types<double, float>;
TYPED_TEST_SUITE(Construct, Precisions);

const std::vector<int64_t> kSizes = {2, 3, 4, 5, 6, 7, 40, 700};

// Size of derivatives of order k on these data, which the tolerances scale with.
constexpr long double kScale[] = {4, 40, 600, 12000};

template <class T>
void expect_near(long double a, long double b, int derivative) {
    ASSERT_NEAR(double(a), double(b), double(kTolerance<T> * kScale[derivative]));
}

template <class T>
void expect_data_reproduced(const SplineCase<T>& s) {
    for (int64_t j = 0; j < s.ny(); ++j)
        for (int64_t i = 0; i < s.cells(); ++i) {
            ASSERT_EQ(s.cell(j, i)[0], s.y[size_t(j)][size_t(i)]);
            if (i + 1 < s.nx()) expect_near<T>(s.at_right(j, i), s.y[size_t(j)][size_t(i) + 1], 0);
        }
}
template <class T>
void expect_smooth(const SplineCase<T>& s, int derivatives) {
    for (int64_t j = 0; j < s.ny(); ++j)
        for (int64_t i = 0; i + 1 < s.cells(); ++i)
            for (int k = 1; k <= derivatives; ++k) expect_near<T>(s.at_right(j, i, k), s.at(j, i + 1, 0, k), k);
}

// First and second derivatives at the ends as the boundary type demands; periodic ends agree.
template <class T>
void expect_boundary(const SplineCase<T>& s, bool periodic_bend) {
    const int64_t last = s.cells() - 1;
    const bool subbotin = s.cells() == s.nx();
    for (int64_t j = 0; j < s.ny(); ++j) {
        const auto left = [&](int k) { return s.at(j, 0, 0, k); };
        const auto right = [&](int k) { return subbotin ? s.at(j, last, 0, k) : s.at_right(j, last, k); };
        if (s.boundary == 12 || s.boundary == 36) expect_near<T>(left(1), s.bc[0], 1);
        if (s.boundary == 24 || s.boundary == 48) expect_near<T>(left(2), s.bc[0], 2);
        if (s.boundary == 12 || s.boundary == 24) expect_near<T>(right(1), s.bc[1], 1);
        if (s.boundary == 36 || s.boundary == 48) expect_near<T>(right(2), s.bc[1], 2);
        if (s.boundary == 2) expect_near<T>(left(2), 0, 2), expect_near<T>(right(2), 0, 2);
        // Slopes estimated across the seam by weights agree because both ends weigh the same chords.
        if (s.boundary == 64 && s.family != &kDefault) expect_near<T>(left(1), right(1), 1);
        if (s.boundary == 64 && periodic_bend) expect_near<T>(left(2), right(2), 2);
    }
}

TYPED_TEST(Construct, NaturalSplineIsTwiceSmoothAndKeepsItsBoundary) {
    this->for_all(kNatural, kSizes, [](const SplineCase<TypeParam>& s) {
        expect_data_reproduced(s);
        expect_smooth(s, 2);
        expect_boundary(s, true);
        if (s.boundary != 1 || s.nx() < 3) return;
        for (int64_t j = 0; j < s.ny(); ++j) {
            expect_near<TypeParam>(s.at(j, 0, 0, 3), s.at(j, 1, 0, 3), 3);
            expect_near<TypeParam>(s.at(j, s.nx() - 3, 0, 3), s.at(j, s.nx() - 2, 0, 3), 3);
        }
    });
}

TYPED_TEST(Construct, LocalCubicsAreSmoothAndKeepTheirBoundary) {
    for (const Family* family : kLocalFamilies)
        this->for_all(*family, kSizes, [](const SplineCase<TypeParam>& s) {
            expect_data_reproduced(s);
            expect_smooth(s, 1);
            expect_boundary(s, false);
        });
}

// Derivative at x of the parabola through three points.
template <class T>
long double parabola_slope(const SplineCase<T>& s, int64_t j, int64_t i) {
    const auto x = [&](int64_t k) { return static_cast<long double>(s.x[size_t(k)]); };
    const auto y = [&](int64_t k) { return static_cast<long double>(s.y[size_t(j)][size_t(k)]); };
    const long double a = x(i - 1), b = x(i), c = x(i + 1);
    return y(i - 1) * (b - c) / ((a - b) * (a - c)) + y(i) * (2 * b - a - c) / ((b - a) * (b - c)) + y(i + 1) * (b - a) / ((c - a) * (c - b));
}
template <class T>
long double chord(const SplineCase<T>& s, int64_t j, int64_t i) {
    return (static_cast<long double>(s.y[size_t(j)][size_t(i) + 1]) - s.y[size_t(j)][size_t(i)]) /
           (static_cast<long double>(s.x[size_t(i) + 1]) - s.x[size_t(i)]);
}

TYPED_TEST(Construct, BesselSlopesAreThoseOfParabolas) {
    this->for_all(kBessel, {4, 5, 17, 300}, [](const SplineCase<TypeParam>& s) {
        for (int64_t j = 0; j < s.ny(); ++j)
            for (int64_t i = 1; i + 1 < s.nx(); ++i) expect_near<TypeParam>(s.cell(j, i)[1], parabola_slope(s, j, i), 1);
    });
}

TYPED_TEST(Construct, HymanSlopesAreFilteredParabolas) {
    this->for_all(kHyman, {4, 5, 17, 300}, [](const SplineCase<TypeParam>& s) {
        for (int64_t j = 0; j < s.ny(); ++j)
            for (int64_t i = 1; i + 1 < s.nx(); ++i) {
                const long double left = chord(s, j, i - 1), right = chord(s, j, i), d = parabola_slope(s, j, i);
                const long double limit = 3 * std::min(std::fabs(left), std::fabs(right));
                const long double expected = left * right <= 0 ? 0 : std::copysign(std::min(std::fabs(d), limit), d);
                expect_near<TypeParam>(s.cell(j, i)[1], expected, 1);
                if (left * right <= 0) {
                    ASSERT_EQ(s.cell(j, i)[1], 0);
                }
            }
    });
}

// Akima's slopes by his own rule for the ends: two further chords at each side, on the parabola through the last three
// points of equal spacing.
TYPED_TEST(Construct, AkimaSlopesFollowThePublishedRule) {
    this->for_all(kAkima, {5, 6, 7, 17, 300}, [](const SplineCase<TypeParam>& s) {
        if (s.boundary != 0) return;
        const int64_t n = s.nx();
        for (int64_t j = 0; j < s.ny(); ++j) {
            std::vector<long double> m(size_t(n) + 3);
            for (int64_t i = 0; i + 1 < n; ++i) m[size_t(i) + 2] = chord(s, j, i);
            m[1] = 2 * m[2] - m[3], m[0] = 2 * m[1] - m[2];
            const size_t end = size_t(n);
            m[end + 1] = 2 * m[end] - m[end - 1], m[end + 2] = 2 * m[end + 1] - m[end];
            for (size_t i = 0; i < size_t(n); ++i) {
                const long double a = std::fabs(m[i + 3] - m[i + 2]), b = std::fabs(m[i + 1] - m[i]);
                const long double expected = (a * m[i + 1] + b * m[i + 2]) / (a + b);
                expect_near<TypeParam>(i + 1 < size_t(n) ? s.cell(j, int64_t(i))[1] : s.at_right(j, n - 2, 1), expected, 1);
            }
        }
    });
}

TYPED_TEST(Construct, AkimaTakesTheMeanOnStraightData) {
    SplineCase<TypeParam> s = make_case<TypeParam>(kAkima, 0, 12, 1, true, false);
    for (size_t i = 0; i < 12; ++i) s.y[0][i] = TypeParam(i < 6 ? i : 2 * i - 5);  // one corner, straight on both sides
    ASSERT_EQ(s.build(), 0);
    EXPECT_EQ(s.cell(0, 3)[1], TypeParam(8));
    EXPECT_EQ(s.cell(0, 5)[1], TypeParam(12)) << "four chords 8 8 16 16: the corner gets the mean";
    EXPECT_EQ(s.cell(0, 8)[1], TypeParam(16));
    // Weights that sum below 1e-10 count as equal, however large the change is beside them.
    SplineCase<TypeParam> tiny = make_case<TypeParam>(kAkima, 0, 9, 1, true, false);
    for (size_t i = 0; i < 9; ++i) tiny.y[0][i] = TypeParam(1e-13) * TypeParam(i * i * i);
    ASSERT_EQ(tiny.build(), 0);
    expect_near<TypeParam>(tiny.cell(0, 4)[1] * 1e13L, 1e13L * (chord(tiny, 0, 3) + chord(tiny, 0, 4)) / 2, 2);
}

TYPED_TEST(Construct, HymanKeepsMonotoneCellsMonotone) {
    SplineCase<TypeParam> s = make_case<TypeParam>(kHyman, 0, 60, 1, false, false);
    std::mt19937_64 engine(5);
    TypeParam level = 0;
    for (TypeParam& value : s.y[0]) value = level, level += TypeParam(engine() % 5 == 0 ? 3 : engine() % 7 == 0 ? 0 : 0.01);
    ASSERT_EQ(s.build(), 0);
    for (int64_t i = 1; i + 2 < s.nx(); ++i)
        for (int k = 0; k <= 16; ++k)
            ASSERT_GE(double(s.at(0, i, k / 16.0L * s.h(i), 1)), -double(kTolerance<TypeParam> * kScale[1])) << "cell " << i;
}

TYPED_TEST(Construct, HermiteAndDefaultUseTheGivenDerivatives) {
    this->for_all(kHermite, {3, 4, 30}, [](const SplineCase<TypeParam>& s) {
        for (int64_t j = 0; j < s.ny(); ++j)
            for (int64_t i = 1; i + 1 < s.nx(); ++i) ASSERT_EQ(s.cell(j, i)[1], s.ic[size_t(i) - 1]);
        if (s.boundary == 64) {
            ASSERT_EQ(s.cell(0, 0)[1], s.bc[0]);
        }
    });
    this->for_all(kDefault, {3, 4, 5, 30}, [](const SplineCase<TypeParam>& s) {
        expect_data_reproduced(s);
        expect_boundary(s, true);
        for (int64_t j = 0; j < s.ny(); ++j) {
            for (int64_t i = 1; i + 1 < s.nx(); ++i) {
                expect_near<TypeParam>(s.at(j, i, 0, 2), s.ic[size_t(i) - 1], 2);
                expect_near<TypeParam>(s.at_right(j, i - 1, 2), s.ic[size_t(i) - 1], 2);
            }
            if (s.boundary == 1) expect_near<TypeParam>(s.at(j, 0, 0, 3), s.at(j, 1, 0, 3), 3);
            if (s.boundary == 64) expect_near<TypeParam>(s.at(j, 0, 0, 2), s.bc[0], 2);
        }
    });
}

// The default spline from the second derivatives of a natural spline is that spline.
TYPED_TEST(Construct, DefaultFromSecondDerivativesOfNaturalIsNatural) {
    for (const int64_t boundary : {1, 2, 12, 36, 24, 48}) {
        SplineCase<TypeParam> natural = make_case<TypeParam>(kNatural, boundary, 30, 1, false, false);
        ASSERT_EQ(natural.build(), 0);
        SplineCase<TypeParam> s = natural;
        s.family = &kDefault;
        for (int64_t i = 1; i < 29; ++i) s.ic.push_back(TypeParam(natural.at(0, i, 0, 2)));
        ASSERT_EQ(s.build(), 0);
        for (int64_t i = 0; i < 29; ++i)
            for (int k = 0; k < 4; ++k) expect_near<TypeParam>(s.at(0, i, 0, k), natural.at(0, i, 0, k), k);
    }
}

TYPED_TEST(Construct, LinearSplineJoinsThePoints) {
    this->for_all(kLinear, {2, 3, 9, 40, 2500}, [](const SplineCase<TypeParam>& s) {
        expect_data_reproduced(s);
        for (int64_t j = 0; j < s.ny(); ++j)
            for (int64_t i = 0; i + 1 < s.nx(); ++i) expect_near<TypeParam>(s.cell(j, i)[1], chord(s, j, i), 1);
    });
}

TYPED_TEST(Construct, StandardQuadraticPassesItsFirstMiddle) {
    // Errors neither grow nor decay along this spline, so long ones of irregular data lose digits.
    this->for_all(kStandard, {2, 3, 4, 5, 12}, [](const SplineCase<TypeParam>& s) {
        expect_data_reproduced(s);
        expect_smooth(s, 1);
        for (int64_t j = 0; j < s.ny(); ++j) expect_near<TypeParam>(s.at(j, 0, s.h(0) / 2.0L), s.bc[0], 0);
    });
    SplineCase<TypeParam> parabola = make_case<TypeParam>(kStandard, 128, 5000, 1, true, false);
    for (size_t i = 0; i < parabola.x.size(); ++i) parabola.y[0][i] = TypeParam(i % 2);
    parabola.bc = {TypeParam(0.5)};
    ASSERT_EQ(parabola.build(), 0) << "many chunks of middles";
    expect_data_reproduced(parabola);
}

// Knots of a Subbotin case as the conditions describe them.
template <class T>
std::vector<long double> knots_of(const SplineCase<T>& s) {
    std::vector<long double> t = {s.x.front()};
    for (int64_t k = 1; k < s.nx(); ++k) {
        if (s.ic.empty())
            t.push_back((static_cast<long double>(s.x[size_t(k) - 1]) + s.x[size_t(k)]) / 2);
        else if (s.ic_type == 12)
            t.push_back(s.ic[0] + (s.nx() > 2 ? (static_cast<long double>(s.ic[1]) - s.ic[0]) * (k - 1) / (s.nx() - 2) : 0));
        else
            t.push_back(s.ic[size_t(k)]);
    }
    t.push_back(s.x.back());
    return t;
}
template <class T>
void expect_subbotin(const SplineCase<T>& s) {
    const std::vector<long double> t = knots_of(s);
    for (int64_t j = 0; j < s.ny(); ++j)
        for (int64_t i = 0; i < s.nx(); ++i) {
            ASSERT_EQ(s.cell(j, i)[0], s.y[size_t(j)][size_t(i)]);
            if (i + 1 == s.nx()) break;
            const long double knot = t[size_t(i) + 1];
            for (int k = 0; k < 2; ++k)
                expect_near<T>(s.at(j, i, knot - s.x[size_t(i)], k), s.at(j, i + 1, knot - s.x[size_t(i) + 1], k), k);
        }
    expect_boundary(s, false);
}

TYPED_TEST(Construct, SubbotinPiecesMeetSmoothlyAtTheKnots) {
    this->for_all(kSubbotin, {2, 3, 4, 5, 12, 200}, [](const SplineCase<TypeParam>& s) { expect_subbotin(s); });
    for (const int64_t boundary : kSubbotin.boundaries)
        for (const int64_t nx : {2, 3, 5, 30}) {
            SplineCase<TypeParam> s = make_case<TypeParam>(kSubbotin, boundary, nx, 2, false, false);
            for (size_t k = 0; k <= size_t(nx); ++k)
                s.ic.push_back(k == 0 ? s.x[0] : k == size_t(nx) ? s.x[k - 1] : s.x[k - 1] + (s.x[k] - s.x[k - 1]) * TypeParam(k % 2 == 0 ? 0.4 : 0.7));
            ASSERT_EQ(s.build(), 0);
            expect_subbotin(s);
            SplineCase<TypeParam> even = make_case<TypeParam>(kSubbotin, boundary, nx, 2, true, true);
            even.ic_type = 12;
            even.ic = {even.x[0] + TypeParam(0.03), even.x[size_t(nx) - 2] + TypeParam(0.05)};
            ASSERT_EQ(even.build(), 0);
            expect_subbotin(even);
        }
}

// Conditions of the function itself, for which each family reproduces polynomials up to a degree.
struct Exact {
    const Family* family;
    int degree;
    std::vector<int64_t> boundaries;
};
TYPED_TEST(Construct, PolynomialsAreReproduced) {
    const std::vector<Exact> table = {{&kNatural, 3, {1, 12, 36, 24, 48}}, {&kDefault, 3, {1, 12, 36, 24, 48}},
                                      {&kHermite, 3, {1, 12, 36, 24, 48}}, {&kBessel, 2, {1, 12, 36, 24, 48}},
                                      {&kAkima, 1, {0, 1, 2, 12, 36, 24, 48}}, {&kHyman, 1, {0, 1, 2, 12, 36, 24, 48}},
                                      {&kSubbotin, 2, {12, 36, 24, 48}}, {&kStandard, 2, {128}}};
    const auto value = [](long double x, int degree, int k) {
        const long double c[] = {0.5L, -1.0L, 0.75L, 0.25L};
        long double sum = 0;
        for (int m = degree; m >= k; --m) {
            long double factor = c[m];
            for (int f = 0; f < k; ++f) factor *= m - f;
            sum = sum * (x - 2) + factor;
        }
        return sum;
    };
    for (const Exact& exact : table)
        for (const int64_t boundary : exact.boundaries)
            for (const int64_t nx : {4, 5, 6, 20})
                for (const bool uniform : {false, true}) {
                    if (nx < exact.family->minimum) continue;
                    SCOPED_TRACE(std::string(exact.family->name) + " " + std::to_string(boundary) + " " + std::to_string(nx));
                    SplineCase<TypeParam> s = make_case<TypeParam>(*exact.family, boundary, nx, 1, uniform, false);
                    s.ic.clear();
                    for (size_t i = 0; i < s.x.size(); ++i) s.y[0][i] = TypeParam(value(s.x[i], exact.degree, 0));
                    const int left = boundary == 12 || boundary == 36 ? 1 : 2, right = boundary == 12 || boundary == 24 ? 1 : 2;
                    s.bc = {TypeParam(value(s.x.front(), exact.degree, left)), TypeParam(value(s.x.back(), exact.degree, right))};
                    if (boundary == 128) s.bc = {TypeParam(value((s.x[0] + s.x[1]) / 2.0L, exact.degree, 0))};
                    for (size_t i = 1; i + 1 < s.x.size(); ++i)
                        if (exact.family == &kDefault || exact.family == &kHermite)
                            s.ic.push_back(TypeParam(value(s.x[i], exact.degree, exact.family == &kDefault ? 2 : 1)));
                    ASSERT_EQ(s.build(), 0);
                    for (int64_t i = 0; i < s.cells(); ++i)
                        for (int k = 0; k < 3; ++k) expect_near<TypeParam>(s.at(0, i, 0, k), value(s.x[size_t(i)], exact.degree, k), k + 1);
                }
}

// Partition and functions in other units: x in 2^x_unit, y in 2^y_unit, the conditions to match.
template <class T>
SplineCase<T> in_units(SplineCase<T> s, int x_unit, int y_unit) {
    const auto scale = [](T& value, int exponent) { value = T(std::ldexp(value, exponent)); };
    for (T& x : s.x) scale(x, x_unit);
    for (auto& y : s.y)
        for (T& value : y) scale(value, y_unit);
    const int64_t b = s.boundary;
    const int seam = s.family == &kDefault ? 2 : 1;
    const int left = b == 128 ? 0 : b == 64 ? seam : b == 12 || b == 36 ? 1 : 2, right = b == 12 || b == 24 ? 1 : 2;
    scale(s.bc[0], y_unit - left * x_unit), scale(s.bc[1], y_unit - right * x_unit);
    for (T& value : s.ic) scale(value, y_unit - (s.family == &kDefault ? 2 : 1) * x_unit);
    return s;
}
// Coefficients k of all cells follow the units as long as they are representable, however far squares of lengths are off.
template <class T>
void expect_in_units(const SplineCase<T>& plain, int x_unit, int y_unit) {
    SplineCase<T> s = in_units(plain, x_unit, y_unit);
    ASSERT_EQ(s.build(), 0);
    const size_t order = size_t(s.family->order);
    for (size_t k = 0; k < order; ++k) {
        long double largest = 0;
        for (size_t at = k; at < s.c.size(); at += order) largest = std::max(largest, std::fabs(static_cast<long double>(plain.c[at])));
        const int exponent = y_unit - int(k) * x_unit;
        const long double slack = std::ldexp(kTolerance<T> * largest, exponent) + 8 * std::numeric_limits<T>::denorm_min();
        for (size_t at = k; at < s.c.size(); at += order)
            ASSERT_LE(std::fabs(s.c[at] - std::ldexp(static_cast<long double>(plain.c[at]), exponent)), slack) << "cell " << at / order << " c" << k;
    }
}
TYPED_TEST(Construct, CoefficientsFollowTheUnitsToTheEndsOfTheRange) {
    using T = TypeParam;
    using Units = std::pair<int, int>;
    const std::vector<Units> units = sizeof(T) == sizeof(double) ? std::vector<Units>{{664, 1010}, {664, 400}, {-531, -1000}, {-664, -1000}}
                                                                 : std::vector<Units>{{66, 100}, {66, 40}, {-60, -110}, {-81, -118}};
    for (const Family* family : {&kNatural, &kDefault, &kHermite, &kBessel, &kAkima, &kHyman, &kLinear, &kStandard, &kSubbotin})
        for (const int64_t boundary : family->boundaries)
            for (const int64_t nx : {2, 3, 5, 12})
                for (const auto& [uniform, ny] : {std::pair<bool, int64_t>{false, 1}, {false, 3}, {true, 1}})
                    for (const auto& [x_unit, y_unit] : units) {
                        if (nx < family->minimum || (family == &kNatural && boundary == 1 && nx == 2)) continue;
                        // Akima's limit for straight data is absolute: slopes below it are another case.
                        if (family == &kAkima && y_unit < x_unit) continue;
                        SCOPED_TRACE(std::string(family->name) + " boundary " + std::to_string(boundary) + " nx " + std::to_string(nx) +
                                     (uniform ? " uniform" : "") + " x 2^" + std::to_string(x_unit) + " y 2^" + std::to_string(y_unit));
                        SplineCase<T> plain = make_case<T>(*family, boundary, nx, ny, uniform, false);
                        for (T& x : plain.x) x *= 16;  // lengths near one
                        ASSERT_EQ(plain.build(), 0);
                        expect_in_units(plain, x_unit, y_unit);
                        if (testing::Test::HasFatalFailure()) return;
                    }
}

// The natural family against its defining equations, solved densely for all four coefficients of every cell.
TYPED_TEST(Construct, NaturalSplineSolvesItsDefiningEquations) {
    for (const int64_t boundary : kNatural.boundaries)
        for (const int64_t nx : {2, 3, 4, 5, 9, 24}) {
            if (boundary == 1 && nx < 4) continue;
            SplineCase<TypeParam> s = make_case<TypeParam>(kNatural, boundary, nx, 2, false, false);
            ASSERT_EQ(s.build(), 0);
            const size_t cells = size_t(nx - 1), order = 4 * cells;
            for (size_t j = 0; j < 2; ++j) {
                std::vector<std::vector<long double>> a;
                std::vector<long double> b;
                const auto row = [&](long double rhs) -> std::vector<long double>& {
                    a.emplace_back(order);
                    b.push_back(rhs);
                    return a.back();
                };
                const auto add = [&](std::vector<long double>& r, size_t cell, long double t, int k, long double sign) {
                    const long double power[4][4] = {{1, t, t * t, t * t * t}, {0, 1, 2 * t, 3 * t * t}, {0, 0, 2, 6 * t}, {0, 0, 0, 6}};
                    for (size_t m = 0; m < 4; ++m) r[4 * cell + m] += sign * power[k][m];
                };
                for (size_t i = 0; i < cells; ++i) {
                    add(row(s.y[j][i]), i, 0, 0, 1);
                    add(row(s.y[j][i + 1]), i, s.h(int64_t(i)), 0, 1);
                }
                for (size_t i = 1; i < cells; ++i)
                    for (int k = 1; k < 3; ++k) {
                        auto& r = row(0);
                        add(r, i - 1, s.h(int64_t(i) - 1), k, 1), add(r, i, 0, k, -1);
                    }
                const long double h = s.h(nx - 2);
                if (boundary == 64) {
                    for (int k = 1; k < 3; ++k) {
                        auto& r = row(0);
                        add(r, 0, 0, k, 1), add(r, cells - 1, h, k, -1);
                    }
                } else if (boundary == 1) {
                    auto& left = row(0);
                    add(left, 0, 0, 3, 1), add(left, 1, 0, 3, -1);
                    auto& right = row(0);
                    add(right, cells - 1, 0, 3, 1), add(right, cells - 2, 0, 3, -1);
                } else {
                    const bool free = boundary == 2;
                    add(row(free ? 0 : s.bc[0]), 0, 0, boundary == 12 || boundary == 36 ? 1 : 2, 1);
                    add(row(free ? 0 : s.bc[1]), cells - 1, h, boundary == 12 || boundary == 24 ? 1 : 2, 1);
                }
                if (boundary == 64 && nx == 2) continue;  // periodic on one cell: any slope fits, the spline takes zero
                const std::vector<long double> x = dense_solve(a, b);
                for (size_t k = 0; k < order; ++k)
                    expect_near<TypeParam>(s.cell(int64_t(j), int64_t(k / 4))[k % 4], x[k], int(k % 4));
            }
        }
}

}  // namespace
