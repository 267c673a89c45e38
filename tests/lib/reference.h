// Reference values of the one-argument functions.
#pragma once

#include <mpfr.h>

#include <cstddef>

namespace nax::test {

struct Reference {
    const char* function;                     // as in a record: Exp, Log1p ...
    double (*in_double)(double);              // good to an ulp of double: for float arguments
    long double (*in_long_double)(long double);  // good to about an ulp of 64 bits: for double arguments
    int (*exact)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
};

// The reference of a function, or null.
const Reference* find_reference(const char* function);

// The function's value at x with 160 bits, rounded to long double.
long double exact_value(const Reference& reference, double x);

}  // namespace nax::test
