// Measures every row of accuracy.def and writes docs/accuracy.md with one error plot per function.
//
//   accuracy OUTPUT_FOLDER [POINTS [FLOAT_STRIDE]]
//
// POINTS random points per interval (default 20000). With FLOAT_STRIDE every such float of the single records is met as
// well; 1 is the exhaustive sweep. Ends with status 1 if a bound is exceeded.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <map>
#include <sstream>

#include "tools/interpreter/emulator.h"
#include "tools/accuracy/plot.h"

using namespace nax::testing;

namespace {

struct Measured {
    const AccuracyRow* row;
    int slot;
    ErrorStats stats;
    bool all_floats;
};

std::string number(double x, int digits) {
    std::ostringstream text;
    text << std::setprecision(digits) << x;
    return text.str();
}

Measured measure_row(const AccuracyRow& row, int slot, int points, uint32_t stride, nax::tools::Plot& plot) {
    const Record& record = *find_record(row.name());
    Measured measured = {&row, slot, {}, false};
    const auto into_plot = [&](double x, double error) { plot.add(slot, x, error); };
    uint64_t seed = 1;
    for (const Interval& interval : row.intervals)
        measure_interval(record, slot, interval, points, seed++, measured.stats, into_plot);
    if (record.single() && stride != 0) {
        for (const Interval& interval : row.intervals)
            measure_floats(record, slot, interval, stride, measured.stats, into_plot);
        measured.all_floats = stride == 1;
    }
    return measured;
}

void write_header(std::ostream& out, int points, uint32_t stride) {
    out << "# Accuracy\n\n"
           "Written by `./run accuracy`. Errors in units in the last place (ulp) of the exact result, in double "
           "precision "
           "against MPFR, in single against double-precision values; `bits` is the precision less log2 of the largest "
           "error. Bounds and intervals stand in `tests/vmath/accuracy_*.def`, "
           "intervals cut where an algorithm changes and with both ends included. What has met every float: [every-float.md](every-float.md).\n\n"
        << points << " random points per interval, half uniform over the interval, half over its representable numbers";
    if (stride == 1)
        out << "; for the single-precision records every float of the intervals";
    else if (stride > 1)
        out << "; for the single-precision records also every " << stride << "th float of the intervals";
    out << ".\n\n| record | level | bound | largest error | at | bits | mean | points "
           "|\n|---|---|---|---|---|---|---|---|\n";
}

void write_row(std::ostream& out, const Measured& m) {
    const int precision = m.row->type == 's' ? 24 : 53;
    out << "| " << m.row->name() << " | " << kLevels[m.slot] << " | " << number(m.row->bounds[m.slot], 3) << " | "
        << number(m.stats.max, 4) << " | " << number(m.stats.worst, m.row->type == 's' ? 9 : 17) << " | "
        << number(precision - std::max(0.0, std::log2(m.stats.max)), 4) << " | " << number(m.stats.mean(), 3) << " | "
        << m.stats.count << (m.all_floats ? ", every float" : "") << " |\n";
}

}  // namespace

int main(int argc, char** argv) {
    nax::emulator::install_if_needed();
    if (argc < 2) {
        std::fprintf(stderr, "usage: accuracy OUTPUT_FOLDER [POINTS [FLOAT_STRIDE]]\n");
        return 2;
    }
    const std::string folder = argv[1];
    const int points = argc > 2 ? std::max(std::atoi(argv[2]), 100) : 20000;
    const auto stride = static_cast<uint32_t>(argc > 3 ? std::max(std::atoi(argv[3]), 0) : 0);
    std::ofstream out(folder + "/accuracy.md");
    write_header(out, points, stride);
    bool within = true;
    std::ostringstream plots;
    for (const AccuracyRow& row : accuracy_rows()) {
        if (find_record(row.name()) == nullptr) continue;  // family not linked
        nax::tools::Plot plot(row);
        for (const int slot : {1, 0, 2}) {
            if (row.shared[slot]) continue;
            const Measured measured = measure_row(row, slot, points, stride, plot);
            write_row(out, measured);
            const bool good = measured.stats.max <= row.bounds[slot];
            within &= good;
            std::printf("%-8s %s  max %-10.5g mean %-10.4g bound %-8.4g %s\n", row.name().c_str(), kLevels[slot],
                        measured.stats.max, measured.stats.mean(), row.bounds[slot], good ? "" : "EXCEEDED");
            std::fflush(stdout);
        }
        std::ofstream(folder + "/plots/" + row.name() + ".svg") << plot.svg();
        plots << "![" << row.name() << "](plots/" << row.name() << ".svg)\n";
    }
    out << "\nLargest error per stretch of arguments, both axes logarithmic:\n\n" << plots.str();
    return within ? 0 : 1;
}
