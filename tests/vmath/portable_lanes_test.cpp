// What the sweep over every float measures are the kernels' sources over portable lanes (tools/every_float). Here they
// face the library's kernels: same results, bit for bit, and same statuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "nax/error.h"
#include "nax/mode.h"
#include "tests/emulator/emulator.h"
#include "tests/lib/accuracy.h"
#include "tools/every_float/kernels.h"
#include "tools/every_float/reciprocal.h"

namespace nax::testing {

__m256 processor_reciprocal(__m256 x);

namespace {

using tools::Kernel;

int slot_of(const Kernel& kernel) {
    return static_cast<int>(std::find(kLevels, kLevels + kSlots, kernel.level) - kLevels);
}

// Special values and both sides of every place where an algorithm changes.
std::vector<float> landmarks(const AccuracyRow& row) {
    using Limits = std::numeric_limits<float>;
    std::vector<float> points = {Limits::quiet_NaN(), Limits::signaling_NaN(), Limits::infinity()};
    std::vector<float> centres = {0.0f, Limits::denorm_min(), Limits::min(), 0x1p-24f, 1.0f, Limits::max()};
    for (const Interval& interval : row.intervals)
        for (const double end : {interval.low, interval.high}) centres.push_back(static_cast<float>(end));
    for (const float centre : centres) {
        float below = centre, above = centre;
        points.push_back(centre);
        for (int i = 0; i < 3; ++i) {
            points.push_back(below = std::nextafter(below, -Limits::infinity()));
            points.push_back(above = std::nextafter(above, Limits::infinity()));
        }
    }
    const size_t count = points.size();
    for (size_t i = 0; i < count; ++i) points.push_back(-points[i]);
    return points;
}

// The landmarks, random bit patterns, and random points of the intervals.
std::vector<float> arguments(const AccuracyRow& row) {
    std::vector<float> points = landmarks(row);
    std::mt19937 random(7);
    for (int i = 0; i < 4000; ++i) points.push_back(std::bit_cast<float>(static_cast<uint32_t>(random())));
    for (const Interval& interval : row.intervals) {
        constexpr size_t per_interval = 1000;
        points.resize(points.size() + per_interval);
        sample(static_cast<float>(interval.low), static_cast<float>(interval.high), 7,
               points.data() + points.size() - per_interval, per_interval);
    }
    return points;
}

void expect_same(const std::vector<float>& x, const std::vector<float>& portable, const std::vector<float>& library) {
    int shown = 0;
    for (size_t i = 0; i < x.size() && shown < 5; ++i) {
        if (std::isnan(portable[i]) && std::isnan(library[i])) continue;
        const bool same = std::bit_cast<uint32_t>(portable[i]) == std::bit_cast<uint32_t>(library[i]);
        EXPECT_TRUE(same) << std::hexfloat << x[i] << ": " << portable[i] << ", library " << library[i];
        shown += !same;
    }
}

class PortableLanes : public ::testing::Test {
protected:
    void SetUp() override { portable::reciprocal14 = processor_reciprocal; }
    void TearDown() override {
        portable::reciprocal14 = portable::nearest_reciprocal;
        _arqSetMode(ARQ_ERRMODE_DEFAULT | ARQ_DENORMALS_KEEP);
        _arqClearErrStatus();
    }

    // Every portable kernel beside the library's.
    template <class Check>
    static void for_each_kernel(Check check) {
        for (const Kernel& kernel : tools::kernels()) {
            SCOPED_TRACE(kernel.record + " " + kernel.level);
            const AccuracyRow* const row = find_accuracy_row(kernel.record);
            ASSERT_NE(row, nullptr);
            const auto entry = find_record(kernel.record)->ttab[slot_of(kernel)];
            check(kernel, *row, reinterpret_cast<testing::Kernel<float>>(entry));
        }
    }
};

TEST_F(PortableLanes, HoldEveryLevelOfEveryFunction) {
    for (const AccuracyRow& row : accuracy_rows()) {
        if (row.type != 's' || find_reference(row.function.c_str()) == nullptr) continue;
        for (int slot = 0; slot < kSlots; ++slot) {
            const auto count = std::count_if(tools::kernels().begin(), tools::kernels().end(), [&](const Kernel& k) {
                return k.record == row.name() && slot_of(k) == slot;
            });
            EXPECT_EQ(count, row.shared[slot] ? 0 : 1) << row.name() << " " << kLevels[slot];
        }
    }
}

// Under IGNORE rare lanes go to the scalar path; without reports they keep what the vector code gave them: Inf, NaN,
// overflow, denormal results.
TEST_F(PortableLanes, GiveTheKernelsResults) {
    for (const uint32_t errors : {ARQ_ERRMODE_IGNORE, ARQ_ERRMODE_NOERR}) {
        SCOPED_TRACE(errors);
        _arqSetMode(errors | ARQ_DENORMALS_KEEP);
        for_each_kernel([](const Kernel& kernel, const AccuracyRow& row, testing::Kernel<float> library) {
            const std::vector<float> x = arguments(row);
            const auto n = static_cast<int32_t>(x.size());
            std::vector<float> y(x.size()), expected(x.size());
            std::vector<uint8_t> statuses(x.size());
            tools::ScalarResults scalar(x.size());
            tools::run_kernel(kernel, n, x.data(), y.data(), statuses.data(), scalar);
            library(n, x.data(), expected.data());
            expect_same(x, y, expected);
        });
    }
}

TEST_F(PortableLanes, GiveTheKernelsStatuses) {
    _arqSetMode(ARQ_ERRMODE_IGNORE | ARQ_DENORMALS_KEEP);
    for_each_kernel([](const Kernel& kernel, const AccuracyRow& row, testing::Kernel<float> library) {
        for (const float x : landmarks(row)) {
            float y, expected;
            uint8_t status;
            tools::ScalarResults scalar(1);
            tools::run_kernel(kernel, 1, &x, &y, &status, scalar);
            _arqClearErrStatus();
            library(1, &x, &expected);
            EXPECT_EQ(status, _arqGetErrStatus()) << std::hexfloat << x;
        }
    });
}

// The sweep's claim for all processors rests on this.
TEST(Reciprocals, ThoseOfTheSweepEncloseTheProcessors) {
    std::mt19937 random(11);
    for (int i = 0; i < 2000; ++i) {
        alignas(32) float x[8], low[8], nearest[8], high[8], processor[8];
        for (float& m : x) m = std::bit_cast<float>(0x3F800000u | static_cast<uint32_t>(random() >> 9));
        const __m256 m = _mm256_load_ps(x);
        _mm256_store_ps(low, portable::extreme_reciprocal<-1>(m));
        _mm256_store_ps(nearest, portable::nearest_reciprocal(m));
        _mm256_store_ps(high, portable::extreme_reciprocal<1>(m));
        _mm256_store_ps(processor, processor_reciprocal(m));
        for (int lane = 0; lane < 8; ++lane) {
            const double exact = 1 / static_cast<double>(x[lane]);
            EXPECT_LT(static_cast<double>(low[lane]), exact * (1 - 0x1p-14)) << x[lane];
            EXPECT_GT(static_cast<double>(high[lane]), exact * (1 + 0x1p-14)) << x[lane];
            EXPECT_TRUE(low[lane] < processor[lane] && processor[lane] < high[lane]) << x[lane];
            EXPECT_TRUE(nearest[lane] == processor[lane] || emulator::host_has_avx512()) << x[lane];
        }
    }
}

}  // namespace
}  // namespace nax::testing
