#include "stats/basic/extremes.h"
#include "stats/basic/strips.h"

namespace nax::stats::basic {
inline namespace NAX_ISA {
namespace {

// The data are the first operand: a NaN among them leaves the extreme as it was.
template <class V, bool least, bool greatest>
struct Extremes {
    V low, high;
    [[gnu::always_inline]] void add(V x) {
        if constexpr (least) low = lesser(x, low);
        if constexpr (greatest) high = greater(x, high);
    }
    [[gnu::always_inline]] void add(const Extremes& other) {
        if constexpr (least) low = lesser(other.low, low);
        if constexpr (greatest) high = greater(other.high, high);
    }
};

template <class T, bool least, bool greatest>
void scan_columns(Strip<T> strip, int64_t count, T* minimum, T* maximum) {
    using V = Lanes<T>;
    Extremes<V, least, greatest> even{}, odd;
    if constexpr (least) even.low = load<V>(minimum);
    if constexpr (greatest) even.high = load<V>(maximum);
    odd = even;
    int64_t k = 0;
    for (; k + 1 < count; k += 2) {
        even.add(load<V>(strip.x + k * strip.stride));
        odd.add(load<V>(strip.x + (k + 1) * strip.stride));
    }
    if (k < count) even.add(load<V>(strip.x + k * strip.stride));
    even.add(odd);
    if constexpr (least) store(minimum, even.low);
    if constexpr (greatest) store(maximum, even.high);
}

template <class T, bool least, bool greatest>
void scan_row(const T* x, int64_t count, T* minimum, T* maximum) {
    using V = Lanes<T>;
    constexpr int64_t lanes = kLanes<T>;
    Extremes<V, least, greatest> sets[4] = {};
    for (auto& set : sets) {
        if constexpr (least) set.low = splat<V>(*minimum);
        if constexpr (greatest) set.high = splat<V>(*maximum);
    }
    int64_t k = 0;
    for (; k + 4 * lanes <= count; k += 4 * lanes)
        for (int s = 0; s < 4; ++s) sets[s].add(load<V>(x + k + s * lanes));
    for (int s = 1; s < 4; ++s) sets[0].add(sets[s]);
    Extremes<T, least, greatest> rest{};
    T lane[lanes];
    if constexpr (least) {
        rest.low = *minimum;
        store(lane, sets[0].low);
        for (const T x_lane : lane) rest.low = lesser(x_lane, rest.low);
    }
    if constexpr (greatest) {
        rest.high = *maximum;
        store(lane, sets[0].high);
        for (const T x_lane : lane) rest.high = greater(x_lane, rest.high);
    }
    for (; k < count; ++k) rest.add(x[k]);
    if constexpr (least) *minimum = rest.low;
    if constexpr (greatest) *maximum = rest.high;
}

template <class T, bool least, bool greatest>
void scan(const Slice<T>& slice, bool columns, T* minimum, T* maximum) {
    const Blocks blocks = basic::blocks<T>(slice.p);
    if (!columns) {
        for (int64_t j = 0; j < slice.p; ++j) {
            const int64_t slot = blocks.slot(j);
            scan_row<T, least, greatest>(slice.x + j * slice.n, slice.n, least ? minimum + slot : nullptr,
                                         greatest ? maximum + slot : nullptr);
        }
        return;
    }
    alignas(64) T buffer[kChunk * kLanes<T>];
    const int64_t depth = cached_rows<T>(slice.p);
    for (int64_t i = 0; i < slice.n; i += depth) {
        const int64_t count = std::min(depth, slice.n - i);
        for (int64_t b = 0; b < blocks.count(); ++b)
            scan_columns<T, least, greatest>(strip<T, true>(slice, blocks, b, i, count, buffer), count,
                                             least ? minimum + b * blocks.lanes : nullptr,
                                             greatest ? maximum + b * blocks.lanes : nullptr);
    }
}

}  // namespace
}  // namespace NAX_ISA

template <class T>
void extremes(const Slice<T>& slice, bool columns, T* minimum, T* maximum) {
    if (minimum != nullptr && maximum != nullptr)
        scan<T, true, true>(slice, columns, minimum, maximum);
    else if (minimum != nullptr)
        scan<T, true, false>(slice, columns, minimum, maximum);
    else if (maximum != nullptr)
        scan<T, false, true>(slice, columns, minimum, maximum);
}
template void extremes(const Slice<double>&, bool, double*, double*);
template void extremes(const Slice<float>&, bool, float*, float*);

}  // namespace nax::stats::basic
