#include <cstdio>
#include <limits>

#include "examples/tour/csv.h"
#include "examples/tour/tour.h"
#include "nax/error.h"
#include "nax/mode.h"
#include "nax/vmath.h"

namespace {

using Column = std::vector<double>;

// ln(stations - 10) has a pole where exactly ten stations saw the quake: keep the element out of later sums.
int32_t mark_missing(arq_error_record* record) {
    std::printf("  reported: %s element %d, argument %g, status %d -> marked as missing\n", record->name, record->index,
                record->a1, record->status);
    record->r1 = std::numeric_limits<double>::quiet_NaN();
    return 0;
}

// Energy in joules by Gutenberg and Richter: log10 E = 1.5 M + 4.8.
Column radiated_energy(const Column& magnitude) {
    const auto n = static_cast<int32_t>(magnitude.size());
    Column slope(magnitude.size(), 1.5), offset(magnitude.size(), 4.8), energy(magnitude.size());
    _arqdMul(n, magnitude.data(), slope.data(), energy.data());
    _arqdAdd(n, energy.data(), offset.data(), energy.data());
    _arqdExp10(n, energy.data(), energy.data());
    return energy;
}

}  // namespace

bool tour::show_vectors(const char* data_directory) {
    const Csv quakes = read_csv(std::string(data_directory) + "/quakes_fiji.csv");
    if (quakes.rows() == 0 || quakes.columns.size() < 5) return false;
    const Column &depth = quakes.columns[2], &magnitude = quakes.columns[3], &stations = quakes.columns[4];
    const auto n = static_cast<int32_t>(quakes.rows());

    const Column energy = radiated_energy(magnitude);
    Column zone(depth.size()), hundred(depth.size(), 100.0), log_energy(depth.size());
    _arqdFmod(n, depth.data(), hundred.data(), zone.data());
    _arqdLog10(n, energy.data(), log_energy.data());
    std::printf("%d earthquakes near Fiji since 1964\n  %8s %6s %14s %12s %14s\n", n, "depth", "mag", "energy / J",
                "log10 E", "depth mod 100");
    for (size_t i = 0; i < 5; ++i)
        std::printf("  %8.0f %6.1f %14.4e %12.4f %14.0f\n", depth[i], magnitude[i], energy[i], log_energy[i], zone[i]);

    // An element error: the smallest events in the catalogue were seen by exactly ten stations.
    Column ten(stations.size(), 10.0), excess(stations.size()), log_excess(stations.size());
    _arqdSub(n, stations.data(), ten.data(), excess.data());
    const int32_t shown = 40;  // the first forty rows hold the first such event
    const arq_error_callback previous = _arqSetErrorCallBack(mark_missing);
    _arqdLn(shown, excess.data(), log_excess.data());
    _arqSetErrorCallBack(previous);
    std::printf("  status of the thread after the call: %d\n", _arqClearErrStatus());
    return true;
}
