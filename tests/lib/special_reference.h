// Reference values of the special functions that the C library or MPFR lacks.
#pragma once

#include <mpfr.h>

namespace nax::testing {

long double reference_erfinv(long double x);
long double reference_erfcinv(long double x);
long double reference_cdf_norm(long double x);
long double reference_cdf_norm_inv(long double x);
long double reference_exp_int1(long double x);
double reference_exp_int1(double x);
double reference_erfinv(double x);
double reference_erfcinv(double x);
double reference_cdf_norm(double x);
double reference_cdf_norm_inv(double x);
int exact_exp_int1(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding);
int exact_lgamma(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding);
int exact_erfinv(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding);
int exact_erfcinv(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding);
int exact_cdf_norm(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding);
int exact_cdf_norm_inv(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding);

}  // namespace nax::testing
