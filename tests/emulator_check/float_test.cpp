// Arithmetic against the host's scalar instructions: results, roundings and exception flags.
#include <immintrin.h>

#include "tests/emulator_check/definition.h"

namespace nax::emulator_check {
namespace {

// MXCSR values: four rounding modes, denormals as zero with flush to zero, each alone.
constexpr std::initializer_list<unsigned> kControls = {0x1F80, 0x3F80, 0x5F80, 0x7F80, 0x9FC0, 0x1FC0, 0x9F80};

struct Scalar {
    static double add(double a, double b) { asm("addsd %1,%0" : "+x"(a) : "x"(b)); return a; }
    static float add(float a, float b) { asm("addss %1,%0" : "+x"(a) : "x"(b)); return a; }
    static double sub(double a, double b) { asm("subsd %1,%0" : "+x"(a) : "x"(b)); return a; }
    static float sub(float a, float b) { asm("subss %1,%0" : "+x"(a) : "x"(b)); return a; }
    static double mul(double a, double b) { asm("mulsd %1,%0" : "+x"(a) : "x"(b)); return a; }
    static float mul(float a, float b) { asm("mulss %1,%0" : "+x"(a) : "x"(b)); return a; }
    static double div(double a, double b) { asm("divsd %1,%0" : "+x"(a) : "x"(b)); return a; }
    static float div(float a, float b) { asm("divss %1,%0" : "+x"(a) : "x"(b)); return a; }
    static double min(double a, double b) { asm("minsd %1,%0" : "+x"(a) : "x"(b)); return a; }
    static float min(float a, float b) { asm("minss %1,%0" : "+x"(a) : "x"(b)); return a; }
    static double max(double a, double b) { asm("maxsd %1,%0" : "+x"(a) : "x"(b)); return a; }
    static float max(float a, float b) { asm("maxss %1,%0" : "+x"(a) : "x"(b)); return a; }
    static double sqrt(double a) { asm("sqrtsd %0,%0" : "+x"(a)); return a; }
    static float sqrt(float a) { asm("sqrtss %0,%0" : "+x"(a)); return a; }
};

// a*b+c with the given signs.
template <class T>
T fused(T a, T b, T c, bool negate_product, bool negate_sum) {
    if constexpr (sizeof(T) == 8) {
        if (negate_product && negate_sum) asm("vfnmsub213sd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c));
        else if (negate_product) asm("vfnmadd213sd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c));
        else if (negate_sum) asm("vfmsub213sd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c));
        else asm("vfmadd213sd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c));
    } else {
        if (negate_product && negate_sum) asm("vfnmsub213ss %2,%1,%0" : "+x"(a) : "x"(b), "x"(c));
        else if (negate_product) asm("vfnmadd213ss %2,%1,%0" : "+x"(a) : "x"(b), "x"(c));
        else if (negate_sum) asm("vfmsub213ss %2,%1,%0" : "+x"(a) : "x"(b), "x"(c));
        else asm("vfmadd213ss %2,%1,%0" : "+x"(a) : "x"(b), "x"(c));
    }
    return a;
}

template <class T>
std::vector<Definition> arithmetic(const std::string& suffix) {
    const auto two = [&](const std::string& name, T (*f)(T, T)) {
        return Definition{name + suffix, sizeof(T), each<T, T>([f](T a, T b, T) { return f(a, b); }), true, true};
    };
    return {two("add", Scalar::add), two("sub", Scalar::sub), two("mul", Scalar::mul), two("div", Scalar::div),
            two("min", Scalar::min), two("max", Scalar::max),
            {"sqrt" + suffix, sizeof(T), each<T, T>([](T a, T, T) { return Scalar::sqrt(a); }), true, true}};
}

template <class T>
void check_fused(const std::string& name, bool negate_product, bool negate_even, bool negate_odd) {
    const Instruction& instruction = find(float_instructions(), name);
    const Definition d{name, sizeof(T), [=](const Io& io, std::uint64_t active, Vector& r) {
        for (unsigned i = 0; i < 64 / sizeof(T); ++i) {
            if (!(active >> i & 1)) continue;
            r.set<T>(i, fused<T>(io.a.lane<T>(i), io.b.lane<T>(i), io.c.lane<T>(i), negate_product, i & 1 ? negate_odd : negate_even));
        }
    }, true, true};
    Inputs<T> inputs(77, true);
    for (const unsigned control : kControls) {
        for (int round = 0; round < 200 && !testing::Test::HasFatalFailure(); ++round) {
            const Io io = inputs.next();
            for (const Form form : {kPlain, kMerging, kZeroing}) compare(instruction, d, io, form, control);
        }
    }
}
template <class T>
void check_all_fused(const std::string& suffix) {
    check_fused<T>("fmadd" + suffix, false, false, false);
    check_fused<T>("fmsub" + suffix, false, true, true);
    check_fused<T>("fnmadd" + suffix, true, false, false);
    check_fused<T>("fnmsub" + suffix, true, true, true);
    check_fused<T>("fmaddsub" + suffix, false, true, false);
    check_fused<T>("fmsubadd" + suffix, false, false, true);
}

TEST(EmulatorFloat, ArithmeticAgreesWithScalarInstructions) {
    for (const Definition& d : arithmetic<double>("_pd")) check<double>(float_instructions(), d, kControls);
    for (const Definition& d : arithmetic<float>("_ps")) check<float>(float_instructions(), d, kControls);
}

TEST(EmulatorFloat, FusedFormsAgreeWithScalarInstructions) {
    check_all_fused<double>("_pd");
    check_all_fused<float>("_ps");
}

// a * 2^floor(b) in the wider format, rounded once at the end.
template <class T>
T scaled(T a, T b) {
    if (std::isnan(a) || std::isnan(b)) {
        const auto quiet = [](T x) { return x + x; };
        if (std::isnan(a) && std::isinf(b) && quiet(a) != quiet(a)) {
            BitsOf<T> bits;
            std::memcpy(&bits, &a, sizeof bits);
            const bool signals = !(bits >> (std::numeric_limits<T>::digits - 2) & 1);
            if (!signals) return b > 0 ? std::numeric_limits<T>::infinity() : T(0);
        }
        return std::isnan(a) ? quiet(a) : quiet(b);
    }
    if (std::isinf(b)) {
        if ((b > 0 && a == 0) || (b < 0 && std::isinf(a))) return -std::numeric_limits<T>::quiet_NaN();
        return b > 0 ? std::copysign(std::numeric_limits<T>::infinity(), a) : std::copysign(T(0), a);
    }
    const long double power = std::fmin(std::fmax(std::floor(static_cast<long double>(b)), -9000.0L), 9000.0L);
    const long double exact = static_cast<long double>(a) * std::exp2(power);
    volatile long double v = exact;
    return static_cast<T>(v);
}

// An operation with suppressed exceptions in a fixed rounding mode: the definition restores the flags.
template <class T, class F>
Definition rounded(const std::string& name, unsigned mode, F f) {
    static const char* const suffix[] = {" rn", " rd", " ru", " rz"};
    const auto inner = each<T, T>(f);
    return {name + suffix[mode], sizeof(T), [=](const Io& io, std::uint64_t active, Vector& r) {
        const unsigned saved = mxcsr();
        unsigned short x87, wanted;
        asm("fnstcw %0" : "=m"(x87));
        wanted = static_cast<unsigned short>((x87 & ~0xC00u) | mode << 10);
        asm volatile("fldcw %0" : : "m"(wanted));
        set_mxcsr((saved & ~0x6000u) | mode << 13);
        inner(io, active, r);
        set_mxcsr(saved);
        asm volatile("fldcw %0" : : "m"(x87));
    }, true, false};
}

TEST(EmulatorFloat, EmbeddedRoundingIgnoresMxcsrAndRaisesNothing) {
    for (unsigned mode = 0; mode < 4; ++mode) {
        const auto controls = {0x1F80u, 0x5F80u};
        check<double>(rounded_instructions(), rounded<double>("add_round_pd", mode, [](double a, double b, double) { return Scalar::add(a, b); }), controls);
        check<float>(rounded_instructions(), rounded<float>("add_round_ps", mode, [](float a, float b, float) { return Scalar::add(a, b); }), controls);
        check<double>(rounded_instructions(), rounded<double>("mul_round_pd", mode, [](double a, double b, double) { return Scalar::mul(a, b); }), controls);
        check<float>(rounded_instructions(), rounded<float>("mul_round_ps", mode, [](float a, float b, float) { return Scalar::mul(a, b); }), controls);
        check<double>(rounded_instructions(), rounded<double>("div_round_pd", mode, [](double a, double b, double) { return Scalar::div(a, b); }), controls);
        check<double>(rounded_instructions(), rounded<double>("sqrt_round_pd", mode, [](double a, double, double) { return Scalar::sqrt(a); }), controls);
        check<double>(rounded_instructions(), rounded<double>("scalef_round_pd", mode, [](double a, double b, double) { return scaled(a, b); }), controls);
        check<float>(rounded_instructions(), rounded<float>("scalef_round_ps", mode, [](float a, float b, float) { return scaled(a, b); }), controls);
    }
}

}  // namespace
}  // namespace nax::emulator_check
