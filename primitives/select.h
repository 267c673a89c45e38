// Selection of keys by rank, without sorting them: the buckets of a sampled map are counted, and only the keys of
// buckets that hold a wanted rank are looked at further.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

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

// One rank, or a few neighbours, found in one pass over the keys (Floyd and Rivest, CACM 18, 1975): a sorted sample
// gives two keys that enclose them most probably; the pass counts the keys below and copies those between.
template <class In, class K>
class Bracket {
public:
    // Chooses the two keys around ranks `first` to `last` of n.
    void choose(const K* sample, int64_t size, int64_t first, int64_t last, int64_t n) {
        const double share = static_cast<double>(first) / static_cast<double>(n);
        // Three standard deviations of the sample's rank.
        const auto margin =
            static_cast<int64_t>(3 * __builtin_sqrt(static_cast<double>(size) * share * (1 - share))) + 2;
        const auto place = [&](int64_t rank) {
            return static_cast<int64_t>(static_cast<double>(rank) / static_cast<double>(n) * static_cast<double>(size));
        };
        const int64_t from = place(first) - margin, to = place(last) + margin;
        low_ = from < 0 ? std::numeric_limits<K>::min() : sample[from];
        high_ = to >= size ? std::numeric_limits<K>::max() : sample[to];
    }
    void start(K* room, int64_t size) {
        begin_ = end_ = room;
        limit_ = room + size;
        below_ = 0;
    }
    // False when there is no room for all keys between.
    bool take(const K* keys, int64_t n) {
        if (limit_ - end_ < n) return false;
        const Lanes<K> low = Lanes<K>{} + low_, high = Lanes<K>{} + high_;
        constexpr int kWord = 64 / kLanes<K>;  // vectors whose lanes fill a word of bits
        int64_t i = 0;
        for (; i + 64 <= n; i += 64) {
            uint64_t less = 0, more = 0;
#pragma GCC unroll 16
            for (int r = 0; r < kWord; ++r) {
                const Lanes<K> v = In::to_key(load<K>(keys + i + r * kLanes<K>));
                less |= uint64_t{lanes_below<K>(v, low)} << (r * kLanes<K>);
                more |= uint64_t{lanes_below<K>(high, v)} << (r * kLanes<K>);
            }
            below_ += __builtin_popcountll(less);
            for (uint64_t between = ~(less | more); between != 0; between &= between - 1)
                *end_++ = In::to_key(keys[i + __builtin_ctzll(between)]);
        }
        for (; i < n; ++i) {
            const K key = In::to_key(keys[i]);
            if (key < low_)
                ++below_;
            else if (key <= high_)
                *end_++ = key;
        }
        return true;
    }
    int64_t below() const { return below_; }
    int64_t count() const { return end_ - begin_; }
    K* keys() const { return begin_; }
    bool holds(int64_t first, int64_t last) const { return below_ <= first && last < below_ + count(); }

private:
    K low_, high_;
    K *begin_, *end_, *limit_;
    int64_t below_;
};

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
        if (level == 0 && n >= kBracketed && by_brackets<Out>(keys, n, work, room, wanted, values)) return;
        by_counting<Out>(keys, n, work, room, wanted, values, level);
    }

private:
    static constexpr int64_t kLongest = int64_t{1} << 31;  // of counts in 32 bits
    static constexpr int64_t kBracketed = 2048;
    static constexpr int kMostBrackets = 4;

    // False when the ranks are too many or the sample led astray.
    template <class Out>
    static bool by_brackets(const K* keys, int64_t n, K* work, int64_t room, const WantedRanks& wanted, K* values) {
        // Neighbouring ranks, which a quantile lies between, share a bracket.
        int64_t group[kMostBrackets + 1];
        int groups = 0;
        for (int64_t r = 0; r < wanted.count; ++r) {
            if (r > 0 && wanted.rank[r] - wanted.rank[r - 1] <= 1) continue;
            if (groups == kMostBrackets) return false;
            group[groups++] = r;
        }
        group[groups] = wanted.count;
        int64_t size = 256;
        while (size < 4096 && size * 24 < n) size *= 2;
        const int64_t step = n / size;
        for (int64_t i = 0; i < size; ++i) work[i] = In::to_key(keys[i * step + step / 2]);
        sort_keys<KeyItself<K>>(work, work + size, size);
        Bracket<In, K> brackets[kMostBrackets];
        const int64_t share = (room - size) / groups;
        for (int g = 0; g < groups; ++g) {
            brackets[g].choose(work, size, wanted.rank[group[g]], wanted.rank[group[g + 1] - 1], n);
            brackets[g].start(work + size + g * share, share);
        }
        constexpr int64_t kBlock = 8192 / sizeof(K);  // stays in the nearest cache for all brackets
        for (int64_t i = 0; i < n; i += kBlock)
            for (int g = 0; g < groups; ++g)
                if (!brackets[g].take(keys + i, n - i < kBlock ? n - i : kBlock)) return false;
        for (int g = 0; g < groups; ++g)
            if (!brackets[g].holds(wanted.rank[group[g]], wanted.rank[group[g + 1] - 1])) return false;
        for (int g = 0; g < groups; ++g) {
            const Bracket<In, K>& b = brackets[g];
            Selection<KeyItself<K>, K>::template run<Out>(b.keys(), b.count(), b.keys() + b.count(), share - b.count(),
                                                          {wanted.rank + group[g], group[g + 1] - group[g], b.below()},
                                                          values + group[g], 1);
        }
        return true;
    }

    template <class Out>
    static void by_counting(const K* keys, int64_t n, K* work, int64_t room, const WantedRanks& wanted, K* values,
                            int level) {
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
