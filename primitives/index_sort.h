// Stable sorting of indices by 32-bit keys that stay where they are.
//
// A key and its index make one 64-bit number, index below: such numbers are all different, and any sort of them is
// stable. Few enough for the stack are sorted as such. More indices are first spread over buckets by their keys, in
// their order. Keys whose buckets stay long go by a least-significant-digit radix sort of the indices.
#pragma once

#include <cstdint>
#include <cstring>

#include "primitives/bucket_sort.h"
#include "primitives/key_order.h"
#include "primitives/narrow_sort.h"

namespace nax::primitives {
inline namespace NAX_PRIMITIVES_ISA {

// Keys `distance` bytes apart, aligned or not.
template <class Order>
struct StridedKeys {
    using K = typename Order::Key;
    const unsigned char* base;
    int64_t distance;

    [[gnu::always_inline]] K operator[](int64_t i) const {
        K bits;
        std::memcpy(&bits, base + i * distance, sizeof bits);
        return Order::to_key(bits);
    }
};

// Which indices a step sorts: the numbers 0 ... n - 1 at first, later a bucket of them.
struct AllIndices {
    [[gnu::always_inline]] int32_t operator[](int64_t i) const { return static_cast<int32_t>(i); }
};
using SomeIndices = const int32_t*;

inline constexpr int64_t kPackedKeys = 1024;

// Sorts 1 to kPackedKeys indices into `target`, which may be where they are.
template <class Keys, class Indices>
void sort_packed(const Keys& keys, Indices indices, int64_t n, int32_t* target) {
    alignas(64) int64_t packed[kPackedKeys], scratch[kPackedKeys];
    for (int64_t i = 0; i < n; ++i) {
        const int32_t index = indices[i];
        packed[i] = static_cast<int64_t>((static_cast<uint64_t>(static_cast<uint32_t>(keys[index])) << 32) |
                                         static_cast<uint32_t>(index));
    }
    sort_keys<KeyItself<int64_t>>(packed, scratch, n);
    for (int64_t i = 0; i < n; ++i) target[i] = static_cast<int32_t>(packed[i]);
}

// Passes over the 8-bit digits of the keys that aren't all the same, from the lowest on. The indices are in `from`, and
// end in `target`, which is `from` or `to`.
template <class Keys>
void sort_indices_by_digits(const Keys& keys, int32_t* from, int32_t* to, int64_t n, int32_t* target) {
    using K = typename Keys::K;
    uint32_t place[256];
    for (int shift = 0; shift < 8 * static_cast<int>(sizeof(K)); shift += 8) {
        const auto digit = [&keys, shift](int32_t index) {
            return (rank_of<KeyItself<K>>(keys[index]) >> shift) & 0xFF;
        };
        std::memset(place, 0, sizeof place);
        for (int64_t i = 0; i < n; ++i) ++place[digit(from[i])];
        if (place[digit(from[0])] == n) continue;
        to_offsets(place, 256);
        for (int64_t i = 0; i < n; ++i) to[place[digit(from[i])]++] = from[i];
        std::swap(from, to);
    }
    if (from != target) std::memcpy(target, from, static_cast<std::size_t>(n) * sizeof *from);
}

template <class Keys>
class IndexDistribution {
public:
    uint32_t end(int64_t b) const { return place_[b]; }

    template <class Indices>
    void spread(const Keys& keys, Indices indices, int32_t* buckets, int64_t n, int64_t count,
                const BucketMap<int32_t>& map) {
        if (map.has_hole)
            spread_by<true>(keys, indices, buckets, n, count, map);
        else
            spread_by<false>(keys, indices, buckets, n, count, map);
    }

private:
    static constexpr int64_t kBatch = 4 * kLanes<int32_t>;

    template <bool kHole, class Indices, class Body>
    [[gnu::always_inline]] static void for_each_index(const Keys& keys, Indices indices, int64_t n,
                                                      const BucketMap<int32_t>& map, Body body) {
        alignas(64) int32_t key[kBatch];
        alignas(64) uint32_t bucket[kBatch];
        for (int64_t i = 0; i < n; i += kBatch) {
            const int64_t m = n - i < kBatch ? n - i : kBatch;
            for (int64_t r = 0; r < m; ++r) key[r] = keys[indices[i + r]];
            for (int64_t r = m; r < kBatch; ++r) key[r] = 0;
            for (int64_t r = 0; r < kBatch; r += kLanes<int32_t>)
                store<uint32_t>(bucket + r, map.template operator()<kHole>(load<int32_t>(key + r)));
            for (int64_t r = 0; r < m; ++r) body(indices[i + r], bucket[r]);
        }
    }
    template <bool kHole, class Indices>
    [[gnu::noinline]] void spread_by(const Keys& keys, Indices indices, int32_t* buckets, int64_t n, int64_t count,
                                     const BucketMap<int32_t>& map) {
        std::memset(place_, 0, static_cast<std::size_t>(count) * sizeof place_[0]);
        for_each_index<kHole>(keys, indices, n, map, [this](int32_t, uint32_t b) { ++place_[b]; });
        to_offsets(place_, count);
        for_each_index<kHole>(keys, indices, n, map,
                              [this, buckets](int32_t index, uint32_t b) { buckets[place_[b]++] = index; });
    }

    uint32_t place_[kMostBuckets];
};

// Sorts n indices into `target`, which is `spare` or `other`. `indices` are either all of them or stand in `spare`.
template <class Keys, class Indices>
void sort_indices(const Keys& keys, Indices indices, int32_t* spare, int32_t* other, int64_t n, int32_t* target,
                  int level) {
    if (n <= kPackedKeys) return sort_packed(keys, indices, n, target);
    constexpr int kSample = 128;
    constexpr int kDeepest = 3;
    alignas(64) int32_t sample[kSample];
    const uint64_t step = (static_cast<uint64_t>(n) << 16) / kSample;
    uint64_t at = step / 3;
    for (int i = 0; i < kSample; ++i, at += step) sample[i] = keys[indices[static_cast<int64_t>(at >> 16)]];
    sort_few<KeyItself<int32_t>, KeyItself<int32_t>>(sample, sample, kSample);
    int64_t count = 8;
    while (count < kMostBuckets && count * 256 < n) count *= 2;
    BucketMap<int32_t> map;
    const bool distinct = choose_map(sample, kSample, count, map);
    if (!distinct || level == kDeepest) {
        if constexpr (std::is_same_v<Indices, AllIndices>)
            for (int64_t i = 0; i < n; ++i) spare[i] = indices[i];
        return sort_indices_by_digits(keys, spare, other, n, target);
    }
    IndexDistribution<Keys> distribution;
    distribution.spread(keys, indices, other, n, count, map);
    int64_t start = 0;
    for (int64_t b = 0; b < count;) {
        int64_t end = distribution.end(b++);
        while (b < count && distribution.end(b) - start <= kPackedKeys) end = distribution.end(b++);
        if (end > start)
            sort_indices(keys, SomeIndices{other + start}, other + start, spare + start, end - start, target + start,
                         level + 1);
        start = end;
    }
}

// Keys of 8 and 16 bits: one or two counting passes, or a network for few. Those of 8 bits need no scratch.
template <class Keys>
void sort_narrow_indices(const Keys& keys, int32_t* index, int32_t* scratch, int64_t n) {
    if (n <= kNetworkKeys<int64_t>) return sort_packed(keys, AllIndices{}, n, index);
    const auto rank = [&keys](int64_t i) { return rank_of<KeyItself<typename Keys::K>>(keys[i]); };
    uint32_t low[256] = {}, high[256] = {};
    for (int64_t i = 0; i < n; ++i) {
        const uint32_t r = rank(i);
        ++low[r & 0xFF];
        if constexpr (sizeof(typename Keys::K) == 2) ++high[r >> 8];
    }
    to_offsets(low, 256);
    int32_t* const first = sizeof(typename Keys::K) == 2 ? scratch : index;
    for (int64_t i = 0; i < n; ++i) first[low[rank(i) & 0xFF]++] = static_cast<int32_t>(i);
    if constexpr (sizeof(typename Keys::K) == 2) {
        to_offsets(high, 256);
        for (int64_t i = 0; i < n; ++i) index[high[rank(first[i]) >> 8]++] = first[i];
    }
}

}  // namespace NAX_PRIMITIVES_ISA
}  // namespace nax::primitives
