// Walks along the partition to the cell of one site. They double their stride, so that a poor start costs a logarithm.
#pragma once

#include <cstdint>

namespace nax::fit {

// The first i from low on with x[i] above the site, high when there is none before it.
template <class T>
[[gnu::always_inline]] static inline int64_t bisect(const T* x, int64_t low, int64_t high, T site) {
    while (low < high) {
        const int64_t middle = (low + high) / 2;
        if (x[middle] > site)
            high = middle;
        else
            low = middle + 1;
    }
    return low;
}

// The first i >= start with x[i] above the site, nx when there is none. A NaN site walks to nx.
template <class T>
[[gnu::always_inline]] static inline int64_t walk_up(const T* x, int64_t nx, int64_t start, T site) {
    int64_t low = start;
    int64_t stride = 1;
    while (low + stride <= nx && !(x[low + stride - 1] > site)) {
        low += stride;
        stride *= 2;
    }
    int64_t high = low + stride - 1 < nx ? low + stride - 1 : nx;
    return bisect(x, low, high, site);
}

// Down from start while the point below is above the site. A NaN site stays.
template <class T>
[[gnu::always_inline]] static inline int64_t walk_down(const T* x, int64_t start, T site) {
    int64_t high = start;
    int64_t stride = 1;
    while (high - stride >= 0 && x[high - stride] > site) {
        high -= stride;
        stride *= 2;
    }
    int64_t low = high - stride + 1 > 0 ? high - stride + 1 : 0;
    return bisect(x, low, high, site);
}

}  // namespace nax::fit
