#include <cmath>

#include "stats/lanes.h"
#include "stats/outliers/distances.h"

namespace nax::stats::outliers {
inline namespace NAX_ISA {
namespace {

// Deviations of kLanes observations from i on: d[j * lanes + l]. Lanes past the end hold zeros.
template <class T>
void centre_lanes(const basic::Slice<T>& slice, bool columns, int64_t i, const T* mean, T* d) {
    constexpr int64_t lanes = kLanes<T>;
    const int64_t count = slice.last - i < lanes ? slice.last - i : lanes;
    for (int64_t j = 0; j < slice.p; ++j) {
        T* const to = d + j * lanes;
        if (!columns && count == lanes) {
            store(to, load<Lanes<T>>(slice.x + j * slice.n + i) - splat<Lanes<T>>(mean[j]));
            continue;
        }
        const T* const x = columns ? slice.x + i * slice.p + j : slice.x + j * slice.n + i;
        const int64_t step = columns ? slice.p : 1;
        for (int64_t l = 0; l < count; ++l) to[l] = x[l * step] - mean[j];
        for (int64_t l = count; l < lanes; ++l) to[l] = 0;
    }
}

// d' A d of all lanes: the diagonal, and twice what stands below it.
template <class T>
Lanes<T> quadratic_form(int64_t p, const T* a, const T* d) {
    using V = Lanes<T>;
    constexpr int64_t lanes = kLanes<T>;
    V sum{};
    for (int64_t i = 0; i < p; ++i) {
        const T* const row = a + i * p;
        V even{}, odd{};
        int64_t j = 0;
        for (; j + 1 < i; j += 2) {
            even = fma(splat<V>(row[j]), load<V>(d + j * lanes), even);
            odd = fma(splat<V>(row[j + 1]), load<V>(d + (j + 1) * lanes), odd);
        }
        if (j < i) even = fma(splat<V>(row[j]), load<V>(d + j * lanes), even);
        const V own = load<V>(d + i * lanes), below = even + odd;
        sum = fma(own, fma(splat<V>(row[i]), own, below + below), sum);
    }
    return sum;
}

}  // namespace
}  // namespace NAX_ISA

template <class T>
void mahalanobis(const basic::Slice<T>& slice, bool columns, const T* mean, const T* inverse, T* work, T* result) {
    constexpr int64_t lanes = kLanes<T>;
    T* const squares = work + slice.p * lanes;
    for (int64_t i = slice.first; i < slice.last; i += lanes) {
        centre_lanes(slice, columns, i, mean, work);
        store(squares, quadratic_form(slice.p, inverse, work));
        for (int64_t l = 0; l < lanes && i + l < slice.last; ++l) result[i - slice.first + l] = std::sqrt(squares[l]);
    }
}
template void mahalanobis(const basic::Slice<double>&, bool, const double*, const double*, double*, double*);
template void mahalanobis(const basic::Slice<float>&, bool, const float*, const float*, float*, float*);

template <class T>
void euclidean(const basic::Slice<T>& slice, bool columns, const T* centre, T* result) {
    for (int64_t i = slice.first; i < slice.last; ++i) result[i - slice.first] = 0;
    const auto add = [&](int64_t i, int64_t j, T x) {
        const T d = x - centre[j];
        result[i - slice.first] += d * d;
    };
    if (columns) {
        for (int64_t i = slice.first; i < slice.last; ++i)
            for (int64_t j = 0; j < slice.p; ++j) add(i, j, slice.x[i * slice.p + j]);
    } else {
        for (int64_t j = 0; j < slice.p; ++j)
            for (int64_t i = slice.first; i < slice.last; ++i) add(i, j, slice.x[j * slice.n + i]);
    }
    for (int64_t i = slice.first; i < slice.last; ++i) result[i - slice.first] = std::sqrt(result[i - slice.first]);
}
template void euclidean(const basic::Slice<double>&, bool, const double*, double*);
template void euclidean(const basic::Slice<float>&, bool, const float*, float*);

}  // namespace nax::stats::outliers
