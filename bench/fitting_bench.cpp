// Cell search and spline evaluation against std::upper_bound, GSL, ALGLIB and Boost: nanoseconds per site, the minimum over
// the repetitions of half a second. One thread, except for the last lines.
//
//   fitting_bench [sites]
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

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

namespace {

template <class Work>
double measure(double items, Work work) {
    using Clock = std::chrono::steady_clock;
    work();
    const auto start = Clock::now();
    double best = 1e300;
    do {
        const auto begin = Clock::now();
        work();
        best = std::min(best, std::chrono::duration<double, std::nano>(Clock::now() - begin).count());
    } while (Clock::now() - start < std::chrono::milliseconds(500));
    return best / items;
}

double own;  // of the line printed last for this library
void report_own(const char* work, size_t cells, double ns) {
    own = ns;
    std::printf("%-44s %7zu cells  nax %8.2f\n", work, cells, ns);
}
void report_peer(const char* who, double ns, double difference) {
    std::printf("%62s %8.2f   %6.2f times ours   differs by %.1e\n", who, ns, ns / own, difference);
}

double worst(const std::vector<double>& a, const std::vector<double>& b) {
    double most = 0;
    for (size_t i = 0; i < a.size(); ++i) most = std::max(most, std::fabs(a[i] - b[i]));
    return most;
}

// A natural cubic through n points, and a million sites within them.
struct Case {
    std::vector<double> x, y, ends, coefficients, random, sorted;
    nax_df_task* task = nullptr;

    Case(size_t cells, size_t sites, bool uniform) {
        std::mt19937_64 engine(1);
        std::uniform_real_distribution<double> draw(0, 1);
        const size_t n = cells + 1;
        for (size_t i = 0; i < n; ++i) x.push_back(uniform ? double(i) / double(cells) : draw(engine));
        std::sort(x.begin(), x.end());
        for (const double v : x) y.push_back(std::sin(20 * v) + v);
        ends = {x.front(), x.back()};
        coefficients.resize(4 * cells);
        nax_df_kernel_dNewTask1D(&task, int64_t(n), uniform ? ends.data() : x.data(), uniform ? 4 : 0, 1, y.data(), 16, 1);
        nax_df_kernel_dEditPPSpline1D(task, 4, NAX_DF_TYPE_NATURAL, NAX_DF_BC_FREE_END, nullptr, 0, nullptr, coefficients.data(), 16);
        if (nax_df_kernel_dDFNaturalCubicSpline1D(task, 0, 0, nullptr) != 0) std::abort();
        std::uniform_real_distribution<double> within(x.front(), x.back());
        for (size_t i = 0; i < sites; ++i) random.push_back(within(engine));
        sorted = random;
        std::sort(sorted.begin(), sorted.end());
    }
    Case(const Case&) = delete;
    Case& operator=(const Case&) = delete;
    ~Case() { nax_df_kernel_DeleteTask(&task); }

