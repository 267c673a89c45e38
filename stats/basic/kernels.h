// Accumulating kernels of the basic entry: 64 in each precision, chosen by method, storage, weights and order.
#pragma once

#include <cstdint>

namespace nax::stats::basic {

// Observations of a block of accumulators are taken in chunks no longer than this.
inline constexpr int kChunk = 256;

// Variables stand in the accumulators in blocks of a vector's lanes. Where their number is no multiple of the lanes the
// last block holds the last variables once more, so that it is loaded whole; fewer variables than lanes leave lanes
// empty. Always inlined: files of different instruction sets share them.
struct Blocks {
    int64_t p;
    int64_t lanes;
    [[gnu::always_inline]] constexpr int64_t count() const { return (p + lanes - 1) / lanes; }
    [[gnu::always_inline]] constexpr int64_t padded() const { return count() * lanes; }
    // First variable of block b.
    [[gnu::always_inline]] constexpr int64_t base(int64_t b) const {
        if (p < lanes) return 0;
        const int64_t last = p - lanes;
        return b * lanes < last ? b * lanes : last;
    }
    // Place of variable j in an accumulator.
    [[gnu::always_inline]] constexpr int64_t slot(int64_t j) const {
        const int64_t whole = p / lanes * lanes;
        return p < lanes || j < whole ? j : whole + j - (p - lanes);
    }
};
template <class T>
[[gnu::always_inline]] constexpr Blocks blocks(int64_t p) {
    return {p, 64 / static_cast<int64_t>(sizeof(T))};
}

// Accumulators by their index: raw powers 1 to 4, then central powers 2 to 4. Those a kernel doesn't keep are null.
inline constexpr int kPowers = 7;
constexpr int raw_index(int power) { return power - 1; }
constexpr int central_index(int power) { return power + 2; }

// What one thread accumulates. The one-pass kernels keep the mean and raw moments themselves and central sums; the
// others keep sums of everything, the central ones about `mean`.
template <class T>
struct Accumulators {
    T* power[kPowers];  // blocks(p).padded() reals each
    T* mean;            // the caller's mean, in blocks; for the kernels about it alone
    T* cross;           // padded() by padded(), the upper triangle by rows; null without cross-products
    T weight;           // sum of the weights
    T weight2;          // sum of their squares
};

// Part of the observation matrix.
template <class T>
struct Slice {
    const T* x;
    const T* weights;
    int64_t n;            // observations of the matrix
    int64_t first, last;  // those of the slice
    int64_t p;
};

// Memory of one thread for cross-products: two panels of `rows` observations, padded() reals each.
template <class T>
struct Panels {
    T* plain;
    T* scaled;
    int64_t rows;
};

template <class T>
using Kernel = void (*)(const Slice<T>&, Accumulators<T>&, const Panels<T>&);

// Places in the kernel tables.
constexpr int one_pass_index(bool columns, bool weighted, int order, bool cross) {
    return ((columns * 2 + weighted) * 4 + order) * 2 + cross;
}
constexpr int power_sums_index(bool columns, bool weighted, int order) { return (columns * 2 + weighted) * 4 + order; }
template <class T>
Kernel<T> one_pass_kernel(int index);
template <class T>
Kernel<T> fast_kernel(int index);
template <class T>
Kernel<T> user_mean_kernel(int index);

// Highest raw and central powers that the kernels of an order keep.
struct Order {
    int raw;
    int central;  // 0 for none
};
inline constexpr Order kOnePassOrders[4] = {{1, 0}, {1, 2}, {2, 2}, {4, 4}};
inline constexpr Order kFastOrders[4] = {{1, 0}, {2, 0}, {3, 0}, {4, 0}};
inline constexpr Order kUserMeanOrders[4] = {{0, 2}, {0, 3}, {0, 4}, {4, 4}};

}  // namespace nax::stats::basic
