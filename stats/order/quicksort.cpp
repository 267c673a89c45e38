// Quicksort in place, without scratch (Hoare; the median of three as pivot and the smaller side first after Sedgewick):
// plain, on a stride, with a payload, and as a selection.
#include <cstdint>
#include <utility>

#include "nax/statistics_order.h"
#include "stats/order/ranking.h"

namespace nax::stats {
namespace {

template <class T>
struct Strided {
    T* x;
    int64_t stride;
    T key(int64_t i) const { return x[i * stride]; }
    void swap(int64_t i, int64_t j) const { std::swap(x[i * stride], x[j * stride]); }
};
template <class T>
struct WithPayload {
    T *keys, *payload;
    T key(int64_t i) const { return keys[i]; }
    void swap(int64_t i, int64_t j) const {
        std::swap(keys[i], keys[j]);
        std::swap(payload[i], payload[j]);
    }
};

template <class Elements>
void order(const Elements& x, int64_t i, int64_t j) {
    if (x.key(j) < x.key(i)) x.swap(i, j);
}

template <class Elements>
void insertion_sort(const Elements& x, int64_t left, int64_t right) {
    for (int64_t i = left + 1; i <= right; ++i)
        for (int64_t j = i; j > left && x.key(j) < x.key(j - 1); --j) x.swap(j, j - 1);
}

// Splits left ... right, of at least three elements, and returns the place of the pivot. Both scans stop at keys equal
// to the pivot, which is what keeps them within bounds, NaNs included, and the sides of many equal keys even.
template <class Elements>
int64_t partition(const Elements& x, int64_t left, int64_t right) {
    x.swap(left + (right - left) / 2, left + 1);
    order(x, left, right);
    order(x, left + 1, right);
    order(x, left, left + 1);
    const auto pivot = x.key(left + 1);
    int64_t i = left + 1, j = right;
    for (;;) {
        do ++i;
        while (i < right && x.key(i) < pivot);
        do --j;
        while (j > left + 1 && pivot < x.key(j));
        if (j < i) break;
        x.swap(i, j);
    }
    x.swap(left + 1, j);
    return j;
}

template <class Elements>
void sort(const Elements& x, int64_t n) {
    constexpr int64_t kShort = 7;  // shorter ranges, by the difference of bounds, go by insertion
    struct Range {
        int64_t left, right;
    };
    // The larger side waits: a range on top of another is at most half as long.
    Range waiting[64];
    int depth = 0;
    int64_t left = 0, right = n - 1;
    for (;;) {
        if (right - left < kShort) {
            insertion_sort(x, left, right);
            if (depth == 0) return;
            --depth;
            left = waiting[depth].left;
            right = waiting[depth].right;
            continue;
        }
        const int64_t middle = partition(x, left, right);
        const bool upper_is_shorter = right - middle < middle - left;
        if (upper_is_shorter) {
            waiting[depth++] = {left, middle - 1};
            left = middle + 1;
        } else {
            waiting[depth++] = {middle + 1, right};
            right = middle - 1;
        }
    }
}

}  // namespace

template <class T>
void quick_sort(int64_t n, T* x, int64_t stride) {
    sort(Strided<T>{x, stride}, n);
}

template <class T>
T quick_select(int64_t n, T* x, int64_t k) {
    const Strided<T> elements{x, 1};
    int64_t left = 0, right = n - 1;
    while (right - left >= 2) {
        const int64_t middle = partition(elements, left, right);
        if (middle >= k) right = middle - 1;
        if (middle <= k) left = middle + 1;
    }
    if (right - left == 1) order(elements, left, right);
    return x[k];
}

template <class T>
void quick_map_sort(int64_t n, T* keys, T* payload) {
    sort(WithPayload<T>{keys, payload}, n);
}

template void quick_sort(int64_t, double*, int64_t);
template void quick_sort(int64_t, float*, int64_t);
template double quick_select(int64_t, double*, int64_t);
template float quick_select(int64_t, float*, int64_t);
template void quick_map_sort(int64_t, double*, double*);
template void quick_map_sort(int64_t, float*, float*);

}  // namespace nax::stats

extern "C" {
void __stodQSort(int64_t n, double* array) { nax::stats::quick_sort(n, array, 1); }
void __stosQSort(int64_t n, float* array) { nax::stats::quick_sort(n, array, 1); }
void __stodQSortStep(int64_t n, double* array, int64_t stride) { nax::stats::quick_sort(n, array, stride); }
void __stosQSortStep(int64_t n, float* array, int64_t stride) { nax::stats::quick_sort(n, array, stride); }
double __stodQSortSelect(int64_t n, double* array, int64_t k) { return nax::stats::quick_select(n, array, k); }
float __stosQSortSelect(int64_t n, float* array, int64_t k) { return nax::stats::quick_select(n, array, k); }
void _vdSSQuickMapSort(int64_t n, double* keys, double* payload) { nax::stats::quick_map_sort(n, keys, payload); }
void _vsSSQuickMapSort(int64_t n, float* keys, float* payload) { nax::stats::quick_map_sort(n, keys, payload); }
}
