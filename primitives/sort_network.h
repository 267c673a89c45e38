// Sorting of few keys by a network on registers.
//
// The keys stand in kRows registers. Batcher's odd-even merge sort (Knuth, TAOCP 3, 5.3.4) sorts the column of every
// lane without a shuffle. Then neighbouring groups of columns are merged, twice as wide each time, as Batcher's bitonic
// sequences: the upper group reversed against the lower one, halves exchanged, first between lanes and then between
// rows. In the end lane l holds the keys from l kRows on, which log2(kRows) rounds of interleaving write out in order.
#pragma once

#include <cstdint>
#include <limits>

#include "primitives/key_order.h"
#include "primitives/lanes.h"

namespace nax::primitives {
inline namespace NAX_PRIMITIVES_ISA {

// Lanes in reverse order within groups of kGroup.
template <int kGroup>
struct ReversedIn {
    static constexpr int lane(int i) { return i ^ (kGroup - 1); }
};
// Lanes whose bit kDistance is set are exchanged with those where it isn't.
template <int kDistance>
struct Exchanged {
    static constexpr int lane(int i) { return i ^ kDistance; }
};
// Where bit kBit of the lane's number is set the second operand's, else the first one's.
template <int kBit, int kCount>
struct SecondWhere {
    static constexpr int lane(int i) { return (i & kBit) != 0 ? kCount + i : i; }
};
// Lanes of both operands in turn, from kFirst on.
template <int kFirst, int kCount>
struct Interleaved {
    static constexpr int lane(int i) { return kFirst + i / 2 + (i % 2) * kCount; }
};

template <class K, int kRows, int kBytes = kVectorBytes>
struct SortNetwork {
    static constexpr int kWidth = kLanes<K, kBytes>;
    static constexpr int kKeys = kRows * kWidth;
    using V = Lanes<K, kBytes>;

    [[gnu::always_inline]] static void compare(V& a, V& b) {
        const V low = smaller(a, b);
        b = larger(a, b);
        a = low;
    }

    // Odd-even merge of the rows first, first + step, ... of `count` rows.
    template <int kFirst, int kCount, int kStep>
    [[gnu::always_inline]] static void merge_rows(V* v) {
        if constexpr (2 * kStep < kCount) {
            merge_rows<kFirst, kCount, 2 * kStep>(v);
            merge_rows<kFirst + kStep, kCount, 2 * kStep>(v);
            compare_rows<kFirst + kStep, kFirst + kCount, kStep>(v);
        } else {
            compare(v[kFirst], v[kFirst + kStep]);
        }
    }
    template <int kFrom, int kEnd, int kStep>
    [[gnu::always_inline]] static void compare_rows(V* v) {
        if constexpr (kFrom + kStep < kEnd) {
            compare(v[kFrom], v[kFrom + kStep]);
            compare_rows<kFrom + 2 * kStep, kEnd, kStep>(v);
        }
    }
    template <int kFirst, int kCount>
    [[gnu::always_inline]] static void sort_columns(V* v) {
        if constexpr (kCount > 1) {
            sort_columns<kFirst, kCount / 2>(v);
            sort_columns<kFirst + kCount / 2, kCount / 2>(v);
            merge_rows<kFirst, kCount, 1>(v);
        }
    }

    // The larger keys to the lanes with bit kDistance, the others to those without, kDistance lanes apart.
    template <int kDistance>
    [[gnu::always_inline]] static void split_lanes(V* v) {
        if constexpr (kDistance >= 1) {
#pragma GCC unroll 16
            for (int r = 0; r < kRows; ++r) {
                const V other = pick<Exchanged<kDistance>>(v[r], v[r]);
                v[r] = pick<SecondWhere<kDistance, kWidth>>(smaller(v[r], other), larger(v[r], other));
            }
            split_lanes<kDistance / 2>(v);
        }
    }
    template <int kDistance>
    [[gnu::always_inline]] static void split_rows(V* v) {
        if constexpr (kDistance >= 1) {
#pragma GCC unroll 16
            for (int r = 0; r < kRows; ++r)
                if ((r & kDistance) == 0) compare(v[r], v[r + kDistance]);
            split_rows<kDistance / 2>(v);
        }
    }
    // Merges groups of kGroup columns by two, and those again, until one is left.
    template <int kGroup>
    [[gnu::always_inline]] static void merge_columns(V* v) {
        if constexpr (kGroup < kWidth) {
            using Mirror = ReversedIn<2 * kGroup>;
            using Upper = SecondWhere<kGroup, kWidth>;
            if constexpr (kRows == 1) {
                const V other = pick<Mirror>(v[0], v[0]);
                v[0] = pick<Upper>(smaller(v[0], other), larger(v[0], other));
            } else {
                // Row r against the mirrored opposite row serves both of them.
#pragma GCC unroll 16
                for (int r = 0; r < kRows / 2; ++r) {
                    V& opposite = v[kRows - 1 - r];
                    const V other = pick<Mirror>(opposite, opposite);
                    const V low = smaller(v[r], other), high = larger(v[r], other);
                    v[r] = pick<Upper>(low, high);
                    const V rest = pick<Upper>(high, low);
                    opposite = pick<Mirror>(rest, rest);
                }
            }
            split_lanes<kGroup / 2>(v);
            split_rows<kRows / 2>(v);
            merge_columns<2 * kGroup>(v);
        }
    }
    // Each round rotates the bits (row, lane) of a key's place by one.
    template <int kRound>
    [[gnu::always_inline]] static void columns_to_order(V* v) {
        if constexpr (kRound < kRows) {
            V w[kRows];
#pragma GCC unroll 16
            for (int r = 0; r < kRows / 2; ++r) {
                w[2 * r] = pick<Interleaved<0, kWidth>>(v[r], v[r + kRows / 2]);
                w[2 * r + 1] = pick<Interleaved<kWidth / 2, kWidth>>(v[r], v[r + kRows / 2]);
            }
#pragma GCC unroll 16
            for (int r = 0; r < kRows; ++r) v[r] = w[r];
            columns_to_order<2 * kRound>(v);
        }
    }

    // Sorts n keys, more than kKeys / 2 unless kRows is 1, from `source` to `target`, which may be the same.
    template <class In, class Out>
    [[gnu::noinline]] static void run(const K* source, K* target, int64_t n) {
        constexpr int kFull = kRows / 2;  // rows that are never partial
        V v[kRows];
#pragma GCC unroll 16
        for (int r = 0; r < kRows; ++r) {
            if (r < kFull)
                v[r] = In::to_key(load<K, kBytes>(source + r * kWidth));
            else
                v[r] = load_keys<In>(source + r * kWidth, n - r * kWidth);
        }
        sort_columns<0, kRows>(v);
        merge_columns<1>(v);
        columns_to_order<1>(v);
#pragma GCC unroll 16
        for (int r = 0; r < kRows; ++r) {
            const V bits = Out::from_key(v[r]);
            if (r < kFull)
                store<K, kBytes>(target + r * kWidth, bits);
            else
                store_first<K, kBytes>(target + r * kWidth, n - r * kWidth, bits);
        }
    }
    // Lanes beyond the count get the largest key.
    template <class In>
    [[gnu::always_inline]] static V load_keys(const K* source, int64_t count) {
        return In::to_key(load_first<K, kBytes>(source, count, In::from_key(std::numeric_limits<K>::max())));
    }
};

inline constexpr int kMostRows = 16;
template <class K>
inline constexpr int64_t kNetworkKeys = kMostRows* kLanes<K>;

// Three keys at the most, without a vector.
template <class In, class Out, class K>
[[gnu::always_inline]] inline void sort_three(const K* source, K* target, int64_t n) {
    const auto order = [](K& a, K& b) {
        const K low = a < b ? a : b;
        b = a < b ? b : a;
        a = low;
    };
    K a = In::to_key(source[0]);
    if (n > 1) {
        K b = In::to_key(source[1]);
        order(a, b);
        if (n > 2) {
            K c = In::to_key(source[2]);
            order(b, c);
            order(a, b);
            target[2] = Out::from_key(c);
        }
        target[1] = Out::from_key(b);
    }
    target[0] = Out::from_key(a);
}

// Sorts 1 to kNetworkKeys keys. Few keys are all latency: short vectors for them.
template <class In, class Out, class K>
[[gnu::always_inline]] inline void sort_few(const K* source, K* target, int64_t n) {
    constexpr int64_t kShort = kLanes<K, 32>, kWidth = kLanes<K>;
    if (n <= 2 * kShort) {
        if (n <= 3) return sort_three<In, Out>(source, target, n);
        if (n <= kShort) return SortNetwork<K, 1, 32>::template run<In, Out>(source, target, n);
        return SortNetwork<K, 2, 32>::template run<In, Out>(source, target, n);
    }
    if (n <= 4 * kShort) return SortNetwork<K, 4, 32>::template run<In, Out>(source, target, n);
    if (n <= 4 * kWidth) return SortNetwork<K, 4>::template run<In, Out>(source, target, n);
    if (n <= 8 * kWidth) return SortNetwork<K, 8>::template run<In, Out>(source, target, n);
    SortNetwork<K, 16>::template run<In, Out>(source, target, n);
}

}  // namespace NAX_PRIMITIVES_ISA
}  // namespace nax::primitives
