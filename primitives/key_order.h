// The order of keys: every key type maps one to one onto signed integers of its width, whose order is the wanted one.
//
//   floating-point   a negative number's bits below the sign are inverted: what was magnitude and sign becomes
//                    two's complement. Negative zero is right below zero, and NaNs stand at the ends by their bits
//   unsigned         the top bit is inverted
//   signed           as they are
//
// Descending order inverts all bits of the result. All maps work on scalars and on vectors of lanes.
#pragma once

#include <cstdint>
#include <type_traits>

namespace nax::primitives {

enum class Direction { kAscending, kDescending };

template <class T>
using KeyBits = std::conditional_t<
    sizeof(T) == 8, int64_t,
    std::conditional_t<sizeof(T) == 4, int32_t, std::conditional_t<sizeof(T) == 2, int16_t, int8_t>>>;

template <class T, Direction kDirection = Direction::kAscending>
struct KeyOrder {
    using Key = KeyBits<T>;
    static constexpr Key kTop = static_cast<Key>(Key{1} << (sizeof(Key) * 8 - 1));

    template <class Lanes>
    [[gnu::always_inline]] static constexpr Lanes to_key(Lanes bits) {
        if constexpr (std::is_floating_point_v<T>) bits ^= (bits >> (sizeof(Key) * 8 - 1)) & static_cast<Key>(~kTop);
        if constexpr (std::is_unsigned_v<T>) bits ^= kTop;
        if constexpr (kDirection == Direction::kDescending) bits = ~bits;
        return bits;
    }
    template <class Lanes>
    [[gnu::always_inline]] static constexpr Lanes from_key(Lanes key) {
        if constexpr (kDirection == Direction::kDescending) key = ~key;
        if constexpr (std::is_unsigned_v<T>) key ^= kTop;
        if constexpr (std::is_floating_point_v<T>) key ^= (key >> (sizeof(Key) * 8 - 1)) & static_cast<Key>(~kTop);
        return key;
    }
};

// Keys that are in their order already.
template <class K>
struct KeyItself {
    using Key = K;
    template <class Lanes>
    [[gnu::always_inline]] static constexpr Lanes to_key(Lanes key) {
        return key;
    }
    template <class Lanes>
    [[gnu::always_inline]] static constexpr Lanes from_key(Lanes key) {
        return key;
    }
};

}  // namespace nax::primitives
