// Accuracy by the rows of accuracy.def.
#include "tests/lib/accuracy.h"

#include <gtest/gtest.h>

#include "tools/interpreter/emulator.h"

namespace nax::testing {
namespace {

std::string describe(const AccuracyRow& row, int slot, const Interval& interval, const ErrorStats& stats) {
    char text[160];
    std::snprintf(text, sizeof text, "%s %s on [%.9g, %.9g]: %.4g ulp at %a", row.name().c_str(), kLevels[slot],
                  interval.low, interval.high, stats.max, stats.worst);
    return text;
}

// A level that misses what its name promises is wrong whatever its row says.
double promised(const AccuracyRow& row, int slot) {
    const bool single = row.type == 's';
    constexpr double ha = 1.0;
    if (slot == 1) return ha;
    if (slot == 0) return single ? 0x1p3 : 0x1p3;
    return single ? 0x1p13 : 0x1p27;
}

void check(const AccuracyRow& row, int slot, const Interval& interval, const ErrorStats& stats) {
    EXPECT_LE(stats.max, row.bounds[slot]) << describe(row, slot, interval, stats);
    EXPECT_GT(stats.count, 0u);
}

// Every level of its own, every interval; `types` are the type letters looked at.
template <class Measure>
void for_each_interval(const std::string& types, Measure measure) {
    for (const AccuracyRow& row : accuracy_rows()) {
        const Record* const record = find_record(row.name());
        if (record == nullptr || types.find(row.type) == std::string::npos) continue;  // family not linked
        for (int slot = 0; slot < kSlots; ++slot) {
            if (row.shared[slot]) continue;
            for (const Interval& interval : row.intervals) {
                ErrorStats stats;
                measure(*record, slot, interval, stats);
                check(row, slot, interval, stats);
            }
        }
    }
}

TEST(Accuracy, EveryFunctionWithAReferenceHasRowsThatKeepItsLevels) {
    for (const Record& record : all_records()) {
        if (record.strided || record.complex() || find_reference(record.row->function) == nullptr) continue;
        const AccuracyRow* const row = find_accuracy_row(record.name());
        ASSERT_NE(row, nullptr) << record.name();
        ASSERT_FALSE(row->intervals.empty()) << record.name();
        for (int slot = 0; slot < kSlots; ++slot) {
            EXPECT_LE(row->bounds[slot], promised(*row, slot)) << record.name() << " " << kLevels[slot];
            EXPECT_EQ(row->shared[slot], slot != 1 && record.ttab[slot] == record.ttab[1]) << record.name();
        }
    }
}

TEST(Accuracy, RandomPointsAndThresholds) {
    for_each_interval("sd", [](const Record& record, int slot, const Interval& interval, ErrorStats& stats) {
        measure_interval(record, slot, interval, 2000, 1, stats);
    });
}

TEST(AccuracyFull, DenseRandomPoints) {
    for_each_interval("sd", [](const Record& record, int slot, const Interval& interval, ErrorStats& stats) {
        measure_interval(record, slot, interval, 200000, 2, stats);
    });
}

// A prime stride that meets every exponent and, over the levels, all classes of low bits.
TEST(AccuracyFull, FloatsSpreadOverTheirIntervals) {
    for_each_interval("s", [](const Record& record, int slot, const Interval& interval, ErrorStats& stats) {
        measure_floats(record, slot, interval, 1009, stats);
    });
}

// The interpreter would take days; there the sweep stands in (tools/every_float).
TEST(AccuracyNightly, AllFloats) {
    if (!emulator::host_has_avx512()) GTEST_SKIP() << "no AVX-512: left to sweep.every_float";
    for_each_interval("s", [](const Record& record, int slot, const Interval& interval, ErrorStats& stats) {
        measure_floats(record, slot, interval, 1, stats);
    });
}

}  // namespace
}  // namespace nax::testing
