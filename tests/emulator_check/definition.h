// Scalar definitions of instructions, and the comparison of an instruction with its definition on many inputs.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "tests/emulator_check/instructions.h"

namespace nax::emulator_check {

// What an instruction does to a register image; lanes that the mask excludes are handled by the comparison.
struct Definition {
    std::string name;
    unsigned lane_bytes;                            // of the result, which the mask counts
    std::function<void(const Io&, std::uint64_t active, Vector& r)> whole;
    bool merges_third = true;                       // excluded lanes keep io.c
    bool raises_flags = false;                      // the exception flags must agree too
};

template <class T> using BitsOf = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;

inline unsigned mxcsr() { return __builtin_ia32_stmxcsr(); }
inline void set_mxcsr(unsigned value) { __builtin_ia32_ldmxcsr(value); }
constexpr unsigned kDefaultMxcsr = 0x1F80, kFlags = 0x3F;

// Lane by lane, active ones only: the others must raise nothing.
template <class To, class From, class F>
auto each(F f) {
    return [f](const Io& io, std::uint64_t active, Vector& r) {
        for (unsigned i = 0; i < 64 / sizeof(To); ++i) {
            if (!(active >> i & 1)) continue;
            volatile From a = io.a.lane<From>(i), b = io.b.lane<From>(i), c = io.c.lane<From>(i);
            r.set<To>(i, static_cast<To>(f(From(a), From(b), From(c))));
        }
    };
}

// Inputs: mostly random bits, with the values at which instructions change their mind.
template <class T>
class Inputs {
public:
    // With `lone_nans` a lane has at most one NaN: compilers swap the operands of commutative operations, and the
    // order decides which of several NaNs comes out.
    Inputs(unsigned seed, bool lone_nans) : lone_nans_(lone_nans), engine_(seed) {}
    Io next() {
        Io io;
        for (Vector* v : {&io.a, &io.b, &io.c}) for (unsigned i = 0; i < 64 / sizeof(T); ++i) v->set<T>(i, element());
        if constexpr (std::is_floating_point_v<T>) if (lone_nans_) leave_one_nan(io);
        io.mask = engine_();
        io.result = Vector{};
        io.bits = 0;
        return io;
    }

private:
    static void leave_one_nan(Io& io) {
        for (unsigned i = 0; i < 64 / sizeof(T); ++i) {
            if (std::isnan(io.a.lane<T>(i))) io.b.set<T>(i, T(1));
            if (std::isnan(io.a.lane<T>(i)) || std::isnan(io.b.lane<T>(i))) io.c.set<T>(i, T(1));
        }
    }
    T element() {
        if constexpr (std::is_floating_point_v<T>) {
            using L = std::numeric_limits<T>;
            static const T special[] = {T(0), T(-0.0), T(1), T(-1), T(0.5), T(1.5), T(-2.5), L::infinity(), -L::infinity(),
                L::quiet_NaN(), L::signaling_NaN(), L::max(), -L::max(), L::min(), -L::min(), L::denorm_min(), L::min() / 4,
                T(2147483648.0), T(-2147483649.0), T(4294967295.5), T(9.223372036854775807e18), T(1.8446744073709551615e19)};
            const auto bits = engine_();
            if (bits % 8 == 0) return special[(bits >> 8) % std::size(special)];
            if (bits % 8 == 1) {  // any pattern at all
                const BitsOf<T> pattern = static_cast<BitsOf<T>>(engine_());
                T x;
                std::memcpy(&x, &pattern, sizeof x);
                return x;
            }
            const T scale = bits % 8 < 5 ? T(1) : T(1000);
            return static_cast<T>((static_cast<double>(engine_() >> 11) * 0x1p-53 - 0.5) * 8) * scale;
        } else {
            const auto bits = engine_();
            if (bits % 16 == 0) return std::numeric_limits<T>::min();
            if (bits % 16 == 1) return std::numeric_limits<T>::max();
            if (bits % 4 == 2) return static_cast<T>(bits >> 8 & 15);
            return static_cast<T>(bits >> 8);
        }
    }
    bool lone_nans_;
    std::mt19937_64 engine_;
};

inline const Instruction& find(std::span<const Instruction> table, const std::string& name) {
    for (const Instruction& i : table) if (name == i.name) return i;
    ADD_FAILURE() << "no such instruction: " << name;
    return table.front();
}

inline std::string show(const Vector& v, unsigned lane_bytes) {
    std::string s;
    char text[40];
    for (unsigned i = 0; i < 64 / lane_bytes; ++i) {
        std::snprintf(text, sizeof text, " %0*llx", static_cast<int>(2 * lane_bytes),
                      static_cast<unsigned long long>(lane_bytes == 8 ? v.lane<std::uint64_t>(i) : lane_bytes == 4 ? v.lane<std::uint32_t>(i)
                                                      : lane_bytes == 2 ? v.lane<std::uint16_t>(i) : v.lane<std::uint8_t>(i)));
        s += text;
    }
    return s;
}

// clang computes all lanes of many masked intrinsics and blends: excluded lanes then raise their flags rightly.
#ifdef __clang__
constexpr bool kMaskedFlagsAreDefined = false;
#else
constexpr bool kMaskedFlagsAreDefined = true;
#endif

enum Form { kPlain, kMerging, kZeroing };

// Runs one form on one input under a given MXCSR and compares result and flags with the definition's.
inline void compare(const Instruction& instruction, const Definition& d, Io io, Form form, unsigned control) {
    const Run run = form == kPlain ? instruction.plain : form == kMerging ? instruction.merging : instruction.zeroing;
    const unsigned lanes = 64 / d.lane_bytes;
    const std::uint64_t all = lanes == 64 ? ~0ull : (1ull << lanes) - 1;
    const std::uint64_t active = form == kPlain ? all : io.mask & all;
    Vector expected{};
    set_mxcsr(control);
    d.whole(io, active, expected);
    const unsigned expected_flags = mxcsr() & kFlags;
    set_mxcsr(control);
    run(io);
    const unsigned after = mxcsr();
    set_mxcsr(kDefaultMxcsr);
    for (unsigned i = 0; i < lanes; ++i) {
        if (active >> i & 1) continue;
        std::memset(expected.bytes + i * d.lane_bytes, 0, d.lane_bytes);
        if (form == kMerging) std::memcpy(expected.bytes + i * d.lane_bytes, io.c.bytes + i * d.lane_bytes, d.lane_bytes);
    }
    if (std::memcmp(&io.result, &expected, sizeof expected) != 0) FAIL()
        << "got " << show(io.result, d.lane_bytes) << "\nfor " << show(expected, d.lane_bytes) << "\n"
        << d.name << " form " << form << " mxcsr " << std::hex << control << "\na" << show(io.a, d.lane_bytes) << "\nb"
        << show(io.b, d.lane_bytes) << "\nc" << show(io.c, d.lane_bytes) << "\nactive " << active;
    ASSERT_EQ(after & ~kFlags, control) << d.name;
    if (form != kPlain && !kMaskedFlagsAreDefined) return;
    if (d.raises_flags) {
        ASSERT_EQ(after & kFlags, expected_flags) << d.name << " form " << form << " mxcsr " << std::hex << control << "\na"
            << show(io.a, d.lane_bytes) << "\nb" << show(io.b, d.lane_bytes) << "\nc" << show(io.c, d.lane_bytes) << "\nactive " << active;
    } else {
        ASSERT_EQ(after & kFlags, 0u) << d.name << " raises a flag";
    }
}

template <class T>
void check(std::span<const Instruction> table, const Definition& d, std::initializer_list<unsigned> controls, bool lone_nans = true,
           int rounds = 200) {
    const Instruction& instruction = find(table, d.name);
    Inputs<T> inputs(static_cast<unsigned>(std::hash<std::string>{}(d.name)), lone_nans);
    for (const unsigned control : controls) {
        for (int round = 0; round < rounds; ++round) {
            const Io io = inputs.next();
            for (const Form form : {kPlain, kMerging, kZeroing}) {
                compare(instruction, d, io, form, control);
                if (testing::Test::HasFatalFailure()) return;
            }
        }
    }
}

}  // namespace nax::emulator_check
