// Meets every float with every kernel of one float argument, in the flavour of the library that suits the processor.
//
//   every_float [--threads N] [--stride N] [--write FILE] [RECORD...]
//
// RECORD as in sExp; all of them by default. The logarithms start from a 14-bit reciprocal and are met with three: their
// own, and the two that lie just outside what a processor may deliver. With --stride N only every N-th block of 2048
// neighbouring floats. --write also writes the table as a page, anew after each record; records that are not met keep
// their rows. Ends with status 1 if a bound of accuracy.def is exceeded or a special value or status is wrong.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <map>
#include <optional>
#include <sstream>
#include <thread>

#include "tests/lib/accuracy.h"
#include "tools/every_float/sweep.h"

using namespace nax;
using namespace nax::tools;
using testing::AccuracyRow;

namespace {

struct Options {
    unsigned threads = std::max(1u, std::thread::hardware_concurrency());
    uint32_t stride = 1;
    const char* page = nullptr;
    std::vector<std::string> records;
};

// The runs of one kernel: one, or one for each reciprocal.
struct Row {
    std::string record, level;
    double bound;
    const Tally* nearest;
    const Tally* extremes[2] = {nullptr, nullptr};
    uint64_t finite_results;
    uint64_t outside;

    template <class F>
    void for_each(F f) const {
        f(*nearest);
        for (const Tally* t : extremes)
            if (t != nullptr) f(*t);
    }
    // The worst case over the reciprocals.
    Case worst() const {
        Case c = {0, 0, 0};
        for_each([&](const Tally& t) {
            if (!t.worst.empty() && t.worst[0].error > c.error) c = t.worst[0];
        });
        return c;
    }
    bool good() const {
        bool good = worst().error <= bound && outside == 0;
        for_each([&](const Tally& t) { good &= t.wrong_values == 0 && t.wrong_statuses == 0; });
        return good;
    }
};

std::string number(double x, int digits) {
    std::ostringstream text;
    text << std::setprecision(digits) << x;
    return text.str();
}
std::string hexadecimal(float x) {
    char text[40];
    std::snprintf(text, sizeof text, "%a", static_cast<double>(x));
    return text;
}
double error_of(const Tally& t) { return t.worst.empty() ? 0 : t.worst[0].error; }
std::string percent_not_nearest(const Row& row) {
    return number(100.0 * static_cast<double>(row.nearest->not_nearest) / static_cast<double>(row.finite_results), 3);
}
std::string mean(const Row& row) { return number(row.nearest->sum / static_cast<double>(row.finite_results), 3); }

void print(const Row& row) {
    const Case worst = row.worst();
    std::printf("%-7s %s  %-8s ulp at %-15.9g (%a), bound %-5s mean %-8s not nearest %s%%", row.record.c_str(),
                row.level.c_str(), number(worst.error, 5).c_str(), static_cast<double>(worst.x),
                static_cast<double>(worst.x), number(row.bound, 4).c_str(), mean(row).c_str(),
                percent_not_nearest(row).c_str());
    if (row.extremes[0] != nullptr)
        std::printf(", by reciprocal %s %s %s", number(error_of(*row.extremes[0]), 5).c_str(),
                    number(error_of(*row.nearest), 5).c_str(), number(error_of(*row.extremes[1]), 5).c_str());
    std::printf("%s\n", row.good() ? "" : "  WRONG");
    if (!(worst.error <= row.bound)) std::printf("    the bound is exceeded\n");
    if (row.outside != 0)
        std::printf("    %llu results lie between those of the extreme reciprocals: other processors are not covered\n",
                    static_cast<unsigned long long>(row.outside));
    row.for_each([&](const Tally& t) {
        if (t.wrong_values != 0)
            std::printf("    %llu wrong special values or signs, one at %a\n",
                        static_cast<unsigned long long>(t.wrong_values), static_cast<double>(t.wrong_value_at));
        if (t.wrong_statuses != 0)
            std::printf("    %llu wrong statuses, one at %a\n", static_cast<unsigned long long>(t.wrong_statuses),
                        static_cast<double>(t.wrong_status_at));
    });
    std::fflush(stdout);
}

void write_head(std::ostream& out) {
    out << R"(# Every float

Written by `./run sweep`: each kernel of this table, all of single-precision functions of one argument, has met all 2^32
arguments.

Errors are in units in the last place (ulp) of the exact result. They are found against the double-precision functions
of the C library; the largest of each kernel are settled with MPFR. Mean, and share of results that are not the float
nearest to the exact one, are over the arguments with a finite result. Special values with their signs and statuses are
right at every argument, unless the last column says otherwise. Bounds stand in `tests/vmath/accuracy.def`.

The low bits of the 14-bit reciprocal differ between makers of processors. So the logarithms, which start from one, meet every
float three times: with this processor's reciprocal, and with one just below and one just above what a processor may deliver.
A kernel keeps only the first bits, rounded, and these are monotone: any processor's reciprocal leads to one of the two
results of the outer ones, which the sweep checks with its own. The largest error is that over all three and holds on
every processor; mean and share are those of the first.

| record | level | bound | largest error | at | | mean | not nearest, % | low, own, high reciprocal | |
|---|---|---|---|---|---|---|---|---|---|
)";
}

