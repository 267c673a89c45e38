// Kernels that add up powers: of the observations for the fast method, of the deviations from a known mean for the
// caller's. Lanes are variables where an observation's variables are contiguous, else observations.
#include <algorithm>

#include "stats/basic/cross_product.h"
#include "stats/basic/strips.h"

namespace nax::stats::basic {
inline namespace NAX_ISA {
namespace {

// Sums of one block of lanes, or of one element's share.
template <class V, int raw_power, int central_power>
struct Sums {
    V raw[4] = {};      // powers 1 to 4
    V central[3] = {};  // powers 2 to 4

    template <bool weighted>
    [[gnu::always_inline]] void add(V x, V w, V mean) {
        if constexpr (raw_power > 0) add_powers<weighted, raw_power>(x, w, raw[0], raw + 1);
        if constexpr (central_power > 0) {
            V first{};
            add_powers<weighted, central_power>(x - mean, w, first, central);
        }
    }
    [[gnu::always_inline]] void add(const Sums& other) {
        for (int i = 0; i < 4; ++i) raw[i] = raw[i] + other.raw[i];
        for (int i = 0; i < 3; ++i) central[i] = central[i] + other.central[i];
    }

private:
    template <bool weighted, int power>
    [[gnu::always_inline]] static void add_powers(V x, V w, V& first, V* higher) {
        if constexpr (weighted) {
            const V wx = w * x;
            first = first + wx;
            if constexpr (power >= 2) higher[0] = fma(wx, x, higher[0]);
            if constexpr (power >= 3) {
                const V x2 = x * x;
                higher[1] = fma(wx, x2, higher[1]);
                if constexpr (power >= 4) higher[2] = fma(wx * x, x2, higher[2]);
            }
        } else {
            first = first + x;
            if constexpr (power >= 2) {
                const V x2 = x * x;
                higher[0] = higher[0] + x2;
                if constexpr (power >= 3) higher[1] = fma(x2, x, higher[1]);
                if constexpr (power >= 4) higher[2] = fma(x2, x2, higher[2]);
            }
        }
    }
};

// Adds block sums to the accumulators at `offset`.
template <class V, int raw, int central>
[[gnu::always_inline]] inline void accumulate(const Sums<V, raw, central>& sums, Element<V>* const* power,
                                              int64_t offset) {
    for (int k = 0; k < raw; ++k) store(power[k] + offset, load<V>(power[k] + offset) + sums.raw[k]);
    for (int k = 2; k <= central; ++k) {
        Element<V>* const to = power[central_index(k)] + offset;
        store(to, load<V>(to) + sums.central[k - 2]);
    }
}

// One block of variables over a chunk of observations: two sets of sums, for even and odd rows, hide the latency of
// additions. `ahead` walks through the next chunk while this one is worked on, in the order of its memory.
template <class T, int raw, int central, bool weighted>
void add_columns(Strip<T> strip, const T* weights, int64_t count, const T* mean, T* const* power, int64_t offset,
                 const char* ahead) {
    using V = Lanes<T>;
    Sums<V, raw, central> even, odd;
    V m{};
    if constexpr (central > 0) m = load<V>(mean + offset);
    const auto weight = [&](int64_t k) { return weighted ? splat<V>(weights[k]) : V{}; };
    const auto row = [&](int64_t k) { return load<V>(strip.x + k * strip.stride); };
    int64_t k = 0;
    for (; k + 1 < count; k += 2) {
        __builtin_prefetch(ahead + k * kLaneBytes, 0, 2);
        __builtin_prefetch(ahead + (k + 1) * kLaneBytes, 0, 2);
        even.template add<weighted>(row(k), weight(k), m);
        odd.template add<weighted>(row(k + 1), weight(k + 1), m);
    }
    if (k < count) even.template add<weighted>(row(k), weight(k), m);
    even.add(odd);
    accumulate(even, power, offset);
}

// One variable over contiguous observations.
template <class T, int raw, int central, bool weighted>
void add_row(const T* x, const T* weights, int64_t count, T mean, T* const* power, int64_t offset) {
    using V = Lanes<T>;
    constexpr int64_t lanes = kLanes<T>;
    Sums<V, raw, central> even, odd;
    const V m = splat<V>(mean);
    const auto weight = [&](int64_t k) { return weighted ? load<V>(weights + k) : V{}; };
    int64_t k = 0;
    for (; k + 2 * lanes <= count; k += 2 * lanes) {
        even.template add<weighted>(load<V>(x + k), weight(k), m);
        odd.template add<weighted>(load<V>(x + k + lanes), weight(k + lanes), m);
    }
    if (k + lanes <= count) {
        even.template add<weighted>(load<V>(x + k), weight(k), m);
        k += lanes;
    }
    even.add(odd);
    Sums<T, raw, central> rest;
    for (; k < count; ++k) rest.template add<weighted>(x[k], weighted ? weights[k] : T(1), mean);
    for (int i = 0; i < raw; ++i) rest.raw[i] = fold(even.raw[i]) + rest.raw[i];
    for (int i = 0; i + 2 <= central; ++i) rest.central[i] = fold(even.central[i]) + rest.central[i];
    accumulate(rest, power, offset);
}

template <class T>
void add_weights(const T* weights, int64_t count, Accumulators<T>& sums) {
    using V = Lanes<T>;
    V total{}, total2{};
    int64_t k = 0;
    for (; k + kLanes<T> <= count; k += kLanes<T>) {
        const V w = load<V>(weights + k);
        total = total + w;
        total2 = fma(w, w, total2);
    }
    T rest = 0, rest2 = 0;
    for (; k < count; ++k) {
        rest += weights[k];
        rest2 = fma(weights[k], weights[k], rest2);
    }
    sums.weight += fold(total) + rest;
    sums.weight2 += fold(total2) + rest2;
}

// Copies a chunk into the panels, times the weights into the second, and updates the raw cross-products.
template <class T, bool columns, bool weighted>
void add_cross_products(const Slice<T>& slice, const Blocks& blocks, int64_t first, int64_t count,
                        const Panels<T>& panels, T* cross) {
    const int64_t ld = blocks.padded();
    for (int64_t b = 0; b < blocks.count(); ++b) {
        const int64_t base = blocks.base(b);
        T* const to = panels.plain + base;
        if constexpr (!columns) {
            gather_rows(slice.x + base * slice.n + first, slice.n, std::min<int64_t>(kLanes<T>, slice.p), count, to,
                        ld);
            continue;
        }
        alignas(64) T buffer[kChunk * kLanes<T>];
        for (int64_t k = 0; k < count; k += kChunk) {
            const int64_t part = std::min<int64_t>(kChunk, count - k);
            const Strip<T> rows = strip<T, columns>(slice, blocks, b, first + k, part, buffer);
            for (int64_t i = 0; i < part; ++i) store(to + (k + i) * ld, load<Lanes<T>>(rows.x + i * rows.stride));
        }
    }
    if constexpr (weighted) scale_rows(ld, count, slice.weights + first, panels.plain, panels.scaled);
    rank_update(slice.p, ld, count, weighted ? panels.scaled : panels.plain, panels.plain, cross);
}

template <class T, bool columns, bool weighted, int raw, int central>
void run(const Slice<T>& slice, Accumulators<T>& sums, const Panels<T>& panels) {
    const Blocks blocks = basic::blocks<T>(slice.p);
    alignas(64) T buffer[kChunk * kLanes<T>];
    const bool cross = sums.cross != nullptr;
    const int64_t limit = cross ? panels.rows : slice.last - slice.first;
    const int64_t depth = cached_rows<T>(slice.p);
    for (int64_t i = slice.first; i < slice.last; i += limit) {
        const int64_t count = std::min(limit, slice.last - i);
        const T* const weights = weighted ? slice.weights + i : nullptr;
        if constexpr (columns) {
            for (int64_t k = 0; k < count; k += depth) {
                const int64_t part = std::min(depth, count - k);
                const char* ahead = reinterpret_cast<const char*>(slice.x + (i + k + part) * slice.p);
                for (int64_t b = 0; b < blocks.count(); ++b, ahead += part * kLaneBytes)
                    add_columns<T, raw, central, weighted>(strip<T, true>(slice, blocks, b, i + k, part, buffer),
                                                           weights + (weighted ? k : 0), part, sums.mean, sums.power,
                                                           b * blocks.lanes, ahead);
            }
        } else {
            for (int64_t j = 0; j < slice.p; ++j)
                add_row<T, raw, central, weighted>(slice.x + j * slice.n + i, weights, count,
                                                   central > 0 ? sums.mean[blocks.slot(j)] : T(0), sums.power,
                                                   blocks.slot(j));
        }
        if constexpr (weighted) {
            add_weights(weights, count, sums);
        } else {
            sums.weight += static_cast<T>(count);
            sums.weight2 += static_cast<T>(count);
        }
        if (cross) add_cross_products<T, columns, weighted>(slice, blocks, i, count, panels, sums.cross);
    }
}

template <class T, int raw, int central>
constexpr Kernel<T> of_storage(int storage_and_weights) {
    constexpr Kernel<T> kernels[4] = {run<T, false, false, raw, central>, run<T, false, true, raw, central>,
                                      run<T, true, false, raw, central>, run<T, true, true, raw, central>};
    return kernels[storage_and_weights];
}

}  // namespace
}  // namespace NAX_ISA

template <class T>
Kernel<T> fast_kernel(int index) {
    switch (index % 4) {
        case 0:
            return of_storage<T, 1, 0>(index / 4);
        case 1:
            return of_storage<T, 2, 0>(index / 4);
        case 2:
            return of_storage<T, 3, 0>(index / 4);
        default:
            return of_storage<T, 4, 0>(index / 4);
    }
}
template <class T>
Kernel<T> user_mean_kernel(int index) {
    switch (index % 4) {
        case 0:
            return of_storage<T, 0, 2>(index / 4);
        case 1:
            return of_storage<T, 0, 3>(index / 4);
        case 2:
            return of_storage<T, 0, 4>(index / 4);
        default:
            return of_storage<T, 4, 4>(index / 4);
    }
}
template Kernel<double> fast_kernel(int);
template Kernel<float> fast_kernel(int);
template Kernel<double> user_mean_kernel(int);
template Kernel<float> user_mean_kernel(int);

}  // namespace nax::stats::basic
