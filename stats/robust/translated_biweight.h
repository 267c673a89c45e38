// The translated biweight of D. M. Rocke, Robustness properties of S-estimators of multivariate location and shape in
// high dimension, Ann. Statist. 24 (1996) 1327-1345. With y = (d - M)/c:
//   psi(d) = d below M, d (1 - y^2)^2 from M to M + c, 0 beyond
//   rho(d) = d^2/2 below M, its integral on to M + c, constant beyond
#pragma once

#include <cstdint>

namespace nax::stats::robust {

struct TranslatedBiweight {
    double c;
    double m;

    double rho_max() const { return m * m / 2 + c * (5 * c + 16 * m) / 30; }
    double rho(double d) const {
        if (d < m) return d * d / 2;
        if (!(d < m + c)) return rho_max();
        // In powers of y: those of d would cancel where c is small beside M.
        const double y = (d - m) / c, y2 = y * y;
        return m * m / 2 + c * m * y * (1 - y2 * (2.0 / 3 - y2 / 5)) + c * c * y2 * (0.5 - y2 * (0.5 - y2 / 6));
    }
    // psi(d)/d.
    double weight(double d) const {
        if (d <= m) return 1;
        if (!(d < m + c)) return 0;
        const double y = (d - m) / c, u = 1 - y * y;
        return u * u;
    }
};

// Mean of rho where d^2 has the chi-square distribution with p degrees of freedom.
double expected_rho(const TranslatedBiweight& biweight, double p);

// The constants for p variables, a breakdown point in (0, 1/2] and the probability with which a clean observation gets
// weight 0. Where the probability can't be reached at that breakdown point, M is 0 and the biweight an ordinary one.
TranslatedBiweight biweight_for(double p, double breakdown, double rejection);

// The k at which the mean of rho(d_i / k) is `target`, from a start near it; 0 where there is none.
template <class T>
double scale_of(const TranslatedBiweight& biweight, const T* distances, int64_t n, double target, double start);

}  // namespace nax::stats::robust
