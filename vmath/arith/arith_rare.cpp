// Scalar paths of the rounding and selection functions: Inf, NaN, results at the ends of the range, and quotients that
// overflow.
#include "vmath/arith/arith_rare.h"

#include <cmath>
#include <limits>

#include "vmath/frame/scalar.h"

namespace nax::vmath {
namespace {

template <class T>
constexpr T kInfinity = std::numeric_limits<T>::infinity();

// The parts of a finite number: bits of the magnitude, and mantissa times 2^exponent in units of the smallest denormal.
template <class T>
struct Parts {
    using U = typename Format<T>::Unsigned;
    U mantissa;
    int exponent;

    explicit Parts(T magnitude) {
        const U bits = bits_of(magnitude);
        const int field = static_cast<int>(bits >> Format<T>::mantissa_bits);
        const U fraction = bits & ((U{1} << Format<T>::mantissa_bits) - 1);
        mantissa = field == 0 ? fraction : fraction | U{1} << Format<T>::mantissa_bits;
        exponent = field == 0 ? 0 : field - 1;
    }
};

// mantissa 2^exponent in units of the smallest denormal, exact whenever the value is representable. A denormal comes
// out of a multiplication, so it is flushed when the control word says so.
template <class T>
T compose(uint64_t mantissa, int exponent) {
    constexpr int up = Format<T>::mantissa_bits + 1;
    constexpr int unit = 1 - Format<T>::bias - Format<T>::mantissa_bits;
    const T value = static_cast<T>(mantissa);
    if (exponent > up) return std::ldexp(value, exponent + unit);
    return std::ldexp(value, exponent + unit + up) * std::ldexp(T{1}, -up);
}

// a mod b for finite a >= b > 0, by long division of the mantissas, some bits of the quotient at a time.
template <class T>
T long_division(T a, T b, bool& quotient_odd) {
    const Parts<T> pa(a), pb(b);
    constexpr int step = 63 - Format<T>::mantissa_bits;
    uint64_t rest = pa.mantissa % pb.mantissa;
    uint64_t quotient = pa.mantissa / pb.mantissa;
    for (int left = pa.exponent - pb.exponent; left > 0;) {
        const int count = left < step ? left : step;
        rest <<= count;
        quotient = rest / pb.mantissa;
        rest %= pb.mantissa;
        left -= count;
    }
    quotient_odd = (quotient & 1) != 0;
    return compose<T>(rest, pb.exponent);
}

// |a| mod |b| for finite a and non-zero b; an infinite b leaves a.
template <class T>
T magnitude_mod(T a, T b, bool& quotient_odd) {
    quotient_odd = false;
    return a < b ? a : long_division(a, b, quotient_odd);
}

template <class T>
int32_t frac(T x, T* r) {
    if (x != x)
        *r = x + x;
    else if (std::fabs(x) == kInfinity<T>)
        *r = std::copysign(T{0}, x);
    else if (std::fabs(x) < 1)
        *r = x;
    else
        *r = x - std::trunc(x);
    return kSuccess;
}

template <class T>
int32_t modf(T x, T* whole, T* fraction) {
    if (x != x) {
        *whole = *fraction = x + x;
    } else if (std::fabs(x) == kInfinity<T>) {
        *whole = x;
        *fraction = std::copysign(T{0}, x);
    } else {
        *whole = std::trunc(x);
        *fraction = x - *whole;
    }
    return kSuccess;
}

// x, quiet if it was a signalling NaN.
template <class T>
T quieted(T x) {
    return x * hide(T{1});
}

// Maximum and minimum: a single NaN is ignored, two give NaN.
template <class T>
int32_t ignore_nan(T a, T b, T* r) {
    if (b != b) *r = quieted(a);
    if (a != a) *r = quieted(b);
    return kSuccess;
}

// The same by magnitude; Inf is a number.
template <class T>
int32_t ignore_nan_by_magnitude(T a, T b, T* r) {
    if (std::fabs(b) == kInfinity<T>) {
        if (a != a) *r = quieted(b);
        return kSuccess;
    }
    return ignore_nan(a, b, r);
}

// The positive difference keeps NaN, the first argument's before the second's.
template <class T>
int32_t keep_nan(T a, T b, T* r) {
    if (a != a)
        *r = quieted(a);
    else if (b != b)
        *r = quieted(b);
    return kSuccess;
}

// Raises the underflow flag. The factor is hidden from the compiler, which would carry out the multiplication itself.
template <class T>
void raise_underflow() {
    T smallest_normal = std::numeric_limits<T>::min();
    asm volatile("" : "+x"(smallest_normal));
    force(smallest_normal * smallest_normal);
}

template <class T>
int32_t next_after(T x, T y, T* r) {
    using U = typename Format<T>::Unsigned;
    if (x != x || y != y) {
        *r = x + y;
        return kSuccess;
    }
    if (x == y) {
        *r = y;
        return kSuccess;
    }
    if (x == 0) {
        raise_underflow<T>();
        *r = std::copysign(from_bits<T>(U{1}), y);
        return kUnderflow;
    }
    const U bits = bits_of(x);
    const bool away_from_zero = (x < y) == (x > 0);
    *r = from_bits<T>(away_from_zero ? bits + 1 : bits - 1);
    const U magnitude = bits_of(std::fabs(*r));
    if (magnitude == bits_of(kInfinity<T>)) {
        force(x + x);
        return kOverflow;
    }
    if (magnitude < bits_of(std::numeric_limits<T>::min())) {
        raise_underflow<T>();
        return kUnderflow;
    }
    return kSuccess;
}

// A zero divisor and an infinite dividend are reported as poles.
template <class T>
int32_t fmod(T a, T b, T* r) {
    if (a != a || b != b) {
        *r = a + b;
        return kSuccess;
    }
    if (b == 0) {
        *r = hide(T{0}) / T{0};
        return kPole;
    }
    if (std::fabs(a) == kInfinity<T>) {
        *r = a - a;
        return kPole;
    }
    bool odd;
    *r = std::copysign(magnitude_mod(std::fabs(a), std::fabs(b), odd), a);
    return kSuccess;
}

// A zero divisor is a domain error; an infinite dividend gives NaN and no report.
template <class T>
int32_t remainder(T a, T b, T* r) {
    if (a != a || b != b) {
        *r = a + b;
        return kSuccess;
    }
    if (b == 0) {
        *r = hide(T{0}) / T{0};
        return kDomain;
    }
    if (std::fabs(a) == kInfinity<T>) {
        *r = a - a;
        return kSuccess;
    }
    bool odd;
    const T divisor = std::fabs(b);
    T rest = magnitude_mod(std::fabs(a), divisor, odd);
    // Doubling is exact, or overflows, which still compares right.
    const T twice = rest + rest;
    if (twice > divisor || (twice == divisor && odd)) rest -= divisor;
    *r = std::signbit(a) ? -rest : rest;
    return kSuccess;
}

}  // namespace
}  // namespace nax::vmath

