#include "stats/robust/translated_biweight.h"

#include <algorithm>
#include <cmath>

#include "stats/missing/chi_square.h"

namespace nax::stats::robust {
namespace {

// Root of a continuous function between `low` and `high`, where it has different signs: false position, which halves
// the weight of an end that stays (the Illinois rule).
template <class F>
double root_between(F f, double low, double f_low, double high, double f_high) {
    constexpr double kTolerance = 1e-13;
    constexpr int kMostSteps = 200;
    int kept = 0;
    for (int step = 0; step < kMostSteps; ++step) {
        double x = (low * f_high - high * f_low) / (f_high - f_low);
        if (!(x > low && x < high)) x = low + (high - low) / 2;
        const double fx = f(x);
        if (fx == 0 || high - low <= kTolerance * std::fabs(high)) return x;
        if ((fx > 0) == (f_low > 0)) {
            low = x;
            f_low = fx;
            if (kept == 1) f_high /= 2;
            kept = 1;
        } else {
            high = x;
            f_high = fx;
            if (kept == -1) f_low /= 2;
            kept = -1;
        }
        if (std::fabs(fx) < kTolerance * kTolerance) return x;
    }
    return low + (high - low) / 2;
}

// Gauss-Legendre quadrature of 64 points: roots of the Legendre polynomial by Newton's method from Tricomi's start.
struct Quadrature {
    static constexpr int kPoints = 64;
    double node[kPoints / 2], weight[kPoints / 2];

    Quadrature() {
        constexpr double kPi = 0x1.921fb54442d18p1;
        for (int i = 0; i < kPoints / 2; ++i) {
            double x = std::cos(kPi * (i + 0.75) / (kPoints + 0.5)), derivative = 1;
            for (int step = 0; step < 4; ++step) {
                double before = 1, polynomial = x;
                for (int k = 2; k <= kPoints; ++k) {
                    const double next = ((2 * k - 1) * x * polynomial - (k - 1) * before) / k;
                    before = polynomial;
                    polynomial = next;
                }
                derivative = kPoints * (x * polynomial - before) / (x * x - 1);
                x -= polynomial / derivative;
            }
            node[i] = x;
            weight[i] = 2 / ((1 - x * x) * derivative * derivative);
        }
    }
    template <class F>
    double integral(double from, double to, F f) const {
        const double centre = (from + to) / 2, half = (to - from) / 2;
        double sum = 0;
        for (int i = 0; i < kPoints / 2; ++i)
            sum += weight[i] * (f(centre - half * node[i]) + f(centre + half * node[i]));
        return sum * half;
    }
};

double expected(const Quadrature& quadrature, const TranslatedBiweight& biweight, double p) {
    const double m = biweight.m, end = m + biweight.c;
    double sum = biweight.rho_max() * incomplete_gamma(p / 2, end * end / 2).q;
    if (m > 0) sum += p / 2 * chi2_distribution(p + 2, m * m);
    if (biweight.c > 0)
        sum += quadrature.integral(m, end, [&](double d) { return biweight.rho(d) * 2 * d * chi2_density(p, d * d); });
    return sum;
}

// The sharpest cut of the family, rho = min(d, c)^2/2, of this breakdown point.
double limit_constant(double p, double r) {
    const auto f = [&](double c) {
        const IncompleteGamma tails = incomplete_gamma(p / 2, c * c / 2);
        return p * chi2_distribution(p + 2, c * c) + c * c * tails.q - r * c * c;
    };
    constexpr int kMostSteps = 100;
    constexpr double kTolerance = 1e-12;
    double c = 2 * p;
    for (int step = 0; step < kMostSteps; ++step) {
        const double value = f(c);
        if (std::fabs(value) <= kTolerance * c * c) break;
        const double slope = 2 * c * (incomplete_gamma(p / 2, c * c / 2).q - r);
        const double next = c - value / slope;
        c = next > 0 ? next : c / 2;
    }
    return c;
}

}  // namespace

double expected_rho(const TranslatedBiweight& biweight, double p) { return expected(Quadrature(), biweight, p); }

TranslatedBiweight biweight_for(double p, double breakdown, double rejection) {
    const double reach = std::sqrt(chi2_quantile(p, 1 - rejection));
    const double limit = limit_constant(p, breakdown);
    // Even the sharpest cut rejects less than it may.
    if (incomplete_gamma(p / 2, limit * limit / 2).q <= rejection) return {0, reach};
    const Quadrature quadrature;
    const auto excess = [&](const TranslatedBiweight& b) {
        return expected(quadrature, b, p) - breakdown * b.rho_max();
    };
    const auto at = [&](double m) { return excess({reach - m, m}); };
    const double at_zero = at(0);
    if (at_zero >= 0)
        return [&] {
            const double m = root_between(at, 0, at_zero, reach, at(reach));
            return TranslatedBiweight{reach - m, m};
        }();
    double low = limit / 16, high = std::max(limit, 1.0);
    const auto of_constant = [&](double c) { return excess({c, 0}) / (c * c); };
    while (of_constant(low) < 0) low /= 2;
    while (of_constant(high) > 0) high *= 2;
    return {root_between(of_constant, low, of_constant(low), high, of_constant(high)), 0};
}

template <class T>
double scale_of(const TranslatedBiweight& biweight, const T* distances, int64_t n, double target, double start) {
    if (!(start > 0) || !std::isfinite(start)) return 0;
    const auto excess = [&](double k) {
        const double inverse = 1 / k;
        double sum = 0;
        for (int64_t i = 0; i < n; ++i) sum += biweight.rho(static_cast<double>(distances[i]) * inverse);
        return sum / static_cast<double>(n) - target;
    };
    double low = start, high = start, f_low = excess(start), f_high = f_low;
    constexpr double kStep = 1.25;
    constexpr int kMostSteps = 2000;
    int step = 0;
    for (; f_low < 0 && step < kMostSteps; ++step) high = low, f_high = f_low, f_low = excess(low /= kStep);
    for (; f_high > 0 && step < kMostSteps; ++step) low = high, f_low = f_high, f_high = excess(high *= kStep);
    if (!(f_low >= 0 && f_high <= 0)) return 0;
    if (f_low == 0) return low;
    if (f_high == 0) return high;
    return root_between(excess, low, f_low, high, f_high);
}
template double scale_of(const TranslatedBiweight&, const double*, int64_t, double, double);
template double scale_of(const TranslatedBiweight&, const float*, int64_t, double, double);

}  // namespace nax::stats::robust
