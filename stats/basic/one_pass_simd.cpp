// One-pass kernels: mean, raw moments and central sums updated observation by observation.
//
// With W the weight so far, w the observation's, a = w/(W + w), r = 1/(W + w), d = x - mean before the update:
//   M4 += r^2 a W (W^2 - (W - w) w) d^4 + 6 a^2 d^2 M2 - 4 a d M3
//   M3 += r a W (W - w) d^3 - 3 a d M2
//   M2 += a W d^2
//   mean += a d, and likewise R_k += a (x^k - R_k)
//   CP_ij += a W d_i d_j
// T. B. Terriberry, Computing Higher-Order Moments Online (2007), generalised to weights as in P. Pebay, Formulas for
// Robust, One-Pass Parallel Computation of Covariances and Arbitrary-Order Statistical Moments (2008). Moving by the
// difference keeps a constant variable exact: its deviations are zero from the second observation on.
#include <algorithm>

#include "stats/basic/cross_product.h"
#include "stats/basic/strips.h"

namespace nax::stats::basic {
inline namespace NAX_ISA {
namespace {

// Factors of a chunk's observations, which all variables share.
template <class T>
struct alignas(64) Factors {
    T before[kChunk];  // W
    T own[kChunk];     // w
    T a[kChunk];
    T h[kChunk];   // a W
    T k3[kChunk];  // r a W (W - w)
    T a3[kChunk];  // 3 a
    T k4[kChunk];  // r^2 a W (W^2 - (W - w) w)
    T a4[kChunk];  // 4 a
    T a6[kChunk];  // 6 a^2
};

template <class T, bool weighted, int central>
void fill_factors(const T* weights, int count, Accumulators<T>& sums, Factors<T>& f) {
    T total = sums.weight, total2 = sums.weight2;
    for (int k = 0; k < count; ++k) {
        const T w = weighted ? weights[k] : T(1);
        // A count goes on in steps of chunks, where single steps would get lost beyond the precision.
        f.before[k] = weighted ? total : sums.weight + static_cast<T>(k);
        f.own[k] = w;
        total += w;
        total2 = fma(w, w, total2);
    }
    sums.weight = weighted ? total : sums.weight + static_cast<T>(count);
    sums.weight2 = weighted ? total2 : sums.weight2 + static_cast<T>(count);
    for (int k = 0; k < count; ++k) {
        const T w = f.own[k], before = f.before[k];
        const T after = before + w;
        const T a = w / after;
        f.a[k] = a;
        f.h[k] = a * before;
        if constexpr (central == 4) {
            const T r = 1 / after;
            f.k3[k] = r * f.h[k] * (before - w);
            f.a3[k] = 3 * a;
            f.k4[k] = r * r * f.h[k] * (before * before - (before - w) * w);
            f.a4[k] = 4 * a;
            f.a6[k] = 6 * a * a;
        }
    }
}

// Runs the recurrence of one block of lanes, or of one variable, over a chunk. With `deviations` the d of each
// observation is kept for the cross-products, `ld` reals apart.
template <class V, int raw, int central, bool deviations>
[[gnu::always_inline]] inline void update(const Element<V>* x, int64_t stride, int count, const Factors<Element<V>>& f,
                                          Element<V>* const* power, int64_t offset, Element<V>* d_out, int64_t ld) {
    using T = Element<V>;
    const auto at = [&](int index) { return power[index] + offset; };
    V mean = load<V>(at(0));
    V r2{}, r3{}, r4{}, m2{}, m3{}, m4{};
    if constexpr (raw >= 2) r2 = load<V>(at(raw_index(2)));
    if constexpr (raw >= 4) r3 = load<V>(at(raw_index(3))), r4 = load<V>(at(raw_index(4)));
    if constexpr (central >= 2) m2 = load<V>(at(central_index(2)));
    if constexpr (central >= 4) m3 = load<V>(at(central_index(3))), m4 = load<V>(at(central_index(4)));
    for (int k = 0; k < count; ++k) {
        const V value = load<V>(x + k * stride);
        const V d = value - mean;
        const auto factor = [k](const T* of) { return splat<V>(of[k]); };
        if constexpr (central >= 2) {
            const V d2 = d * d;
            if constexpr (central >= 4) {
                m4 = fma(fma(factor(f.k4), d2, factor(f.a6) * m2), d2, m4);
                m4 = fnma(factor(f.a4) * d, m3, m4);
                m3 = fma(factor(f.k3) * d, d2, m3);
                m3 = fnma(factor(f.a3) * d, m2, m3);
            }
            m2 = fma(factor(f.h), d2, m2);
        }
        if constexpr (deviations) store(d_out + k * ld, d);
        mean = fma(factor(f.a), d, mean);
        if constexpr (raw >= 2) {
            const V x2 = value * value;
            r2 = fma(factor(f.a), x2 - r2, r2);
            if constexpr (raw >= 4) {
                r3 = fma(factor(f.a), x2 * value - r3, r3);
                r4 = fma(factor(f.a), x2 * x2 - r4, r4);
            }
        }
    }
    store(at(0), mean);
    if constexpr (raw >= 2) store(at(raw_index(2)), r2);
    if constexpr (raw >= 4) store(at(raw_index(3)), r3), store(at(raw_index(4)), r4);
    if constexpr (central >= 2) store(at(central_index(2)), m2);
    if constexpr (central >= 4) store(at(central_index(3)), m3), store(at(central_index(4)), m4);
}

template <class T, int raw, int central, bool cross>
void update_lanes(Strip<T> strip, int count, const Factors<T>& f, T* const* power, int64_t offset, T* d, int64_t ld) {
    update<Lanes<T>, raw, central, cross>(strip.x, strip.stride, count, f, power, offset, d, ld);
}
template <class T, int raw, int central, bool cross>
void update_variable(const T* x, int64_t stride, int count, const Factors<T>& f, T* const* power, int64_t offset, T* d,
                     int64_t ld) {
    update<T, raw, central, cross>(x, stride, count, f, power, offset, d, ld);
}

template <class T>
void add_cross_products(int64_t p, int64_t ld, int count, const Factors<T>& f, const Panels<T>& panels, T* cross) {
    scale_rows(ld, count, f.h, panels.plain, panels.scaled);
    rank_update(p, ld, count, panels.scaled, panels.plain, cross);
}

template <class T, bool columns, bool weighted, int raw, int central, bool cross>
void run(const Slice<T>& slice, Accumulators<T>& sums, const Panels<T>& panels) {
    const Blocks blocks = basic::blocks<T>(slice.p);
    const int64_t ld = blocks.padded();
    // One or two variables run faster alone than in lanes that are mostly empty.
    const bool alone = slice.p <= 2;
    Factors<T> factors;
    alignas(64) T buffer[kChunk * kLanes<T>];
    int64_t i = slice.first;
    // Nothing is known before the first weight: 1/(W + w) must be finite. A NaN weight is no zero and goes on.
    if constexpr (weighted)
        while (i < slice.last && slice.weights[i] == 0) ++i;
    while (i < slice.last) {
        const int64_t limit = cross     ? std::min<int64_t>(kChunk, panels.rows)
                              : columns ? std::max<int64_t>(cached_rows<T>(slice.p), 32)
                                        : kChunk;
        const int count = static_cast<int>(std::min(limit, slice.last - i));
        fill_factors<T, weighted, central>(weighted ? slice.weights + i : nullptr, count, sums, factors);
        if (alone) {
            const int64_t step = columns ? slice.p : 1;
            for (int64_t j = 0; j < slice.p; ++j)
                update_variable<T, raw, central, cross>(slice.x + (columns ? i * slice.p + j : j * slice.n + i), step,
                                                        count, factors, sums.power, j, panels.plain + j, ld);
        } else {
            for (int64_t b = 0; b < blocks.count(); ++b)
                update_lanes<T, raw, central, cross>(strip<T, columns>(slice, blocks, b, i, count, buffer), count,
                                                     factors, sums.power, b * blocks.lanes,
                                                     panels.plain + blocks.base(b), ld);
        }
        if constexpr (cross) add_cross_products(slice.p, ld, count, factors, panels, sums.cross);
        i += count;
    }
}

template <class T, bool columns, bool weighted, bool cross>
constexpr Kernel<T> of_order(int order) {
    constexpr Kernel<T> kernels[4] = {run<T, columns, weighted, 1, 0, cross>, run<T, columns, weighted, 1, 2, cross>,
                                      run<T, columns, weighted, 2, 2, cross>, run<T, columns, weighted, 4, 4, cross>};
    return kernels[order];
}

}  // namespace
}  // namespace NAX_ISA

template <class T>
Kernel<T> one_pass_kernel(int index) {
    const int order = index / 2 % 4;
    switch (index / 8 * 2 + index % 2) {
        case 0:
            return of_order<T, false, false, false>(order);
        case 1:
            return of_order<T, false, false, true>(order);
        case 2:
            return of_order<T, false, true, false>(order);
        case 3:
            return of_order<T, false, true, true>(order);
        case 4:
            return of_order<T, true, false, false>(order);
        case 5:
            return of_order<T, true, false, true>(order);
        case 6:
            return of_order<T, true, true, false>(order);
        default:
            return of_order<T, true, true, true>(order);
    }
}
template Kernel<double> one_pass_kernel(int);
template Kernel<float> one_pass_kernel(int);

}  // namespace nax::stats::basic
