// Sorting of 8-bit and 16-bit keys: networks of 32-bit lanes for few, counting for the rest.
#pragma once

#include <cstdint>
#include <cstring>

#include "primitives/bucket_sort.h"
#include "primitives/key_order.h"
#include "primitives/sort_network.h"

namespace nax::primitives {
inline namespace NAX_PRIMITIVES_ISA {

// The key as an unsigned number.
template <class Order, class K>
[[gnu::always_inline]] inline uint32_t rank_of(K bits) {
    using U = std::make_unsigned_t<K>;
    return static_cast<U>(static_cast<U>(Order::to_key(bits)) ^ static_cast<U>(U{1} << (8 * sizeof(K) - 1)));
}
template <class Order, class K>
[[gnu::always_inline]] inline K of_rank(uint32_t rank) {
    return Order::from_key(static_cast<K>(rank ^ (uint32_t{1} << (8 * sizeof(K) - 1))));
}

inline constexpr int64_t kFewNarrowKeys = 8 * kLanes<int32_t>;

template <class Order, class K>
void sort_few_narrow(K* keys, int64_t n) {
    alignas(64) int32_t wide[kFewNarrowKeys];
    for (int64_t i = 0; i < n; ++i) wide[i] = Order::to_key(keys[i]);
    sort_few<KeyItself<int32_t>, KeyItself<int32_t>>(wide, wide, n);
    for (int64_t i = 0; i < n; ++i) keys[i] = Order::from_key(static_cast<K>(wide[i]));
}

// Rewrites the keys from their counts, from the lowest rank on.
template <class Order, class K>
void write_runs(K* keys, const uint32_t* counts, uint32_t ranks) {
    K* to = keys;
    for (uint32_t rank = 0; rank < ranks; ++rank) {
        const uint32_t count = counts[rank];
        if (count == 0) continue;
        const K key = of_rank<Order, K>(rank);
        for (uint32_t i = 0; i < count; ++i) to[i] = key;
        to += count;
    }
}

// Four tables take turns: a key that repeats would wait for its own count otherwise.
template <class Order>
void sort_bytes(int8_t* keys, int64_t n) {
    if (n <= kFewNarrowKeys) return sort_few_narrow<Order>(keys, n);
    uint32_t counts[4][256] = {};
    int64_t i = 0;
    for (; i + 4 <= n; i += 4)
        for (int k = 0; k < 4; ++k) ++counts[k][rank_of<Order>(keys[i + k])];
    for (; i < n; ++i) ++counts[0][rank_of<Order>(keys[i])];
    for (int b = 0; b < 256; ++b) counts[0][b] += counts[1][b] + counts[2][b] + counts[3][b];
    write_runs<Order>(keys, counts[0], 256);
}

// Many words are counted in the scratch array, as soon as it holds a count of every word.
template <class Order>
void sort_words(int16_t* keys, int16_t* scratch, int64_t n) {
    constexpr int64_t kRanks = 65536;
    if (n <= kFewNarrowKeys) return sort_few_narrow<Order>(keys, n);
    if (n >= 2 * kRanks + 2) {
        const auto address = reinterpret_cast<uintptr_t>(scratch);
        auto* const counts = reinterpret_cast<uint32_t*>((address + 3) & ~uintptr_t{3});
        std::memset(counts, 0, kRanks * sizeof(uint32_t));
        for (int64_t i = 0; i < n; ++i) ++counts[rank_of<Order>(keys[i])];
        return write_runs<Order>(keys, counts, kRanks);
    }
    uint32_t low[256] = {}, high[256] = {};
    for (int64_t i = 0; i < n; ++i) {
        const uint32_t rank = rank_of<Order>(keys[i]);
        ++low[rank & 0xFF];
        ++high[rank >> 8];
    }
    to_offsets(low, 256);
    to_offsets(high, 256);
    for (int64_t i = 0; i < n; ++i) scratch[low[rank_of<Order>(keys[i]) & 0xFF]++] = keys[i];
    for (int64_t i = 0; i < n; ++i) keys[high[rank_of<Order>(scratch[i]) >> 8]++] = scratch[i];
}

}  // namespace NAX_PRIMITIVES_ISA
}  // namespace nax::primitives
