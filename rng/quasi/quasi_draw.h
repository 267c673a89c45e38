// Delivery of quasi-random points, for one vector width. Coordinates are words x; reals are a + s (x >> 1),
// s = (b - a) 2^-31, one fused multiply-add.
//
// Below 16 dimensions a block of 16 points is laid out as it is delivered, and moves as a whole: all its points change by the
// same direction numbers. From 16 dimensions on coordinates are lanes, and 32 of them at a time go through all points.
#pragma once

#include <algorithm>
#include <array>
#include <utility>

#include "rng/generators/to_real.h"
#include "rng/quasi/quasi_generator.h"
#include "service/service.h"

namespace nax::rng {
inline namespace NAX_ISA {

template <class T>
struct QuasiScale;

template <>
struct QuasiScale<double> {
    double origin, scale;

    QuasiScale(double a, double b) : origin(a), scale((b - a) * 0x1p-31) {}
    double operator()(uint32_t x) const { return __builtin_fma(scale, static_cast<double>(x >> 1), origin); }
    PairF64 operator()(U32 x) const { return fused(signed_to_doubles(x >> 1), broadcast(scale), broadcast(origin)); }
};

template <>
struct QuasiScale<float> {
    float origin, scale;

    QuasiScale(float a, float b) : origin(a), scale((b - a) * 0x1p-31f) {}
    float operator()(uint32_t x) const {
        return __builtin_fmaf(scale, static_cast<float>(static_cast<int32_t>(x >> 1)), origin);
    }
    F32 operator()(U32 x) const { return fused(signed_to_float(x >> 1), broadcast(scale), broadcast(origin)); }
};

template <>
struct QuasiScale<uint32_t> : RawWords {};

// What the parallel loop runs for one block of dimensions.
struct ParallelBodies {
    nax_serv_chunk_body aligned, unaligned;
};

// ---- Point by point ----------------------------------------------------------------------------------------------------

template <class Map, class T>
inline void put_coordinates(const PointSet& points, int first, int count, T* r, const Map& map) {
    if (points.by_bit()) return map_words(points.x + first, count, r, map);
    for (int i = 0; i < count; ++i) r[i] = map(points.coordinate(first + i));
}

// One point of coordinates that stand next to each other, and the step to the next.
template <class Map, class T>
NAX_VEC void put_point(const PointSet& points, int dimension, uint32_t counter, T* r, const Map& map) {
    const uint32_t* const row = points.directions + static_cast<long>(gray_step(counter)) * points.bit_stride;
    for (int d = 0; d < dimension; d += kLanes32) {
        const U32 x = load<U32>(points.x + d);
        if (dimension - d < kLanes32) put(r + d, dimension - d, map(x));
        else put(r + d, map(x));
        store(points.x + d, x ^ load<U32>(row + d));
    }
}

// One coordinate of successive points; returns its word in the point after them.
template <class Map, class T>
inline uint32_t put_coordinate(const PointSet& points, int d, uint32_t counter, int64_t count, T* r, const Map& map) {
    uint32_t x = points.coordinate(d);
    for (int64_t i = 0; i < count; ++i) {
        r[i] = map(x);
        x ^= points.direction(gray_step(counter++), d);
    }
    return x;
}

// Points of coordinates that stand next to each other and fill so many vectors, the last of them with `part` (1 and up).
template <int vectors, class Map, class T>
void put_points(const PointSet& points, int dimension, uint32_t counter, int64_t count, T* r, const Map& map) {
    U32 x[vectors];
#pragma GCC unroll 16
    for (int v = 0; v < vectors; ++v) x[v] = load<U32>(points.x + v * kLanes32);
    const int part = dimension - (vectors - 1) * kLanes32;
    for (; count > 0; --count, r += dimension) {
        const uint32_t* const row = points.directions + static_cast<long>(gray_step(counter++)) * points.bit_stride;
#pragma GCC unroll 16
        for (int v = 0; v < vectors; ++v) {
            if (v + 1 < vectors) put(r + v * kLanes32, map(x[v]));
            else put(r + v * kLanes32, part, map(x[v]));
            x[v] ^= load<U32>(row + v * kLanes32);
        }
    }
#pragma GCC unroll 16
    for (int v = 0; v < vectors; ++v) store(points.x + v * kLanes32, x[v]);
}

inline constexpr int kPointDimensions = 64;  // that fit in registers

// Whole points without any preparation.
template <class Map, class T>
void put_single_points(const PointSet& points, int dimension, uint32_t counter, int64_t count, T* r, const Map& map) {
    if (dimension == 1) {
        points.coordinate(0) = put_coordinate(points, 0, counter, count, r, map);
        return;
    }
    if (points.by_bit() && dimension <= kPointDimensions) {
        const auto with = [&]<int vectors>() { put_points<vectors>(points, dimension, counter, count, r, map); };
        switch ((dimension + kLanes32 - 1) / kLanes32) {
            case 1: return with.template operator()<1>();
            case 2: return with.template operator()<2>();
            case 3: return with.template operator()<3>();
            case 4: return with.template operator()<4>();
            case 5: return with.template operator()<kLanes32 == 8 ? 5 : 1>();
            case 6: return with.template operator()<kLanes32 == 8 ? 6 : 1>();
            case 7: return with.template operator()<kLanes32 == 8 ? 7 : 1>();
            default: return with.template operator()<kLanes32 == 8 ? 8 : 1>();
        }
    }
    for (; count > 0; --count, r += dimension) {
        put_coordinates(points, 0, dimension, r, map);
        step_point(points, dimension, counter++);
    }
}

// ---- Few dimensions: lanes across time ---------------------------------------------------------------------------------

inline constexpr int kBlockPoints = 16;
inline constexpr int kWorthwhileBlocks = 3;  // that pay for the pattern
inline constexpr int kLowDimensions = kBlockPoints;  // from here on lanes are coordinates

constexpr int greatest_common_divisor(int a, int b) { return b == 0 ? a : greatest_common_divisor(b, a % b); }

// The layout of a block: vector v holds words v kLanes32 ..., so it begins with coordinate v kLanes32 mod dimension and
// after kPhases vectors the coordinates come round.
template <int dimension>
struct BlockLayout {
    static constexpr int kVectors = kBlockPoints * dimension / kLanes32;
    static constexpr int kPhases = dimension / greatest_common_divisor(dimension, kLanes32);
    static constexpr int kRepeated = (dimension + kPhases * kLanes32 + 2 * kBlockPoints) / kLanes32 * kLanes32;

    // kPhases vectors of `source`, a word for each coordinate and readable up to 16, repeated without end.
    static void repeat(const uint32_t* source, U32* to) {
        alignas(64) uint32_t words[kRepeated];
        const U32 low = load<U32>(source);
        const U32 high = load<U32>(source + (kLanes32 < kBlockPoints ? kLanes32 : 0));
        // Each copy overwrites what the one before wrote beyond its own words.
        for (int place = 0; place < kPhases * kLanes32; place += dimension) {
            store(words + place, low);
            if constexpr (dimension > kLanes32) store(words + place + kLanes32, high);
        }
        for (int v = 0; v < kPhases; ++v) to[v] = load<U32>(words + v * kLanes32);
    }
};

// What a block changes by to become the next one: from c to c + 16 the Gray code changes in bit 3 and in the bit of the step
// from c + 15. Vectors are made when their bit first occurs.
template <int dimension>
class BlockSteps {
    using Layout = BlockLayout<dimension>;
    static constexpr int kFirstBit = 4;

public:
    explicit BlockSteps(const PointSet& points) : points_(points) {}

    const U32* of(int bit) {
        U32* const step = steps_[bit - kFirstBit];
        if ((made_ >> bit & 1) == 0) {
            made_ |= 1u << bit;
            uint32_t change[kBlockPoints] = {};
            for (int d = 0; d < dimension; ++d) {
                change[d] = points_.direction(kFirstBit - 1, d) ^ points_.direction(bit, d);
            }
            Layout::repeat(change, step);
        }
        return step;
    }

private:
    PointSet points_;
    uint32_t made_ = 0;
    U32 steps_[kDirectionBits - kFirstBit][Layout::kPhases];
};

// Point c + j differs from point c, a multiple of 16, by the direction numbers at the Gray code of j.
template <int dimension>
inline void fill_block(const PointSet& points, uint32_t* block) {
    for (int d = 0; d < dimension; ++d) {
        uint32_t x = points.coordinate(d);
        for (uint32_t j = 0; j < kBlockPoints; ++j) {
            block[static_cast<int>(j) * dimension + d] = x;
            x ^= points.direction(gray_step(j), d);
        }
    }
}

// Blocks of 16 points from a counter that is a multiple of 16; x is left at the point after them.
template <int dimension, class Map, class T>
inline void put_blocks(const PointSet& points, uint32_t counter, int64_t blocks, T* r, const Map& map) {
    using Layout = BlockLayout<dimension>;
    alignas(64) uint32_t block[kBlockPoints * dimension];
    fill_block<dimension>(points, block);
    U32 x[Layout::kVectors];
    for (int v = 0; v < Layout::kVectors; ++v) x[v] = load<U32>(block + v * kLanes32);
    BlockSteps<dimension> steps(points);
    for (; blocks > 0; --blocks, counter += kBlockPoints, r += kBlockPoints * dimension) {
        const U32* const step = steps.of(gray_step(counter + kBlockPoints - 1));
#pragma GCC unroll 32
        for (int v = 0; v < Layout::kVectors; ++v) {
            put(r + v * kLanes32, map(x[v]));
            x[v] ^= step[v % Layout::kPhases];
        }
    }
    for (int v = 0; v < Layout::kVectors; ++v) store(block + v * kLanes32, x[v]);
    for (int d = 0; d < dimension; ++d) points.coordinate(d) = block[d];
}

// Whole points by blocks where there are enough of them, one by one before and after.
template <int dimension, class Map, class T>
void _QrngMainDim(const PointSet& points, int, uint32_t counter, int64_t count, T* r, const Map& map,
                  const ParallelBodies&) {
    const auto single = [&](int64_t n) {
        put_single_points(points, dimension, counter, n, r, map);
        counter += static_cast<uint32_t>(n);
        r += n * dimension;
    };
    const int64_t before = -counter & (kBlockPoints - 1);
    const int64_t blocks = (count - before) / kBlockPoints;
    if (blocks < kWorthwhileBlocks) return single(count);
    single(before);
    put_blocks<dimension>(points, counter, blocks, r, map);
    counter += static_cast<uint32_t>(blocks * kBlockPoints);
    r += blocks * kBlockPoints * dimension;
    single(count - before - blocks * kBlockPoints);
}

// ---- Many dimensions: lanes across coordinates -------------------------------------------------------------------------

inline constexpr int kBlockDimensions = 32;

// A job of whole points in many dimensions; also the context of the parallel loop.
template <class Map, class T>
struct ManyDimensions {
    PointSet points;
    uint32_t counter;
    int dimension;
    int64_t count;
    T* r;
    Map map;
};

// Direction numbers of 32 dimensions by bit: in place, or gathered from rows by dimension as they come into use.
class BlockRows {
public:
    BlockRows(const PointSet& points, int width) : points_(points), width_(width) {
        if (points.by_bit()) {
            base_ = points.directions;
            stride_ = points.bit_stride;
        } else {
            missing_ = ~0u;
        }
    }
    BlockRows(const BlockRows&) = delete;
    BlockRows& operator=(const BlockRows&) = delete;

    const uint32_t* row(int bit) {
        if ((missing_ >> bit & 1) != 0) [[unlikely]] gather(bit);
        return base_ + bit * stride_;
    }

private:
    [[gnu::noinline]] void gather(int bit) {
        missing_ &= ~(1u << bit);
        for (int d = 0; d < width_; ++d) rows_[bit][d] = points_.direction(bit, d);
    }

    PointSet points_;
    int width_;
    uint32_t missing_ = 0;
    alignas(64) uint32_t rows_[kDirectionBits][kBlockDimensions];
    const uint32_t* base_ = rows_[0];
    long stride_ = kBlockDimensions;
};

// All points of up to 32 coordinates, in `vectors` vectors of which the last one has `part` coordinates (0: all).
template <int vectors, class Map, class T>
inline void put_columns(const ManyDimensions<Map, T>& job, BlockRows& rows, T* r, uint32_t* x_words, int part) {
    U32 x[vectors];
    for (int v = 0; v < vectors; ++v) x[v] = load<U32>(x_words + v * kLanes32);
    uint32_t counter = job.counter;
    for (int64_t i = 0; i < job.count; ++i, r += job.dimension) {
#pragma GCC unroll 8
        for (int v = 0; v + 1 < vectors; ++v) put(r + v * kLanes32, job.map(x[v]));
        T* const last = r + (vectors - 1) * kLanes32;
        if (part == 0) put(last, job.map(x[vectors - 1]));
        else put(last, part, job.map(x[vectors - 1]));
        const uint32_t* const row = rows.row(gray_step(counter++));
#pragma GCC unroll 8
        for (int v = 0; v < vectors; ++v) x[v] ^= load<U32>(row + v * kLanes32);
    }
    for (int v = 0; v < vectors; ++v) store(x_words + v * kLanes32, x[v]);
}

// Coordinates 32 block ... of all points; their words after the last point in `after`.
template <class Map, class T>
inline void put_dimensions(const ManyDimensions<Map, T>& job, int block, uint32_t (&after)[kBlockDimensions]) {
    constexpr int kVectors = kBlockDimensions / kLanes32;
    const int first = block * kBlockDimensions;
    const int width = std::min(kBlockDimensions, job.dimension - first);
    const PointSet points = job.points.from(first);
    BlockRows rows(points, width);
    for (int d = 0; d < kBlockDimensions; ++d) after[d] = d < width ? points.coordinate(d) : 0;
    T* const r = job.r + first;
    const int part = width % kLanes32;
    switch ((width + kLanes32 - 1) / kLanes32) {
        case 1: return put_columns<1>(job, rows, r, after, part);
        case 2: return put_columns<2>(job, rows, r, after, part);
        case 3: return put_columns<std::min(3, kVectors)>(job, rows, r, after, part);
        default: return put_columns<kVectors>(job, rows, r, after, part);
    }
}

// Bodies of the parallel loop. They only read the stream: the new point is set when all have ended.
template <class Map, class T>
void kernel_unaligned(int block, int64_t, int64_t, void* context) {
    alignas(64) uint32_t after[kBlockDimensions];
    put_dimensions(*static_cast<const ManyDimensions<Map, T>*>(context), block, after);
}
// For an output whose rows all start on cache lines.
template <class Map, class T>
void kernel_aligned(int block, int64_t, int64_t, void* context) {
    ManyDimensions<Map, T> job = *static_cast<const ManyDimensions<Map, T>*>(context);
    job.r = static_cast<T*>(__builtin_assume_aligned(job.r, 64));
    alignas(64) uint32_t after[kBlockDimensions];
    put_dimensions(job, block, after);
}

// A sequence may have bodies of other names.
template <class Sequence, class T>
inline ParallelBodies bodies_of(bool) {
    return {kernel_aligned<QuasiScale<T>, T>, kernel_unaligned<QuasiScale<T>, T>};
}

// True if the job ran on several threads.
template <class Map, class T>
bool run_on_threads(ManyDimensions<Map, T>& job, int blocks, const ParallelBodies& bodies) {
    if (!worth_threading(job.count, job.dimension)) return false;
    const auto limit = reinterpret_cast<nax_serv_threads_limit_function>(
        nax_serv_load_thread_fun("nax_sto_serv_threader_get_num_threads_limit"));
    if (limit == nullptr || limit() <= 1) return false;
    const auto parallel_for = reinterpret_cast<nax_serv_parallel_for_function>(
        nax_serv_load_thread_fun("nax_sto_serv_threader_for"));
    if (parallel_for == nullptr) return false;
    const bool aligned = reinterpret_cast<uintptr_t>(job.r) % 64 == 0 &&
                         static_cast<uint64_t>(job.dimension) * sizeof(T) % 64 == 0;
    parallel_for(blocks, 0, &job, aligned ? bodies.aligned : bodies.unaligned);
    return true;
}

template <class Map, class T>
void _QrngMainDim16(const PointSet& points, int dimension, uint32_t counter, int64_t count, T* r, const Map& map,
                    const ParallelBodies& bodies) {
    ManyDimensions<Map, T> job = {points, counter, dimension, count, r, map};
    const int blocks = (dimension + kBlockDimensions - 1) / kBlockDimensions;
    if (run_on_threads(job, blocks, bodies)) return set_point(points, dimension, counter + static_cast<uint32_t>(count));
    if (dimension <= kPointDimensions) return put_single_points(points, dimension, counter, count, r, map);
    for (int block = 0; block < blocks; ++block) {
        alignas(64) uint32_t after[kBlockDimensions];
        put_dimensions(job, block, after);
        const int first = block * kBlockDimensions;
        const int width = std::min(kBlockDimensions, dimension - first);
        for (int d = 0; d < width; ++d) points.coordinate(first + d) = after[d];
    }
}

// ---- A call ------------------------------------------------------------------------------------------------------------

template <class Map, class T>
using QrngMain = void (*)(const PointSet&, int dimension, uint32_t counter, int64_t count, T* r, const Map&,
                          const ParallelBodies&);

template <class Map, class T, int... index>
constexpr std::array<QrngMain<Map, T>, 16> qrng_main_dispatch(std::integer_sequence<int, index...>) {
    return {_QrngMainDim<index + 1, Map, T>..., _QrngMainDim16<Map, T>};
}
// Entry d - 1 serves d dimensions, the last one 16 and more.
template <class Map, class T>
constexpr auto _QrngMainDispatch = qrng_main_dispatch<Map, T>(std::make_integer_sequence<int, 15>{});

// Of one coordinate alone. The whole point moves along, so that another coordinate can be selected later.
template <class T, class Map>
void draw_selected(QuasiPlace& place, const PointSet& points, int n, T* r, const Map& map, const ParallelBodies& bodies) {
    const int dimension = static_cast<int>(place.dimension);
    if (n >= kWorthwhileBlocks * kBlockPoints) {
        _QrngMainDim<1>(points.from(place.selected), 1, place.counter, n, r, map, bodies);
        place.counter += static_cast<uint32_t>(n);
        return set_point(points, dimension, place.counter);
    }
    put_coordinate(points, place.selected, place.counter, n, r, map);
    place.counter += static_cast<uint32_t>(n);
    set_point(points, dimension, place.counter);
}

// The next n numbers of a stream, n at least 1.
template <class T, class Map>
[[gnu::noinline]] int draw_points(QuasiPlace& place, const PointSet& points, int n, T* r, const Map& map,
                const ParallelBodies& bodies) {
    if (place.counter + static_cast<uint64_t>(n) > kLastCounter) return STO_STATUS_QRNG_PERIOD_ELAPSED;
    const int dimension = static_cast<int>(place.dimension);
    if (place.selected >= 0) {
        draw_selected(place, points, n, r, map, bodies);
        return STO_STATUS_OK;
    }
    if (place.position > 0) {
        const int take = std::min(n, static_cast<int>(place.position));
        put_coordinates(points, dimension - static_cast<int>(place.position), take, r, map);
        place.position -= static_cast<uint32_t>(take);
        if (place.position > 0) return STO_STATUS_OK;
        step_point(points, dimension, place.counter++);
        r += take;
        n -= take;
    }
    const int whole = n / dimension;
    if (whole > 0) {
        const std::size_t row = static_cast<std::size_t>(std::min(dimension, kLowDimensions) - 1);
        _QrngMainDispatch<Map, T>[row](points, dimension, place.counter, whole, r, map, bodies);
    }
    place.counter += static_cast<uint32_t>(whole);
    const int rest = n - whole * dimension;
    if (rest == 0) return STO_STATUS_OK;
    put_coordinates(points, 0, rest, r + static_cast<long>(whole) * dimension, map);
    place.position = static_cast<uint32_t>(dimension - rest);
    return STO_STATUS_OK;
}

// A call of a stream of that sequence.
template <class Sequence, class T, class... Interval>
int draw_quasi(Stream* stream, int n, T* r, Interval... interval) {
    if (n < 1) return STO_STATUS_OK;
    PointSet points{};
    bool user = false;
    if (!find_points<Sequence>(stream, points, user)) return STO_STATUS_NO_MEMORY;
    const QuasiScale<T> map(interval...);
    QuasiPlace& place = payload<typename Sequence::State>(stream).place;
    const int dimension = static_cast<int>(place.dimension);
    // A point a call, and a number a call of a selected coordinate.
    if (points.by_bit() && place.counter + static_cast<uint64_t>(n) <= kLastCounter) {
        if (place.selected < 0 && n == dimension && place.position == 0 && dimension <= kPointDimensions) {
            put_point(points, dimension, place.counter++, r, map);
            return STO_STATUS_OK;
        }
        if (place.selected >= 0 && n == 1) {
            r[0] = map(points.coordinate(place.selected));
            step_point(points, dimension, place.counter++);
            return STO_STATUS_OK;
        }
    }
    return draw_points(place, points, n, r, map, bodies_of<Sequence, T>(user));
}

}  // namespace NAX_ISA
}  // namespace nax::rng

// Spells the output functions of a sequence's generator.
#define NAX_QUASI_OUTPUT(name, Sequence)                                                        \
    extern "C" int __stosBRng##name(nax_stream* stream, int n, float* r, float a, float b) {    \
        return draw_quasi<Sequence>(stream, n, r, a, b);                                        \
    }                                                                                           \
    extern "C" int __stodBRng##name(nax_stream* stream, int n, double* r, double a, double b) { \
        return draw_quasi<Sequence>(stream, n, r, a, b);                                        \
    }                                                                                           \
    extern "C" int __stoiBRng##name(nax_stream* stream, int n, void* r) {                       \
        return draw_quasi<Sequence>(stream, n, static_cast<uint32_t*>(r));                      \
    }
