// Density, distribution function and quantiles of the chi-square distribution, by the incomplete gamma functions.
//
// P is a series where x is below a + 1, Q a continued fraction elsewhere (Abramowitz, Stegun 1964, 6.5.29 and 6.5.31).
// Their common factor x^a e^-x / Gamma(a + 1) comes for large a from Stirling's series, so that no large logarithms
// cancel (C. Loader, Fast and Accurate Computation of Binomial Probabilities, 2000).
#include "stats/missing/chi_square.h"

#include <cmath>
#include <limits>

#include "nax/statistics_robust.h"
#include "stats/scalar_math.h"

namespace nax::stats {
namespace {

constexpr double kEpsilon = 0x1p-53;
constexpr double kTwoPi = 0x1.921fb54442d18p2;
// From here on five terms of Stirling's series hold a double.
constexpr double kStirlingFrom = 16;

// ln Gamma(a + 1) - (a + 1/2) ln a + a - ln(2 pi)/2, for large a.
double stirling_error(double a) {
    const double r = 1 / (a * a);
    return (1.0 / 12 - r * (1.0 / 360 - r * (1.0 / 1260 - r * (1.0 / 1680 - r / 1188)))) / a;
}

// x^a e^-x / Gamma(a + 1).
double common_factor(double a, double x) {
    if (a < kStirlingFrom) return exponential(a * logarithm(x) - x - log_gamma(a + 1));
    // Of ratios far from 1 the logarithm itself has all digits; near 1 that of the difference.
    const double mu = (x - a) / a;
    const double log_ratio = std::fabs(mu) < 0.5 ? std::log1p(mu) : logarithm(x / a);
    return exponential(a * (log_ratio - mu) - stirling_error(a)) / std::sqrt(kTwoPi * a);
}

double lower_series(double a, double x) {
    double term = 1, sum = 1;
    for (double k = a + 1; term > sum * kEpsilon; k += 1) sum += term *= x / k;
    return sum;
}

// a/(x + 1 - a - ...) by Lentz's method, in units of the common factor.
double upper_fraction(double a, double x) {
    const double tiny = std::numeric_limits<double>::min() / kEpsilon;
    double b = x + 1 - a, c = 1 / tiny, d = 1 / b, fraction = d;
    for (double k = 1;; k += 1) {
        const double numerator = -k * (k - a);
        b += 2;
        d = numerator * d + b;
        if (std::fabs(d) < tiny) d = tiny;
        c = b + numerator / c;
        if (std::fabs(c) < tiny) c = tiny;
        d = 1 / d;
        const double factor = d * c;
        fraction *= factor;
        if (!(std::fabs(factor - 1) > 2 * kEpsilon)) return fraction * a;
    }
}

// Bounds of the quantile of a gamma variable found so far; the upper one as good as infinite.
constexpr double kUnbounded = 4503599627185248.0;
constexpr double kRelativeStep = 1e-15;
constexpr double kLeastExponent = -709.7827129;
constexpr int kNewtonSteps = 10;

// Above zero where x is too large. The smaller tail is compared: the other has no digits left.
double excess(double a, double x, double probability) {
    const IncompleteGamma tails = incomplete_gamma(a, x);
    return probability < 0.5 ? tails.p - probability : (1 - probability) - tails.q;
}

struct Bracket {
    double low = 0, high = kUnbounded;
};

bool newton(double a, double probability, double start, Bracket& bracket, double& x) {
    x = start;
    for (int step = 0; step < kNewtonSteps; ++step) {
        const double f = excess(a, x, probability);
        (f > 0 ? bracket.high : bracket.low) = x;
        if (f == 0) return true;
        const double exponent = (a - 1) * logarithm(x) - log_gamma(a) - x;
        if (!(exponent > kLeastExponent)) return false;
        const double change = f / exponential(exponent);
        x -= change;
        if (!(x > bracket.low && x < bracket.high)) return false;
        if (std::fabs(change) < kRelativeStep * x) return true;
    }
    return false;
}

double bisect(double a, double probability, Bracket bracket) {
    if (bracket.high == kUnbounded) {
        double high = bracket.low > 0 ? 2 * bracket.low : a;
        while (high < kUnbounded && excess(a, high, probability) < 0) bracket.low = high, high *= 2;
        bracket.high = high;
    }
    double x = bracket.low;
    for (;;) {
        // Over many powers of two the middle is that of the logarithms.
        const double middle = bracket.low > 0 && bracket.high > 4 * bracket.low
                                  ? std::sqrt(bracket.low) * std::sqrt(bracket.high)
                                  : bracket.low + (bracket.high - bracket.low) / 2;
        if (middle <= bracket.low || middle >= bracket.high || middle == x) return middle;
        x = middle;
        (excess(a, x, probability) > 0 ? bracket.high : bracket.low) = x;
    }
}

}  // namespace

IncompleteGamma incomplete_gamma(double a, double x) {
    if (!(a > 0) || std::isnan(x)) return {std::nan(""), std::nan("")};
    if (x <= 0) return {0, 1};
    if (std::isinf(x)) return {1, 0};
    const double factor = common_factor(a, x);
    if (x < a + 1) {
        const double p = factor * lower_series(a, x);
        return {p, 1 - p};
    }
    const double q = factor * upper_fraction(a, x);
    return {1 - q, q};
}

double chi2_density(double degrees, double x) {
    if (!(x > 0)) return x == 0 && degrees == 2 ? 0.5 : x == 0 && degrees < 2 ? HUGE_VAL : 0;
    const double a = degrees / 2;
    return common_factor(a, x / 2) * a / x;
}

double chi2_distribution(double degrees, double x) { return incomplete_gamma(degrees / 2, x / 2).p; }

double chi2_quantile(double degrees, double probability) {
    if (!(degrees > 0) || std::isnan(probability)) return std::nan("");
    if (probability <= 0) return 0;
    if (probability >= 1) return HUGE_VAL;
    // E. B. Wilson, M. M. Hilferty (1931): the cube root of a chi-square variable is nearly normal.
    const double a = degrees / 2, t = (1.0 / 9) / a;
    const double root = 1 - t + rough_inverse_normal(probability) * std::sqrt(t);
    Bracket bracket;
    double x;
    if (root > 0 && newton(a, probability, a * root * root * root, bracket, x)) return 2 * x;
    return 2 * bisect(a, probability, bracket);
}

}  // namespace nax::stats

extern "C" double _vdSSQ(double a, double x) { return nax::stats::incomplete_gamma(a, x).q; }
extern "C" float _vsSSQ(float a, float x) { return static_cast<float>(nax::stats::incomplete_gamma(a, x).q); }
extern "C" double __stodChi2PDF(double degrees, double x) { return nax::stats::chi2_density(degrees, x); }
extern "C" float __stosChi2PDF(float degrees, float x) {
    return static_cast<float>(nax::stats::chi2_density(degrees, x));
}
extern "C" double __stodChi2CDF(double degrees, double x) { return nax::stats::chi2_distribution(degrees, x); }
extern "C" float __stosChi2CDF(float degrees, float x) {
    return static_cast<float>(nax::stats::chi2_distribution(degrees, x));
}
extern "C" double __stodChi2ICDF(double degrees, double probability) {
    return nax::stats::chi2_quantile(degrees, probability);
}
extern "C" float __stosChi2ICDF(float degrees, float probability) {
    return static_cast<float>(nax::stats::chi2_quantile(degrees, probability));
}
