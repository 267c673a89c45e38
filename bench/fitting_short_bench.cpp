// Short calls of data fitting beside GSL, and longer work beside the loop that a user would write: nanoseconds per call
// or per element. Takes the options of bench/measure.h.
#include <gsl/gsl_spline.h>

#include <cmath>
#include <cstdlib>
#include <random>

#include "bench/measure.h"
#include "bench/plain_splines.h"
#include "nax/fitting.h"
#include "nax/threaders.h"

namespace nax::bench {
namespace {

constexpr int64_t kFlags[] = {1, 1, 1};

// Points, functions and sites; a task for any spline over them.
struct Data {
    std::vector<double> x, ends, y, random, sorted, coefficients, knots, r;
    std::vector<int64_t> cells;
    int64_t nx, ny;

    explicit Data(int64_t points, int64_t functions = 1, int64_t sites = 1000000) : nx(points), ny(functions) {
        std::mt19937_64 engine(1);
        std::uniform_real_distribution<double> draw(0, 1);
        for (int64_t i = 0; i < nx; ++i) x.push_back((double(i) + 0.8 * draw(engine)) / double(nx));
        ends = {x.front(), x.back()};
        for (int64_t k = 0; k < nx * ny; ++k) y.push_back(draw(engine));
        std::uniform_real_distribution<double> within(x.front(), x.back());
        for (int64_t i = 0; i < sites; ++i) random.push_back(within(engine));
        sorted = random;
        std::sort(sorted.begin(), sorted.end());
        coefficients.resize(size_t(5 * nx * ny));
        for (int64_t k = 0; k <= nx; ++k)
            knots.push_back(k == 0 ? x.front() : k == nx ? x.back() : (x[size_t(k - 1)] + x[size_t(k)]) / 2);
        r.resize(size_t(sites * ny * 3));
        cells.resize(size_t(sites));
    }
};

struct Spline {
    Data& d;
    nax_df_task* task = nullptr;
    bool uniform;

    Spline(Data& data, bool is_uniform, int64_t order, int64_t type) : d(data), uniform(is_uniform) {
        nax_df_kernel_dNewTask1D(&task, d.nx, uniform ? d.ends.data() : d.x.data(), uniform ? 4 : 0, d.ny, d.y.data(),
                                 16, 1);
        const bool subbotin = order == 3 && type == 1, standard = order == 3 && type == 0;
        const int64_t bc = standard     ? NAX_DF_BC_QUADRATIC_VALUE
                           : subbotin   ? NAX_DF_BC_1ST_1ST
                           : order == 4 ? NAX_DF_BC_FREE_END
                                        : 0;
        const bool second = order == 4 && type == 0;
        nax_df_kernel_dEditPPSpline1D(task, order, type, bc, d.ends.data(),
                                      subbotin ? 8
                                      : second ? 2
                                               : 0,
                                      subbotin ? d.knots.data()
                                      : second ? d.y.data()
                                               : nullptr,
                                      order > 0 ? d.coefficients.data() : nullptr, 16);
        if (construct() != 0) std::abort();
    }
    Spline(const Spline&) = delete;
    Spline& operator=(const Spline&) = delete;
    ~Spline() { nax_df_kernel_DeleteTask(&task); }

