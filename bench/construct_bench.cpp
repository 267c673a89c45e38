// Construction and integration of splines against GSL, ALGLIB, Boost and a plain Thomas loop: nanoseconds per point and
// function, or per pair of limits; the minimum over the repetitions of half a second.
//
//   construct_bench [points [pairs]]
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "nax/fitting_construction.h"
#include "nax/fitting_integration.h"

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

// Nanoseconds for one item of a call that handles `items` of them.
template <class Work>
double measure(double items, Work work) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    double best = 1e300;
    do {
        const auto begin = Clock::now();
        work();
        best = std::min(best, std::chrono::duration<double, std::nano>(Clock::now() - begin).count());
    } while (Clock::now() - start < std::chrono::milliseconds(500));
    return best / items;
}

void report(const char* work, const char* who, double ns, double own) {
    if (ns == own)
        std::printf("%-44s %-28s %9.2f\n", work, who, ns);
    else
        std::printf("%-44s %-28s %9.2f   %6.2f times ours\n", work, who, ns, ns / own);
}

struct Data {
    std::vector<double> x, y, ends;
    explicit Data(size_t n, size_t functions = 1) {
        std::mt19937_64 engine(1);
        std::uniform_real_distribution<double> noise(0.5, 1.5);
        double at = 0;
        for (size_t i = 0; i < n; ++i) x.push_back(at), at += noise(engine);
        for (size_t i = 0; i < n * functions; ++i) y.push_back(std::sin(0.01 * double(i)) + 0.1 * noise(engine));
        ends = {0.0, double(n - 1)};
    }
};

using Build = int32_t (*)(nax_df_task*, int64_t, int64_t, const nax_threaders*);

double build_spline(const Data& data, Build build, int64_t order, int64_t type, int64_t boundary, bool uniform, int64_t yhint = 16) {
    const int64_t n = int64_t(data.x.size()), functions = int64_t(data.y.size()) / n;
    std::vector<double> c(size_t(n * functions * order));
    const double bc[] = {0.0, 0.0};
    nax_df_task* task = nullptr;
    nax_df_kernel_dNewTask1D(&task, n, uniform ? data.ends.data() : data.x.data(), uniform ? 4 : 0, functions, data.y.data(), yhint, 1);
    nax_df_kernel_dEditPPSpline1D(task, order, type, boundary, bc, 0, nullptr, c.data(), 0);
    int32_t status = 0;
    const double ns = measure(double(n * functions), [&] { status |= build(task, 0, 0, nullptr); });
    if (status != 0) std::printf("status %d\n", status);
    nax_df_kernel_DeleteTask(&task);
    return ns;
}

// The textbook loop: one elimination downwards, one substitution upwards, then the cells.
double thomas(const Data& data) {
    const size_t n = data.x.size();
    const std::vector<double>&x = data.x, &y = data.y;
    std::vector<double> u(n), z(n), c(4 * n);
    return measure(double(n), [&] {
        u[0] = z[0] = 0;
        for (size_t i = 1; i + 1 < n; ++i) {
            const double h0 = x[i] - x[i - 1], h1 = x[i + 1] - x[i];
            const double pivot = 1 / (2 * (h0 + h1) - h0 * u[i - 1]);
            u[i] = h1 * pivot;
            z[i] = (3 * ((y[i + 1] - y[i]) / h1 - (y[i] - y[i - 1]) / h0) - h0 * z[i - 1]) * pivot;
        }
        double right = 0;
        for (size_t i = n - 1; i-- > 0;) {
            const double h = x[i + 1] - x[i], left = z[i] - u[i] * right;
            c[4 * i] = y[i];
            c[4 * i + 1] = (y[i + 1] - y[i]) / h - h * (right + 2 * left) / 3;
            c[4 * i + 2] = left;
            c[4 * i + 3] = (right - left) / (3 * h);
            right = left;
        }
    });
}

#ifdef NAX_HAVE_GSL
double gsl_build(const Data& data, const gsl_interp_type* type) {
    gsl_interp* const spline = gsl_interp_alloc(type, data.x.size());
    const double ns = measure(double(data.x.size()), [&] { gsl_interp_init(spline, data.x.data(), data.y.data(), data.x.size()); });
    gsl_interp_free(spline);
    return ns;
}
#endif

