// spline_gallery [DIRECTORY]: a picture of every spline family on the same data, and the table of the boundary conditions
// and smallest sizes that each family takes, found by asking the library.
#include <cstdio>
#include <string>
#include <vector>

#include "examples/svg_plot.h"
#include "nax/fitting.h"
#include "nax/fitting_construction.h"

namespace {

struct Family {
    const char *file, *name;
    int64_t order, type, boundary;
    int32_t (*build)(nax_df_task*, int64_t, int64_t, const nax_threaders*);
};
const Family kFamilies[] = {
    {"linear", "linear", 2, 0, 0, nax_df_kernel_dDFLinearSpline1D},
    {"quadratic", "quadratic, standard", 3, 0, 128, nax_df_kernel_dDFQuadraticSpline1D},
    {"subbotin", "quadratic, Subbotin", 3, 1, 48, nax_df_kernel_dDFQuadraticSpline1D},
    {"natural", "natural cubic", 4, 2, 2, nax_df_kernel_dDFNaturalCubicSpline1D},
    {"default", "default cubic", 4, 0, 2, nax_df_kernel_dDFDefaultCubicSpline1D},
    {"hermite", "Hermite cubic", 4, 3, 0, nax_df_kernel_dDFHermiteCubicSpline1D},
    {"bessel", "Bessel cubic", 4, 4, 0, nax_df_kernel_dDFBesselCubicSpline1D},
    {"akima", "Akima cubic", 4, 5, 0, nax_df_kernel_dDFAkimaCubicSpline1D},
    {"hyman", "Hyman cubic", 4, 9, 0, nax_df_kernel_dDFHymanCubicSpline1D},
};

// The data of Akima's paper of 1970: flat, then steep.
const std::vector<double> kX = {0, 2, 3, 5, 6, 8, 9, 11, 12, 14, 15};
const std::vector<double> kY = {10, 10, 10, 10, 10, 10, 10.5, 15, 50, 60, 85};

struct Curve {
    int32_t status;
    std::vector<double> y;
};
// Builds a spline through the first n points and, where it can be built, evaluates it. `ic` are the conditions of the
// Hermite spline (slopes) and the default spline (second derivatives), taken from central differences.
Curve evaluate(const Family& family, int64_t boundary, size_t n, const std::vector<double>& sites) {
    std::vector<double> y(kY.begin(), kY.begin() + static_cast<long>(n)), ic;
    if (boundary == 64) y.back() = y.front();
    for (size_t i = 1; i + 1 < n; ++i) {
        const double left = (y[i] - y[i - 1]) / (kX[i] - kX[i - 1]), right = (y[i + 1] - y[i]) / (kX[i + 1] - kX[i]);
        ic.push_back(family.type == NAX_DF_TYPE_HERMITE ? (left + right) / 2 : 2 * (right - left) / (kX[i + 1] - kX[i - 1]));
    }
    const bool own = family.order == 4 && (family.type == 0 || family.type == NAX_DF_TYPE_HERMITE);
    const double bc[] = {boundary == 128 ? (y[0] + y[1]) / 2 : 0, 0};
    std::vector<double> c(static_cast<size_t>(family.order) * n), r(sites.size());
    nax_df_task* task = nullptr;
    nax_df_kernel_dNewTask1D(&task, static_cast<int64_t>(n), kX.data(), 0, 1, y.data(), 0, 1);
    nax_df_kernel_dEditPPSpline1D(task, family.order, family.type, boundary, bc, own ? 1 : 0, own ? ic.data() : nullptr, c.data(), 0);
    if (family.order == 3 && family.type == 1) nax_df_kernel_iEditVal(task, NAX_DF_ATTRIBUTE_IC_TYPE, NAX_DF_IC_SUBBOTIN_KNOTS);
    Curve curve{family.build(task, 0, 0, nullptr), {}};
    if (curve.status == 0 && !sites.empty()) {
        nax_df_kernel_dDFInterpolate1D(task, 1, 0, static_cast<int64_t>(sites.size()), sites.data(), NAX_DF_SITES_SORTED, 0, nullptr, nullptr, r.data(),
                                       NAX_DF_STORAGE_ROWS, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
        curve.y = r;
    }
    nax_df_kernel_DeleteTask(&task);
    return curve;
}

bool draw(const Family& family, const std::string& directory) {
    std::vector<double> sites;
    for (int i = 0; i <= 900; ++i) sites.push_back(15.0 * i / 900);
    plot::Panel panel;
    panel.title = family.name;
    panel.x0 = -0.5, panel.x1 = 15.5, panel.y0 = -12, panel.y1 = 92;
    panel.line(kX, kY, plot::kGrey, "chords", 1.0, "4 3");
    panel.line(sites, evaluate(family, family.boundary, kX.size(), sites).y, plot::kBlue, "spline", 2.2);
    panel.dots(kX, kY, plot::kOrange, "data", 4);
    return plot::write_svg(directory + "/spline_" + family.file + ".svg", 460, 330, panel.svg(0, 0, 460, 330));
}

bool write_table(const std::string& path) {
    const int64_t boundaries[] = {0, 1, 2, 12, 36, 24, 48, 64, 128};
    const char* const names[] = {"none", "not-a-knot", "free end", "1st, 1st", "1st, 2nd", "2nd, 1st", "2nd, 2nd", "periodic", "value"};
    std::FILE* const file = std::fopen(path.c_str(), "w");
    if (file == nullptr) return false;
    std::fputs("# Splines, boundary conditions and smallest numbers of points\n\nEach entry is the smallest `nx` that the family takes with"
               " the boundary type above; a dash stands where it is refused.\nA linear spline looks at type 64 alone, and then asks that both ends of a function agree.\nWritten by `examples/spline_gallery`, which asks the library.\n\n| family |", file);
    for (size_t k = 0; k < std::size(boundaries); ++k) std::fprintf(file, " %s (%d) |", names[k], static_cast<int>(boundaries[k]));
    std::fputs("\n|---|", file);
    for (size_t k = 0; k < std::size(boundaries); ++k) std::fputs("---|", file);
    std::fputs("\n", file);
    for (const Family& family : kFamilies) {
        std::fprintf(file, "| %s |", family.name);
        for (const int64_t boundary : boundaries) {
            size_t n = 2;
            while (n < kX.size() && evaluate(family, boundary, n, {}).status != 0) ++n;
            if (n < kX.size())
                std::fprintf(file, " %zu |", n);
            else
                std::fputs(" - |", file);
        }
        std::fputs("\n", file);
    }
    return std::fclose(file) == 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string directory = argc > 1 ? argv[1] : ".";
    for (const Family& family : kFamilies)
        if (!draw(family, directory)) return 1;
    return write_table(directory + "/spline-support.md") ? 0 : 1;
}