    int construct() {
        int64_t order, type;
        nax_df_kernel_iQueryVal(task, NAX_DF_ATTRIBUTE_S_ORDER, &order);
        nax_df_kernel_iQueryVal(task, NAX_DF_ATTRIBUTE_S_TYPE, &type);
        if (order == 0) return 0;
        if (order == 2) return nax_df_kernel_dDFLinearSpline1D(task, 0, 0, nullptr);
        if (order == 3) return nax_df_kernel_dDFQuadraticSpline1D(task, 0, 0, nullptr);
        if (type == 0) return nax_df_kernel_dDFDefaultCubicSpline1D(task, 0, 0, nullptr);
        return nax_df_kernel_dDFNaturalCubicSpline1D(task, 0, 0, nullptr);
    }
    void evaluate(const double* site, int64_t n, int64_t hint, int64_t orders, int64_t rhint, double* r,
                  const nax_threaders* threads = nullptr) const {
        nax_df_kernel_dDFInterpolate1D(task, 1, 0, n, site, hint, orders, kFlags, nullptr, r, rhint, nullptr, nullptr,
                                       nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, threads);
    }
    void search(const double* site, int64_t n, int64_t hint, int64_t* cells) const {
        nax_df_kernel_dDFSearch1D(task, 0, n, site, hint, nullptr, cells, nullptr, nullptr, nullptr, nullptr);
    }
    void integrate(const double* a, const double* b, int64_t n, double* r) const {
        nax_df_kernel_dDFIntegrate1D(task, 0, n, a, 0, b, 0, nullptr, nullptr, r, 16, nullptr, nullptr, nullptr,
                                     nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    }
};

struct Gsl {
    gsl_interp_accel* accel = gsl_interp_accel_alloc();
    gsl_spline* spline;
    explicit Gsl(const Data& d) : spline(gsl_spline_alloc(gsl_interp_cspline, size_t(d.nx))) {
        gsl_spline_init(spline, d.x.data(), d.y.data(), size_t(d.nx));
    }
    Gsl(const Gsl&) = delete;
    Gsl& operator=(const Gsl&) = delete;
    ~Gsl() {
        gsl_spline_free(spline);
        gsl_interp_accel_free(accel);
    }
};

// Calls take turns over a few sites that stand in the caches.
constexpr size_t kTurns = 256;

void time_short(Report& report, int64_t nx) {
    Data d(nx, 1, 4096);
    Spline s(d, false, 4, NAX_DF_TYPE_NATURAL);
    const Gsl gsl(d);
    const std::string layout = "nx " + std::to_string(nx);
    for (const bool same : {true, false}) {
        const auto at = [&d, same](size_t i) { return d.random.data() + (same ? i % 4 : i); };
        const std::string which = same ? ", near ones" : ", random ones";
        for (const int64_t n : {1, 4, 16, 64})
            report.time("value, " + std::to_string(n) + " sites" + which, layout, kTurns,
                        {{"ours",
                          [&] {
                              for (size_t i = 0; i < kTurns; ++i) s.evaluate(at(i), n, 0, 1, 16, d.r.data());
                          }},
                         {"GSL", [&] {
                              for (size_t i = 0; i < kTurns; ++i)
                                  for (int64_t k = 0; k < n; ++k)
                                      d.r[size_t(k)] = gsl_spline_eval(gsl.spline, at(i)[k], gsl.accel);
                          }}});
        report.time("search, 1 site" + which, layout, kTurns,
                    {{"ours",
                      [&] {
                          for (size_t i = 0; i < kTurns; ++i) s.search(at(i), 1, 0, d.cells.data());
                      }},
                     {"GSL",
                      [&] {
                          for (size_t i = 0; i < kTurns; ++i)
                              d.cells[0] = int64_t(gsl_interp_accel_find(gsl.accel, d.x.data(), d.x.size(), *at(i)));
                      }},
                     {"upper_bound", [&] {
                          for (size_t i = 0; i < kTurns; ++i)
                              d.cells[0] = std::upper_bound(d.x.begin(), d.x.end(), *at(i)) - d.x.begin();
                      }}});
        for (const int64_t span : {1, 20})
            report.time("integral over " + std::to_string(span) + " cells" + which, layout, kTurns,
                        {{"ours",
                          [&] {
                              for (size_t i = 0; i < kTurns; ++i) {
                                  const double a = *at(i), b = std::min(a + double(span) / double(nx), d.x.back());
                                  s.integrate(&a, &b, 1, d.r.data());
                              }
                          }},
                         {"GSL", [&] {
                              for (size_t i = 0; i < kTurns; ++i) {
                                  const double a = *at(i), b = std::min(a + double(span) / double(nx), d.x.back());
                                  d.r[0] = gsl_spline_eval_integ(gsl.spline, a, b, gsl.accel);
                              }
                          }}});
    }
}

void time_lifetime(Report& report, int64_t nx) {
    Data d(nx, 1, 16);
    report.time("make, construct, delete", "nx " + std::to_string(nx), 1,
                {{"ours", [&] { Spline s(d, false, 4, NAX_DF_TYPE_NATURAL); }}, {"GSL", [&] { Gsl g(d); }}});
}

void time_construction(Report& report, int64_t nx) {
    Data d(nx, 1, 16);
    const std::string layout = "nx " + std::to_string(nx);
    std::vector<double> scratch(size_t(8 * nx + 8)), c(d.coefficients.size());
    Spline standard(d, false, 3, 0), equal(d, true, 3, 0), subbotin(d, false, 3, 1), second(d, false, 4, 0),
        line(d, false, 2, 0);
    report.time("construction, default cubic", layout, nx,
                {{"ours", [&] { second.construct(); }},
                 {"plain loop", [&] { plain::default_cubic(nx, d.x.data(), d.y.data(), d.y.data(), c.data()); }}});
    report.time("construction, standard quadratic", layout, nx,
                {{"ours", [&] { standard.construct(); }}, {"plain loop", [&] {
                                                               plain::standard_quadratic(nx, d.x.data(), d.y.data(),
                                                                                         0.3, scratch.data(), c.data());
                                                           }}});
    report.time("construction, standard, uniform", layout, nx,
                {{"ours", [&] { equal.construct(); }},
                 {"plain loop", [&] {
                      plain::standard_quadratic_uniform(nx, d.ends.data(), d.y.data(), 0.3, scratch.data(), c.data());
                  }}});
    report.time("construction, Subbotin", layout, nx,
                {{"ours", [&] { subbotin.construct(); }}, {"plain loop", [&] {
                                                               plain::subbotin(nx, d.x.data(), d.y.data(),
                                                                               d.knots.data(), d.ends.data(),
                                                                               scratch.data(), c.data());
                                                           }}});
    report.time("construction, linear", layout, nx,
                {{"ours", [&] { line.construct(); }},
                 {"plain loop", [&] { plain::linear(nx, d.x.data(), d.y.data(), c.data()); }}});
}

void time_evaluation(Report& report, int64_t nx, int64_t n) {
    Data d(nx, 1, n);
    const std::string layout = "nx " + std::to_string(nx);
    std::vector<double> peer(static_cast<size_t>(n));
    {
        Spline s(d, false, 4, NAX_DF_TYPE_NATURAL);
        report.time("cubic, uniform sites", layout, n,
                    {{"ours", [&] { s.evaluate(d.ends.data(), n, NAX_DF_SITES_UNIFORM, 1, 16, d.r.data()); }},
                     {"walking loop", [&] {
                          plain::cubic_uniform_sites(nx, d.x.data(), d.coefficients.data(), n, d.ends.data(),
                                                     peer.data());
                      }}});
        report.time(
            "search, uniform sites", layout, n,
            {{"ours", [&] { s.search(d.ends.data(), n, NAX_DF_SITES_UNIFORM, d.cells.data()); }},
             {"walking loop", [&] { plain::search_uniform_sites(nx, d.x.data(), n, d.ends.data(), d.cells.data()); }}});
        report.time("cubic, sorted sites", layout, n,
                    {{"ours", [&] { s.evaluate(d.sorted.data(), n, NAX_DF_SITES_SORTED, 1, 16, d.r.data()); }},
                     {"walking loop", [&] {
                          plain::cubic_sorted(nx, d.x.data(), d.coefficients.data(), n, d.sorted.data(), peer.data());
                      }}});
    }
    {
        Spline s(d, false, 3, 1);
        report.time("Subbotin, sorted sites", layout, n,
                    {{"ours", [&] { s.evaluate(d.sorted.data(), n, NAX_DF_SITES_SORTED, 1, 16, d.r.data()); }},
                     {"walking loop", [&] {
                          plain::subbotin_sorted(nx, d.x.data(), d.knots.data(), d.coefficients.data(), n,
                                                 d.sorted.data(), peer.data());
                      }}});
    }
    for (const int64_t type : {NAX_DF_TYPE_STEP_LEFT, NAX_DF_TYPE_STEP_RIGHT}) {
        Spline s(d, false, 0, type);
        report.time(type == NAX_DF_TYPE_STEP_LEFT ? "left step, sorted sites" : "right step, sorted sites", layout, n,
                    {{"ours", [&] { s.evaluate(d.sorted.data(), n, NAX_DF_SITES_SORTED, 1, 16, d.r.data()); }},
                     {"walking loop", [&] {
                          plain::step_sorted(nx, d.x.data(), d.y.data(), n, d.sorted.data(), peer.data(),
                                             type == NAX_DF_TYPE_STEP_LEFT);
                      }}});
    }
    for (const bool uniform : {false, true}) {
        Spline s(d, uniform, 2, 0);
        report.time(
            uniform ? "linear, uniform partition" : "linear, random sites", layout, n,
            {{"ours", [&] { s.evaluate(d.random.data(), n, 0, 1, 16, d.r.data()); }},
             {"plain loop", [&] {
                  if (uniform)
                      plain::linear_uniform(nx, d.ends.data(), d.coefficients.data(), n, d.random.data(), peer.data());
                  else
                      plain::linear_random(nx, d.x.data(), d.coefficients.data(), n, d.random.data(), peer.data());
              }}});
        if (!uniform)
            report.time("linear, sorted sites", layout, n,
                        {{"ours", [&] { s.evaluate(d.sorted.data(), n, NAX_DF_SITES_SORTED, 1, 16, d.r.data()); }},
                         {"walking loop", [&] {
                              plain::linear_sorted(nx, d.x.data(), d.coefficients.data(), n, d.sorted.data(),
                                                   peer.data());
                          }}});
    }
}

void time_layouts(Report& report, int64_t nx, int64_t ny, int64_t orders, int64_t n) {
    Data d(nx, ny, n);
    Spline s(d, false, 4, NAX_DF_TYPE_NATURAL);
    std::vector<double> peer(size_t(n * ny * orders));
    const std::string layout = "nx " + std::to_string(nx);
    for (const int64_t rhint : {16, 32, 256, 512})
        report.time(
            std::to_string(ny) + " functions, " + std::to_string(orders) + " orders, layout " + std::to_string(rhint),
            layout, n * ny * orders,
            {{"ours", [&] { s.evaluate(d.sorted.data(), n, NAX_DF_SITES_SORTED, orders, rhint, d.r.data()); }},
             {"walking loop", [&] {
                  plain::cubic_layout(nx, d.x.data(), d.coefficients.data(), ny, orders, n, d.sorted.data(), rhint,
                                      peer.data());
              }}});
}

void time_threads(Report& report, int64_t nx) {
    Data d(nx, 1, 1000000);
    Spline s(d, false, 4, NAX_DF_TYPE_NATURAL);
    nax_threaders table;
    nax_serv_fill_threaders(&table);
    table.max_threads = [] { return 2; };
    report.time("cubic, two threads", "nx " + std::to_string(nx), 1000000,
                {{"ours", [&] { s.evaluate(d.random.data(), 1000000, 0, 1, 16, d.r.data(), &table); }},
                 {"one thread", [&] { s.evaluate(d.random.data(), 1000000, 0, 1, 16, d.r.data()); }}},
                {5, 4e-4});
}

}  // namespace
}  // namespace nax::bench

int main(int argc, char** argv) {
    using namespace nax::bench;
    Report report("Splines beside simple rivals", argc, argv);
    for (const int64_t nx : {1000, 100000}) time_threads(report, nx);
    pin_to_one_core();
    for (const int64_t nx : {10, 1000}) time_short(report, nx);
    for (const int64_t nx : {10, 1000}) time_lifetime(report, nx);
    for (const int64_t nx : {100, 1000, 100000}) time_construction(report, nx);
    for (const int64_t nx : {1000, 100000}) time_evaluation(report, nx, 100000);
    for (const int64_t ny : {3, 4, 10}) time_layouts(report, 1000, ny, 1, 10000);
    time_layouts(report, 1000, 4, 2, 10000);
    time_layouts(report, 1000, 4, 3, 10000);
    return report.finish();
}
