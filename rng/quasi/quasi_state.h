// What SOBOL and NIEDERREITER share: the payload, and the view of a point set that the loops work on.
#pragma once

#include "rng/quasi/gray_code.h"
#include "rng/stream.h"

namespace nax::rng {

inline constexpr int kDirectionBits = 32;
inline constexpr int kDirectionRow = kDirectionBits + 1;  // words of a row by dimension; the last one is spare
inline constexpr int kSelectOneCoordinate = 0x7FFFFFFF;   // number of streams that stands for it
inline constexpr uint64_t kLastCounter = 0xFFFFFFFF;

// Place of a stream in its sequence of points.
struct QuasiPlace {
    uint32_t counter;    // index of the point in x, from 1 on: point 0 is all zero and left out
    uint32_t dimension;  // coordinates of a point
    int32_t selected;    // -1, or the one coordinate that the stream delivers
    uint32_t position;   // coordinates of the point in x still to deliver; 0 when it is untouched
    uint32_t reserved[8];
};

template <int point_words, int dimensions, int padding_words>
struct QuasiState {
    static constexpr int kPointWords = point_words;
    static constexpr int kDimensions = dimensions;

    QuasiPlace place;
    uint32_t x[point_words];                              // the current point
    uint32_t directions[dimensions][kDirectionRow];       // direction numbers by dimension
    uint32_t padding[padding_words];                      // the rows below start on a cache line
    uint32_t bit_rows[kDirectionBits][point_words];       // the same numbers by bit
};

using SobolState = QuasiState<48, 40, 8>;
using NiederreiterState = QuasiState<320, 318, 2>;
static_assert(kStreamStateSize<SobolState> == 11712 && kStreamStateSize<NiederreiterState> == 84288);
static_assert(offsetof(SobolState, x) == 48 && offsetof(SobolState, directions) == 240);
static_assert((offsetof(SobolState, bit_rows) + kHeaderSize) % 64 == 0 &&
              (offsetof(NiederreiterState, bit_rows) + kHeaderSize) % 64 == 0);

// Where the current point and the direction numbers of a stream stand. By bit, coordinates are next to each other; by
// dimension, they are kDirectionRow words apart, and the point fills the spare word of each row.
struct PointSet {
    uint32_t* x;
    const uint32_t* directions;
    int bit_stride;
    int dimension_stride;  // of x and of directions

    uint32_t& coordinate(int d) const { return x[static_cast<long>(d) * dimension_stride]; }
    uint32_t direction(int bit, int d) const {
        return directions[static_cast<long>(bit) * bit_stride + static_cast<long>(d) * dimension_stride];
    }
    bool by_bit() const { return dimension_stride == 1; }
    PointSet from(int d) const {
        const long shift = static_cast<long>(d) * dimension_stride;
        return {x + shift, directions + shift, bit_stride, dimension_stride};
    }
};

template <class State>
PointSet default_points(State& state) {
    return {state.x, state.bit_rows[0], State::kPointWords, 1};
}
inline PointSet points_by_dimension(uint32_t* rows) { return {rows + kDirectionBits, rows, 1, kDirectionRow}; }

// A block of the current point and the rows by bit, each of so many words.
inline int work_stride(int dimension) { return (dimension + 15) / 16 * 16; }
inline uint64_t work_words(uint64_t dimension) { return (dimension + 15) / 16 * 16 * (kDirectionBits + 1); }
inline PointSet points_in_work(uint32_t* work, int dimension) {
    return {work, work + work_stride(dimension), work_stride(dimension), 1};
}

// Turns rows by dimension into the rows by bit of `points` and sets the first point.
void start_points(const uint32_t* rows, int dimension, uint32_t* bit_rows, const PointSet& points);

// Adds a row of direction numbers to the coordinates that stand next to each other. Both are whole groups of 16 words, a
// constant number that the compiler makes vectors of.
inline void add_row(uint32_t* __restrict x, const uint32_t* __restrict row, int dimension) {
    for (int d = 0; d < dimension; d += 16) {
        for (int i = 0; i < 16; ++i) x[d + i] ^= row[d + i];
    }
}

// From a point to the one whose Gray code differs in that bit.
inline void add_directions(const PointSet& points, int dimension, int bit) {
    if (points.by_bit()) {
        return add_row(points.x, points.directions + static_cast<long>(bit) * points.bit_stride, dimension);
    }
    for (int d = 0; d < dimension; ++d) points.coordinate(d) ^= points.direction(bit, d);
}

// From point `counter` to the next one.
inline void step_point(const PointSet& points, int dimension, uint32_t counter) {
    add_directions(points, dimension, gray_step(counter));
}

// Sets the point of a counter, whatever the present one is.
void set_point(const PointSet& points, int dimension, uint32_t counter);

// Methods 1 and 2 of the generators' InitStream.
int select_coordinate(QuasiPlace& place, uint32_t k, int nstreams);
int skip_points(QuasiPlace& place, const PointSet& points, uint64_t nskip);

// Whether a job is worth several threads.
bool worth_threading(int64_t points, int dimension);

}  // namespace nax::rng
