// Splines through the monthly carbon dioxide record of Mauna Loa: between the months, over a decade, and as a picture.
#include <cstdio>
#include <string>
#include <vector>

#include "examples/svg_plot.h"
#include "examples/tour/csv.h"
#include "examples/tour/tour.h"
#include "nax/fitting.h"
#include "nax/fitting_construction.h"
#include "nax/fitting_integration.h"

namespace {

struct Kind {
    const char* name;
    const char* colour;
    const char* dashes;
    int64_t type, boundary;
    int32_t (*build)(nax_df_task*, int64_t, int64_t, const nax_threaders*);
};
const Kind kKinds[] = {
    {"natural", plot::kBlue, "", NAX_DF_TYPE_NATURAL, NAX_DF_BC_FREE_END, nax_df_kernel_dDFNaturalCubicSpline1D},
    {"Akima", plot::kOrange, "7 4", NAX_DF_TYPE_AKIMA, NAX_DF_BC_NONE, nax_df_kernel_dDFAkimaCubicSpline1D},
    {"Hyman", plot::kGreen, "2 3", NAX_DF_TYPE_HYMAN, NAX_DF_BC_NONE, nax_df_kernel_dDFHymanCubicSpline1D},
};

// One spline of the record; the task and its coefficients live as long as the object.
class Spline {
public:
    Spline(const std::vector<double>& time, const std::vector<double>& ppm, const Kind& kind) : coefficients_(4 * (time.size() - 1)) {
        nax_df_kernel_dNewTask1D(&task_, static_cast<int64_t>(time.size()), time.data(), NAX_DF_PARTITION_GENERAL, 1, ppm.data(), 0, 1);
        nax_df_kernel_dEditPPSpline1D(task_, 4, kind.type, kind.boundary, nullptr, 0, nullptr, coefficients_.data(), 0);
        status_ = kind.build(task_, 0, 0, nullptr);
    }
    Spline(const Spline&) = delete;
    Spline& operator=(const Spline&) = delete;
    ~Spline() { nax_df_kernel_DeleteTask(&task_); }

    int32_t status() const { return status_; }
    // Value and slope at each time, two numbers apiece.
    std::vector<double> at(const std::vector<double>& time) const {
        const int64_t orders[] = {1, 1};
        std::vector<double> r(2 * time.size());
        nax_df_kernel_dDFInterpolate1D(task_, 1, 0, static_cast<int64_t>(time.size()), time.data(), NAX_DF_SITES_SORTED, 2, orders, nullptr, r.data(),
                                       NAX_DF_STORAGE_ROWS, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
        return r;
    }
    double integral(double from, double to) const {
        double r = 0;
        nax_df_kernel_dDFIntegrate1D(task_, 0, 1, &from, 0, &to, 0, nullptr, nullptr, &r, NAX_DF_INTEGRALS_BY_FUNCTION, nullptr, nullptr,
                                     nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
        return r;
    }

private:
    std::vector<double> coefficients_;
    nax_df_task* task_ = nullptr;
    int32_t status_ = 0;
};

std::vector<double> times(double from, double to, int steps) {
    std::vector<double> t;
    for (int i = 0; i <= steps; ++i) t.push_back(from + (to - from) * i / steps);
    return t;
}
std::vector<double> every_second(const std::vector<double>& values, size_t offset) {
    std::vector<double> out;
    for (size_t i = offset; i < values.size(); i += 2) out.push_back(values[i]);
    return out;
}

void print_between_months(const std::vector<const Spline*>& splines) {
    const std::vector<double> t = {1995.0 + 0.5 / 12, 1995.0 + 4.5 / 12, 1995.0 + 5.5 / 12, 1995.0 + 8.5 / 12, 1995.0 + 9.5 / 12};
    std::printf("  half way between the months        value, ppm                    slope, ppm a year\n");
    std::printf("  %-24s", "year");
    for (int part = 0; part < 2; ++part)
        for (const Kind& kind : kKinds) std::printf("%10s", kind.name);
    std::printf("\n");
    for (size_t i = 0; i < t.size(); ++i) {
        std::printf("  %-24.4f", t[i]);
        for (const size_t part : {size_t{0}, size_t{1}})
            for (const Spline* spline : splines) std::printf("%10.3f", spline->at(t)[2 * i + part]);
        std::printf("\n");
    }
}

void draw(const std::vector<double>& time, const std::vector<double>& ppm, const std::vector<const Spline*>& splines, const std::string& path) {
    plot::Panel record, months, slopes;
    record.title = "Carbon dioxide at Mauna Loa, natural spline through 468 months";
    record.x0 = 1959, record.x1 = 1998, record.y0 = 310, record.y1 = 370;
    record.y_title = "ppm";
    const std::vector<double> all = times(1959, 1997.9, 4000), decade = times(1980, 1990, 1000);
    record.area(decade, every_second(splines[0]->at(decade), 0), plot::kPurple, "integral over 1980 to 1990");
    record.line(all, every_second(splines[0]->at(all), 0), plot::kBlue, "", 1.1);

    months.title = "The autumn of 1995", slopes.title = "Slope over two years";
    months.x0 = 1995.5, months.x1 = 1995.95, months.y0 = 357.2, months.y1 = 363;
    slopes.x0 = 1994, slopes.x1 = 1996, slopes.y0 = -36, slopes.y1 = 36;
    months.legend_right = true;
    months.y_title = "ppm", slopes.y_title = "ppm a year", months.x_title = slopes.x_title = "year";
    const std::vector<double> zoom = times(1994, 1996, 1500), autumn = times(1995.5, 1995.95, 800);
    for (size_t k = 0; k < splines.size(); ++k) {
        months.line(autumn, every_second(splines[k]->at(autumn), 0), kKinds[k].colour, kKinds[k].name, 1.8, kKinds[k].dashes);
        slopes.line(zoom, every_second(splines[k]->at(zoom), 1), kKinds[k].colour, kKinds[k].name, 1.6, kKinds[k].dashes);
    }
    months.dots(time, ppm, plot::kInk, "monthly mean", 3.2);
    const std::string body = record.svg(0, 0, 1000, 320) + months.svg(0, 320, 500, 380) + slopes.svg(500, 320, 500, 380);
    if (plot::write_svg(path, 1000, 710, body)) std::printf("  picture: %s\n", path.c_str());
}

}  // namespace

void show_splines(const char* data_directory, const char* output_directory) {
    const tour::Csv record = tour::read_csv(std::string(data_directory) + "/co2_mauna_loa.csv");
    if (record.rows() == 0) {
        std::printf("  no carbon dioxide record in %s\n", data_directory);
        return;
    }
    const std::vector<double>&time = record.columns[0], &ppm = record.columns[1];
    std::printf("  %zu monthly means of carbon dioxide, %.2f to %.2f\n", record.rows(), time.front(), time.back());
    const Spline natural(time, ppm, kKinds[0]), akima(time, ppm, kKinds[1]), hyman(time, ppm, kKinds[2]);
    const std::vector<const Spline*> splines = {&natural, &akima, &hyman};
    for (size_t k = 0; k < splines.size(); ++k)
        if (splines[k]->status() != 0) std::printf("  %s spline: status %d\n", kKinds[k].name, splines[k]->status());
    print_between_months(splines);
    std::printf("  mean of the decade 1980 to 1990, integral / 10 years:");
    for (size_t k = 0; k < splines.size(); ++k) std::printf("  %s %.4f", kKinds[k].name, splines[k]->integral(1980, 1990) / 10);
    std::printf(" ppm\n");
    draw(time, ppm, splines, std::string(output_directory) + "/splines.svg");
}
