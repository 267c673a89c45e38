#include "tests/lib/reference.h"

#include <cmath>
#include <cstring>

namespace nax::test {
namespace {

int exact_logb(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding) {
    return mpfr_set_si(y, mpfr_get_exp(x) - 1, rounding);  // MPFR's significand lies in [1/2, 1)
}

constexpr Reference kReferences[] = {
    {"Exp", std::exp, std::exp, mpfr_exp},
    {"Exp2", std::exp2, std::exp2, mpfr_exp2},
    {"Exp10", exp10, exp10l, mpfr_exp10},
    {"Expm1", std::expm1, std::expm1, mpfr_expm1},
    {"Ln", std::log, std::log, mpfr_log},
    {"Log2", std::log2, std::log2, mpfr_log2},
    {"Log10", std::log10, std::log10, mpfr_log10},
    {"Log1p", std::log1p, std::log1p, mpfr_log1p},
    {"Logb", std::logb, std::logb, exact_logb},
};

}  // namespace

const Reference* find_reference(const char* function) {
    for (const Reference& reference : kReferences)
        if (std::strcmp(reference.function, function) == 0) return &reference;
    return nullptr;
}

long double exact_value(const Reference& reference, double x) {
    mpfr_t argument, value;
    mpfr_init2(argument, 53);
    mpfr_init2(value, 160);
    mpfr_set_d(argument, x, MPFR_RNDN);
    reference.exact(value, argument, MPFR_RNDN);
    const long double result = mpfr_get_ld(value, MPFR_RNDN);
    mpfr_clear(argument);
    mpfr_clear(value);
    return result;
}

}  // namespace nax::test
