// Positioning of quasi-random streams.
#include "rng/quasi/quasi_state.h"

#include <algorithm>
#include <array>

namespace nax::rng {

void start_points(const uint32_t* rows, int dimension, uint32_t* bit_rows, const PointSet& points) {
    for (int bit = 0; bit < kDirectionBits; ++bit) {
        for (int d = 0; d < dimension; ++d) bit_rows[bit * points.bit_stride + d] = rows[d * kDirectionRow + bit];
    }
    set_point(points, dimension, 1);
}

void set_point(const PointSet& points, int dimension, uint32_t counter) {
    if (!points.by_bit()) {
        for (int d = 0; d < dimension; ++d) points.coordinate(d) = 0;
        for (uint32_t code = gray_code(counter); code != 0; code &= code - 1) {
            add_directions(points, dimension, std::countr_zero(code));
        }
        return;
    }
    for (int d = 0; d < dimension; d += 16) {
        uint32_t sum[16] = {};
        for (uint32_t code = gray_code(counter); code != 0; code &= code - 1) {
            add_row(sum, points.directions + static_cast<long>(std::countr_zero(code)) * points.bit_stride + d, 16);
        }
        std::copy_n(sum, 16, points.x + d);
    }
}

// The point in x is the first one of which the stream delivers only coordinate k, also when a part of it has been delivered.
int select_coordinate(QuasiPlace& place, uint32_t k, int nstreams) {
    if (nstreams != kSelectOneCoordinate || k >= place.dimension) return STO_STATUS_NO_LEAPFROG;
    const int32_t chosen = static_cast<int32_t>(k);
    if (chosen == place.selected) return STO_STATUS_OK;
    place.selected = chosen;
    place.position = 0;
    return STO_STATUS_OK;
}

// nskip counts numbers: those left of the point begun, then whole points; what remains begins a new one.
int skip_points(QuasiPlace& place, const PointSet& points, uint64_t nskip) {
    const uint32_t width = place.selected >= 0 ? 1 : place.dimension;
    const uint64_t passed = nskip / width;
    if (passed >= kLastCounter || place.counter + passed >= kLastCounter) return STO_STATUS_NO_SKIPAHEAD;
    if (nskip < place.position) {
        place.position -= static_cast<uint32_t>(nskip);
        return STO_STATUS_OK;
    }
    const uint64_t numbers = nskip - place.position;
    const uint64_t steps = numbers / width + (place.position != 0 ? 1 : 0);
    const uint32_t begun = static_cast<uint32_t>(numbers % width);
    place.counter += static_cast<uint32_t>(steps);
    place.position = begun != 0 ? width - begun : 0;
    set_point(points, static_cast<int>(place.dimension), place.counter);
    return STO_STATUS_OK;
}

namespace {

// Jobs of less than `dimension` coordinates and less than `points` points stay on one thread.
struct Threshold {
    int dimension;
    int64_t points;
};
constexpr std::array<Threshold, 7> kThresholds = {{{250, 0x20000},
                                                   {500, 8192},
                                                   {1000, 256},
                                                   {2000, 64},
                                                   {4000, 32},
                                                   {16000, 8},
                                                   {32000, 2}}};

}  // namespace

bool worth_threading(int64_t points, int dimension) {
    if (dimension <= 32) return false;
    for (const Threshold& limit : kThresholds) {
        if (points < limit.points && dimension < limit.dimension) return false;
    }
    return true;
}

}  // namespace nax::rng
