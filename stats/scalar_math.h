// Elementary functions of single numbers. They go through the library's own vector functions, with denormals kept and
// errors left to the caller, whose mode word is put back.
#pragma once

namespace nax::stats {

double exponential(double x);
double logarithm(double x);  // x above 0
// Logarithm of the gamma function, a above 0.
double log_gamma(double a);
// Inverse of the standard normal distribution function to three digits: a start for iterations.
double rough_inverse_normal(double q);

}  // namespace nax::stats
