// Sums of cell integrals in twice the working precision: the unevaluated sum of two doubles.
#pragma once

#include <cstdint>

namespace nax::fit {

struct RunningSum {
    double high, low;

    // Knuth's two-sum: the rounding error of each addition is kept in `low`.
    constexpr void add(double value) {
        const double sum = high + value, back = sum - high;
        const double error = (high - (sum - back)) + (value - back);
        // Renormalise, so that the error term stays below half a unit of the sum.
        const double rest = low + error;
        high = sum + rest;
        low = rest - (high - sum);
    }
    constexpr double value() const { return high + low; }
};

// a - b, rounded once but for a relative 2^-105.
constexpr double difference(const RunningSum& a, const RunningSum& b) {
    const double difference = a.high - b.high, back = difference - a.high;
    const double error = (a.high - (difference - back)) - (b.high + back);
    return difference + (error + (a.low - b.low));
}

}  // namespace nax::fit
