// Cell search and spline evaluation against std::upper_bound, GSL, ALGLIB and Boost: nanoseconds per site. Takes the
// options of bench/measure.h.
#include <cmath>
#include <cstdlib>
#include <memory>
#include <random>

#include "bench/measure.h"
#include "nax/fitting.h"
#include "nax/fitting_construction.h"
#include "nax/threaders.h"

#ifdef NAX_HAVE_GSL
#include <gsl/gsl_spline.h>
#endif
#ifdef NAX_HAVE_ALGLIB
#include <libalglib/interpolation.h>
#endif
#ifdef NAX_HAVE_BOOST
#include <boost/math/interpolators/cardinal_cubic_b_spline.hpp>
#endif

namespace nax::bench {
namespace {

constexpr size_t kSites = 1000000;
constexpr Options kFewRounds{5};

double worst(const std::vector<double>& a, const std::vector<double>& b) {
    double most = 0;
    for (size_t i = 0; i < a.size(); ++i) most = std::max(most, std::fabs(a[i] - b[i]));
    return most;
}

// A natural cubic through n points, and sites within them.
struct Case {
    std::vector<double> x, y, ends, coefficients, random, sorted;
    bool uniform;
    nax_df_task* task = nullptr;

    Case(size_t cells, bool is_uniform) : coefficients(4 * cells), uniform(is_uniform) {
        std::mt19937_64 engine(1);
        std::uniform_real_distribution<double> draw(0, 1);
        const size_t n = cells + 1;
        for (size_t i = 0; i < n; ++i) x.push_back(uniform ? double(i) / double(cells) : draw(engine));
        std::sort(x.begin(), x.end());
        for (const double v : x) y.push_back(std::sin(20 * v) + v);
        ends = {x.front(), x.back()};
        nax_df_kernel_dNewTask1D(&task, int64_t(n), uniform ? ends.data() : x.data(),
                                 uniform ? NAX_DF_PARTITION_UNIFORM : 0, 1, y.data(), NAX_DF_STORAGE_ROWS, 1);
        nax_df_kernel_dEditPPSpline1D(task, 4, NAX_DF_TYPE_NATURAL, NAX_DF_BC_FREE_END, nullptr, 0, nullptr,
                                      coefficients.data(), NAX_DF_STORAGE_ROWS);
        if (nax_df_kernel_dDFNaturalCubicSpline1D(task, 0, 0, nullptr) != 0) std::abort();
        std::uniform_real_distribution<double> within(x.front(), x.back());
        for (size_t i = 0; i < kSites; ++i) random.push_back(within(engine));
        sorted = random;
        std::sort(sorted.begin(), sorted.end());
    }
    Case(const Case&) = delete;
    Case& operator=(const Case&) = delete;
    ~Case() { nax_df_kernel_DeleteTask(&task); }

