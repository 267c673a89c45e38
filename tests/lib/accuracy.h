// The rows of accuracy.def, and measurements of whole records by them.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tests/lib/ulp.h"
#include "tests/lib/vmath_records.h"

namespace nax::testing {

inline constexpr int kSlots = 3;
inline constexpr const char* kLevels[kSlots] = {"LA", "HA", "EP"};

struct Interval {
    double low, high;
};

// One record's row of accuracy.def.
struct AccuracyRow {
    char type;
    std::string function;
    double bounds[kSlots];  // in ulp, by slot; that of HA where a level shares its kernel
    bool shared[kSlots];    // the level has no kernel of its own
    std::vector<Interval> intervals;

    std::string name() const { return type + function; }
};

std::span<const AccuracyRow> accuracy_rows();
const AccuracyRow* find_accuracy_row(const std::string& record_name);

// Measures `count` points of an interval, ends included. Kernels run with the status cell as only report.
void measure_interval(const Record& record, int slot, const Interval& interval, int count, uint64_t seed,
                      ErrorStats& stats, const Observer& observer = nullptr);

// Measures every `stride`-th float of an interval.
void measure_floats(const Record& record, int slot, const Interval& interval, uint32_t stride, ErrorStats& stats,
                    const Observer& observer = nullptr);

}  // namespace nax::testing
