// Sorting and selection of real numbers by the radix machinery of the primitives.
#include "primitives/bucket_sort.h"
#include "primitives/pair_sort.h"
#include "primitives/select.h"
#include "stats/order/ranking.h"

namespace nax::stats {

using namespace nax::primitives;

// The radix sort counts in 32 bits.
template <class T>
void sort_reals(T* x, T* scratch, int64_t n) {
    using Order = KeyOrder<T>;
    using K = typename Order::Key;
    if (n < 1) return;
    if (n >= int64_t{1} << 31) return quick_sort(n, x, 1);
    sort_keys<Order>(reinterpret_cast<K*>(x), reinterpret_cast<K*>(scratch), n);
}

template <class T>
void sort_with_payload(T* keys, T* payload, T* scratch, int64_t n) {
    using Order = KeyOrder<T>;
    using K = typename Order::Key;
    if (n < 1) return;
    if (n >= int64_t{1} << 31) return quick_map_sort(n, keys, payload);
    sort_pairs<Order, Order>(Pairs<K, T>{reinterpret_cast<K*>(keys), payload},
                             Pairs<K, T>{reinterpret_cast<K*>(scratch), scratch + n}, n, false, 0);
}

template <class T>
void select_reals(const T* x, int64_t n, T* work, const int64_t* ranks, int64_t count, T* values) {
    using Order = KeyOrder<T>;
    using K = typename Order::Key;
    if (n < 1 || count < 1) return;
    Selection<Order, K>::template run<Order>(reinterpret_cast<const K*>(x), n, reinterpret_cast<K*>(work), n,
                                             {ranks, count, 0}, reinterpret_cast<K*>(values), 0);
}

template void sort_reals(double*, double*, int64_t);
template void sort_reals(float*, float*, int64_t);
template void sort_with_payload(double*, double*, double*, int64_t);
template void sort_with_payload(float*, float*, float*, int64_t);
template void select_reals(const double*, int64_t, double*, const int64_t*, int64_t, double*);
template void select_reals(const float*, int64_t, float*, const int64_t*, int64_t, float*);

}  // namespace nax::stats
