// Where results go. An evaluator writes planes: for one function and one order, consecutive sites side by side. Layouts
// in which planes lie so in the caller's array take them directly, the others get them through a block buffer that is
// then transposed.
#pragma once

#include <cstdint>

#include "fit/eval/evaluator.h"
#include "simd/quads.h"

namespace nax::fit {

enum ResultHint : int64_t { kResultFunctions = 16, kResultPlanes = 32, kResultSites = 256, kResultSiteOrders = 512 };

constexpr bool is_result_hint(int64_t v) {
    return v == 0 || v == 16 || v == 128 || v == kResultPlanes || v == kResultSites || v == kResultSiteOrders;
}

struct ResultLayout {
    ResultHint hint;  // 0 and 128 are already kResultFunctions
    int64_t nsite, ny, nder;

    constexpr bool direct() const { return hint == kResultPlanes || (hint == kResultFunctions && nder == 1); }
    // Whether the buffer holds all functions of a block, or one after the other.
    constexpr bool buffers_all() const { return hint == kResultSites || hint == kResultSiteOrders; }
    constexpr int64_t buffer_planes() const { return direct() ? 0 : (buffers_all() ? ny * nder : nder); }

    // Distance between the planes of a function, and the first of function j, for the block of sites from `first` on.
    constexpr int64_t plane_stride() const {
        if (direct()) return nsite;
        return hint == kResultSiteOrders ? ny * kBlockSites : kBlockSites;
    }
    template <class T>
    constexpr T* plane(T* r, T* buffer, int64_t j, int64_t first) const {
        if (direct()) return r + j * nder * nsite + first;
        if (hint == kResultSites) return buffer + j * nder * kBlockSites;
        return hint == kResultSiteOrders ? buffer + j * kBlockSites : buffer;
    }
};

// out[i * planes + k] = plane k, site i, for n sites.
template <int kPlanes, class T>
void interleave_few(const T* buffer, int64_t n, T* out) {
    for (int64_t i = 0; i < n; ++i)
#pragma GCC unroll 4
        for (int k = 0; k < kPlanes; ++k) out[i * kPlanes + k] = buffer[k * kBlockSites + i];
}
template <class T>
void interleave(const T* buffer, int64_t planes, int64_t n, T* out) {
    if (planes == 2) return interleave_few<2>(buffer, n, out);
    if (planes == 3) return interleave_few<3>(buffer, n, out);
    // Tiles of four sites by four planes, and what they leave over.
    const int64_t sites = n & ~int64_t{3}, tiled = planes & ~int64_t{3};
    for (int64_t i = 0; i < sites; i += 4) {
        for (int64_t k = 0; k < tiled; k += 4)
            simd::transpose_tile(buffer + k * kBlockSites + i, kBlockSites, out + i * planes + k, planes);
        for (int64_t k = tiled; k < planes; ++k)
            for (int64_t s = i; s < i + 4; ++s) out[s * planes + k] = buffer[k * kBlockSites + s];
    }
    for (int64_t i = sites; i < n; ++i)
        for (int64_t k = 0; k < planes; ++k) out[i * planes + k] = buffer[k * kBlockSites + i];
}

}  // namespace nax::fit
