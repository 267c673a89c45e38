// Semantics of the general-register instructions, one struct each, with a member template over the operand's type.
#pragma once

#include "tools/interpreter/integer.h"

namespace nax::emulator {

template <AluOp Operation>
inline constexpr bool kWrites = Operation != kCmp && Operation != kTest;

template <AluOp Operation>
struct RmReg {
    template <class T>
    static void run(State& s, const Op& o) {
        const T r = alu<Operation, T>(get_rm<T>(s, o), get_register<T>(s, o.reg), s.flags);
        if constexpr (kWrites<Operation>) set_rm<T>(s, o, r);
    }
};
template <AluOp Operation>
struct RegRm {
    template <class T>
    static void run(State& s, const Op& o) {
        const T r = alu<Operation, T>(get_register<T>(s, o.reg), get_rm<T>(s, o), s.flags);
        if constexpr (kWrites<Operation>) set_register<T>(s, o.reg, r);
    }
};
template <AluOp Operation>
struct RmImmediate {
    template <class T>
    static void run(State& s, const Op& o) {
        const T r = alu<Operation, T>(get_rm<T>(s, o), static_cast<T>(o.imm), s.flags);
        if constexpr (kWrites<Operation>) set_rm<T>(s, o, r);
    }
};

template <bool Up>
struct Increment {
    template <class T>
    static void run(State& s, const Op& o) {
        const std::uint64_t carry = s.flags & kCarry;
        const T r = alu<Up ? kAdd : kSub, T>(get_rm<T>(s, o), T{1}, s.flags);
        s.flags = (s.flags & ~kCarry) | carry;
        set_rm<T>(s, o, r);
    }
};
struct Negate {
    template <class T>
    static void run(State& s, const Op& o) { set_rm<T>(s, o, alu<kSub, T>(T{0}, get_rm<T>(s, o), s.flags)); }
};
struct Invert {
    template <class T>
    static void run(State& s, const Op& o) { set_rm<T>(s, o, static_cast<T>(~get_rm<T>(s, o))); }
};

struct MoveToRm {
    template <class T>
    static void run(State& s, const Op& o) { set_rm<T>(s, o, get_register<T>(s, o.reg)); }
};
struct MoveToReg {
    template <class T>
    static void run(State& s, const Op& o) { set_register<T>(s, o.reg, get_rm<T>(s, o)); }
};
struct MoveImmediate {
    template <class T>
    static void run(State& s, const Op& o) { set_rm<T>(s, o, static_cast<T>(o.imm)); }
};
struct Exchange {
    template <class T>
    static void run(State& s, const Op& o) {
        const T a = get_register<T>(s, o.reg), b = get_register<T>(s, o.rm);
        set_register<T>(s, o.reg, b);
        set_register<T>(s, o.rm, a);
    }
};
template <class From>
struct Extend {
    template <class T>
    static void run(State& s, const Op& o) { set_register<T>(s, o.reg, static_cast<T>(get_rm<From>(s, o))); }
};
struct LoadAddress {
    template <class T>
    static void run(State& s, const Op& o) { set_register<T>(s, o.reg, static_cast<T>(effective_address(s, o))); }
};
struct ConditionalMove {
    template <class T>
    static void run(State& s, const Op& o) {
        const T value = get_rm<T>(s, o);
        set_register<T>(s, o.reg, condition(s.flags, o.condition) ? value : get_register<T>(s, o.reg));
    }
};

enum ShiftOp : std::uint8_t { kRol, kRor, kShl = 4, kShr = 5, kSar = 7 };

template <ShiftOp Operation, class T>
T shift(T a, unsigned count, std::uint64_t& flags) {
    count &= sizeof(T) == 8 ? 63 : 31;
    if (!count) return a;
    const auto c = static_cast<std::uint8_t>(count);
    std::uint32_t ax = 0;
    if constexpr (Operation == kRol) asm("rol %%cl,%[a]\n\tlahf\n\tseto %%al" : [a] "+r"(a), "=&a"(ax) : "c"(c) : "cc");
    if constexpr (Operation == kRor) asm("ror %%cl,%[a]\n\tlahf\n\tseto %%al" : [a] "+r"(a), "=&a"(ax) : "c"(c) : "cc");
    if constexpr (Operation == kShl) asm("shl %%cl,%[a]\n\tlahf\n\tseto %%al" : [a] "+r"(a), "=&a"(ax) : "c"(c) : "cc");
    if constexpr (Operation == kShr) asm("shr %%cl,%[a]\n\tlahf\n\tseto %%al" : [a] "+r"(a), "=&a"(ax) : "c"(c) : "cc");
    if constexpr (Operation == kSar) asm("sar %%cl,%[a]\n\tlahf\n\tseto %%al" : [a] "+r"(a), "=&a"(ax) : "c"(c) : "cc");
    const std::uint64_t before = flags;
    set_flags(flags, ax);
    if constexpr (Operation == kRol || Operation == kRor) {
        constexpr std::uint64_t changed = kCarry | kOverflow;
        flags = (before & ~changed) | (flags & changed);
    }
    return a;
}
// The count is the immediate, or register cl.
template <ShiftOp Operation, bool ByRegister>
struct Shift {
    template <class T>
    static void run(State& s, const Op& o) {
        const auto count = static_cast<unsigned>(ByRegister ? s.gpr[kRcx] : static_cast<std::uint64_t>(o.imm)) & 255u;
        set_rm<T>(s, o, shift<Operation, T>(get_rm<T>(s, o), count, s.flags));
    }
};
// shld and shrd with an immediate count.
template <bool Left>
struct DoubleShift {
    template <class T>
    static void run(State& s, const Op& o) {
        const unsigned bits = 8 * sizeof(T), count = static_cast<unsigned>(o.imm) & (bits - 1);
        if (!count) return;
        const T a = get_rm<T>(s, o), b = get_register<T>(s, o.reg);
        const T r = static_cast<T>(Left ? (a << count) | (b >> (bits - count)) : (a >> count) | (b << (bits - count)));
        alu<kTest, T>(r, r, s.flags);
        const bool carry = (Left ? a >> (bits - count) : a >> (count - 1)) & 1;
        s.flags = (s.flags & ~(kCarry | kOverflow)) | (carry ? kCarry : 0) |
                  (((r ^ a) >> (bits - 1)) & 1 ? kOverflow : 0);
        set_rm<T>(s, o, r);
    }
};

enum BitOp : std::uint8_t { kBt = 4, kBts, kBtr, kBtc };

template <BitOp Operation, bool ByRegister>
struct BitTest {
    template <class T>
    static void run(State& s, const Op& o) {
        const std::uint64_t index = ByRegister ? s.gpr[o.reg] : static_cast<std::uint64_t>(o.imm);
        const T bit = static_cast<T>(T{1} << (index & (8 * sizeof(T) - 1)));
        const T a = get_rm<T>(s, o);
        s.flags = (s.flags & ~kCarry) | ((a & bit) ? kCarry : 0);
        if constexpr (Operation == kBts) set_rm<T>(s, o, static_cast<T>(a | bit));
        if constexpr (Operation == kBtr) set_rm<T>(s, o, static_cast<T>(a & ~bit));
        if constexpr (Operation == kBtc) set_rm<T>(s, o, static_cast<T>(a ^ bit));
    }
};

// Bit counts, in the order of their opcodes.
enum CountOp : std::uint8_t { kPopcnt, kBsf, kBsr, kTzcnt, kLzcnt };

template <CountOp Operation>
struct BitCount {
    template <class T>
    static void run(State& s, const Op& o) {
        constexpr unsigned bits = 8 * sizeof(T);
        const T a = get_rm<T>(s, o);
        const std::uint64_t wide = a;
        const unsigned low = a ? static_cast<unsigned>(__builtin_ctzll(wide)) : bits;
        const unsigned high = a ? 63u - static_cast<unsigned>(__builtin_clzll(wide)) : bits;
        s.flags &= ~kStatusFlags;
        if constexpr (Operation == kBsf || Operation == kBsr) {
            if (!a) {
                s.flags |= kZero;  // the destination stays as it is
                return;
            }
            set_register<T>(s, o.reg, static_cast<T>(Operation == kBsf ? low : high));
            return;
        }
        const unsigned r = Operation == kPopcnt ? static_cast<unsigned>(__builtin_popcountll(wide))
                           : Operation == kTzcnt ? low : (a ? bits - 1 - high : bits);
        if (Operation == kPopcnt) s.flags |= a ? 0 : kZero;
        else s.flags |= (a ? 0 : kCarry) | (r ? 0 : kZero);
        set_register<T>(s, o.reg, static_cast<T>(r));
    }
};

template <class T>
void set_product_flags(State& s, bool overflow) {
    s.flags = (s.flags & ~(kCarry | kOverflow)) | (overflow ? kCarry | kOverflow : 0);
}
struct MultiplySigned {
    template <class T>
    static void run(State& s, const Op& o) { product<T>(s, o, get_register<T>(s, o.reg), get_rm<T>(s, o)); }
    template <class T>
    static void product(State& s, const Op& o, T a, T b) {
        using Signed = std::make_signed_t<T>;
        Signed r;
        const bool overflow = __builtin_mul_overflow(static_cast<Signed>(a), static_cast<Signed>(b), &r);
        set_product_flags<T>(s, overflow);
        set_register<T>(s, o.reg, static_cast<T>(r));
    }
};
struct MultiplyImmediate {
    template <class T>
    static void run(State& s, const Op& o) {
        MultiplySigned::product<T>(s, o, get_rm<T>(s, o), static_cast<T>(o.imm));
    }
};
// rdx:rax = rax * operand; 32 and 64 bits only.
template <bool Signed>
struct MultiplyWide {
    template <class T>
    static void run(State& s, const Op& o) {
        if constexpr (sizeof(T) >= 4) {
            constexpr unsigned bits = 8 * sizeof(T);
            const T a = get_register<T>(s, kRax), b = get_rm<T>(s, o);
            using S = std::make_signed_t<T>;
            const __int128 r = Signed ? static_cast<__int128>(static_cast<S>(a)) * static_cast<S>(b)
                                      : static_cast<__int128>(static_cast<unsigned __int128>(a) * b);
            const T low = static_cast<T>(r), high = static_cast<T>(r >> bits);
            set_product_flags<T>(s, Signed ? r != static_cast<S>(low) : high != 0);
            set_register<T>(s, kRax, low);
            set_register<T>(s, kRdx, high);
        }
    }
};
template <bool Signed>
struct Divide {
    template <class T>
    static void run(State& s, const Op& o) {
        if constexpr (sizeof(T) >= 4) {
            T low = get_register<T>(s, kRax), high = get_register<T>(s, kRdx);
            const T d = get_rm<T>(s, o);
            if constexpr (Signed) asm("idiv %[d]" : "+a"(low), "+d"(high) : [d] "r"(d) : "cc");
            else asm("div %[d]" : "+a"(low), "+d"(high) : [d] "r"(d) : "cc");
            set_register<T>(s, kRax, low);
            set_register<T>(s, kRdx, high);
        }
    }
};
// cbw, cwde, cdqe and cwd, cdq, cqo.
struct WidenRax {
    template <class T>
    static void run(State& s, const Op&) {
        if constexpr (sizeof(T) >= 2) {
            using Half = std::make_signed_t<UnsignedOf<sizeof(T) / 2>>;
            set_register<T>(s, kRax, static_cast<T>(static_cast<Half>(s.gpr[kRax])));
        }
    }
};
struct SignToRdx {
    template <class T>
    static void run(State& s, const Op&) {
        using S = std::make_signed_t<T>;
        set_register<T>(s, kRdx, static_cast<T>(get_register<S>(s, kRax) < 0 ? -1 : 0));
    }
};
struct ByteSwap {
    template <class T>
    static void run(State& s, const Op& o) {
        if constexpr (sizeof(T) == 8) s.gpr[o.rm] = __builtin_bswap64(s.gpr[o.rm]);
        else s.gpr[o.rm] = __builtin_bswap32(static_cast<std::uint32_t>(s.gpr[o.rm]));
    }
};

inline void set_on_condition(State& s, const Op& o) {
    set_rm<std::uint8_t>(s, o, condition(s.flags, o.condition) ? 1 : 0);
}
inline void no_operation(State&, const Op&) {}

inline void push_value(State& s, std::uint64_t value) {
    s.gpr[kRsp] -= 8;
    std::memcpy(reinterpret_cast<void*>(s.gpr[kRsp]), &value, 8);
}
inline std::uint64_t pop_value(State& s) {
    std::uint64_t value;
    std::memcpy(&value, reinterpret_cast<const void*>(s.gpr[kRsp]), 8);
    s.gpr[kRsp] += 8;
    return value;
}
inline void push(State& s, const Op& o) { push_value(s, get_rm<std::uint64_t>(s, o)); }
inline void push_immediate(State& s, const Op& o) { push_value(s, static_cast<std::uint64_t>(o.imm)); }
inline void pop(State& s, const Op& o) { s.gpr[o.rm] = pop_value(s); }
inline void leave(State& s, const Op&) {
    s.gpr[kRsp] = s.gpr[kRbp];
    s.gpr[kRbp] = pop_value(s);
}

inline void jump(State& s, const Op& o) { s.rip = o.target; }
inline void jump_if(State& s, const Op& o) { s.rip = condition(s.flags, o.condition) ? o.target : o.next; }
inline void jump_to_rm(State& s, const Op& o) { s.rip = get_rm<std::uint64_t>(s, o); }
inline void call(State& s, const Op& o) {
    push_value(s, o.next);
    s.rip = o.target;
}
inline void call_rm(State& s, const Op& o) {
    const std::uint64_t target = get_rm<std::uint64_t>(s, o);
    push_value(s, o.next);
    s.rip = target;
}
inline void return_near(State& s, const Op&) { s.rip = pop_value(s); }

inline void store_mxcsr(State& s, const Op& o) { store<std::uint32_t>(s, o, _mm_getcsr()); }
inline void load_mxcsr(State& s, const Op& o) { _mm_setcsr(load<std::uint32_t>(s, o)); }
inline void store_x87_control(State& s, const Op& o) { store<std::uint16_t>(s, o, s.x87_control); }
inline void clear_x87_flags(State& s, const Op&) { s.x87_status &= 0x7F00; }
inline void load_x87_control(State& s, const Op& o) { s.x87_control = load<std::uint16_t>(s, o); }

}  // namespace nax::emulator
