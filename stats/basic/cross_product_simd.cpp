#include <algorithm>
#include <utility>

#include "stats/basic/cross_product.h"

namespace nax::stats::basic {
inline namespace NAX_ISA {
namespace {

// A tile of the result stays in registers: 24 of 32, or 12 of 16, hold it.
inline constexpr int kTileRows = kParts == 1 ? 8 : 6;
inline constexpr int kTileVectors = kParts == 1 ? 3 : 1;
// Observations whose columns for one tile stay in the first cache.
inline constexpr int64_t kTileDepth = 128;

template <class T, int rows, int vectors>
void update_tile(int64_t ld, int64_t depth, const T* left, const T* right, T* c) {
    using V = Lanes<T>;
    V sum[rows][vectors];
#pragma GCC unroll 8
    for (int i = 0; i < rows; ++i)
#pragma GCC unroll 3
        for (int v = 0; v < vectors; ++v) sum[i][v] = load<V>(c + i * ld + v * kLanes<T>);
    for (int64_t k = 0; k < depth; ++k) {
        V b[vectors];
#pragma GCC unroll 3
        for (int v = 0; v < vectors; ++v) b[v] = load<V>(right + k * ld + v * kLanes<T>);
#pragma GCC unroll 8
        for (int i = 0; i < rows; ++i) {
            const V a = splat<V>(left[k * ld + i]);
#pragma GCC unroll 3
            for (int v = 0; v < vectors; ++v) sum[i][v] = fma(a, b[v], sum[i][v]);
        }
    }
#pragma GCC unroll 8
    for (int i = 0; i < rows; ++i)
#pragma GCC unroll 3
        for (int v = 0; v < vectors; ++v) store(c + i * ld + v * kLanes<T>, sum[i][v]);
}

template <class T>
using Tile = void (*)(int64_t, int64_t, const T*, const T*, T*);

template <class T, int... row>
constexpr auto tiles(std::integer_sequence<int, row...>) {
    struct Table {
        Tile<T> of[kTileRows * kTileVectors];
    };
    return Table{{update_tile<T, row / kTileVectors + 1, row % kTileVectors + 1>...}};
}

}  // namespace

template <class T>
void rank_update(int64_t p, int64_t ld, int64_t rows, const T* left, const T* right, T* c) {
    static constexpr auto table = tiles<T>(std::make_integer_sequence<int, kTileRows * kTileVectors>());
    for (int64_t k = 0; k < rows; k += kTileDepth) {
        const int64_t depth = std::min(kTileDepth, rows - k);
        for (int64_t j = 0; j < ld; j += kTileVectors * kLanes<T>) {
            const int64_t vectors = std::min<int64_t>(kTileVectors, (ld - j) / kLanes<T>);
            const int64_t end = std::min(p, j + vectors * kLanes<T>);
            for (int64_t i = 0; i < end; i += kTileRows) {
                const int64_t height = std::min<int64_t>(kTileRows, end - i);
                table.of[(height - 1) * kTileVectors + vectors - 1](ld, depth, left + k * ld + i, right + k * ld + j,
                                                                    c + i * ld + j);
            }
        }
    }
}

template void rank_update(int64_t, int64_t, int64_t, const double*, const double*, double*);
template void rank_update(int64_t, int64_t, int64_t, const float*, const float*, float*);

}  // namespace NAX_ISA
}  // namespace nax::stats::basic
