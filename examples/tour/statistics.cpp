// Summary statistics of two data sets: what a statistician asks first of the earthquakes near Fiji, and the stars of a
// cluster whose giants mislead classical estimates. The pictures show the stars with both ellipses, and which stars are
// flagged.
#include <nax/statistics_basic.h>
#include <nax/statistics_order.h>
#include <nax/statistics_robust.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "examples/svg_plot.h"
#include "examples/tour/csv.h"
#include "examples/tour/tour.h"

namespace tour {
namespace {

// The table with each variable contiguous, and its sizes.
struct Matrix {
    std::vector<double> x;
    int64_t n, p;
    int64_t storage = NAX_SS_STORAGE_ROWS;
    explicit Matrix(const Csv& table)
        : n(static_cast<int64_t>(table.rows())), p(static_cast<int64_t>(table.columns.size())) {
        for (const auto& column : table.columns) x.insert(x.end(), column.begin(), column.end());
    }
    nax_ss_task* task() {
        nax_ss_task* made = nullptr;
        __stodSSNewTask(&made, &p, &n, &storage, x.data(), nullptr, nullptr, 1);
        return made;
    }
};

void describe(const Csv& table) {
    Matrix matrix(table);
    const auto p = table.columns.size();
    std::vector<double> mean(p), r2(p), r3(p), r4(p), c2(p), c3(p), c4(p), kurtosis(p), skewness(p), correlation(p * p);
    std::vector<double> quartiles(3 * p), deviation(p), low = {}, high = {};
    double orders[3] = {0.25, 0.5, 0.75};
    const int64_t three = 3, full = NAX_SS_MATRIX_FULL;
    for (const auto& column : table.columns) low.push_back(column[0]), high.push_back(column[0]);
    nax_ss_task* task = matrix.task();
    __stodSSEditMoments(task, mean.data(), r2.data(), r3.data(), r4.data(), c2.data(), c3.data(), c4.data());
    __stodSSEditTask(task, NAX_SS_KURTOSIS, kurtosis.data());
    __stodSSEditTask(task, NAX_SS_SKEWNESS, skewness.data());
    __stodSSEditTask(task, NAX_SS_MINIMUM, low.data());
    __stodSSEditTask(task, NAX_SS_MAXIMUM, high.data());
    __stodSSEditTask(task, NAX_SS_MEDIAN_ABSOLUTE_DEVIATION, deviation.data());
    __stodSSEditQuantiles(task, &three, orders, quartiles.data(), nullptr, nullptr);
    __stodSSEditCovCor(task, nullptr, nullptr, nullptr, correlation.data(), &full);
    _stodSSBasic(task, NAX_SS_ESTIMATE_KURTOSIS | NAX_SS_ESTIMATE_SKEWNESS | NAX_SS_ESTIMATE_CORRELATION,
                 NAX_SS_METHOD_ONE_PASS, nullptr);
    _stodSSMinmax(task, NAX_SS_ESTIMATE_MINIMUM | NAX_SS_ESTIMATE_MAXIMUM, NAX_SS_METHOD_FAST, nullptr);
    _stodSSQuantiles(task, NAX_SS_ESTIMATE_QUANTILES, NAX_SS_METHOD_FAST, nullptr);
    _stodSSMAD(task, NAX_SS_ESTIMATE_MEDIAN_ABSOLUTE_DEVIATION, NAX_SS_METHOD_FAST, nullptr);
    __stoSSDeleteTask(&task);

    std::printf("%zu observations\n%-10s %9s %9s %9s %9s %9s %9s %9s %9s %9s\n", table.rows(), "", "least", "quartile",
                "median", "quartile", "greatest", "mean", "deviation", "skewness", "kurtosis");
    for (std::size_t j = 0; j < p; ++j)
        std::printf("%-10s %9.4g %9.4g %9.4g %9.4g %9.4g %9.4g %9.4g %9.3f %9.3f\n", table.names[j].c_str(), low[j],
                    quartiles[3 * j], quartiles[3 * j + 1], quartiles[3 * j + 2], high[j], mean[j], std::sqrt(c2[j]),
                    skewness[j], kurtosis[j]);
    std::printf("correlations\n");
    for (std::size_t j = 1; j < p; ++j) {
        std::printf("%-10s", table.names[j].c_str());
        for (std::size_t k = 0; k < j; ++k) std::printf(" %9.3f", correlation[j * p + k]);
        std::printf("\n");
    }
}

// Points at the distance within which 97.5 per cent of a normal sample lie.
void ellipse(plot::Panel& panel, const double* mean, const double* c, const char* colour, const char* label) {
    const double reach = std::sqrt(__stodChi2ICDF(2, 0.975));
    const double a = std::sqrt(c[0]), b = c[1] / a, d = std::sqrt(c[3] - b * b);
    std::vector<double> x, y;
    for (int i = 0; i <= 200; ++i) {
        const double angle = 2 * 3.14159265358979 * i / 200, u = reach * std::cos(angle), v = reach * std::sin(angle);
        x.push_back(mean[0] + a * u);
        y.push_back(mean[1] + b * u + d * v);
    }
    panel.line(x, y, colour, label);
}

void find_giants(const Csv& table, const std::string& output) {
    Matrix matrix(table);
    double mean[2], c[4], robust_mean[2], robust[4], params[3] = {2, 0.001, 0.005};
    std::vector<double> weights(table.rows());
    const int64_t full = NAX_SS_MATRIX_FULL, three = 3;
    nax_ss_task* task = matrix.task();
    __stodSSEditCovCor(task, mean, c, &full, nullptr, nullptr);
    __stodSSEditRCov(task, &full, nullptr, nullptr, robust, robust_mean);
    __stodSSEditOutDetect(task, &three, params, weights.data());
    _stodSSBasic(task, NAX_SS_ESTIMATE_COVARIANCE, NAX_SS_METHOD_ONE_PASS, nullptr);
    const int32_t robust_status = _stodSSRobustCovariance(task, 0, NAX_SS_METHOD_TBS, nullptr);
    const int32_t outlier_status = _stodSSOutliersDetection(task, 0, NAX_SS_METHOD_BACON, nullptr);
    __stoSSDeleteTask(&task);
    std::vector<double> kept[2], flagged[2];
    std::printf("stars flagged as outliers (status %d):", outlier_status);
    for (std::size_t i = 0; i < weights.size(); ++i) {
        if (weights[i] == 0) std::printf(" %zu", i + 1);
        for (std::size_t j = 0; j < 2; ++j) (weights[i] == 0 ? flagged : kept)[j].push_back(table.columns[j][i]);
    }
    std::printf("\ncorrelation of temperature and light: classical %.2f, robust %.2f (status %d)\n",
                c[1] / std::sqrt(c[0] * c[3]), robust[1] / std::sqrt(robust[0] * robust[3]), robust_status);
    plot::Panel panel;
    panel.title = "Stars of the cluster CYG OB1";
    panel.x_title = "log temperature";
    panel.y_title = "log light intensity";
    panel.x0 = 3.3, panel.x1 = 4.9, panel.y0 = 3, panel.y1 = 7;
    ellipse(panel, mean, c, plot::kGrey, "classical, 97.5 %");
    ellipse(panel, robust_mean, robust, plot::kBlue, "robust, 97.5 %");
    panel.dots(kept[0], kept[1], plot::kBlue, "kept");
    panel.dots(flagged[0], flagged[1], plot::kOrange, "flagged", 4);
    plot::write_svg(output + "/stars.svg", 640, 460, panel.svg(0, 0, 640, 460));
}

}  // namespace
}  // namespace tour

void show_statistics(const char* data_directory, const char* output_directory) {
    const std::string data = data_directory;
    const tour::Csv quakes = tour::read_csv(data + "/quakes_fiji.csv"),
                    stars = tour::read_csv(data + "/stars_cyg_ob1.csv");
    if (quakes.rows() == 0 || stars.rows() == 0) {
        std::puts("no data");
        return;
    }
    std::puts("Earthquakes near Fiji");
    tour::describe(quakes);
    std::puts("Stars of the cluster CYG OB1");
    tour::find_giants(stars, output_directory);
}