void write(std::ostream& out, const Row& row) {
    const Case worst = row.worst();
    out << "| " << row.record << " | " << row.level << " | " << number(row.bound, 4) << " | " << number(worst.error, 5)
        << " | " << number(static_cast<double>(worst.x), 9) << " | " << hexadecimal(worst.x) << " | " << mean(row)
        << " | " << percent_not_nearest(row) << " | ";
    if (row.extremes[0] != nullptr)
        out << number(error_of(*row.extremes[0]), 5) << ", " << number(error_of(*row.nearest), 5) << ", "
            << number(error_of(*row.extremes[1]), 5);
    out << " | " << (row.good() ? "" : "WRONG") << " |\n";
}

// The table as a page. Records that are not met keep the rows of the page that is there.
class Page {
public:
    explicit Page(const char* path) : path_(path) {
        std::ifstream in(path);
        for (std::string line; std::getline(in, line);)
            for (const AccuracyRow& row : testing::accuracy_rows())
                if (line.rfind("| " + row.name() + " |", 0) == 0) rows_[row.name()] += line + "\n";
    }
    void replace(const std::string& record, const std::vector<Row>& rows) {
        std::ostringstream text;
        for (const Row& row : rows) write(text, row);
        rows_[record] = text.str();
        std::ofstream out(path_);
        write_head(out);
        for (const AccuracyRow& row : testing::accuracy_rows()) out << rows_[row.name()];
    }

private:
    const char* path_;
    std::map<std::string, std::string> rows_;
};

Options parse(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const auto value = [&](const char* name) { return std::strcmp(argv[i], name) == 0 && i + 1 < argc; };
        if (value("--threads"))
            options.threads = static_cast<unsigned>(std::max(1, std::atoi(argv[++i])));
        else if (value("--stride"))
            options.stride = static_cast<uint32_t>(std::max(1, std::atoi(argv[++i])));
        else if (value("--write"))
            options.page = argv[++i];
        else if (argv[i][0] != '-')
            options.records.emplace_back(argv[i]);
        else {
            std::fprintf(stderr, "usage: every_float [--threads N] [--stride N] [--write FILE] [RECORD...]\n");
            std::exit(2);
        }
    }
    if (options.page != nullptr && options.stride != 1) {
        std::fprintf(stderr, "every_float: the page is about all floats\n");
        std::exit(2);
    }
    return options;
}

// The kernels of a record in the order HA, LA, EP, and their runs.
Sweep planned(const std::string& record) {
    Sweep plan;
    for (const char* level : {"HA", "LA", "EP"})
        for (const Kernel& kernel : kernels())
            if (kernel.record == record && kernel.level == level) plan.runs.push_back({&kernel});
    return plan;
}

std::vector<Row> rows_of(const AccuracyRow& accuracy, const Sweep& sweep) {
    std::vector<Row> rows;
    for (size_t r = 0; r < sweep.runs.size(); ++r) {
        const Kernel& kernel = *sweep.runs[r].kernel;
        const auto* const level = std::find(testing::kLevels, testing::kLevels + testing::kSlots, kernel.level);
        Row row = {kernel.record,        kernel.level,       accuracy.bounds[level - testing::kLevels],
                   &sweep.runs[r].tally, {nullptr, nullptr}, sweep.finite_results,
                   sweep.runs[r].outside};
        if (r + 2 < sweep.runs.size() && sweep.runs[r + 1].kernel->reciprocal == Reciprocal::kLow) {
            row.extremes[0] = &sweep.runs[++r].tally;
            row.extremes[1] = &sweep.runs[++r].tally;
        }
        rows.push_back(row);
    }
    return rows;
}

bool wanted(const Options& options, const std::string& record) {
    return options.records.empty() ||
           std::find(options.records.begin(), options.records.end(), record) != options.records.end();
}

}  // namespace

int main(int argc, char** argv) {
    const Options options = parse(argc, argv);
    std::optional<Page> page;
    if (options.page != nullptr) page.emplace(options.page);
    bool good = true;
    size_t met = 0;
    for (const AccuracyRow& accuracy : testing::accuracy_rows()) {
        if (accuracy.type != 's' || !wanted(options, accuracy.name())) continue;
        Sweep sweep = planned(accuracy.name());
        if (sweep.runs.empty()) continue;  // a function without a kernel here
        const auto start = std::chrono::steady_clock::now();
        nax::tools::sweep(*testing::find_reference(accuracy.function.c_str()), options.stride, options.threads, sweep);
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        std::printf("%s: %llu arguments, %.0f s\n", accuracy.name().c_str(),
                    static_cast<unsigned long long>(sweep.arguments), seconds.count());
        const std::vector<Row> rows = rows_of(accuracy, sweep);
        for (const Row& row : rows) {
            print(row);
            good &= row.good();
        }
        if (page) page->replace(accuracy.name(), rows);
        ++met;
    }
    if (met == 0) {
        std::fprintf(stderr, "every_float: no such record\n");
        return 2;
    }
    return good ? 0 : 1;
}
