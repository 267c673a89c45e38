// Both flavours of the library, side by side in one process: the basic entry gives the same bits.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>

#include "tests/stats/support.h"

namespace nax::testing {
namespace {

// A loaded copy of the library.
class Library {
public:
    explicit Library(const char* path) : handle_(dlopen(path, RTLD_LAZY | RTLD_LOCAL)) {}
    bool loaded() const { return handle_ != nullptr; }
    template <class F>
    F find(const char* name) const {
        return reinterpret_cast<F>(dlsym(handle_, name));
    }

private:
    void* handle_;
};

template <class T>
void compare(const Library& v3, const Library& v4, const char* name) {
    using Entry = int32_t (*)(nax_ss_task*, uint64_t, uint64_t, const nax_threaders*);
    const Entry entries[2] = {v3.find<Entry>(name), v4.find<Entry>(name)};
    ASSERT_NE(entries[0], nullptr);
    ASSERT_NE(entries[1], nullptr);
    ASSERT_NE(entries[0], entries[1]);
    for (const int64_t p : {1, 2, 3, 7, 16, 21})
        for (const int64_t n : {1, 9, 130})
            for (const bool columns : {false, true})
                for (const bool weighted : {false, true})
                    for (const uint64_t method : {1, 2, 0x100}) {
                        Sample<T> samples[2] = {{n, p, columns}, {n, p, columns}};
                        for (int k = 0; k < 2; ++k) {
                            samples[k].fill(31, 0.3);
                            for (int64_t i = 0; weighted && i < n; ++i)
                                samples[k].weights.push_back(static_cast<T>(i % 5) * T(0.3));
                            samples[k].open();
                            samples[k].results[0].assign(static_cast<std::size_t>(p), T(0.25));
                            ASSERT_EQ(entries[k](samples[k].task, kAllBasic, method, nullptr), 0);
                        }
                        const auto same = [&](const std::vector<T>& a, const std::vector<T>& b) {
                            return std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
                        };
                        for (std::size_t r = 0; r < 17; ++r)
                            EXPECT_TRUE(same(samples[0].results[r], samples[1].results[r]))
                                << r << " n " << n << " p " << p << " method " << method;
                        for (std::size_t m = 0; m < 3; ++m)
                            EXPECT_TRUE(same(samples[0].matrices[m], samples[1].matrices[m]))
                                << m << " n " << n << " p " << p << " method " << method;
                        if (::testing::Test::HasFailure()) return;
                    }
}

TEST(StatisticsFlavours, BasicStatisticsHaveTheSameBits) {
    const Library narrow(NAX_FLAVOUR_AVX2), wide(NAX_FLAVOUR_AVX512);
    ASSERT_TRUE(narrow.loaded() && wide.loaded());
    compare<double>(narrow, wide, "_stodSSBasic");
    compare<float>(narrow, wide, "_stosSSBasic");
}

}  // namespace
}  // namespace nax::testing
