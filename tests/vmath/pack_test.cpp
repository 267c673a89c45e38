// Pack and Unpack against their definition: four element types, three selectors, 32- and 64-bit integers, and nothing
// read or written beyond the selected elements.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tests/lib/guarded_buffer.h"
#include "tests/lib/vmath_records.h"

namespace nax::testing {
namespace {

template <class T, char Letter>
struct Type {
    using Element = T;
    static constexpr char letter = Letter;
};
struct PairS {
    float part[2];
    bool operator==(const PairS&) const = default;
};
struct PairD {
    double part[2];
    bool operator==(const PairD&) const = default;
};

template <class T>
T numbered(int64_t i) {
    if constexpr (std::is_floating_point_v<T>)
        return static_cast<T>(i + 1);
    else
        return T{{static_cast<decltype(T::part[0] + 0)>(i + 1), static_cast<decltype(T::part[0] + 0)>(-i)}};
}

// Calls a kernel with its flag; the stubs, which fix the flag at 1, get rubbish there.
template <class Integer, class T, class Third, class Fourth>
void call_pack(const Record& record, bool through_stub, int64_t n, const T* a, Third third, Fourth fourth) {
    constexpr bool narrow = sizeof(Integer) == 4;
    using Function = void (*)(int64_t, const T*, Third, Fourth, int32_t);
    const Entry entry = through_stub ? record.stubs[0] : record.kernels[1];
    // In 32-bit mode the upper halves of length and stride mean nothing.
    const int64_t length = narrow ? (n & 0xFFFFFFFF) | int64_t{0x5A5A} << 32 : n;
    reinterpret_cast<Function>(entry)(length, a, third, fourth, through_stub ? 77 : narrow ? 1 : 0);
}

template <class TypeTag>
class Pack : public ::testing::Test {
protected:
    using T = typename TypeTag::Element;
    static const Record& record(const char* form) { return *find_record(TypeTag::letter + std::string(form)); }