    void evaluate(const std::vector<double>& sites, int64_t hint, int64_t orders, double* r, const nax_threaders* threads = nullptr) const {
        const int64_t flags[] = {1, 1, 1};
        nax_df_kernel_dDFInterpolate1D(task, 1, 0, int64_t(sites.size()), sites.data(), hint, orders, flags, nullptr, r, 16, nullptr, nullptr,
                                       nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, threads);
    }
};

void search_alone(const Case& c, const std::vector<double>& sites, int64_t hint, const char* name) {
    const size_t cells = c.x.size() - 1;
    std::vector<int64_t> found(sites.size());
    report_own(name, cells, measure(double(sites.size()), [&] {
                   nax_df_kernel_dDFSearch1D(c.task, 0, int64_t(sites.size()), sites.data(), hint, nullptr, found.data(), nullptr, nullptr,
                                             nullptr, nullptr);
               }));
    std::vector<int64_t> peer(sites.size());
    const double ns = measure(double(sites.size()), [&] {
        for (size_t i = 0; i < sites.size(); ++i) peer[i] = std::upper_bound(c.x.begin(), c.x.end(), sites[i]) - c.x.begin();
    });
    size_t different = 0;
    for (size_t i = 0; i < sites.size(); ++i) different += found[i] != std::min(peer[i], int64_t(cells));
    report_peer("std::upper_bound", ns, double(different));
#ifdef NAX_HAVE_GSL
    gsl_interp_accel* const accel = gsl_interp_accel_alloc();
    report_peer("GSL accelerator", measure(double(sites.size()), [&] {
                    for (size_t i = 0; i < sites.size(); ++i) peer[i] = int64_t(gsl_interp_accel_find(accel, c.x.data(), c.x.size(), sites[i])) + 1;
                }), 0);
    gsl_interp_accel_free(accel);
#endif
}

void peers_value(const Case& c, const std::vector<double>& sites, const std::vector<double>& ours, bool uniform) {
    std::vector<double> r(sites.size());
    const double n = double(sites.size());
#ifdef NAX_HAVE_GSL
    gsl_interp_accel* const accel = gsl_interp_accel_alloc();
    gsl_spline* const spline = gsl_spline_alloc(gsl_interp_cspline, c.x.size());
    gsl_spline_init(spline, c.x.data(), c.y.data(), c.x.size());
    const double gsl = measure(n, [&] {
        for (size_t i = 0; i < sites.size(); ++i) r[i] = gsl_spline_eval(spline, sites[i], accel);
    });
    report_peer("GSL", gsl, worst(r, ours));
    gsl_spline_free(spline);
    gsl_interp_accel_free(accel);
#endif
#ifdef NAX_HAVE_ALGLIB
    alglib::real_1d_array x, y;
    x.setcontent(alglib::ae_int_t(c.x.size()), c.x.data());
    y.setcontent(alglib::ae_int_t(c.y.size()), c.y.data());
    alglib::spline1dinterpolant peer;
    alglib::spline1dbuildcubic(x, y, alglib::ae_int_t(c.x.size()), 2, 0.0, 2, 0.0, peer);
    const double alglib_ns = measure(n, [&] {
        for (size_t i = 0; i < sites.size(); ++i) r[i] = alglib::spline1dcalc(peer, sites[i]);
    });
    report_peer("ALGLIB", alglib_ns, worst(r, ours));
#endif
#ifdef NAX_HAVE_BOOST
    if (uniform) {
        const boost::math::interpolators::cardinal_cubic_b_spline<double> peer_spline(c.y.begin(), c.y.end(), c.x.front(), 1.0 / double(c.x.size() - 1));
        const double ns = measure(n, [&] {
            for (size_t i = 0; i < sites.size(); ++i) r[i] = peer_spline(sites[i]);
        });
        report_peer("Boost cardinal B-spline (other ends)", ns, worst(r, ours));
    }
#endif
}

void values(const Case& c, const std::vector<double>& sites, int64_t hint, bool uniform, const char* name) {
    std::vector<double> r(sites.size());
    report_own(name, c.x.size() - 1, measure(double(sites.size()), [&] { c.evaluate(sites, hint, 1, r.data()); }));
    peers_value(c, sites, r, uniform);
}

void derivatives(const Case& c, const std::vector<double>& sites, int64_t hint, const char* name) {
    std::vector<double> r(3 * sites.size());
    report_own(name, c.x.size() - 1, measure(double(sites.size()), [&] { c.evaluate(sites, hint, 3, r.data()); }));
#ifdef NAX_HAVE_GSL
    std::vector<double> peer(3 * sites.size());
    gsl_interp_accel* const accel = gsl_interp_accel_alloc();
    gsl_spline* const spline = gsl_spline_alloc(gsl_interp_cspline, c.x.size());
    gsl_spline_init(spline, c.x.data(), c.y.data(), c.x.size());
    const double gsl = measure(double(sites.size()), [&] {
        for (size_t i = 0; i < sites.size(); ++i) {
            peer[3 * i] = gsl_spline_eval(spline, sites[i], accel);
            peer[3 * i + 1] = gsl_spline_eval_deriv(spline, sites[i], accel);
            peer[3 * i + 2] = gsl_spline_eval_deriv2(spline, sites[i], accel);
        }
    });
    report_peer("GSL", gsl, worst(peer, r));
    gsl_spline_free(spline);
    gsl_interp_accel_free(accel);
#endif
}

void two_threads(const Case& c) {
    nax_threaders table;
    nax_serv_fill_threaders(&table);
    table.max_threads = [] { return 2; };
    std::vector<double> r(c.random.size());
    report_own("value, random sites, one thread", c.x.size() - 1, measure(double(r.size()), [&] { c.evaluate(c.random, 0, 1, r.data()); }));
    const double two = measure(double(r.size()), [&] { c.evaluate(c.random, 0, 1, r.data(), &table); });
    std::printf("%62s %8.2f   %6.2f times as fast\n", "two threads", two, own / two);
}

}  // namespace

int main(int argc, char** argv) {
    const size_t sites = argc > 1 ? size_t(std::atoll(argv[1])) : 1000000;
    for (const size_t cells : {size_t{1000}, size_t{100000}}) {
        const Case general(cells, sites, false), uniform(cells, sites, true);
        search_alone(general, general.random, 0, "search, random sites");
        search_alone(general, general.sorted, NAX_DF_SITES_SORTED, "search, sorted sites");
        values(general, general.random, 0, false, "value, random sites, general partition");
        values(general, general.sorted, NAX_DF_SITES_SORTED, false, "value, sorted sites, general partition");
        values(uniform, uniform.random, 0, true, "value, random sites, uniform partition");
        derivatives(general, general.random, 0, "value and two derivatives, random sites");
        derivatives(general, general.sorted, NAX_DF_SITES_SORTED, "value and two derivatives, sorted sites");
        two_threads(general);
    }
}
