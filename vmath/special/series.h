// Power series with coefficients that follow from a rule, shared by vector and scalar code.
#pragma once

namespace nax::vmath {

// exp(-w s - q s^2), averaged over s in [0, 1]:  sum over i, j of (-w)^i (-q)^j / (i! j! (i + 2 j + 1)).
// It is what a bell curve makes of a step: F(x0 + d) = F(x0) + F'(x0) d mean, with w = 2 x0 d, q = d^2 for the error
// functions and w = x0 d, q = d^2/2 for the normal distribution.
constexpr double mean_coefficient(int i, int j) {
    double c = 1.0 / (i + 2 * j + 1);
    for (int k = 1; k <= i; ++k) c /= -k;
    for (int k = 1; k <= j; ++k) c /= -k;
    return c;
}

// Taylor series of a function whose derivative is y' = exp(curvature y^2 / 2) times a constant, in v = y'(x0) (x - x0):
//     y = y0 + v (1 + v (t_2 + v (t_3 + ...))),   t_k = P_k(y0)/k!,   P_1 = 1,   P_(k+1) = P_k' + k curvature y P_k
// P_k is even or odd: coefficient n of t_k belongs to y^(2 n) or y^(2 n + 1). curvature is 2 for the inverse error
// function and 1 for quantiles of the normal distribution.
constexpr int kMaxOrder = 10;
constexpr double inverse_coefficient(double curvature, int order, int n) {
    double p[kMaxOrder + 1] = {1.0};
    for (int k = 1; k < order; ++k) {
        double next[kMaxOrder + 1] = {};
        for (int m = 0; m < k; ++m) {
            if (m > 0) next[m - 1] += m * p[m];
            next[m + 1] += k * curvature * p[m];
        }
        for (int m = 0; m <= k; ++m) p[m] = next[m];
    }
    double factorial = 1.0;
    for (int k = 2; k <= order; ++k) factorial *= k;
    return p[2 * n + (order % 2 == 0 ? 1 : 0)] / factorial;
}

}  // namespace nax::vmath
