// Construction and integration of splines against GSL, ALGLIB, Boost and a plain Thomas loop: nanoseconds per point and
// function, or per pair of limits. Takes the options of bench/measure.h.
#include <cmath>
#include <memory>
#include <random>

#include "bench/measure.h"
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

namespace nax::bench {
namespace {

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

struct Family {
    const char* name;
    int32_t (*build)(nax_df_task*, int64_t, int64_t, const nax_threaders*);
    int64_t order, type, boundary;
};
constexpr Family kNatural = {"natural cubic", nax_df_kernel_dDFNaturalCubicSpline1D, 4, NAX_DF_TYPE_NATURAL,
                             NAX_DF_BC_FREE_END};
constexpr Family kFamilies[] = {
    kNatural,
    {"not-a-knot cubic", nax_df_kernel_dDFNaturalCubicSpline1D, 4, NAX_DF_TYPE_NATURAL, NAX_DF_BC_NOT_A_KNOT},
    {"Akima", nax_df_kernel_dDFAkimaCubicSpline1D, 4, NAX_DF_TYPE_AKIMA, 0},
    {"Hyman", nax_df_kernel_dDFHymanCubicSpline1D, 4, NAX_DF_TYPE_HYMAN, 0},
    {"Bessel", nax_df_kernel_dDFBesselCubicSpline1D, 4, NAX_DF_TYPE_BESSEL, 0},
    {"linear", nax_df_kernel_dDFLinearSpline1D, 2, 0, 0},
};

// A task over the data, ready for construction.
class Spline {
public:
    Spline(const Data& data, const Family& family, bool uniform, int64_t yhint = NAX_DF_STORAGE_ROWS)
        : family_(family), coefficients_(data.y.size() * size_t(family.order)) {
        const auto n = int64_t(data.x.size()), functions = int64_t(data.y.size()) / n;
        nax_df_kernel_dNewTask1D(&task_, n, uniform ? data.ends.data() : data.x.data(),
                                 uniform ? NAX_DF_PARTITION_UNIFORM : 0, functions, data.y.data(), yhint, 1);
        nax_df_kernel_dEditPPSpline1D(task_, family.order, family.type, family.boundary, kEndValues, 0, nullptr,
                                      coefficients_.data(), 0);
    }
    Spline(const Spline&) = delete;
    Spline& operator=(const Spline&) = delete;
    ~Spline() { nax_df_kernel_DeleteTask(&task_); }

