// Sum of an array, in an order of additions that depends on its length alone.
#pragma once

#include <cstdint>

namespace nax::stats {

// Eight partial sums, whatever the vectors' width.
template <class T>
T sum_of(const T* x, int64_t n) {
    T part[8] = {};
    int64_t i = 0;
    for (; i + 8 <= n; i += 8)
        for (int k = 0; k < 8; ++k) part[k] += x[i + k];
    for (int k = 0; i < n; ++i, ++k) part[k] += x[i];
    return ((part[0] + part[4]) + (part[2] + part[6])) + ((part[1] + part[5]) + (part[3] + part[7]));
}

}  // namespace nax::stats
