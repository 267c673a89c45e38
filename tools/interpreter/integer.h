// Arithmetic on general registers with the host's own flags.
#pragma once

#include "tools/interpreter/lanes.h"

namespace nax::emulator {

inline constexpr std::uint64_t kCarry = 1, kParity = 4, kZero = 0x40, kSign = 0x80, kOverflow = 0x800;
inline constexpr std::uint64_t kStatusFlags = 0x8D5;

// Puts what `lahf; seto %al` delivers into the flags.
inline void set_flags(std::uint64_t& flags, std::uint32_t ax) {
    flags = (flags & ~kStatusFlags) | ((ax >> 8) & 0xD5) | ((ax & 1) << 11);
}

// Condition codes in encoding order: o b e be s p l le; odd codes are the negations.
inline bool condition(std::uint64_t flags, unsigned code) {
    bool r = false;
    switch (code >> 1) {
        case 0: r = flags & kOverflow; break;
        case 1: r = flags & kCarry; break;
        case 2: r = flags & kZero; break;
        case 3: r = flags & (kCarry | kZero); break;
        case 4: r = flags & kSign; break;
        case 5: r = flags & kParity; break;
        case 6: r = ((flags >> 7) ^ (flags >> 11)) & 1; break;
        default: r = (flags & kZero) || (((flags >> 7) ^ (flags >> 11)) & 1);
    }
    return r != ((code & 1) != 0);
}

// Writes of 32 bits clear the upper half of a register, narrower ones keep the rest.
template <class T>
void set_register(State& s, unsigned reg, T value) {
    if constexpr (sizeof(T) >= 4) s.gpr[reg] = value;
    else std::memcpy(&s.gpr[reg], &value, sizeof value);
}
template <class T>
T get_register(const State& s, unsigned reg) { return static_cast<T>(s.gpr[reg]); }

template <class T>
T get_rm(const State& s, const Op& o) { return o.mem ? load<T>(s, o) : get_register<T>(s, o.rm); }
template <class T>
void set_rm(State& s, const Op& o, T value) {
    if (o.mem) store<T>(s, o, value);
    else set_register<T>(s, o.rm, value);
}

enum AluOp : std::uint8_t { kAdd, kOr, kAdc, kSbb, kAnd, kSub, kXor, kCmp, kTest };

// One instruction of the host on operands of its size; carry in and all flags out.
template <AluOp Operation, class T>
T alu(T a, T b, std::uint64_t& flags) {
    std::uint32_t ax = 0;
    if constexpr (Operation == kAdd) {
        asm("add %[b],%[a]\n\tlahf\n\tseto %%al" : [a] "+r"(a), "=&a"(ax) : [b] "r"(b) : "cc");
    } else if constexpr (Operation == kSub || Operation == kCmp) {
        asm("sub %[b],%[a]\n\tlahf\n\tseto %%al" : [a] "+r"(a), "=&a"(ax) : [b] "r"(b) : "cc");
    } else if constexpr (Operation == kAdc) {
        asm("bt $0,%[f]\n\tadc %[b],%[a]\n\tlahf\n\tseto %%al" : [a] "+r"(a), "=&a"(ax) : [b] "r"(b), [f] "r"(flags) : "cc");
    } else if constexpr (Operation == kSbb) {
        asm("bt $0,%[f]\n\tsbb %[b],%[a]\n\tlahf\n\tseto %%al" : [a] "+r"(a), "=&a"(ax) : [b] "r"(b), [f] "r"(flags) : "cc");
    } else if constexpr (Operation == kOr) {
        asm("or %[b],%[a]\n\tlahf\n\tseto %%al" : [a] "+r"(a), "=&a"(ax) : [b] "r"(b) : "cc");
    } else if constexpr (Operation == kXor) {
        asm("xor %[b],%[a]\n\tlahf\n\tseto %%al" : [a] "+r"(a), "=&a"(ax) : [b] "r"(b) : "cc");
    } else {
        asm("and %[b],%[a]\n\tlahf\n\tseto %%al" : [a] "+r"(a), "=&a"(ax) : [b] "r"(b) : "cc");
    }
    set_flags(flags, ax);
    return a;
}

}  // namespace nax::emulator