void construction(size_t n) {
    const Data data(n);
    for (const bool uniform : {false, true}) {
        const char* const grid = uniform ? "uniform" : "general";
        std::printf("\nConstruction, %zu points, %s partition, ns per point\n", n, grid);
        const double natural = build_spline(data, nax_df_kernel_dDFNaturalCubicSpline1D, 4, 2, 2, uniform);
        report("natural cubic", "nax", natural, natural);
        if (!uniform) {
            report("", "Thomas loop", thomas(data), natural);
#ifdef NAX_HAVE_GSL
            report("", "GSL cspline (no cells)", gsl_build(data, gsl_interp_cspline), natural);
#endif
        }
        const double knots = build_spline(data, nax_df_kernel_dDFNaturalCubicSpline1D, 4, 2, 1, uniform);
        report("not-a-knot cubic", "nax", knots, knots);
        const double akima = build_spline(data, nax_df_kernel_dDFAkimaCubicSpline1D, 4, 5, 0, uniform);
        report("Akima", "nax", akima, akima);
        const double hyman = build_spline(data, nax_df_kernel_dDFHymanCubicSpline1D, 4, 9, 0, uniform);
        const double bessel = build_spline(data, nax_df_kernel_dDFBesselCubicSpline1D, 4, 4, 0, uniform);
        const double linear = build_spline(data, nax_df_kernel_dDFLinearSpline1D, 2, 0, 0, uniform);
        if (!uniform) {
#ifdef NAX_HAVE_GSL
            report("", "GSL akima", gsl_build(data, gsl_interp_akima), akima);
#endif
        }
        report("Hyman", "nax", hyman, hyman);
        if (!uniform) {
#ifdef NAX_HAVE_GSL
            report("", "GSL steffen", gsl_build(data, gsl_interp_steffen), hyman);
#endif
        }
        report("Bessel", "nax", bessel, bessel);
        report("linear", "nax", linear, linear);
        if (!uniform) {
#ifdef NAX_HAVE_GSL
            report("", "GSL linear (checks only)", gsl_build(data, gsl_interp_linear), linear);
#endif
        }
#ifdef NAX_HAVE_ALGLIB
        if (!uniform) {
            alglib::real_1d_array x, y;
            x.setcontent(alglib::ae_int_t(n), data.x.data());
            y.setcontent(alglib::ae_int_t(n), data.y.data());
            alglib::spline1dinterpolant spline;
            report("natural cubic", "ALGLIB", measure(double(n), [&] { alglib::spline1dbuildcubic(x, y, alglib::ae_int_t(n), 2, 0.0, 2, 0.0, spline); }), natural);
            report("Akima", "ALGLIB", measure(double(n), [&] { alglib::spline1dbuildakima(x, y, spline); }), akima);
            report("Hyman / monotone", "ALGLIB", measure(double(n), [&] { alglib::spline1dbuildmonotone(x, y, spline); }), hyman);
        }
#endif
#ifdef NAX_HAVE_BOOST
        if (uniform)
            report("natural cubic / cubic B-spline", "Boost", measure(double(n), [&] {
                       boost::math::interpolators::cardinal_cubic_b_spline<double> spline(data.y.begin(), data.y.end(), 0.0, 1.0, 0.0, 0.0);
                       (void)spline;
                   }), natural);
#endif
    }
    const Data many(1000, 100);
    std::printf("\nConstruction, 100 functions of 1000 points, ns per point and function\n");
    for (const int64_t yhint : {16, 32}) {
        const char* const layout = yhint == 16 ? "rows" : "columns";
        std::printf("%-8s natural %.2f  natural, uniform %.2f  Akima %.2f  Hyman %.2f  Bessel %.2f  linear %.2f\n", layout,
                    build_spline(many, nax_df_kernel_dDFNaturalCubicSpline1D, 4, 2, 2, false, yhint),
                    build_spline(many, nax_df_kernel_dDFNaturalCubicSpline1D, 4, 2, 2, true, yhint),
                    build_spline(many, nax_df_kernel_dDFAkimaCubicSpline1D, 4, 5, 0, false, yhint),
                    build_spline(many, nax_df_kernel_dDFHymanCubicSpline1D, 4, 9, 0, false, yhint),
                    build_spline(many, nax_df_kernel_dDFBesselCubicSpline1D, 4, 4, 0, false, yhint),
                    build_spline(many, nax_df_kernel_dDFLinearSpline1D, 2, 0, 0, false, yhint));
    }
}

