// Reference values of the one-argument functions.
#pragma once

#include <mpfr.h>

#include <cstddef>

namespace nax::testing {

struct Reference {
    const char* function;                        // as in a record: Exp, Log1p ...
    double (*in_double)(double);                 // good to an ulp of double: for float arguments
    long double (*in_long_double)(long double);  // good to about an ulp of 64 bits: for double arguments
    int (*exact)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
};

// The reference of a function, or null.
const Reference* find_reference(const char* function);

// |y - value| in ulp of value; `value` holds that distance afterwards. T is float or double, y finite.
template <class T>
double ulp_distance(mpfr_ptr value, T y);

// |y - f(x)| in ulp of f(x), as ulp_error() but with 160 bits. T is float or double.
template <class T>
double exact_ulp_error(const Reference& reference, T x, T y);

// The same for a function of two arguments; an infinite y is right where the value rounds to it.
using ExactBinary = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);
template <class T>
double exact_ulp_error(ExactBinary exact, T a, T b, T y);

}  // namespace nax::testing
