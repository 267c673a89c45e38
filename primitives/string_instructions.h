// The string instructions of x86-64, run upward whatever the direction flag says, which is left as it was.
#pragma once

#include <cstdint>

namespace nax::primitives {

class UpwardDirection {
public:
    UpwardDirection() : was_down_((__builtin_ia32_readeflags_u64() & 0x400) != 0) { __asm__ volatile("cld"); }
    UpwardDirection(const UpwardDirection&) = delete;
    UpwardDirection& operator=(const UpwardDirection&) = delete;
    ~UpwardDirection() {
        if (was_down_) __asm__ volatile("std");
    }

private:
    bool was_down_;
};

// Moves or stores `count` units of 1, 2, 4 or 8 bytes; the pointers come back behind the last one.
template <int Unit>
inline void string_move(const uint8_t*& source, uint8_t*& target, uint64_t count) {
    if constexpr (Unit == 8)
        __asm__ volatile("rep movsq" : "+S"(source), "+D"(target), "+c"(count) : : "memory");
    else if constexpr (Unit == 4)
        __asm__ volatile("rep movsl" : "+S"(source), "+D"(target), "+c"(count) : : "memory");
    else if constexpr (Unit == 2)
        __asm__ volatile("rep movsw" : "+S"(source), "+D"(target), "+c"(count) : : "memory");
    else
        __asm__ volatile("rep movsb" : "+S"(source), "+D"(target), "+c"(count) : : "memory");
}

template <int Unit>
inline void string_store_zero(uint8_t*& target, uint64_t count) {
    if constexpr (Unit == 8)
        __asm__ volatile("rep stosq" : "+D"(target), "+c"(count) : "a"(0) : "memory");
    else
        __asm__ volatile("rep stosb" : "+D"(target), "+c"(count) : "a"(0) : "memory");
}

}  // namespace nax::primitives
