// Selection of keys by rank, without sorting them: the buckets of a sampled map are counted, and only the keys of
// buckets that hold a wanted rank are looked at further.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "primitives/bucket_sort.h"

namespace nax::primitives {
inline namespace NAX_PRIMITIVES_ISA {

// Ranks `first` ... of keys, and where their values go, in key order undone by Out.
struct WantedRanks {
    const int64_t* rank;  // ascending
    int64_t count;
    int64_t first;  // rank of the smallest key at hand among all
};

// Wirth's selection in place (FIND), for keys that no map tells apart or that leave no room.
template <class K>
K select_in_place(K* keys, int64_t n, int64_t rank) {
    int64_t left = 0, right = n - 1;
    while (left < right) {
        const K pivot = std::max(std::min(keys[left], keys[right]),
                                 std::min(std::max(keys[left], keys[right]), keys[left + (right - left) / 2]));
        int64_t i = left, j = right;
        while (i <= j) {
            while (keys[i] < pivot) ++i;
            while (pivot < keys[j]) --j;
            if (i <= j) std::swap(keys[i++], keys[j--]);
        }
        if (j < rank) left = i;
        if (rank < i) right = j;
    }
    return keys[rank];
}

template <class In, class K>
class Selection {
public:
    // `work` has room for `room` keys, those of `keys` at least at first.
    template <class Out>
    static void run(const K* keys, int64_t n, K* work, int64_t room, WantedRanks wanted, K* values, int level) {
        if (n <= kNetworkKeys<K>) {
            alignas(64) K sorted[kNetworkKeys<K>];
            sort_few<In, Out>(keys, sorted, n);
            for (int64_t r = 0; r < wanted.count; ++r) values[r] = sorted[wanted.rank[r] - wanted.first];
            return;
        }
        Counting counting;
        if (level == kMostLevels || room < n || n >= kLongest) {
            if (room < n) return by_partition<Out>(const_cast<K*>(keys), n, wanted, values);
            for (int64_t i = 0; i < n; ++i) work[i] = In::to_key(keys[i]);
            return by_partition<Out>(work, n, wanted, values);
        }
        K sample[kSample];
        sample_keys<In>(keys, n, sample);
        const int64_t buckets = std::min<int64_t>(bucket_count<K>(n, 1), kMostBuckets);
        if (!choose_map(sample, kSample, buckets, counting.map) && differing_bits(keys, n) == 0) {
            for (int64_t r = 0; r < wanted.count; ++r) values[r] = Out::from_key(In::to_key(keys[0]));
            return;
        }
        counting.buckets = buckets;
        const int64_t collected = counting.map.has_hole ? counting.template collect<true>(keys, n, work, wanted)
                                                        : counting.template collect<false>(keys, n, work, wanted);
        // The ranks bucket by bucket.
        int64_t r = 0, below = 0, place = 0;
        for (int64_t b = 0; b < buckets && r < wanted.count; ++b) {
            const int64_t size = counting.count[b];
            int64_t end = r;
            while (end < wanted.count && wanted.rank[end] - wanted.first < below + size) ++end;
            if (end > r) {
                Selection<KeyItself<K>, K>::template run<Out>(work + place, size, work + collected, room - collected,
                                                              {wanted.rank + r, end - r, wanted.first + below},
                                                              values + r, level + 1);
                place += size;
            }
            r = end;
            below += size;
        }
    }

private:
    static constexpr int64_t kLongest = int64_t{1} << 31;  // of counts in 32 bits

    struct Counting {
        static constexpr uint32_t kUnwanted = 0xFFFFFFFF;
        BucketMap<K> map;
        int64_t buckets;
        uint32_t count[kMostBuckets], place[kMostBuckets];

        // Counts the buckets, and copies the keys of those that hold a wanted rank to `work`, bucket by bucket. Returns
        // their number.
        template <bool kHole>
        [[gnu::noinline]] int64_t collect(const K* keys, int64_t n, K* work, const WantedRanks& wanted) {
            uint32_t second[kMostBuckets];
            std::memset(count, 0, static_cast<std::size_t>(buckets) * sizeof count[0]);
            std::memset(second, 0, static_cast<std::size_t>(buckets) * sizeof second[0]);
            using U = std::make_unsigned_t<K>;
            // Two tables take turns: a bucket that repeats would wait for its own count.
            bool odd = false;
            for_each_bucketed_key<In, kHole>(keys, n, map, [&](K, U b) {
                ++(odd ? second : count)[b];
                odd = !odd;
            });
            int64_t below = 0, collected = 0, r = 0;
            for (int64_t b = 0; b < buckets; ++b) {
                count[b] += second[b];
                below += count[b];
                place[b] = kUnwanted;
                if (r < wanted.count && wanted.rank[r] - wanted.first < below) {
                    place[b] = static_cast<uint32_t>(collected);
                    collected += count[b];
                    while (r < wanted.count && wanted.rank[r] - wanted.first < below) ++r;
                }
            }
            for_each_bucketed_key<In, kHole>(keys, n, map, [&](K key, U b) {
                if (place[b] != kUnwanted) [[unlikely]]
                    work[place[b]++] = key;
            });
            return collected;
        }
    };

    template <class Out>
    static void by_partition(K* keys, int64_t n, const WantedRanks& wanted, K* values) {
        for (int64_t r = 0; r < wanted.count; ++r)
            values[r] = Out::from_key(select_in_place(keys, n, wanted.rank[r] - wanted.first));
    }
};

}  // namespace NAX_PRIMITIVES_ISA
}  // namespace nax::primitives
