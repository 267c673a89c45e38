#include <cstring>

#include "stats/covariance/pooled.h"
#include "stats/lanes.h"

namespace nax::stats::covariance {
inline namespace NAX_ISA {
namespace {

// The one-pass update of a group by one observation: a = w/(W + w), cross-products by a W d d', the mean by a d.
template <class T>
void add_observation(const GroupLayout<T>& layout, T weight, T* line, T* weights, T* mean, T* products) {
    using V = Lanes<T>;
    // Before the first weight of a group nothing is known, and a zero has no share of nothing.
    if (weight == 0 && weights[0] == 0) return;
    const T a = weight / (weights[0] + weight), h = a * weights[0];
    for (int64_t j = 0; j < layout.row; j += kLanes<T>) {
        const V before = load<V>(mean + j), d = load<V>(line + j) - before;
        store(line + j, d);
        store(mean + j, fma(splat<V>(a), d, before));
    }
    if (layout.cross)
        for (int64_t i = 0; i < layout.p; ++i) {
            const V factor = splat<V>(h * line[i]);
            T* const row = products + i * layout.row;
            for (int64_t j = i / kLanes<T> * kLanes<T>; j < layout.row; j += kLanes<T>)
                store(row + j, fma(factor, load<V>(line + j), load<V>(row + j)));
        }
    weights[0] += weight;
    weights[1] = fma(weight, weight, weights[1]);
}

}  // namespace
}  // namespace NAX_ISA

template <class T>
void add_to_groups(const basic::Slice<T>& slice, bool columns, const Integers& groups, const GroupLayout<T>& layout,
                   T* area, T* line) {
    for (int64_t i = slice.first; i < slice.last; ++i) {
        if (columns)
            std::memcpy(line, slice.x + i * slice.p, static_cast<std::size_t>(slice.p) * sizeof(T));
        else
            for (int64_t j = 0; j < slice.p; ++j) line[j] = slice.x[j * slice.n + i];
        for (int64_t j = slice.p; j < layout.row; ++j) line[j] = 0;
        const int64_t group = groups[i];
        add_observation(layout, slice.weights != nullptr ? slice.weights[i] : T(1), line, layout.weights(area, group),
                        layout.mean(area, group), layout.products(area, group));
    }
}
template void add_to_groups(const basic::Slice<double>&, bool, const Integers&, const GroupLayout<double>&, double*,
                            double*);
template void add_to_groups(const basic::Slice<float>&, bool, const Integers&, const GroupLayout<float>&, float*,
                            float*);

}  // namespace nax::stats::covariance
