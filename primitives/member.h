// What all public members of the primitives begin with.
#pragma once

#include <cstdint>

#include "nax/primitives.h"

namespace nax::primitives {

// The rows of a member by type: MEMBER(suffix, C type, elements in a pair).
#define NAX_PRIMITIVE_TYPES(MEMBER) \
    MEMBER(8u, uint8_t, 1)          \
    MEMBER(16s, int16_t, 1)         \
    MEMBER(16sc, int16_t, 2)        \
    MEMBER(32s, int32_t, 1)         \
    MEMBER(32sc, int32_t, 2)        \
    MEMBER(32f, float, 1)           \
    MEMBER(32fc, float, 2)          \
    MEMBER(64s, int64_t, 1)         \
    MEMBER(64sc, int64_t, 2)        \
    MEMBER(64f, double, 1)          \
    MEMBER(64fc, double, 2)

// Of every member, whose time in a short array is that of fetching its few instructions: it begins with a line of the
// instruction cache. And GCC is to keep the body of each one that comes to the same code as another, not a jump to
// that.
#ifdef __clang__
#define NAX_SHORT_MEMBER [[gnu::aligned(64)]]
#else
#define NAX_SHORT_MEMBER [[gnu::aligned(64), gnu::no_icf]]
#endif

// Short arrays take so few moves that each test and each branch taken shows: likely sides of tests fall through, and
// each side ends with a return of its own.

// A condition that is true a little more often than not.
[[gnu::always_inline]] inline bool rather(bool condition) {
    return __builtin_expect_with_probability(condition, true, 0.6);
}

// The status 0, hidden from the compiler, which would have all sides jump to one return of a known value.
[[gnu::always_inline]] inline int success() {
    int status = 0;
    __asm__("" : "+r"(status));
    return status;
}

}  // namespace nax::primitives