    void build() const {
        const int32_t status = family_.build(task_, 0, 0, nullptr);
        if (status != 0) std::printf("%s: status %d\n", family_.name, status);
    }
    void integrate(const std::vector<double>& a, const std::vector<double>& b, double* r) const {
        const int32_t status = nax_df_kernel_dDFIntegrate1D(
            task_, 0, int64_t(a.size()), a.data(), 0, b.data(), 0, nullptr, nullptr, r, NAX_DF_STORAGE_ROWS, nullptr,
            nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
        if (status != 0) std::printf("integration: status %d\n", status);
    }

private:
    static constexpr double kEndValues[] = {0.0, 0.0};
    const Family& family_;
    std::vector<double> coefficients_;
    nax_df_task* task_ = nullptr;
};

// The textbook loop: one elimination downwards, one substitution upwards, then the cells.
std::function<void()> thomas(const Data& data) {
    const size_t n = data.x.size();
    return [&x = data.x, &y = data.y, n, u = std::vector<double>(n), z = std::vector<double>(n),
            c = std::vector<double>(4 * n)]() mutable {
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
    };
}

#ifdef NAX_HAVE_GSL
// Whose linear splines are checks of the data alone, and whose cubics stop before the cells.
void add_gsl(std::vector<Contender>& contenders, const Data& data, const std::string& family) {
    const gsl_interp_type* const type = family == "natural cubic" ? gsl_interp_cspline
                                        : family == "Akima"       ? gsl_interp_akima
                                        : family == "Hyman"       ? gsl_interp_steffen
                                        : family == "linear"      ? gsl_interp_linear
                                                                  : nullptr;
    if (type == nullptr) return;
    const std::shared_ptr<gsl_interp> spline(gsl_interp_alloc(type, data.x.size()), gsl_interp_free);
    const char* const name = family == "Hyman" ? "GSL steffen" : family == "linear" ? "GSL, checks only" : "GSL";
    contenders.push_back(
        {name, [&data, spline] { gsl_interp_init(spline.get(), data.x.data(), data.y.data(), data.x.size()); }});
}
#endif

#ifdef NAX_HAVE_ALGLIB
struct AlglibData {
    alglib::real_1d_array x, y;
    alglib::ae_int_t n;
    alglib::spline1dinterpolant spline;
    explicit AlglibData(const Data& data) : n(alglib::ae_int_t(data.x.size())) {
        x.setcontent(n, data.x.data());
        y.setcontent(n, data.y.data());
    }
    void natural() { alglib::spline1dbuildcubic(x, y, n, 2, 0.0, 2, 0.0, spline); }
};

void add_alglib(std::vector<Contender>& contenders, const Data& data, const std::string& family) {
    const auto peer = std::make_shared<AlglibData>(data);
    if (family == "natural cubic") contenders.push_back({"ALGLIB", [peer] { peer->natural(); }});
    if (family == "Akima")
        contenders.push_back({"ALGLIB", [peer] { alglib::spline1dbuildakima(peer->x, peer->y, peer->spline); }});
    if (family == "Hyman")
        contenders.push_back(
            {"ALGLIB monotone", [peer] { alglib::spline1dbuildmonotone(peer->x, peer->y, peer->spline); }});
}
#endif

void construction(Report& report) {
    const Data data(100000);
    const auto n = int64_t(data.x.size());
    for (const bool uniform : {false, true})
        for (const Family& family : kFamilies) {
            const Spline spline(data, family, uniform);
            std::vector<Contender> contenders = {{"ours", [&] { spline.build(); }}};
            const bool natural = std::string(family.name) == kNatural.name;
            if (natural && !uniform) contenders.push_back({"Thomas loop", thomas(data)});
#ifdef NAX_HAVE_GSL
            if (!uniform) add_gsl(contenders, data, family.name);
#endif
#ifdef NAX_HAVE_ALGLIB
            if (!uniform) add_alglib(contenders, data, family.name);
#endif
#ifdef NAX_HAVE_BOOST
            if (natural && uniform)
                contenders.push_back({"Boost B-spline", [&] {
                                          const boost::math::interpolators::cardinal_cubic_b_spline<double> peer(
                                              data.y.begin(), data.y.end(), 0.0, 1.0, 0.0, 0.0);
                                      }});
#endif
            report.time(family.name, uniform ? "uniform" : "general", n, std::move(contenders));
        }
    const Data many(1000, 100);
    for (const int64_t yhint : {NAX_DF_STORAGE_ROWS, NAX_DF_STORAGE_COLUMNS})
        for (const Family& family : kFamilies) {
            const Spline spline(many, family, false, yhint);
            report.time(std::string(family.name) + ", 100 functions", yhint == NAX_DF_STORAGE_ROWS ? "rows" : "columns",
                        int64_t(many.y.size()), {{"ours", [&] { spline.build(); }}});
        }
}

double worst(const std::vector<double>& a, const std::vector<double>& b) {
    double most = 0;
    for (size_t i = 0; i < b.size(); ++i) most = std::max(most, std::fabs(a[i] - b[i]));
    return most;
}

std::string differs_by(double difference) {
    char text[40];
    std::snprintf(text, sizeof text, "differs by %.1e", difference);
    return text;
}

#ifdef NAX_HAVE_GSL
void add_gsl_integral(std::vector<Contender>& contenders, const Data& data, const std::vector<double>& a,
                      const std::vector<double>& b, const std::vector<double>& ours) {
    constexpr size_t kPairs = 2000;
    const std::shared_ptr<gsl_interp> spline(gsl_interp_alloc(gsl_interp_cspline, data.x.size()), gsl_interp_free);
    const std::shared_ptr<gsl_interp_accel> accel(gsl_interp_accel_alloc(), gsl_interp_accel_free);
    gsl_interp_init(spline.get(), data.x.data(), data.y.data(), data.x.size());
    const auto r = std::make_shared<std::vector<double>>(kPairs);
    const auto run = [&, spline, accel, r] {
        for (size_t i = 0; i < kPairs; ++i) {
            const double low = std::min(a[i], b[i]), high = std::max(a[i], b[i]);
            const double value =
                gsl_interp_eval_integ(spline.get(), data.x.data(), data.y.data(), low, high, accel.get());
            (*r)[i] = b[i] < a[i] ? -value : value;
        }
    };
    run();
    contenders.push_back({"GSL", run, int64_t(kPairs), differs_by(worst(ours, *r))});
}
#endif

#ifdef NAX_HAVE_ALGLIB
void add_alglib_integral(std::vector<Contender>& contenders, const Data& data, const std::vector<double>& a,
                         const std::vector<double>& b, const std::vector<double>& ours) {
    constexpr size_t kPairs = 1000;
    const auto peer = std::make_shared<AlglibData>(data);
    peer->natural();
    const auto r = std::make_shared<std::vector<double>>(kPairs);
    const auto run = [&, peer, r] {
        for (size_t i = 0; i < kPairs; ++i)
            (*r)[i] = alglib::spline1dintegrate(peer->spline, b[i]) - alglib::spline1dintegrate(peer->spline, a[i]);
    };
    run();
    contenders.push_back({"ALGLIB, two calls", run, int64_t(kPairs), differs_by(worst(ours, *r))});
}
#endif

void integration(Report& report) {
    const Data data(1001);
    constexpr size_t kPairs = 100000;
    for (const bool uniform : {false, true}) {
        std::mt19937_64 engine(3);
        std::uniform_real_distribution<double> any(0, uniform ? data.ends[1] : data.x.back());
        std::vector<double> a, b, r(kPairs);
        for (size_t i = 0; i < kPairs; ++i) a.push_back(any(engine)), b.push_back(any(engine));
        const Spline spline(data, kNatural, uniform);
        spline.build();
        spline.integrate(a, b, r.data());
        std::vector<Contender> contenders = {{"ours", [&] { spline.integrate(a, b, r.data()); }}};
#ifdef NAX_HAVE_GSL
        if (!uniform) add_gsl_integral(contenders, data, a, b, r);
#endif
#ifdef NAX_HAVE_ALGLIB
        if (!uniform) add_alglib_integral(contenders, data, a, b, r);
#endif
        report.time("integrals over 1000 cells", uniform ? "uniform" : "general", kPairs, std::move(contenders));
    }
}

}  // namespace
}  // namespace nax::bench

int main(int argc, char** argv) {
    using namespace nax::bench;
    pin_to_one_core();
    Report report("Construction and integration of splines", argc, argv);
    construction(report);
    integration(report);
    return report.finish();
}
