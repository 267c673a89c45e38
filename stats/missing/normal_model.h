// The multivariate normal model of incomplete data: R. J. A. Little, D. B. Rubin, Statistical Analysis with Missing
// Data (2002), chapters 7 and 11; J. L. Schafer, Analysis of Incomplete Multivariate Data (1997), chapter 5.
//
// theta is the symmetric matrix of order p + 1 [[-1, mu'], [mu, Sigma]], by rows. Inside, all is double precision, and
// the data are taken about fixed centres, so that sums of products lose nothing to a large mean.
#pragma once

#include <cstdint>

#include "nax/streams.h"
#include "service/block.h"
#include "stats/missing/patterns.h"

namespace nax::stats::missing {

// Goodnight's sweep (1979) of a symmetric matrix on a pivot: direction 1 forward, -1 back. A sweep and its reverse
// cancel.
void sweep(int64_t order, double* matrix, int64_t pivot, int direction);

// n standard normal numbers. Status: DrawFailed, Memory.
int32_t draw_normals(nax_stream* stream, int64_t n, double* r);

// Prior mu | Sigma ~ N(mean, Sigma/tau), Sigma ~ inverse Wishart(m, scale); mean about the centres, scale full.
struct Prior {
    double tau = 0;
    int64_t m = 0;
    double* mean = nullptr;
    double* scale = nullptr;
};

template <class T>
class NormalModel {
public:
    NormalModel(const Observations<T>& data, const Patterns& patterns) : data_(data), patterns_(patterns) {}

    // Allocates everything, and takes the means of the observed values for centres. Status: Memory.
    int32_t open();
    const double* centre() const { return centre_; }
    double* theta() const { return theta_; }
    Prior& prior() { return prior_; }
    int64_t order() const { return data_.p + 1; }

    // Means and variances of the observed values, without covariances.
    void start_from_data();
    // One EM step; returns the largest change of an element of theta.
    double em_step();
    // Draws the missing entries from theta into `values`, in the order of the patterns. Status: Memory, DrawFailed,
    // DrawFactorFailed.
    int32_t draw_missing(nax_stream* stream, double* values);
    // Draws theta from its posterior by the data that draw_missing completed. Status: DrawFailed, DrawFactorFailed,
    // DrawInverseFailed.
    int32_t draw_theta(nax_stream* stream);

private:
    // Regression of a pattern's missing variables on the observed ones.
    struct Regression {
        int64_t observed_count, missing_count;
    };
    Regression regress(int64_t pattern);
    void predict(const Regression& regression, int64_t observation, double* row) const;
    void clear_sums();
    void add_row(const double* row);
    void flush_rows();
    void posterior(double* centre, double* scale) const;
    int32_t fill_bartlett(nax_stream* stream, double* triangle) const;

    const Observations<T>& data_;
    const Patterns& patterns_;
    service::Block<double> block_;
    service::Block<int64_t> indices_;
    double *theta_ = nullptr, *swept_ = nullptr, *sums_ = nullptr, *rows_ = nullptr, *centre_ = nullptr,
           *work_ = nullptr;
    int64_t *observed_ = nullptr, *missing_ = nullptr;
    int64_t buffered_ = 0;
    Prior prior_;
};

}  // namespace nax::stats::missing
