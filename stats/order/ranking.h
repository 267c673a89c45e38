// Sorting and selection of real numbers, by their bits: negative zero is below zero, and NaNs stand at the ends by
// sign.
#pragma once

#include <cstdint>

namespace nax::stats {

// Sorts ascending; `scratch` has n elements.
template <class T>
void sort_reals(T* x, T* scratch, int64_t n);

// Sorts the keys, equal ones in their old order, and moves the payload along; the scratch has 2 n elements.
template <class T>
void sort_with_payload(T* keys, T* payload, T* scratch, int64_t n);

// values[r] becomes the element of rank ranks[r], from 0 on; ranks ascend. `work` has n elements.
template <class T>
void select_reals(const T* x, int64_t n, T* work, const int64_t* ranks, int64_t count, T* values);

// Quicksort without scratch, the median of three as pivot, on every `stride`-th element. NaNs end anywhere.
template <class T>
void quick_sort(int64_t n, T* x, int64_t stride);
// Leaves x partly sorted; returns the element of rank k.
template <class T>
T quick_select(int64_t n, T* x, int64_t k);
// Sorts the keys, and moves the payload along.
template <class T>
void quick_map_sort(int64_t n, T* keys, T* payload);

// Element of order q of n sorted values: it lies between ranks k and `upper`, at the fraction f. n is at least 1.
template <class T>
struct QuantilePlace {
    int64_t k, upper;
    T f;
};
inline double fused(double a, double b, double c) { return __builtin_fma(a, b, c); }
inline float fused(float a, float b, float c) { return __builtin_fmaf(a, b, c); }

template <class T>
QuantilePlace<T> quantile_place(T q, int64_t n) {
    const T last = static_cast<T>(n - 1);
    int64_t k = static_cast<int64_t>(last * q);
    if (k > n - 1) k = n - 1;  // where n - 1 is rounded up
    return {k, k + 1 < n ? k + 1 : n - 1, fused(q, last, static_cast<T>(-k))};
}

// Infinite neighbours make the formulas NaN, or infinite of the wrong sign where rounding took f below 0.
template <class T>
bool is_at_lower(T low, T high, T f) {
    return __builtin_isinf(high) && (low == high || !(f > 0));
}
// The two forms of the interpolation; they differ in the last bit.
template <class T>
T quantile_of_sorted(T low, T high, T f) {
    if (is_at_lower(low, high, f)) return low;
    return fused(1 - f, low, f * high);
}
template <class T>
T quantile_of_selected(T low, T high, T f) {
    if (is_at_lower(low, high, f)) return low;
    return fused(high - low, f, low);
}

}  // namespace nax::stats