#define NAX_RARE_ONE(name, path)                                                                          \
    extern "C" int32_t vs##name##_cout_rare(const float* a, float* r) { return nax::vmath::path(*a, r); } \
    extern "C" int32_t vd##name##_cout_rare(const double* a, double* r) { return nax::vmath::path(*a, r); }
#define NAX_RARE_TWO(name, path)                                                           \
    extern "C" int32_t vs##name##_cout_rare(const float* a, const float* b, float* r) {    \
        return nax::vmath::path(*a, *b, r);                                                \
    }                                                                                      \
    extern "C" int32_t vd##name##_cout_rare(const double* a, const double* b, double* r) { \
        return nax::vmath::path(*a, *b, r);                                                \
    }

NAX_RARE_ONE(frac, frac)
NAX_RARE_TWO(fmax, ignore_nan)
NAX_RARE_TWO(fmin, ignore_nan)
NAX_RARE_TWO(maxmag, ignore_nan_by_magnitude)
NAX_RARE_TWO(minmag, ignore_nan_by_magnitude)
NAX_RARE_TWO(fdim, keep_nan)
NAX_RARE_TWO(nextafter, next_after)
NAX_RARE_TWO(fmod, fmod)
NAX_RARE_TWO(remainder, remainder)

extern "C" int32_t vsmodf_cout_rare(const float* a, float* whole, float* fraction) {
    return nax::vmath::modf(*a, whole, fraction);
}
extern "C" int32_t vdmodf_cout_rare(const double* a, double* whole, double* fraction) {
    return nax::vmath::modf(*a, whole, fraction);
}
