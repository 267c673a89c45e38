// Exponent and mantissa extraction, scaling, rounding to multiples, range selection, approximations.
#include "tests/emulator_check/definition.h"

namespace nax::emulator_check {
namespace {

constexpr std::initializer_list<unsigned> kControls = {0x1F80, 0x3F80, 0x5F80, 0x7F80};

template <class T>
bool signals(T x) {
    BitsOf<T> bits;
    std::memcpy(&bits, &x, sizeof bits);
    return std::isnan(x) && !(bits >> (std::numeric_limits<T>::digits - 2) & 1);
}
template <class T>
T quiet(T x) {  // the same NaN, without its effect on flags
    BitsOf<T> bits;
    std::memcpy(&bits, &x, sizeof bits);
    bits |= BitsOf<T>{1} << (std::numeric_limits<T>::digits - 2);
    std::memcpy(&x, &bits, sizeof bits);
    return x;
}
template <class T>
constexpr T kIndefinite = -std::numeric_limits<T>::quiet_NaN();
template <class T>
constexpr T kInfinity = std::numeric_limits<T>::infinity();

// Values only: the definitions' own flags are dropped, and the instruction's are compared with `flags`.
template <class T, class F, class G>
Definition part(const std::string& name, F value, G flags) {
    return {name, sizeof(T), [=](const Io& io, std::uint64_t active, Vector& r) {
        const unsigned before = mxcsr();
        unsigned raised = 0;
        unsigned short x87, wanted;
        asm("fnstcw %0" : "=m"(x87));
        wanted = static_cast<unsigned short>((x87 & ~0xC00u) | (before >> 13 & 3) << 10);
        asm volatile("fldcw %0" : : "m"(wanted));
        for (unsigned i = 0; i < 64 / sizeof(T); ++i) {
            if (!(active >> i & 1)) continue;
            const T a = io.a.lane<T>(i), b = io.b.lane<T>(i);
            r.set<T>(i, value(a, b));
            raised |= flags(a, b);
        }
        asm volatile("fldcw %0" : : "m"(x87));
        set_mxcsr(before | raised);
    }, true, true};
}

constexpr unsigned kInvalid = 1, kDenormal = 2, kPrecision = 32;

template <class T>
unsigned invalid_or_denormal(T a, T) { return signals(a) ? kInvalid : std::fpclassify(a) == FP_SUBNORMAL ? kDenormal : 0; }

template <class T>
T exponent(T a, T) {
    if (std::isnan(a)) return quiet(a);
    if (std::isinf(a)) return kInfinity<T>;
    return a == 0 ? -kInfinity<T> : std::logb(a);
}

// The mantissa in [low, 2 low) with low one of 1, 1/2, 3/4, or in [1/2, 2) by the parity of the exponent.
template <class T>
T mantissa(T a, double low, bool by_parity, bool clear_sign, bool refuse) {
    if (std::isnan(a)) return quiet(a);
    const T sign = clear_sign ? T(1) : std::copysign(T(1), a);
    if (a == 0) return sign;
    if (refuse && a < 0) return kIndefinite<T>;
    if (std::isinf(a)) return sign;
    int e;
    T m = std::frexp(std::fabs(a), &e) * 2;  // [1, 2) * 2^(e-1)
    if (by_parity) return sign * ((e - 1) % 2 ? m / 2 : m);
    return sign * (m >= 2 * low ? m / 2 : m);
}
template <class T, class... Options>
Definition mantissa_part(const std::string& name, bool refuse, Options... options) {
    return part<T>(name, [=](T a, T) { return mantissa<T>(a, options..., refuse); },
                   [=](T a, T b) { return refuse && a < 0 ? kInvalid : invalid_or_denormal(a, b); });
}

TEST(EmulatorParts, ExponentAndMantissa) {
    const auto table = part_instructions();
    check<double>(table, part<double>("getexp_pd", exponent<double>, invalid_or_denormal<double>), kControls, false);
    check<float>(table, part<float>("getexp_ps", exponent<float>, invalid_or_denormal<float>), kControls, false);
    check<double>(table, mantissa_part<double>("getmant_pd 1..2", false, 1.0, false, false), kControls, false);
    check<float>(table, mantissa_part<float>("getmant_ps 1..2", false, 1.0, false, false), kControls, false);
    check<double>(table, mantissa_part<double>("getmant_pd 0.5..1", false, 0.5, false, true), kControls, false);
    check<double>(table, mantissa_part<double>("getmant_pd 0.5..2", false, 1.0, true, false), kControls, false);
    check<double>(table, mantissa_part<double>("getmant_pd 0.75..1.5", true, 0.75, false, false), kControls, false);
}

// a * 2^floor(b), rounded once from the wider format.
template <class T>
T scaled(T a, T b) {
    if (std::isnan(a)) {
        if (!signals(a) && std::isinf(b)) return b > 0 ? kInfinity<T> : T(0);
        return quiet(a);
    }
    if (std::isnan(b)) return quiet(b);
    if (std::isinf(b)) {
        if (b > 0 ? a == 0 : std::isinf(a)) return kIndefinite<T>;
        return b > 0 ? std::copysign(kInfinity<T>, a) : std::copysign(T(0), a);
    }
    const long double power = std::fmin(std::fmax(std::floor(static_cast<long double>(b)), -9000.0L), 9000.0L);
    volatile long double exact = static_cast<long double>(a) * std::exp2(power);
    return static_cast<T>(exact);
}

// Overflow, underflow and precision as the x87's store to the narrower format reports them.
template <class T>
unsigned scaling_flags(T a, T b) {
    if (signals(a) || signals(b)) return kInvalid;
    if (std::isnan(a) || std::isnan(b)) return 0;
    const unsigned denormal = std::fpclassify(a) == FP_SUBNORMAL ? kDenormal : 0;
    if (std::isinf(b)) return (b > 0 ? a == 0 : std::isinf(a)) ? kInvalid : denormal;
    unsigned short status;
    asm volatile("fnclex");
    volatile T r = scaled(a, b);
    static_cast<void>(r);
    asm volatile("fnstsw %0" : "=m"(status));
    asm volatile("fnclex");
    constexpr unsigned rounding_flags = 8 | 16 | 32;
    return (status & rounding_flags) | denormal;
}

TEST(EmulatorParts, Scaling) {
    const auto table = part_instructions();
    check<double>(table, part<double>("scalef_pd", scaled<double>, scaling_flags<double>), kControls, false);
    check<float>(table, part<float>("scalef_ps", scaled<float>, scaling_flags<float>), kControls, false);
}

// To a multiple of 2^-m in the direction of the immediate, exact in the wider format.
template <class T>
T multiple(T a, int m, int direction) {
    if (std::isnan(a)) return quiet(a);
    if (std::isinf(a)) return a;
    const long double x = std::ldexp(static_cast<long double>(a), m);
    const long double r = direction == 0 ? std::nearbyint(x) : direction == 1 ? std::floor(x) : direction == 2 ? std::ceil(x) : std::trunc(x);
    return std::copysign(static_cast<T>(std::ldexp(r, -m)), a);
}
template <class T>
Definition multiple_part(const std::string& name, int m, int direction, bool quiet_precision) {
    return part<T>(name, [=](T a, T) {
        if (direction == 0) {  // nearest whatever the current mode: the x87 rounds nearbyint
            unsigned short x87, nearest;
            asm("fnstcw %0" : "=m"(x87));
            nearest = x87 & static_cast<unsigned short>(~0xC00u);
            asm volatile("fldcw %0" : : "m"(nearest));
            const T r = multiple<T>(a, m, 0);
            asm volatile("fldcw %0" : : "m"(x87));
            return r;
        }
        return multiple<T>(a, m, direction);
    }, [=](T a, T) {
        if (signals(a)) return kInvalid;
        if (quiet_precision || !std::isfinite(a)) return 0u;
        const long double x = std::ldexp(static_cast<long double>(a), m);
        return x == std::trunc(x) ? 0u : kPrecision;
    });
}

TEST(EmulatorParts, RoundingToMultiples) {
    const auto table = part_instructions();
    check<double>(table, multiple_part<double>("roundscale_pd nearest", 0, 0, false), kControls);
    check<float>(table, multiple_part<float>("roundscale_ps nearest", 0, 0, false), kControls);
    check<double>(table, multiple_part<double>("roundscale_pd down 2^-4", 4, 1, false), kControls);
    check<double>(table, multiple_part<double>("roundscale_pd up quiet", 0, 2, true), kControls);
    check<float>(table, multiple_part<float>("roundscale_ps zero 2^-15", 15, 3, false), kControls);
    check<double>(table, multiple_part<double>("roundscale_pd current", 1, 1, false), {0x3F80});
    check<double>(table, multiple_part<double>("roundscale_pd current", 1, 2, false), {0x5F80});
    check<double>(table, part<double>("reduce_pd nearest 2^-4", [](double a, double) {
        if (std::isinf(a)) return 0.0;
        return std::isnan(a) ? quiet(a) : a - multiple<double>(a, 4, 0);
    }, [](double a, double) { return signals(a) ? kInvalid : 0u; }), {0x1F80});
}

template <class T>
T extreme(T a, T b, bool maximum, bool by_magnitude) {
    if (signals(a)) return quiet(a);
    if (signals(b)) return quiet(b);
    if (std::isnan(a)) return std::isnan(b) ? a : b;
    if (std::isnan(b)) return a;
    const T p = by_magnitude ? std::fabs(a) : a, q = by_magnitude ? std::fabs(b) : b;
    if (p == q) return (std::signbit(a) != maximum) ? a : b;
    return (p < q) == maximum ? b : a;
}
template <class T>
unsigned range_flags(T a, T b) {
    if (signals(a) || signals(b)) return kInvalid;
    if (std::isnan(a) || std::isnan(b)) return 0;
    return std::fpclassify(a) == FP_SUBNORMAL || std::fpclassify(b) == FP_SUBNORMAL ? kDenormal : 0;
}

TEST(EmulatorParts, RangeSelection) {
    const auto table = part_instructions();
    check<double>(table, part<double>("range_pd min", [](double a, double b) { return extreme(a, b, false, false); }, range_flags<double>), {0x1F80}, false);
    check<float>(table, part<float>("range_ps max", [](float a, float b) { return extreme(a, b, true, false); }, range_flags<float>), {0x1F80}, false);
    check<double>(table, part<double>("range_pd min abs", [](double a, double b) { return extreme(a, b, false, true); }, range_flags<double>), {0x1F80}, false);
}

// The approximations promise a relative error, and exact answers at the ends.
template <class T>
void check_approximation(const std::string& name, bool root) {
    const Instruction& instruction = find(part_instructions(), name);
    Inputs<T> inputs(9, false);
    for (int round = 0; round < 500; ++round) {
        Io io = inputs.next();
        set_mxcsr(kDefaultMxcsr);
        instruction.plain(io);
        ASSERT_EQ(mxcsr() & kFlags, 0u) << name;
        for (unsigned i = 0; i < 64 / sizeof(T); ++i) {
            const T x = io.a.lane<T>(i), r = io.result.lane<T>(i);
            if (std::isnan(x) || (root && x < 0)) {
                ASSERT_TRUE(std::isnan(r)) << x;
                continue;
            }
            const long double exact = root ? 1 / std::sqrt(static_cast<long double>(x)) : 1 / static_cast<long double>(x);
            if (static_cast<T>(exact) == 0 || std::isinf(static_cast<T>(exact))) {
                ASSERT_EQ(r, static_cast<T>(exact)) << x;
                ASSERT_EQ(std::signbit(r), std::signbit(static_cast<T>(exact))) << x;
            } else if (std::fabs(exact) >= std::numeric_limits<T>::min()) {
                ASSERT_LT(std::fabs(r / exact - 1), 0x1p-14L) << x;
            }
        }
    }
}

TEST(EmulatorParts, Approximations) {
    for (const char* name : {"rcp14_pd", "rsqrt14_pd"}) check_approximation<double>(name, name[1] == 's');
    for (const char* name : {"rcp14_ps", "rsqrt14_ps"}) check_approximation<float>(name, name[1] == 's');
}

}  // namespace
}  // namespace nax::emulator_check
