// Measures the error of one record against MPFR.
//
//   ulp RECORD LEVEL                    its intervals of accuracy.def, 100000 points each
//   ulp RECORD LEVEL LOW HIGH [COUNT]   COUNT points of an interval: half uniform, half over the representable numbers
//   ulp RECORD LEVEL LOW HIGH all [STRIDE]   every float of an interval, or every STRIDE-th
//
// RECORD as in sExp, LEVEL HA, LA or EP. Prints maximum, its argument, mean, relative bits and a histogram.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tools/interpreter/emulator.h"
#include "tests/lib/accuracy.h"

using namespace nax::testing;

namespace {

void print(const char* title, const ErrorStats& stats, const Record& record) {
    const int precision = record.single() ? 24 : 53;
    std::printf("%-48s max %.5g ulp at %.17g (%a), %.1f bits, mean %.4f, %llu points\n", title, stats.max, stats.worst,
                stats.worst, precision - std::max(0.0, std::log2(stats.max)), stats.mean(),
                static_cast<unsigned long long>(stats.count));
}

void print_histogram(const ErrorStats& stats) {
    constexpr int groups = 16, group = ErrorStats::bins / groups;
    uint64_t counts[groups] = {}, largest = 1;
    for (int i = 0; i < ErrorStats::bins; ++i) counts[i / group] += stats.histogram[static_cast<size_t>(i)];
    for (const uint64_t count : counts) largest = std::max(largest, count);
    for (int i = 0; i < groups; ++i)
        std::printf("  %5.3f%s %12llu %s\n", (i + 0.0) / groups, i == groups - 1 ? "+" : " ",
                    static_cast<unsigned long long>(counts[i]),
                    std::string(static_cast<size_t>(50 * counts[i] / largest), '#').c_str());
}

int usage() {
    std::fprintf(stderr, "usage: ulp RECORD HA|LA|EP [LOW HIGH [COUNT | all [STRIDE]]]\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    nax::emulator::install_if_needed();
    if (argc != 3 && argc < 5) return usage();
    const Record* const record = find_record(argv[1]);
    const auto level =
        std::find_if(kLevels, kLevels + kSlots, [&](const char* l) { return std::strcmp(l, argv[2]) == 0; });
    if (record == nullptr || level == kLevels + kSlots || find_reference(record->row->function) == nullptr)
        return usage();
    const int slot = static_cast<int>(level - kLevels);

    ErrorStats total;
    if (argc == 3) {
        const AccuracyRow* const row = find_accuracy_row(argv[1]);
        if (row == nullptr) return usage();
        for (const Interval& interval : row->intervals) {
            ErrorStats stats;
            measure_interval(*record, slot, interval, 100000, 1, stats);
            char title[80];
            std::snprintf(title, sizeof title, "[%.10g, %.10g]", interval.low, interval.high);
            print(title, stats, *record);
        }
        return 0;
    }
    const Interval interval = {std::strtod(argv[3], nullptr), std::strtod(argv[4], nullptr)};
    if (argc > 5 && std::strcmp(argv[5], "all") == 0) {
        if (!record->single()) return usage();
        const auto stride = static_cast<uint32_t>(argc > 6 ? std::atoi(argv[6]) : 1);
        measure_floats(*record, slot, interval, std::max(stride, 1u), total);
    } else {
        measure_interval(*record, slot, interval, argc > 5 ? std::max(std::atoi(argv[5]), 1) : 100000, 1, total);
    }
    print((record->name() + " " + argv[2]).c_str(), total, *record);
    print_histogram(total);
    return 0;
}
