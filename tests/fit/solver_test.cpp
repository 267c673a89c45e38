#include "nax/abi/tridiagonal.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/fit/spline_case.h"

namespace {

using nax::test::dense_solve;

template <class T>
struct System {
    int64_t n, columns, leading;
    std::vector<T> sub, diagonal, super, rhs;

    System(int64_t size, int64_t count, uint64_t seed) : n(size), columns(count), leading(size + 3) {
        std::mt19937_64 engine(seed);
        std::uniform_real_distribution<double> any(-1, 1), large(2.1, 4);
        for (int64_t i = 0; i + 1 < n; ++i) sub.push_back(T(any(engine))), super.push_back(T(any(engine)));
        for (int64_t i = 0; i < n; ++i) diagonal.push_back(T(any(engine) > 0 ? large(engine) : -large(engine)));
        for (int64_t i = 0; i < columns * leading; ++i) rhs.push_back(T(any(engine)));
    }
    std::vector<long double> exact(int64_t column, bool transposed) const {
        const size_t order = diagonal.size();
        std::vector<std::vector<long double>> a(order, std::vector<long double>(order));
        for (size_t i = 0; i < order; ++i) a[i][i] = diagonal[i];
        for (size_t i = 0; i + 1 < order; ++i) {
            a[i + 1][i] = transposed ? super[i] : sub[i];
            a[i][i + 1] = transposed ? sub[i] : super[i];
        }
        return dense_solve(a, {rhs.begin() + column * leading, rhs.begin() + column * leading + n});
    }
    int64_t solve() {
        int64_t info = 99;
        if constexpr (sizeof(T) == 8)
            ddtsvb_4dfl(&n, &columns, sub.data(), diagonal.data(), super.data(), rhs.data(), &leading, &info);
        else
            sdtsvb_4dfl(&n, &columns, sub.data(), diagonal.data(), super.data(), rhs.data(), &leading, &info);
        return info;
    }
    int64_t factor() {
        int64_t info = 99;
        if constexpr (sizeof(T) == 8)
            ddttrfb_4dfl(&n, sub.data(), diagonal.data(), super.data(), &info);
        else
            sdttrfb_4dfl(&n, sub.data(), diagonal.data(), super.data(), &info);
        return info;
    }
    int64_t solve_factored(char transposed) {
        int64_t info = 99;
        if constexpr (sizeof(T) == 8)
            ddttrsb_4dfl(&transposed, &n, &columns, sub.data(), diagonal.data(), super.data(), rhs.data(), &leading, &info);
        else
            sdttrsb_4dfl(&transposed, &n, &columns, sub.data(), diagonal.data(), super.data(), rhs.data(), &leading, &info);
        return info;
    }
    void expect_solution(const System& original, bool transposed) const {
        for (int64_t k = 0; k < columns; ++k) {
            const std::vector<long double> x = original.exact(k, transposed);
            for (int64_t i = 0; i < n; ++i)
                ASSERT_NEAR(double(rhs[size_t(k * leading + i)]), double(x[size_t(i)]), 20 * double(std::numeric_limits<T>::epsilon()))
                    << "n " << n << " column " << k << " row " << i;
            for (int64_t i = n; i < leading; ++i)
                ASSERT_EQ(rhs[size_t(k * leading + i)], original.rhs[size_t(k * leading + i)]) << "gap between columns";
        }
    }
};

template <class T>
class Tridiagonal : public testing::Test {};
using Precisions = testing::Types<double, float>;
TYPED_TEST_SUITE(Tridiagonal, Precisions);

TYPED_TEST(Tridiagonal, SolvesDominantSystemsOfEverySize) {
    for (int64_t n = 1; n <= 40; ++n)
        for (const int64_t columns : {1, 3}) {
            const System<TypeParam> original(n, columns, uint64_t(n));
            System<TypeParam> once = original, plain = original, turned = original;
            ASSERT_EQ(once.solve(), 0);
            once.expect_solution(original, false);
            ASSERT_EQ(plain.factor(), 0);
            ASSERT_EQ(plain.solve_factored('N'), 0);
            plain.expect_solution(original, false);
            ASSERT_EQ(turned.factor(), 0);
            ASSERT_EQ(turned.solve_factored('T'), 0);
            turned.expect_solution(original, true);
            EXPECT_EQ(std::memcmp(once.rhs.data(), plain.rhs.data(), once.rhs.size() * sizeof(TypeParam)), 0)
                << "one call and two calls differ";
        }
}

TYPED_TEST(Tridiagonal, ZeroPivotIsReportedByItsRow) {
    for (const int64_t n : {1, 2, 5, 6, 9})
        for (int64_t row = 0; row < n; ++row) {
            System<TypeParam> system(n, 1, 7);
            for (auto* side : {&system.sub, &system.super})
                for (TypeParam& element : *side) element = 0;
            system.diagonal[size_t(row)] = 0;
            System<TypeParam> copy = system;
            EXPECT_EQ(system.solve(), row + 1);
            EXPECT_EQ(copy.factor(), row + 1);
        }
}

TYPED_TEST(Tridiagonal, BadArgumentsAreReportedByPosition) {
    System<TypeParam> system(4, 1, 3);
    const System<TypeParam> original = system;
    system.n = -1;
    EXPECT_EQ(system.solve(), -1);
    EXPECT_EQ(system.factor(), -1);
    EXPECT_EQ(system.solve_factored('N'), -2);
    system.n = 4, system.columns = -1;
    EXPECT_EQ(system.solve(), -2);
    EXPECT_EQ(system.solve_factored('N'), -3);
    system.columns = 1, system.leading = 3;
    EXPECT_EQ(system.solve(), -7);
    EXPECT_EQ(system.solve_factored('N'), -8);
    EXPECT_EQ(system.solve_factored('X'), -1);
    system.n = 0, system.leading = 1;
    EXPECT_EQ(system.solve(), 0);
    EXPECT_EQ(system.factor(), 0);
    EXPECT_EQ(system.rhs, original.rhs);
    EXPECT_EQ(system.diagonal, original.diagonal);
}

}  // namespace
