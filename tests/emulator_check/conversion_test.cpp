// Conversions between formats: values through the x87's wider format, flags from their definitions.
#include "tests/emulator_check/definition.h"

namespace nax::emulator_check {
namespace {

constexpr std::initializer_list<unsigned> kControls = {0x1F80, 0x3F80, 0x5F80, 0x7F80};
constexpr unsigned kInvalid = 1, kPrecision = 32;

// Runs `body` with the x87 rounding as MXCSR says, or in the given direction.
template <class Body>
void with_x87_rounding(int direction, Body body) {
    unsigned short saved, wanted;
    asm("fnstcw %0" : "=m"(saved));
    wanted = static_cast<unsigned short>((saved & ~0xC00u) | (direction < 0 ? mxcsr() >> 13 & 3 : static_cast<unsigned>(direction)) << 10);
    asm volatile("fldcw %0" : : "m"(wanted));
    body();
    asm volatile("fldcw %0" : : "m"(saved));
}

// Lanes of From become lanes of To, those of the wider type deciding the count; the rest of the result is zero.
template <class To, class From, class F>
Definition converted(const std::string& name, F f, bool flags) {
    return {name, sizeof(To), [f, flags](const Io& io, std::uint64_t active, Vector& r) {
        constexpr unsigned count = 64 / (sizeof(To) > sizeof(From) ? sizeof(To) : sizeof(From));
        unsigned raised = 0;
        const unsigned before = mxcsr();
        for (unsigned i = 0; i < count; ++i) {
            if (active >> i & 1) r.set<To>(i, f(io.a.lane<From>(i), raised));
        }
        set_mxcsr(before | (flags ? raised : 0));
    }, true, flags};
}

// Narrowing conversions write half a register: the excluded lanes to compare end there.
template <class To, class From, class F>
void agrees(const std::string& name, F f, std::initializer_list<unsigned> controls = {kDefaultMxcsr}, bool flags = true) {
    constexpr unsigned count = 64 / (sizeof(To) > sizeof(From) ? sizeof(To) : sizeof(From));
    const Instruction& instruction = find(conversion_instructions(), name);
    const Definition d = converted<To, From>(name, f, flags);
    Inputs<From> inputs(31, false);
    for (const unsigned control : controls) {
        for (int round = 0; round < 200 && !testing::Test::HasFatalFailure(); ++round) {
            Io io = inputs.next();
            std::memset(io.c.bytes + count * sizeof(To), 0, 64 - count * sizeof(To));
            for (const Form form : {kPlain, kMerging, kZeroing}) {
                if (form == kPlain) {
                    compare(instruction, d, io, form, control);
                } else {
                    Io limited = io;
                    if (count < 64) limited.mask &= (1ull << count) - 1;
                    compare(instruction, d, limited, form, control);
                }
            }
        }
    }
}

template <class To>
auto to_integer(int direction) {  // -1: as MXCSR says
    return [direction](auto x, unsigned& raised) {
        constexpr To indefinite = std::is_signed_v<To> ? std::numeric_limits<To>::min() : std::numeric_limits<To>::max();
        // Volatile: the conversion must not move out of the changed rounding mode.
        volatile long double exact = static_cast<long double>(x), whole = 0;
        with_x87_rounding(direction, [&] { whole = std::rint(exact); });
        if (!(whole >= static_cast<long double>(std::numeric_limits<To>::min()) &&
              whole <= static_cast<long double>(std::numeric_limits<To>::max()))) {
            raised |= kInvalid;
            return indefinite;
        }
        if (whole != exact) raised |= kPrecision;
        return static_cast<To>(static_cast<long double>(whole));
    };
}
template <class To>
auto from_integer(int direction) {
    return [direction](auto x, unsigned& raised) {
        volatile long double exact = static_cast<long double>(x);
        volatile To r = 0;
        with_x87_rounding(direction, [&] { r = static_cast<To>(exact); });
        if (static_cast<long double>(r) != exact) raised |= kPrecision;
        return static_cast<To>(r);
    };
}

TEST(EmulatorConvert, FloatsToIntegers) {
    using I32 = std::int32_t;
    using U32 = std::uint32_t;
    using I64 = std::int64_t;
    using U64 = std::uint64_t;
    agrees<I32, double>("pd to i32", to_integer<I32>(-1), kControls);
    agrees<I32, double>("pd to i32 truncated", to_integer<I32>(3), kControls);
    agrees<U32, double>("pd to u32", to_integer<U32>(-1), kControls);
    agrees<U32, double>("pd to u32 truncated", to_integer<U32>(3), kControls);
    agrees<I64, double>("pd to i64", to_integer<I64>(-1), kControls);
    agrees<I64, double>("pd to i64 truncated", to_integer<I64>(3), kControls);
    agrees<U64, double>("pd to u64", to_integer<U64>(-1), kControls);
    agrees<U64, double>("pd to u64 truncated", to_integer<U64>(3), kControls);
    agrees<I32, float>("ps to i32", to_integer<I32>(-1), kControls);
    agrees<I32, float>("ps to i32 truncated", to_integer<I32>(3), kControls);
    agrees<U32, float>("ps to u32", to_integer<U32>(-1), kControls);
    agrees<U32, float>("ps to u32 truncated", to_integer<U32>(3), kControls);
    agrees<I64, float>("ps to i64", to_integer<I64>(-1), kControls);
    agrees<U64, float>("ps to u64 truncated", to_integer<U64>(3), kControls);
    agrees<I64, double>("pd to i64 downward", to_integer<I64>(1), kControls, false);
}

TEST(EmulatorConvert, IntegersToFloats) {
    using I32 = std::int32_t;
    using U32 = std::uint32_t;
    using I64 = std::int64_t;
    using U64 = std::uint64_t;
    agrees<double, I32>("i32 to pd", from_integer<double>(-1), kControls);
    agrees<double, U32>("u32 to pd", from_integer<double>(-1), kControls);
    agrees<double, I64>("i64 to pd", from_integer<double>(-1), kControls);
    agrees<double, U64>("u64 to pd", from_integer<double>(-1), kControls);
    agrees<float, I32>("i32 to ps", from_integer<float>(-1), kControls);
    agrees<float, U32>("u32 to ps", from_integer<float>(-1), kControls);
    agrees<float, I64>("i64 to ps", from_integer<float>(-1), kControls);
    agrees<float, U64>("u64 to ps", from_integer<float>(-1), kControls);
    agrees<double, U64>("u64 to pd toward zero", from_integer<double>(3), kControls, false);
}

TEST(EmulatorConvert, BetweenFloats) {
    // The host's scalar instructions define value and flags.
    const auto scalar = [](auto x, unsigned& raised) {
        constexpr bool narrows = sizeof(x) == 8;
        std::conditional_t<narrows, float, double> r;
        set_mxcsr(mxcsr() & ~kFlags);
        if constexpr (narrows) asm volatile("cvtsd2ss %1,%0" : "=x"(r) : "x"(x));
        else asm volatile("cvtss2sd %1,%0" : "=x"(r) : "x"(x));
        raised |= mxcsr() & kFlags;
        return r;
    };
    agrees<float, double>("pd to ps", scalar, kControls);
    agrees<double, float>("ps to pd", scalar, kControls);
    agrees<float, double>("pd to ps upward", [&](double x, unsigned& raised) {
        const unsigned saved = mxcsr();
        set_mxcsr(0x5F80);
        const float r = scalar(x, raised);
        set_mxcsr(saved);
        return r;
    }, kControls, false);
}

TEST(EmulatorConvert, HalfPrecision) {
    const Instruction& instruction = find(conversion_instructions(), "ph to ps");
    for (unsigned first = 0; first < 0x10000; first += 16) {
        Io io{};
        for (unsigned i = 0; i < 16; ++i) io.a.set<std::uint16_t>(i, static_cast<std::uint16_t>(first + i));
        instruction.plain(io);
        for (unsigned i = 0; i < 16; ++i) {
            const unsigned h = first + i, exponent = h >> 10 & 31, fraction = h & 1023;
            const float r = io.result.lane<float>(i);
            ASSERT_EQ(std::signbit(r), (h >> 15) != 0);
            if (exponent == 31 && fraction) ASSERT_TRUE(std::isnan(r));
            else if (exponent == 31) ASSERT_TRUE(std::isinf(r));
            else ASSERT_EQ(std::fabs(r), exponent ? std::ldexp(1024.0f + static_cast<float>(fraction), static_cast<int>(exponent) - 25)
                                                  : std::ldexp(static_cast<float>(fraction), -24));
        }
    }
    set_mxcsr(kDefaultMxcsr);
}

template <class To, class From, bool Saturates = false>
void width_agrees(const std::string& name) {
    agrees<To, From>(name, [](From x, unsigned&) {
        if (Saturates) {
            using L = std::numeric_limits<To>;
            const __int128 wide = x;
            return wide < L::min() ? L::min() : wide > L::max() ? L::max() : static_cast<To>(x);
        }
        return static_cast<To>(x);
    });
}
TEST(EmulatorConvert, IntegerWidths) {
    width_agrees<std::int8_t, std::int64_t>("i64 to i8");
    width_agrees<std::int16_t, std::int64_t, true>("i64 to i16 saturated");
    width_agrees<std::uint32_t, std::uint64_t, true>("u64 to u32 saturated");
    width_agrees<std::int16_t, std::int32_t>("i32 to i16");
    width_agrees<std::int8_t, std::int32_t, true>("i32 to i8 saturated");
    width_agrees<std::uint8_t, std::uint16_t, true>("u16 to u8 saturated");
    width_agrees<std::int16_t, std::int8_t>("i8 to i16");
    width_agrees<std::int64_t, std::int8_t>("i8 to i64");
    width_agrees<std::uint32_t, std::uint8_t>("u8 to u32");
    width_agrees<std::int32_t, std::int16_t>("i16 to i32");
    width_agrees<std::uint64_t, std::uint16_t>("u16 to u64");
    width_agrees<std::int64_t, std::int32_t>("i32 to i64");
    width_agrees<std::uint64_t, std::uint32_t>("u32 to u64");
}

}  // namespace
}  // namespace nax::emulator_check
