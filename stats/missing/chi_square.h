// The chi-square distribution.
#pragma once

namespace nax::stats {

// Regularised incomplete gamma functions of a above 0: P from 0 to x, Q = 1 - P from x on.
struct IncompleteGamma {
    double p;
    double q;
};
IncompleteGamma incomplete_gamma(double a, double x);

double chi2_density(double degrees, double x);
double chi2_distribution(double degrees, double x);
// 0 for probabilities not above 0, infinity from 1 on.
double chi2_quantile(double degrees, double probability);

}  // namespace nax::stats