void integration(size_t cells, size_t pairs) {
    const Data data(cells + 1);
    std::printf("\nIntegration, %zu random pairs, %zu cells, ns per pair\n", pairs, cells);
    std::mt19937_64 engine(3);
    std::vector<double> a, b, r(pairs), c(4 * cells);
    double own = 0;
    for (const bool uniform : {false, true}) {
        std::uniform_real_distribution<double> any(0, uniform ? double(cells) : data.x.back());
        a.clear(), b.clear();
        for (size_t i = 0; i < pairs; ++i) a.push_back(any(engine)), b.push_back(any(engine));
        nax_df_task* task = nullptr;
        nax_df_kernel_dNewTask1D(&task, int64_t(cells) + 1, uniform ? data.ends.data() : data.x.data(), uniform ? 4 : 0, 1, data.y.data(), 16, 1);
        nax_df_kernel_dEditPPSpline1D(task, 4, 2, 2, nullptr, 0, nullptr, c.data(), 0);
        int32_t status = nax_df_kernel_dDFNaturalCubicSpline1D(task, 0, 0, nullptr);
        const double ns = measure(double(pairs), [&] {
            status |= nax_df_kernel_dDFIntegrate1D(task, 0, int64_t(pairs), a.data(), 0, b.data(), 0, nullptr, nullptr, r.data(), 16, nullptr,
                                                   nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
        });
        if (status != 0) std::printf("status %d\n", status);
        if (!uniform) own = ns;
        report(uniform ? "natural cubic, uniform partition" : "natural cubic, general partition", "nax", ns, ns);
#ifdef NAX_HAVE_GSL
        if (!uniform) {
            gsl_interp* const spline = gsl_interp_alloc(gsl_interp_cspline, cells + 1);
            gsl_interp_accel* const accel = gsl_interp_accel_alloc();
            gsl_interp_init(spline, data.x.data(), data.y.data(), cells + 1);
            const size_t few = std::min<size_t>(pairs, 2000);
            double worst = 0;
            const double peer = measure(double(few), [&] {
                for (size_t i = 0; i < few; ++i) {
                    const bool back = b[i] < a[i];
                    const double low = back ? b[i] : a[i], high = back ? a[i] : b[i];
                    const double value = gsl_interp_eval_integ(spline, data.x.data(), data.y.data(), low, high, accel);
                    worst = std::max(worst, std::fabs((back ? -value : value) - r[i]));
                }
            });
            report("", "GSL eval_integ", peer, own);
            std::printf("largest difference from GSL: %.1e\n", worst);
            gsl_interp_free(spline);
            gsl_interp_accel_free(accel);
        }
#endif
#ifdef NAX_HAVE_ALGLIB
        if (!uniform) {
            alglib::real_1d_array x, y;
            x.setcontent(alglib::ae_int_t(cells + 1), data.x.data());
            y.setcontent(alglib::ae_int_t(cells + 1), data.y.data());
            alglib::spline1dinterpolant spline;
            alglib::spline1dbuildcubic(x, y, alglib::ae_int_t(cells + 1), 2, 0.0, 2, 0.0, spline);
            const size_t few = std::min<size_t>(pairs, 1000);
            double sum = 0;
            const double peer = measure(double(few), [&] {
                for (size_t i = 0; i < few; ++i) sum += alglib::spline1dintegrate(spline, b[i]) - alglib::spline1dintegrate(spline, a[i]);
            });
            report("", sum == 0.125 ? "" : "ALGLIB spline1dintegrate x2", peer, own);
        }
#endif
        nax_df_kernel_DeleteTask(&task);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const size_t points = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 100000;
    const size_t pairs = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 100000;
    construction(points);
    integration(1000, pairs);
    return 0;
}
