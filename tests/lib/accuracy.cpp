#include "tests/lib/accuracy.h"

#include <cmath>

#include "nax/mode.h"

namespace nax::testing {
namespace {

std::vector<AccuracyRow> make_rows() {
    std::vector<AccuracyRow> rows;
    const auto bound = [&](char type, const char* function, double la, double ha, double ep) {
        const bool shares_la = std::isnan(la), shares_ep = std::isnan(ep);
        rows.push_back(
            {type, function, {shares_la ? ha : la, ha, shares_ep ? ha : ep}, {shares_la, false, shares_ep}, {}});
        const bool one_la = std::isnan(la), one_ep = std::isnan(ep);
        rows.push_back({type, function, {one_la ? ha : la, ha, one_ep ? ha : ep}, {one_la, false, one_ep}, {}});
    };
    const auto interval = [&](double low, double high) { rows.back().intervals.push_back({low, high}); };
#define BOUND(type, function, la, ha, ep) bound(#type[0], #function, la, ha, ep);
#define INTERVAL(type, function, low, high) interval(low, high);
#include "tests/vmath/accuracy.def"
    return rows;
}

// Error mode "status only" for a measurement, as it was before afterwards.
class QuietReports {
public:
    QuietReports() : mode_(_arqSetMode(ARQ_ERRMODE_IGNORE)) {}
    ~QuietReports() { _arqSetMode(mode_); }
    QuietReports(const QuietReports&) = delete;
    QuietReports& operator=(const QuietReports&) = delete;

private:
    uint32_t mode_;
};

template <class T>
Kernel<T> kernel_of(const Record& record, int slot) {
    return reinterpret_cast<Kernel<T>>(record.ttab[slot]);
}

constexpr int kChunk = 1 << 14;

template <class T>
void measure_sample(const Record& record, int slot, const Interval& interval, int count, uint64_t seed,
                    ErrorStats& stats, const Observer& observer) {
    std::vector<T> points(static_cast<size_t>(count));
    sample(static_cast<T>(interval.low), static_cast<T>(interval.high), seed, points.data(), count);
    for (int i = 0; i < count; i += kChunk)
        measure(kernel_of<T>(record, slot), *find_reference(record.row->function), points.data() + i,
                std::min(kChunk, count - i), stats, observer);
}

}  // namespace

std::span<const AccuracyRow> accuracy_rows() {
    static const std::vector<AccuracyRow> rows = make_rows();
    return rows;
}

const AccuracyRow* find_accuracy_row(const std::string& record_name) {
    for (const AccuracyRow& row : accuracy_rows())
        if (row.name() == record_name) return &row;
    return nullptr;
}

void measure_interval(const Record& record, int slot, const Interval& interval, int count, uint64_t seed,
                      ErrorStats& stats, const Observer& observer) {
    const QuietReports quiet;
    if (record.single())
        measure_sample<float>(record, slot, interval, count, seed, stats, observer);
    else
        measure_sample<double>(record, slot, interval, count, seed, stats, observer);
}

void measure_floats(const Record& record, int slot, const Interval& interval, uint32_t stride, ErrorStats& stats,
                    const Observer& observer) {
    const QuietReports quiet;
    std::vector<float> points(kChunk);
    const auto low = static_cast<float>(interval.low), high = static_cast<float>(interval.high);
    for (uint64_t first = 0;; first += kChunk) {
        const int found = enumerate_floats(low, high, first, stride, points.data(), kChunk);
        if (found == 0) return;
        measure(kernel_of<float>(record, slot), *find_reference(record.row->function), points.data(), found, stats,
                observer);
    }
}

}  // namespace nax::testing