    std::string layout() const {
        return std::to_string((x.size() - 1) / 1000) + "k " + (uniform ? "uniform" : "cells");
    }
    void evaluate(const std::vector<double>& sites, int64_t hint, int64_t orders, double* r,
                  const nax_threaders* threads = nullptr) const {
        const int64_t flags[] = {1, 1, 1};
        nax_df_kernel_dDFInterpolate1D(task, NAX_DF_JOB_EVALUATE, 0, int64_t(sites.size()), sites.data(), hint, orders,
                                       flags, nullptr, r, NAX_DF_RESULT_FUNCTIONS, nullptr, nullptr, nullptr, nullptr,
                                       nullptr, nullptr, nullptr, nullptr, nullptr, threads);
    }
};

#ifdef NAX_HAVE_GSL
struct GslSpline {
    gsl_interp_accel* accel = gsl_interp_accel_alloc();
    gsl_spline* spline;
    explicit GslSpline(const Case& c) : spline(gsl_spline_alloc(gsl_interp_cspline, c.x.size())) {
        gsl_spline_init(spline, c.x.data(), c.y.data(), c.x.size());
    }
    GslSpline(const GslSpline&) = delete;
    GslSpline& operator=(const GslSpline&) = delete;
    ~GslSpline() {
        gsl_spline_free(spline);
        gsl_interp_accel_free(accel);
    }
};
#endif

void time_search(Report& report, const Case& c, bool sorted) {
    const std::vector<double>& sites = sorted ? c.sorted : c.random;
    std::vector<int64_t> cells(sites.size()), peer(sites.size());
    report.time(sorted ? "search, sorted sites" : "search, random sites", c.layout(), kSites,
                {
                    {"ours",
                     [&] {
                         nax_df_kernel_dDFSearch1D(c.task, 0, int64_t(sites.size()), sites.data(),
                                                   sorted ? NAX_DF_SITES_SORTED : 0, nullptr, cells.data(), nullptr,
                                                   nullptr, nullptr, nullptr);
                     }},
                    {"std::upper_bound",
                     [&] {
                         for (size_t i = 0; i < sites.size(); ++i)
                             peer[i] = std::upper_bound(c.x.begin(), c.x.end(), sites[i]) - c.x.begin();
                     }},
#ifdef NAX_HAVE_GSL
                    {"GSL",
                     [&, gsl = std::make_shared<GslSpline>(c)] {
                         for (size_t i = 0; i < sites.size(); ++i)
                             peer[i] = int64_t(gsl_interp_accel_find(gsl->accel, c.x.data(), c.x.size(), sites[i])) + 1;
                     }},
#endif
                },
                kFewRounds);
}

// Adds a contender that computes one result a site, or three for the value and two derivatives.
template <class Evaluate>
void add_peer(std::vector<Contender>& contenders, const char* name, const std::vector<double>& sites,
              const std::vector<double>& ours, Evaluate evaluate) {
    const auto r = std::make_shared<std::vector<double>>(ours.size());
    const auto run = [&sites, r, evaluate, each = ours.size() / sites.size()] {
        for (size_t i = 0; i < sites.size(); ++i) evaluate(sites[i], r->data() + each * i);
    };
    run();
    char note[40];
    std::snprintf(note, sizeof note, "differs by %.1e", worst(*r, ours));
    contenders.push_back({name, run, 0, note});
}

void time_values(Report& report, const Case& c, bool sorted) {
    const std::vector<double>& sites = sorted ? c.sorted : c.random;
    const int64_t hint = sorted ? NAX_DF_SITES_SORTED : 0;
    std::vector<double> r(sites.size());
    std::vector<Contender> contenders = {{"ours", [&] { c.evaluate(sites, hint, 1, r.data()); }}};
    contenders.front().run();
#ifdef NAX_HAVE_GSL
    add_peer(contenders, "GSL", sites, r, [gsl = std::make_shared<GslSpline>(c)](double x, double* y) {
        *y = gsl_spline_eval(gsl->spline, x, gsl->accel);
    });
#endif
#ifdef NAX_HAVE_ALGLIB
    alglib::real_1d_array x, y;
    x.setcontent(alglib::ae_int_t(c.x.size()), c.x.data());
    y.setcontent(alglib::ae_int_t(c.y.size()), c.y.data());
    alglib::spline1dinterpolant peer;
    alglib::spline1dbuildcubic(x, y, alglib::ae_int_t(c.x.size()), 2, 0.0, 2, 0.0, peer);
    add_peer(contenders, "ALGLIB", sites, r,
             [&peer](double at, double* value) { *value = alglib::spline1dcalc(peer, at); });
#endif
#ifdef NAX_HAVE_BOOST
    // With other conditions at the ends.
    if (c.uniform) {
        const boost::math::interpolators::cardinal_cubic_b_spline<double> spline(c.y.begin(), c.y.end(), c.x.front(),
                                                                                 1.0 / double(c.x.size() - 1));
        add_peer(contenders, "Boost B-spline", sites, r, [spline](double at, double* value) { *value = spline(at); });
    }
#endif
    report.time(sorted ? "value, sorted sites" : "value, random sites", c.layout(), kSites, std::move(contenders),
                kFewRounds);
}

void time_derivatives(Report& report, const Case& c, bool sorted) {
    const std::vector<double>& sites = sorted ? c.sorted : c.random;
    const int64_t hint = sorted ? NAX_DF_SITES_SORTED : 0;
    std::vector<double> r(3 * sites.size());
    std::vector<Contender> contenders = {{"ours", [&] { c.evaluate(sites, hint, 3, r.data()); }}};
    contenders.front().run();
#ifdef NAX_HAVE_GSL
    add_peer(contenders, "GSL", sites, r, [gsl = std::make_shared<GslSpline>(c)](double x, double* y) {
        y[0] = gsl_spline_eval(gsl->spline, x, gsl->accel);
        y[1] = gsl_spline_eval_deriv(gsl->spline, x, gsl->accel);
        y[2] = gsl_spline_eval_deriv2(gsl->spline, x, gsl->accel);
    });
#endif
    report.time(sorted ? "value, derivatives, sorted sites" : "value, derivatives, random sites", c.layout(), kSites,
                std::move(contenders), kFewRounds);
}

// The rows for which the program must not be pinned to one core.
void time_threads(Report& report, const Case& c) {
    nax_threaders table;
    nax_serv_fill_threaders(&table);
    table.max_threads = [] { return 2; };
    std::vector<double> r(c.random.size());
    report.time("value, random sites, two threads", c.layout(), kSites,
                {{"ours", [&] { c.evaluate(c.random, 0, 1, r.data(), &table); }},
                 {"one thread", [&] { c.evaluate(c.random, 0, 1, r.data()); }}},
                kFewRounds);
}

}  // namespace
}  // namespace nax::bench

int main(int argc, char** argv) {
    using namespace nax::bench;
    Report report("Cell search and evaluation of splines", argc, argv);
    constexpr size_t kCells[] = {1000, 100000};
    for (const size_t cells : kCells) time_threads(report, Case(cells, false));
    pin_to_one_core();
    for (const size_t cells : kCells) {
        const Case general(cells, false), uniform(cells, true);
        for (const bool sorted : {false, true}) {
            time_search(report, general, sorted);
            time_values(report, general, sorted);
            time_derivatives(report, general, sorted);
        }
        time_values(report, uniform, false);
    }
    return report.finish();
}
