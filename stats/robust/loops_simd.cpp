#include "stats/lanes.h"
#include "stats/robust/loops.h"

namespace nax::stats::robust {
namespace {

// out[i] = f(i), by lanes and then one by one; f takes the kind of value that it is to give.
template <class T, class F>
[[gnu::always_inline]] inline void fill(int64_t n, T* out, F f) {
    int64_t i = 0;
    for (; i + kLanes<T> <= n; i += kLanes<T>) store(out + i, f(i, Lanes<T>{}));
    for (; i < n; ++i) out[i] = f(i, T(0));
}

}  // namespace

template <class T>
void add_scaled(const T* a, T factor, const T* b, int64_t n, T* out) {
    fill(n, out, [=]<class V>(int64_t i, V) { return fma(splat<V>(factor), load<V>(b + i), load<V>(a + i)); });
}
template <class T>
void absolute_deviations(const T* x, T centre, int64_t n, T* out) {
    fill(n, out, [=]<class V>(int64_t i, V) {
        const V d = load<V>(x + i) - splat<V>(centre);
        return greater(d, splat<V>(T(0)) - d);
    });
}
template <class T>
void add_squares(const T* x, T centre, T factor, int64_t n, T* sums) {
    fill(n, sums, [=]<class V>(int64_t i, V) {
        const V d = (load<V>(x + i) - splat<V>(centre)) * splat<V>(factor);
        return fma(d, d, load<V>(sums + i));
    });
}

template void add_scaled(const double*, double, const double*, int64_t, double*);
template void add_scaled(const float*, float, const float*, int64_t, float*);
template void absolute_deviations(const double*, double, int64_t, double*);
template void absolute_deviations(const float*, float, int64_t, float*);
template void add_squares(const double*, double, double, int64_t, double*);
template void add_squares(const float*, float, float, int64_t, float*);

}  // namespace nax::stats::robust
