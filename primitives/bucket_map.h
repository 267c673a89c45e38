// A map of keys to buckets that respects their order, made from a sample of them.
//
// Between the sample's ends, less a few keys on each side, buckets are equally wide on the scale of the keys, on which
// floating-point numbers stand by their logarithms; keys beyond go to the first and last bucket. Data around zero leave
// a hole there, of all the binades between the data's smallest magnitude and zero: it is cut out.
#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "primitives/lanes.h"
#include "primitives/sort_network.h"

namespace nax::primitives {
inline namespace NAX_PRIMITIVES_ISA {

template <class K>
struct BucketMap {
    using U = std::make_unsigned_t<K>;
    K low, high;  // keys are clamped to these first
    bool has_hole;
    K hole_low, hole_high;  // no bucket is spent on keys between
    int shift;

    // Bucket numbers of one vector of keys.
    template <bool kHole>
    [[gnu::always_inline]] Lanes<U> operator()(Lanes<K> key) const {
        key = larger(smaller(key, Lanes<K>{} + high), Lanes<K>{} + low);
        if constexpr (kHole) {
            const U size = static_cast<U>(hole_high) - static_cast<U>(hole_low);
            const auto above = reinterpret_cast<Lanes<U>>(larger(key, Lanes<K>{} + hole_high)) - size;
            key = key < 0 ? smaller(key, Lanes<K>{} + hole_low) : reinterpret_cast<Lanes<K>>(above);
        }
        return (reinterpret_cast<Lanes<U>>(key) - static_cast<U>(low)) >> static_cast<U>(shift);
    }
};

// The sorted sample of n keys, and the map onto at most `buckets` of them; at least 3 buckets, which are the keys
// below, at and above a value if most of the sample is that value. False if the sample is one value and so are possibly
// all keys.
template <class K>
bool choose_map(const K* sample, int count, int64_t buckets, BucketMap<K>& map) {
    using U = std::make_unsigned_t<K>;
    using Limits = std::numeric_limits<K>;
    const int trimmed = count / 64;
    K low = sample[trimmed], high = sample[count - 1 - trimmed];
    map.has_hole = false;
    if (low == high) {
        map.shift = 0;
        map.low = low > Limits::min() ? low - 1 : low;
        map.high = high < Limits::max() ? high + 1 : high;
        return sample[0] != sample[count - 1];
    }
    map.low = low;
    map.high = high;
    U range = static_cast<U>(high) - static_cast<U>(low);
    if (low < 0 && high >= 0) {
        int first = 0;  // of the keys that aren't negative
        while (sample[first] < 0) ++first;
        // Near zero, too, the sparse end is left out.
        const K below = sample[first - 1 - (first - 1 > 2 * trimmed ? trimmed : 0)];
        const K above = sample[first + (count - 1 - first > 2 * trimmed ? trimmed : 0)];
        const U hole = static_cast<U>(above) - static_cast<U>(below);
        if (hole > range / 2 && below >= low && above <= high) {
            map.has_hole = true;
            map.hole_low = below;
            map.hole_high = above;
            range -= hole;
        }
    }
    const int bits = static_cast<int>(std::bit_width(range));
    const int wanted = std::countr_zero(static_cast<uint64_t>(buckets));
    map.shift = bits > wanted ? bits - wanted : 0;
    return true;
}

}  // namespace NAX_PRIMITIVES_ISA
}  // namespace nax::primitives