    template <class Check>
    void for_widths(Check check) {
        check(int32_t{}, false);
        check(int32_t{}, true);
        check(int64_t{}, false);
    }
};
using Types = ::testing::Types<Type<float, 's'>, Type<double, 'd'>, Type<PairS, 'c'>, Type<PairD, 'z'>>;
TYPED_TEST_SUITE(Pack, Types);

constexpr int kLengths[] = {-3, 0, 1, 2, 5, 8, 15, 16, 17, 63, 64, 65, 130, 511, 512, 513, 1100};

TYPED_TEST(Pack, ByStride) {
    using T = typename TypeParam::Element;
    this->for_widths([&](auto width, bool stub) {
        using Integer = decltype(width);
        for (const int n : kLengths)
            for (const int64_t stride : {1, 2, 3, 17, -1, -4}) {
                SCOPED_TRACE(std::to_string(n) + " elements, stride " + std::to_string(stride));
                const auto count = static_cast<std::size_t>(n > 0 ? n : 0);
                const auto span = n > 0 ? static_cast<std::size_t>(1 + (n - 1) * std::abs(stride)) : 0;
                const int64_t first = stride < 0 && n > 0 ? (n - 1) * -stride : 0;
                GuardedBuffer<T> dense(count), sparse(span);
                for (std::size_t i = 0; i < span; ++i) sparse[i] = numbered<T>(static_cast<int64_t>(i));
                call_pack<Integer>(this->record("PackI"), stub, n, sparse.data() + first, stride, dense.data());
                for (int64_t i = 0; i < n; ++i)
                    ASSERT_EQ(dense[static_cast<std::size_t>(i)], numbered<T>(first + i * stride)) << i;

                GuardedBuffer<T> target(span);
                call_pack<Integer>(this->record("UnpackI"), stub, n, dense.data(), target.data() + first, stride);
                for (std::size_t i = 0; i < span; ++i) {
                    const bool selected = static_cast<int64_t>(i) % stride == 0;
                    ASSERT_EQ(target[i], selected ? sparse[i] : T{}) << i;
                }
            }
    });
}

// A stride whose sixteenfold in bytes exceeds 31 bits.
TYPED_TEST(Pack, ByHugeStride) {
    using T = typename TypeParam::Element;
    const int64_t stride = 0x8888889 / static_cast<int64_t>(sizeof(T)) + 1, n = 17;
    GuardedBuffer<T> sparse(static_cast<std::size_t>(1 + (n - 1) * stride)), dense(static_cast<std::size_t>(n));
    for (int64_t i = 0; i < n; ++i) sparse[static_cast<std::size_t>(i * stride)] = numbered<T>(i);
    call_pack<int32_t>(this->record("PackI"), true, n, sparse.data(), stride, dense.data());
    for (int64_t i = 0; i < n; ++i) EXPECT_EQ(dense[static_cast<std::size_t>(i)], numbered<T>(i));
    for (int64_t i = 0; i < n; ++i) dense[static_cast<std::size_t>(i)] = numbered<T>(100 + i);
    call_pack<int64_t>(this->record("UnpackI"), false, n, dense.data(), sparse.data(), stride);
    for (int64_t i = 0; i < n; ++i) EXPECT_EQ(sparse[static_cast<std::size_t>(i * stride)], numbered<T>(100 + i));
}

TYPED_TEST(Pack, ByIndex) {
    using T = typename TypeParam::Element;
    std::mt19937_64 random(3);
    this->for_widths([&](auto width, bool stub) {
        using Integer = decltype(width);
        for (const int n : kLengths) {
            const auto count = static_cast<std::size_t>(n > 0 ? n : 0);
            const std::size_t range = 97;
            GuardedBuffer<T> dense(count), sparse(range), target(range);
            GuardedBuffer<Integer> index(count);
            for (std::size_t i = 0; i < range; ++i) sparse[i] = numbered<T>(static_cast<int64_t>(i));
            for (std::size_t i = 0; i < count; ++i) index[i] = static_cast<Integer>(random() % range);
            const void* const selector = index.data();
            call_pack<Integer>(this->record("PackV"), stub, n, sparse.data(), selector, dense.data());
            std::vector<T> expected(range);
            for (std::size_t i = 0; i < count; ++i) {
                ASSERT_EQ(dense[i], sparse[static_cast<std::size_t>(index[i])]) << i;
                dense[i] = numbered<T>(1000 + static_cast<int64_t>(i));
                expected[static_cast<std::size_t>(index[i])] = dense[i];  // the last one stays
            }
            call_pack<Integer>(this->record("UnpackV"), stub, n, dense.data(), target.data(), selector);
            for (std::size_t i = 0; i < range; ++i) ASSERT_EQ(target[i], expected[i]) << i;
        }
    });
}

TYPED_TEST(Pack, ByMask) {
    using T = typename TypeParam::Element;
    std::mt19937_64 random(4);
    this->for_widths([&](auto width, bool stub) {
        using Integer = decltype(width);
        for (const int n : kLengths)
            for (const unsigned selected_of_16 : {0u, 1u, 8u, 15u, 16u}) {
                SCOPED_TRACE(std::to_string(n) + " elements, density " + std::to_string(selected_of_16));
                const auto count = static_cast<std::size_t>(n > 0 ? n : 0);
                GuardedBuffer<T> sparse(count), target(count);
                GuardedBuffer<Integer> mask(count);
                std::vector<T> expected_dense, expected_target(count);
                for (std::size_t i = 0; i < count; ++i) {
                    sparse[i] = numbered<T>(static_cast<int64_t>(i));
                    // Any bit counts, the highest and lowest included.
                    const int bit = std::vector<int>{0, 7, 8 * static_cast<int>(sizeof(Integer)) - 1}[random() % 3];
                    mask[i] = random() % 16 < selected_of_16
                                  ? static_cast<Integer>(std::make_unsigned_t<Integer>{1} << bit)
                                  : Integer{0};
                    if (mask[i] == 0) continue;
                    expected_dense.push_back(sparse[i]);
                    expected_target[i] = sparse[i];
                }
                // The guard page begins right behind the last selected element.
                GuardedBuffer<T> dense(expected_dense.size());
                const void* const selector = mask.data();
                call_pack<Integer>(this->record("PackM"), stub, n, sparse.data(), selector, dense.data());
                for (std::size_t i = 0; i < expected_dense.size(); ++i) ASSERT_EQ(dense[i], expected_dense[i]) << i;
                call_pack<Integer>(this->record("UnpackM"), stub, n, dense.data(), target.data(), selector);
                for (std::size_t i = 0; i < count; ++i) ASSERT_EQ(target[i], expected_target[i]) << i;
            }
    });
}

TYPED_TEST(Pack, ByMaskInPlace) {
    using T = typename TypeParam::Element;
    std::vector<T> x(700);
    std::vector<int32_t> mask(700);
    std::vector<T> expected;
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = numbered<T>(static_cast<int64_t>(i));
        mask[i] = i % 3 != 1;
        if (mask[i] != 0) expected.push_back(x[i]);
    }
    call_pack<int32_t>(this->record("PackM"), true, 700, x.data(), static_cast<const void*>(mask.data()), x.data());
    for (std::size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(x[i], expected[i]) << i;
}

}  // namespace
}  // namespace nax::testing
