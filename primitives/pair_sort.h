// Stable sorting of keys with a payload that moves along: buckets as in bucket_sort.h, insertion for few, and a
// least-significant-digit radix sort for keys that no map tells apart.
#pragma once

#include <cstdint>
#include <cstring>
#include <utility>

#include "primitives/bucket_sort.h"

namespace nax::primitives {
inline namespace NAX_PRIMITIVES_ISA {

template <class K, class P>
struct Pairs {
    K* keys;
    P* payload;
    Pairs operator+(int64_t n) const { return {keys + n, payload + n}; }
    void put(int64_t i, K key, P value) const {
        keys[i] = key;
        payload[i] = value;
    }
};

template <class In, class Out, class K, class P>
void sort_few_pairs(Pairs<K, P> source, Pairs<K, P> target, int64_t n) {
    for (int64_t i = 0; i < n; ++i) {
        const K key = In::to_key(source.keys[i]);
        const P value = source.payload[i];
        int64_t j = i;
        for (; j > 0 && key < Out::to_key(target.keys[j - 1]); --j)
            target.put(j, target.keys[j - 1], target.payload[j - 1]);
        target.put(j, Out::from_key(key), value);
    }
}

// The keys of `from` are in their order already.
template <class Out, class K, class P>
void sort_pairs_by_digits(Pairs<K, P> from, Pairs<K, P> to, int64_t n, Pairs<K, P> target) {
    using U = std::make_unsigned_t<K>;
    constexpr int kBits = 8 * static_cast<int>(sizeof(K));
    constexpr U kSign = U{1} << (kBits - 1);
    const U different = differing_bits(from.keys, n);
    uint32_t place[256];
    for (int shift = 0; shift < kBits; shift += 8) {
        if (((different >> shift) & 0xFF) == 0) continue;
        const auto digit = [shift](K key) { return ((static_cast<U>(key) ^ kSign) >> shift) & 0xFF; };
        std::memset(place, 0, sizeof place);
        for (int64_t i = 0; i < n; ++i) ++place[digit(from.keys[i])];
        to_offsets(place, 256);
        for (int64_t i = 0; i < n; ++i) to.put(place[digit(from.keys[i])]++, from.keys[i], from.payload[i]);
        std::swap(from, to);
    }
    for (int64_t i = 0; i < n; ++i) target.put(i, Out::from_key(from.keys[i]), from.payload[i]);
}

template <class In, bool kHole, class K, class P>
[[gnu::noinline]] void spread_pairs(Pairs<K, P> pairs, Pairs<K, P> buckets, int64_t n, int64_t count,
                                    const BucketMap<K>& map, uint32_t* place) {
    using U = std::make_unsigned_t<K>;
    std::memset(place, 0, static_cast<std::size_t>(count) * sizeof place[0]);
    for_each_bucketed_key<In, kHole>(pairs.keys, n, map, [place](K, U b) { ++place[b]; });
    to_offsets(place, count);
    int64_t i = 0;
    for_each_bucketed_key<In, kHole>(pairs.keys, n, map,
                                     [&](K key, U b) { buckets.put(place[b]++, key, pairs.payload[i++]); });
}

// Sorts n pairs, below 2^32, with `other` as scratch; the result is in `other` if into_other, else in `pairs`.
template <class In, class Out, class K, class P>
void sort_pairs(Pairs<K, P> pairs, Pairs<K, P> other, int64_t n, bool into_other, int level) {
    constexpr int64_t kFew = 20, kAim = 6, kMost = 1024;
    const Pairs<K, P> target = into_other ? other : pairs;
    if (n <= kFew) {
        if (into_other) return sort_few_pairs<In, Out>(pairs, target, n);
        sort_few_pairs<In, KeyItself<K>>(pairs, other, n);
        for (int64_t i = 0; i < n; ++i) target.put(i, Out::from_key(other.keys[i]), other.payload[i]);
        return;
    }
    alignas(64) K sample[kSample];
    sample_keys<In>(pairs.keys, n, sample);
    int64_t count = 8;
    while (count < kMost && count * kAim < n) count *= 2;
    BucketMap<K> map;
    if ((!choose_map(sample, kSample, count, map) && differing_bits(pairs.keys, n) == 0) || level == kMostLevels) {
        for (int64_t i = 0; i < n; ++i) pairs.keys[i] = In::to_key(pairs.keys[i]);
        return sort_pairs_by_digits<Out>(pairs, other, n, target);
    }
    uint32_t end[kMost];
    if (map.has_hole)
        spread_pairs<In, true>(pairs, other, n, count, map, end);
    else
        spread_pairs<In, false>(pairs, other, n, count, map, end);
    int64_t start = 0;
    for (int64_t b = 0; b < count; ++b) {
        if (end[b] > start)
            sort_pairs<KeyItself<K>, Out>(other + start, pairs + start, end[b] - start, !into_other, level + 1);
        start = end[b];
    }
}

}  // namespace NAX_PRIMITIVES_ISA
}  // namespace nax::primitives
