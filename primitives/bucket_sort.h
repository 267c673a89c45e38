// Sorting of many keys: buckets by the leading digits that tell the keys apart, again within each bucket, and a network
// of registers for what is left. Keys that share their leading digits however they are looked at (few long buckets,
// deeper than kMostLevels) go by a least-significant-digit radix sort, which takes no more than linear time.
//
// Equal keys are equal bits, so that no order among them can be seen.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "primitives/bucket_map.h"
#include "primitives/key_order.h"
#include "primitives/lanes.h"
#include "primitives/sort_network.h"

namespace nax::primitives {
inline namespace NAX_PRIMITIVES_ISA {

inline constexpr int kMostLevels = 4;
inline constexpr int64_t kMostBuckets = 2048;
template <class K>
inline constexpr int64_t kGroupedKeys = 8 * kLanes<K>;

// Entries become the sums of those before them.
inline void to_offsets(uint32_t* counts, int64_t n) {
    uint32_t sum = 0;
    for (int64_t i = 0; i < n; ++i) {
        const uint32_t count = counts[i];
        counts[i] = sum;
        sum += count;
    }
}

// Bits that differ among the keys.
template <class K>
std::make_unsigned_t<K> differing_bits(const K* keys, int64_t n) {
    using U = std::make_unsigned_t<K>;
    const Lanes<K> first = Lanes<K>{} + keys[0];
    Lanes<K> different{};
    int64_t i = 0;
    for (; i + kLanes<K> <= n; i += kLanes<K>) different |= load<K>(keys + i) ^ first;
    if (i < n) different |= load_first<K>(keys + i, n - i, keys[0]) ^ first;
    U result = 0;
    for (int lane = 0; lane < kLanes<K>; ++lane) result |= static_cast<U>(different[lane]);
    return result;
}

// A least-significant-digit radix sort by the digits that aren't constant. The keys are in `keys`; the result, with the
// keys' order undone, goes to `keys` or `other`.
template <class Out, class K>
void sort_by_digits(K* keys, K* other, int64_t n, bool into_other) {
    using U = std::make_unsigned_t<K>;
    constexpr int kBits = 8 * static_cast<int>(sizeof(K)), kDigit = 8;
    constexpr U kSign = U{1} << (kBits - 1);
    const U different = differing_bits(keys, n);
    uint32_t end[1 << kDigit];
    K *from = keys, *to = other;
    for (int shift = 0; shift < kBits; shift += kDigit) {
        if (((different >> shift) & 0xFF) == 0) continue;
        const auto digit = [shift](K key) { return ((static_cast<U>(key) ^ kSign) >> shift) & 0xFF; };
        std::memset(end, 0, sizeof end);
        for (int64_t i = 0; i < n; ++i) ++end[digit(from[i])];
        to_offsets(end, 1 << kDigit);
        for (int64_t i = 0; i < n; ++i) to[end[digit(from[i])]++] = from[i];
        std::swap(from, to);
    }
    K* const target = into_other ? other : keys;
    for (int64_t i = 0; i < n; ++i) target[i] = Out::from_key(from[i]);
}

// Calls body(key, bucket) for every key in its order; bucket numbers are computed a batch ahead.
template <class In, bool kHole, class K, class Body>
[[gnu::always_inline]] inline void for_each_bucketed_key(const K* keys, int64_t n, const BucketMap<K>& map, Body body) {
    using U = std::make_unsigned_t<K>;
    constexpr int64_t kBatch = 8 * kLanes<K>;
    alignas(64) U bucket[kBatch];
    alignas(64) K key[kBatch];
    int64_t i = 0;
    for (; i + kBatch <= n; i += kBatch) {
        for (int64_t r = 0; r < kBatch; r += kLanes<K>) {
            const Lanes<K> v = In::to_key(load<K>(keys + i + r));
            store<K>(key + r, v);
            store<U>(bucket + r, map.template operator()<kHole>(v));
        }
#pragma GCC unroll 8
        for (int64_t r = 0; r < kBatch; ++r) body(key[r], bucket[r]);
    }
    for (; i < n; i += kLanes<K>) {
        const Lanes<K> v = In::to_key(load_first<K>(keys + i, n - i, K{0}));
        store<K>(key, v);
        store<U>(bucket, map.template operator()<kHole>(v));
        const int64_t m = n - i < kLanes<K> ? n - i : kLanes<K>;
        for (int64_t r = 0; r < m; ++r) body(key[r], bucket[r]);
    }
}

// One level: spreads the keys over buckets.
template <class In, class K>
class Distribution {
public:
    // The end of bucket b, once the keys are spread; bucket b begins where b - 1 ends.
    uint32_t end(int64_t b) const { return place_[b]; }

    void spread(const K* keys, K* buckets, int64_t n, int64_t count, const BucketMap<K>& map) {
        if (map.has_hole)
            spread_by<true>(keys, buckets, n, count, map);
        else
            spread_by<false>(keys, buckets, n, count, map);
    }

private:
    using U = std::make_unsigned_t<K>;

    template <bool kHole>
    [[gnu::noinline]] void spread_by(const K* keys, K* buckets, int64_t n, int64_t count, const BucketMap<K>& map) {
        std::memset(place_, 0, static_cast<std::size_t>(count) * sizeof place_[0]);
        for_each_bucketed_key<In, kHole>(keys, n, map, [this](K, U b) { ++place_[b]; });
        to_offsets(place_, count);
        for_each_bucketed_key<In, kHole>(keys, n, map, [this, buckets](K key, U b) { buckets[place_[b]++] = key; });
    }

    uint32_t place_[kMostBuckets];
};

// A vector of keys a bucket, of which several neighbours are sorted at once: uneven buckets then do no harm. But no
// more buckets than a first level, which reads from memory, or the next one, in the caches, can write to side by side.
template <class K>
int64_t bucket_count(int64_t n, int level) {
    constexpr int64_t kLong = 200000;
    const int64_t most = level == 0 && n > kLong ? 256 : kMostBuckets;
    int64_t count = 8;
    while (count < most && count * kLanes<K> < n) count *= 2;
    return count;
}

// Keys at equal distances, sorted.
inline constexpr int kSample = 64;
template <class In, class K>
void sample_keys(const K* keys, int64_t n, K* sample) {
    const uint64_t step = (static_cast<uint64_t>(n) << 16) / kSample;
    uint64_t at = step / 3;
    for (int i = 0; i < kSample; ++i, at += step) sample[i] = In::to_key(keys[at >> 16]);
    sort_few<KeyItself<K>, KeyItself<K>>(sample, sample, kSample);
}

// Keys that take no more than a few values, all of them in the sorted sample: counted, and written as runs. False, soon
// as a rule, when there is another value.
template <class In, class Out, class K>
bool sort_few_values(const K* keys, K* target, int64_t n, const K* sample) {
    constexpr int kFewValues = 16;
    K value[kFewValues];
    int count = 0;
    for (int i = 0; i < kSample; ++i) {
        if (i > 0 && sample[i] == sample[i - 1]) continue;
        if (count == kFewValues) return false;
        value[count++] = sample[i];
    }
    int64_t found[kFewValues] = {};
    constexpr int64_t kBlock = 4096 / sizeof(K);  // read once for each value, from the nearest cache
    for (int64_t i = 0; i < n; i += kBlock) {
        const int64_t m = n - i < kBlock ? n - i : kBlock;
        int64_t missing = m;
        for (int k = 0; k < count; ++k) {
            const Lanes<K> bits = Lanes<K>{} + In::from_key(value[k]);
            Lanes<K> equal{};
            int64_t j = 0;
            for (; j + kLanes<K> <= m; j += kLanes<K>) equal -= load<K>(keys + i + j) == bits;
            if (j < m) equal -= load_first<K>(keys + i + j, m - j, static_cast<K>(~bits[0])) == bits;
            int64_t sum = 0;
            for (int lane = 0; lane < kLanes<K>; ++lane) sum += equal[lane];
            found[k] += sum;
            missing -= sum;
        }
        if (missing != 0) return false;
    }
    for (int k = 0; k < count; ++k) {
        std::fill_n(target, found[k], Out::from_key(value[k]));
        target += found[k];
    }
    return true;
}

// Sorts the n keys of `keys`, below 2^32, with `other` of the same length as scratch; the result is in `other` if
// into_other, else in `keys`. In is the order of the keys as they stand, Out that of the result.
template <class In, class Out, class K>
void sort_many(K* keys, K* other, int64_t n, bool into_other, int level) {
    K* const target = into_other ? other : keys;
    if (n <= kNetworkKeys<K>) return sort_few<In, Out>(keys, target, n);

    alignas(64) K sample[kSample];
    sample_keys<In>(keys, n, sample);
    if (sort_few_values<In, Out>(keys, target, n, sample)) return;
    const int64_t count = bucket_count<K>(n, level);
    BucketMap<K> map;
    choose_map(sample, kSample, count, map);
    if (level == kMostLevels) {
        for (int64_t i = 0; i < n; ++i) keys[i] = In::to_key(keys[i]);
        return sort_by_digits<Out>(keys, other, n, into_other);
    }
    Distribution<In, K> distribution;
    distribution.spread(keys, other, n, count, map);
    // Neighbouring buckets that a network holds together are sorted by one.
    int64_t start = 0;
    for (int64_t b = 0; b < count;) {
        int64_t end = distribution.end(b++);
        if (end - start <= kGroupedKeys<K>) {
            while (b < count && distribution.end(b) - start <= kGroupedKeys<K>) end = distribution.end(b++);
            if (end == start) continue;
            sort_few<KeyItself<K>, Out>(other + start, into_other ? other + start : keys + start, end - start);
        } else {
            sort_many<KeyItself<K>, Out>(other + start, keys + start, end - start, !into_other, level + 1);
        }
        start = end;
    }
}

// The number of leading pairs of neighbours that are in order, or in reverse order if kReverse, rounded down to
// vectors.
template <class In, bool kReverse, class K>
int64_t pairs_in_order(const K* keys, int64_t n) {
    int64_t i = 0;
    for (; i + kLanes<K> < n; i += kLanes<K>) {
        const Lanes<K> here = In::to_key(load<K>(keys + i)), next = In::to_key(load<K>(keys + i + 1));
        if (any_set(kReverse ? here < next : next < here)) break;
    }
    return i;
}

// Sorts the n keys of `keys` with `other` of the same length as scratch. Keys that are in order already, or in reverse,
// are found so on the way.
template <class Order, class K>
void sort_keys(K* keys, K* other, int64_t n) {
    if (n <= kNetworkKeys<K>) return sort_few<Order, Order>(keys, keys, n);
    const auto key = [keys](int64_t i) { return Order::to_key(keys[i]); };
    int64_t i = pairs_in_order<Order, false>(keys, n);
    while (i + 1 < n && key(i) <= key(i + 1)) ++i;
    if (i + 1 == n) return;
    i = pairs_in_order<Order, true>(keys, n);
    while (i + 1 < n && key(i) >= key(i + 1)) ++i;
    if (i + 1 == n) {
        std::reverse(keys, keys + n);
        return;
    }
    sort_many<Order, Order>(keys, other, n, false, 0);
}

}  // namespace NAX_PRIMITIVES_ISA
}  // namespace nax::primitives
