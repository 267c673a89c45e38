// The radix sorts against std::stable_sort under the order that the header states, on many kinds of data and lengths
// around every change of algorithm.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "nax/primitives.h"
#include "tests/lib/guarded_buffer.h"

namespace nax::testing {
namespace {

template <class T>
using Unsigned = std::conditional_t<
    sizeof(T) == 8, uint64_t,
    std::conditional_t<sizeof(T) == 4, uint32_t, std::conditional_t<sizeof(T) == 2, uint16_t, uint8_t>>>;

// The order that is promised: below all numbers the NaNs with a sign, above them the others.
template <class T>
bool before(T a, T b) {
    if constexpr (std::is_floating_point_v<T>) {
        const auto class_of = [](T x) { return x == x ? 0 : std::signbit(x) ? -1 : 1; };
        if (class_of(a) != class_of(b)) return class_of(a) < class_of(b);
        const auto u = std::bit_cast<Unsigned<T>>(a), v = std::bit_cast<Unsigned<T>>(b);
        if (class_of(a) != 0) return class_of(a) < 0 ? u > v : u < v;
        if (a == b) return std::signbit(a) && !std::signbit(b);
        return a < b;
    } else {
        return a < b;
    }
}

template <class T>
struct Kind {
    std::string name;
    std::function<T(int64_t i, int64_t n, std::mt19937_64& g)> make;
};

template <class T>
std::vector<Kind<T>> kinds() {
    const auto bits = [](uint64_t u) { return std::bit_cast<T>(static_cast<Unsigned<T>>(u)); };
    const auto number = [](double x) { return static_cast<T>(x); };
    std::vector<Kind<T>> all = {
        {"all bit patterns", [=](int64_t, int64_t, auto& g) { return bits(g()); }},
        {"sorted",
         [=](int64_t i, int64_t n, auto&) { return number(static_cast<double>(i) * 100 / static_cast<double>(n)); }},
        {"reversed", [=](int64_t i, int64_t n,
                         auto&) { return number(static_cast<double>(n - i) * 100 / static_cast<double>(n)); }},
        {"organ pipe",
         [=](int64_t i, int64_t n, auto&) { return number(static_cast<double>(std::min(i, n - i) % 128)); }},
        {"one value", [=](int64_t, int64_t, auto&) { return number(7); }},
        {"two values", [=](int64_t, int64_t, auto& g) { return number(g() % 2 ? 3 : 4); }},
        {"one value but for a few", [=](int64_t i, int64_t, auto& g) { return i % 97 == 0 ? bits(g()) : number(5); }},
        {"few values", [=](int64_t, int64_t, auto& g) { return number(static_cast<double>(g() % 10)); }},
        {"sorted but for the last",
         [=](int64_t i, int64_t n, auto&) {
             return number(i + 1 == n ? 0 : static_cast<double>(i % 100) / 100 + static_cast<double>(i / 100 % 100));
         }},
        {"nested clusters",
         [=](int64_t, int64_t, auto& g) {
             // Every level keeps one key in eight apart, at a distance 256 times smaller.
             uint64_t u = 0;
             const int top = 8 * static_cast<int>(sizeof(T));
             for (int shift = top - 8; shift >= 0; shift -= 8) {
                 if (g() % 8 != 0) continue;
                 u |= (g() & 0xFF) << shift;
                 break;
             }
             return bits(u);
         }},
        {"low bits alone", [=](int64_t, int64_t, auto& g) { return bits(g() & 0x3FF); }},
    };
    if constexpr (std::is_floating_point_v<T>) {
        using L = std::numeric_limits<T>;
        all.push_back({"normal", [](int64_t, int64_t, auto& g) {
                           return static_cast<T>(std::normal_distribution<double>()(g));
                       }});
        all.push_back({"uniform", [](int64_t, int64_t, auto& g) {
                           return static_cast<T>(std::uniform_real_distribution<double>()(g));
                       }});
        all.push_back({"special", [](int64_t, int64_t, auto& g) {
                           constexpr T values[] = {T(0),
                                                   -T(0),
                                                   L::infinity(),
                                                   -L::infinity(),
                                                   L::quiet_NaN(),
                                                   -L::quiet_NaN(),
                                                   L::denorm_min(),
                                                   -L::denorm_min(),
                                                   L::max(),
                                                   L::lowest(),
                                                   T(1),
                                                   T(-1)};
                           return values[g() % 12];
                       }});
    } else {
        all.push_back({"extremes", [](int64_t, int64_t, auto& g) {
                           using L = std::numeric_limits<T>;
                           const T values[] = {L::min(), L::max(), T(0), T(L::min() + 1), T(L::max() - 1)};
                           return values[g() % 5];
                       }});
    }
    return all;
}

// Around the registers, the networks' sizes, the packed indices, the counting of words and the levels of buckets.
const int kLengths[] = {1,   2,   3,    4,    5,    8,    9,    16,    17,     31,     33,
                        63,  64,  65,   100,  127,  128,  129,  255,   256,    257,    500,
                        511, 777, 1023, 1024, 1025, 3000, 8192, 20000, 131073, 131074, 210000};

template <class T>
std::vector<T> data_of(const Kind<T>& kind, int64_t n) {
    std::mt19937_64 g(static_cast<uint64_t>(n) * 31 + kind.name.size());
    std::vector<T> x(static_cast<std::size_t>(n));
    for (int64_t i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = kind.make(i, n, g);
    return x;
}

template <class T>
using InPlace = int (*)(T*, T*, int32_t);
template <class T>
using Index = int (*)(const T*, int32_t, int32_t*, int32_t*, int32_t);

template <class T>
void check_in_place(InPlace<T> ascend, InPlace<T> descend) {
    for (const Kind<T>& kind : kinds<T>())
        for (const int n : kLengths) {
            SCOPED_TRACE(kind.name + ", n = " + std::to_string(n));
            std::vector<T> expected = data_of(kind, n);
            const std::vector<T> data = expected;
            std::stable_sort(expected.begin(), expected.end(), before<T>);
            const std::size_t bytes = sizeof(T) * data.size();
            for (const Guard guard : {Guard::kBefore, Guard::kAfter}) {
                GuardedBuffer<T> x(data.size(), guard), scratch(data.size(), guard);
                std::copy(data.begin(), data.end(), x.begin());
                ASSERT_EQ(ascend(x.data(), scratch.data(), n), 0);
                ASSERT_EQ(std::memcmp(x.data(), expected.data(), bytes), 0);
                std::copy(data.begin(), data.end(), x.begin());
                ASSERT_EQ(descend(x.data(), scratch.data(), n), 0);
                std::reverse(x.begin(), x.end());
                ASSERT_EQ(std::memcmp(x.data(), expected.data(), bytes), 0);
            }
        }
    T x[2] = {T(2), T(1)}, scratch[2];
    EXPECT_EQ(ascend(nullptr, scratch, 0), NAX_PRIMITIVES_NULL);
    if (sizeof(T) > 1) {
        EXPECT_EQ(descend(x, nullptr, 2), NAX_PRIMITIVES_NULL);
    }
    EXPECT_EQ(ascend(x, scratch, 0), NAX_PRIMITIVES_SIZE);
    EXPECT_EQ(descend(x, scratch, -1), NAX_PRIMITIVES_SIZE);
    EXPECT_EQ(x[0], T(2));
}

template <class T>
void check_index(Index<T> ascend, Index<T> descend) {
    for (const Kind<T>& kind : kinds<T>())
        for (const int n : kLengths)
            for (const int distance : {static_cast<int>(sizeof(T)), static_cast<int>(sizeof(T)) + 3}) {
                SCOPED_TRACE(kind.name + ", n = " + std::to_string(n) + ", distance " + std::to_string(distance));
                const std::vector<T> data = data_of(kind, n);
                const auto at = [&](int32_t i) { return data[static_cast<std::size_t>(i)]; };
                GuardedBuffer<unsigned char> source(static_cast<std::size_t>((n - 1) * distance) + sizeof(T));
                for (int i = 0; i < n; ++i)
                    std::memcpy(source.data() + i * distance, &data[static_cast<std::size_t>(i)], sizeof(T));
                const auto* const keys = reinterpret_cast<const T*>(source.data());
                GuardedBuffer<int32_t> index(data.size()), scratch(data.size());
                std::vector<int32_t> expected(data.size());
                std::iota(expected.begin(), expected.end(), 0);
                std::stable_sort(expected.begin(), expected.end(),
                                 [&](int32_t a, int32_t b) { return before(at(a), at(b)); });
                ASSERT_EQ(ascend(keys, distance, index.data(), scratch.data(), n), 0);
                ASSERT_TRUE(std::equal(expected.begin(), expected.end(), index.begin()));
                std::iota(expected.begin(), expected.end(), 0);
                std::stable_sort(expected.begin(), expected.end(),
                                 [&](int32_t a, int32_t b) { return before(at(b), at(a)); });
                ASSERT_EQ(descend(keys, distance, index.data(), scratch.data(), n), 0);
                ASSERT_TRUE(std::equal(expected.begin(), expected.end(), index.begin()));
            }
    const T key[1] = {};
    int32_t index[1] = {-1}, scratch[1];
    constexpr auto kSize = static_cast<int32_t>(sizeof(T));
    EXPECT_EQ(ascend(nullptr, kSize, index, scratch, 1), NAX_PRIMITIVES_NULL);
    EXPECT_EQ(ascend(key, kSize, nullptr, scratch, 1), NAX_PRIMITIVES_NULL);
    EXPECT_EQ(ascend(key, kSize - 1, index, scratch, 1), NAX_PRIMITIVES_SIZE);
    EXPECT_EQ(descend(key, kSize, index, scratch, 0), NAX_PRIMITIVES_SIZE);
    EXPECT_EQ(index[0], -1);
}

#define NAX_TEST_SORT(suffix, type)                                           \
    TEST(RadixSort, InPlace_##suffix) {                                       \
        check_in_place<type>(nax_dft_avx2_opasSortRadixAscend_##suffix##_I,   \
                             nax_dft_avx2_opasSortRadixDescend_##suffix##_I); \
    }
#define NAX_TEST_INDEX(suffix, type)                                        \
    TEST(RadixSort, Index_##suffix) {                                       \
        check_index<type>(nax_dft_avx2_opasSortRadixIndexAscend_##suffix,   \
                          nax_dft_avx2_opasSortRadixIndexDescend_##suffix); \
    }
#define NAX_TEST_BOTH(suffix, type) NAX_TEST_SORT(suffix, type) NAX_TEST_INDEX(suffix, type)
NAX_TEST_BOTH(8u, uint8_t)
NAX_TEST_BOTH(16s, int16_t)
NAX_TEST_BOTH(16u, uint16_t)
NAX_TEST_BOTH(32f, float)
NAX_TEST_BOTH(32s, int32_t)
NAX_TEST_BOTH(32u, uint32_t)
NAX_TEST_SORT(64f, double)

// A sort is no arithmetic: no exception is raised, whatever the keys.
TEST(RadixSort, RaisesNoFloatingPointException) {
    std::vector<double> x = data_of<double>(kinds<double>()[0], 30000), scratch(x.size());
    std::feclearexcept(FE_ALL_EXCEPT);
    nax_dft_avx2_opasSortRadixAscend_64f_I(x.data(), scratch.data(), static_cast<int32_t>(x.size()));
    EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), 0);
}

}  // namespace
}  // namespace nax::testing
