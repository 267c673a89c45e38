// Writes the tables of the error functions and their inverses:
//   special_tables rows   > vmath/special/error_rows.inc
//   special_tables points > vmath/special/inverse_points.inc
//
// Rows of a function F at x0 = j/128: F(x0) and its slope, and the rests of both. Those of Erfc and CdfNorm are 2^128
// times as large, so that the smallest stay far from the denormals.
//
// Points of an inverse function: the value y at a point of a floating grid of 128 points a binade, and the slope. The
// rest of y, in units of 2^-57 y and 16 larger than it is, replaces the last five bits of the slope. The first entry is
// the point 0; those of the middle follow, |argument - middle| from 2^-35 up; then those of the tail from 2^-53 up.
#include <cmath>
#include <cstdint>
#include <cstring>

#include "table_writer.h"

using namespace nax::gen;

namespace {

enum class Function { Erf, Erfc, CdfNorm };

Wide pi() {
    Wide r;
    mpfr_const_pi(r.get(), MPFR_RNDN);
    return r;
}
Wide root(const Wide& x) {
    Wide r;
    mpfr_sqrt(r.get(), x.get(), MPFR_RNDN);
    return r;
}
Wide exp(const Wide& x) {
    Wide r;
    mpfr_exp(r.get(), x.get(), MPFR_RNDN);
    return r;
}
Wide erf(const Wide& x) {
    Wide r;
    mpfr_erf(r.get(), x.get(), MPFR_RNDN);
    return r;
}
Wide erfc(const Wide& x) {
    Wide r;
    mpfr_erfc(r.get(), x.get(), MPFR_RNDN);
    return r;
}

Wide value(Function f, const Wide& x) {
    if (f == Function::Erf) return erf(x);
    if (f == Function::Erfc) return erfc(x);
    return Wide(0.5) * erfc(Wide(0.0) - x / root(Wide(2.0)));
}

Wide slope(Function f, const Wide& x) {
    if (f == Function::CdfNorm) return exp(Wide(-0.5) * x * x) / root(Wide(2.0) * pi());
    const Wide s = Wide(2.0) / root(pi()) * exp(Wide(0.0) - x * x);
    return f == Function::Erf ? s : Wide(0.0) - s;
}

void write_rows(Function f, const char* name, int first, int last) {
    std::printf("\n// %d to %d\nalignas(64) inline constexpr double %s[%d][4] = {\n", first, last, name,
                last - first + 1);
    const Wide scale(f == Function::Erf ? 1.0 : 0x1p128);
    for (int j = first; j <= last; ++j) {
        const Wide x(j / 128.0), y = value(f, x) * scale, s = slope(f, x) * scale;
        const double y_high = y.to_double(), s_high = s.to_double();
        std::printf("    {%a, %a, %a, %a},\n", y_high, s_high, (y - Wide(y_high)).to_double(),
                    (s - Wide(s_high)).to_double());
    }
    std::printf("};\n");
}

// One entry from the exact value and slope.
void write_point(const Wide& y, const Wide& derivative) {
    const double high = y.to_double();
    int64_t units = 16;
    if (high != 0) units += std::lrint(((y - Wide(high)) / Wide(high) * Wide(0x1p57)).to_double());
    units = units < 0 ? 0 : units > 31 ? 31 : units;
    // The nearest double whose last bits are the units.
    const double d = derivative.to_double();
    int64_t bits;
    std::memcpy(&bits, &d, sizeof bits);
    bits = ((bits - units + 16) & ~int64_t{31}) | units;
    double packed;
    std::memcpy(&packed, &bits, sizeof packed);
    std::printf("    {%a, %a},\n", high, packed);
}

// Grid point k of a binade grid that ends at `top`, counted downward.
double grid_point(double top, int k) {
    int64_t bits;
    std::memcpy(&bits, &top, sizeof bits);
    bits -= static_cast<int64_t>(k) << 45;
    double point;
    std::memcpy(&point, &bits, sizeof point);
    return point;
}

// y with erf(y) = a or erfc(y) = a: Newton's method from the neighbouring point's y.
Wide invert(bool tail, const Wide& a, Wide y) {
    const Wide factor = root(pi()) / Wide(2.0);
    for (int i = 0; i < 9; ++i) {
        const Wide step = (tail ? erfc(y) - a : a - erf(y)) * factor * exp(y * y);
        y = y + step;
    }
    return y;
}

// `norm`: quantiles of the normal distribution, sqrt(2) erfinv(2 s) beside 1/2 and sqrt(2) erfcinv(2 p) in the tail.
void write_points(const char* name, bool norm) {
    const double top = norm ? 0.25 : 0.5;
    const int top_exponent = norm ? 2 : 1;
    const int middle = (35 - top_exponent) * 128, tail = (53 - top_exponent) * 128;
    const Wide outer(norm ? 2.0 : 1.0), stretch = norm ? root(Wide(2.0)) : Wide(1.0);
    std::printf("\nalignas(64) inline constexpr double %s[%d][2] = {\n", name, 1 + middle + 1 + tail + 1);
    const Wide unit_slope = root(pi()) / Wide(2.0) * outer * stretch;
    write_point(Wide(0.0), unit_slope);
    for (const bool is_tail : {false, true}) {
        const int points = is_tail ? tail : middle;
        static Wide values[1 << 13];
        Wide y(0.47693627620446987);
        for (int k = 0; k <= points; ++k) values[k] = y = invert(is_tail, outer * Wide(grid_point(top, k)), y);
        for (int k = points; k >= 0; --k) {
            const Wide d = unit_slope * exp(values[k] * values[k]);
            write_point(stretch * values[k], is_tail ? Wide(0.0) - d : d);
        }
    }
    std::printf("};\n");
}

}  // namespace

int main(int argc, char** argv) {
    begin_file("tools/gen/special_tables.cpp");
    if (argc > 1 && std::strcmp(argv[1], "rows") == 0) {
        write_rows(Function::Erf, "erf_rows", 0, 767);
        write_rows(Function::Erfc, "erfc_rows", -768, 3487);
        write_rows(Function::CdfNorm, "cdf_norm_rows", -4927, 1088);
    } else {
        write_points("erf_inv_points", false);
        write_points("cdf_norm_inv_points", true);
    }
    end_file();
    return 0;
}
