#include "bench/plain_splines.h"

namespace nax::bench::plain {

void default_cubic(int64_t nx, const double* x, const double* y, const double* second, double* c) {
    for (int64_t i = 0; i + 1 < nx; ++i) {
        const double h = x[i + 1] - x[i], m = (y[i + 1] - y[i]) / h;
        const double a = i == 0 ? 0 : second[i - 1], b = i + 2 == nx ? 0 : second[i];
        c[4 * i] = y[i];
        c[4 * i + 1] = m - h * (2 * a + b) / 6;
        c[4 * i + 2] = a / 2;
        c[4 * i + 3] = (b - a) / (6 * h);
    }
}

void standard_quadratic(int64_t nx, const double* x, const double* y, double middle, double* s, double* c) {
    s[0] = middle;
    for (int64_t k = 0; k + 2 < nx; ++k) {
        const double h = x[k + 1] - x[k], g = x[k + 2] - x[k + 1];
        s[k + 1] = 0.25 * g * ((y[k] + 3 * y[k + 1]) / h + (3 * y[k + 1] + y[k + 2]) / g) - g / h * s[k];
    }
    for (int64_t i = 0; i + 1 < nx; ++i) {
        const double a = (x[i + 1] - x[i]) / 2;
        c[3 * i] = y[i];
        c[3 * i + 2] = 0.5 * (y[i] + y[i + 1] - 2 * s[i]) / (a * a);
        c[3 * i + 1] = (s[i] - y[i]) / a - c[3 * i + 2] * a;
    }
}

void standard_quadratic_uniform(int64_t nx, const double* ends, const double* y, double middle, double* s, double* c) {
    const double a = (ends[1] - ends[0]) / double(nx - 1) / 2, inverse = 1 / a, square = 0.5 / (a * a);
    s[0] = middle;
    for (int64_t k = 0; k + 2 < nx; ++k) s[k + 1] = 0.25 * (y[k] + 6 * y[k + 1] + y[k + 2]) - s[k];
    for (int64_t i = 0; i + 1 < nx; ++i) {
        c[3 * i] = y[i];
        c[3 * i + 2] = square * (y[i] + y[i + 1] - 2 * s[i]);
        c[3 * i + 1] = (s[i] - y[i]) * inverse - c[3 * i + 2] * a;
    }
}

void subbotin(int64_t nx, const double* x, const double* y, const double* t, const double* slopes, double* scratch,
              double* c) {
    double *diagonal = scratch, *super = scratch + nx, *s = scratch + 2 * nx;
    s[0] = slopes[0], s[nx - 1] = slopes[1];
    for (int64_t k = 1; k + 1 < nx; ++k) {
        const double h = x[k + 1] - x[k], g = x[k] - x[k - 1], d = x[k + 1] - x[k - 1];
        const double p = h / d / (x[k] - t[k]), q = g / d / (t[k + 1] - x[k]);
        const double a = p * (t[k] - x[k - 1]), b = q * (x[k + 1] - t[k + 1]);
        double f = 2 * (p * (y[k] - y[k - 1]) + q * (y[k + 1] - y[k])), w = 2 + a + b;
        if (k == 1)
            f -= a * slopes[0];
        else
            w -= a / diagonal[k - 1] * super[k - 1], f -= a / diagonal[k - 1] * s[k - 1];
        if (k + 2 == nx) f -= b * slopes[1];
        diagonal[k] = w, super[k] = b, s[k] = f;
    }
    for (int64_t k = nx - 2; k > 0; --k) s[k] = (s[k] - (k + 2 == nx ? 0 : super[k] * s[k + 1])) / diagonal[k];
    for (int64_t i = 0; i + 1 < nx; ++i) {
        const double h = x[i + 1] - x[i], u = t[i + 1] - x[i];
        c[3 * i] = y[i];
        c[3 * i + 1] = s[i];
        c[3 * i + 2] = (s[i + 1] - s[i]) / (2 * h) + (2 * (y[i + 1] - y[i]) - h * (s[i] + s[i + 1])) / (2 * h * u);
    }
    const double knot = t[nx - 1], before = c[3 * nx - 5] + 2 * c[3 * nx - 4] * (knot - x[nx - 2]);
    c[3 * nx - 3] = y[nx - 1];
    c[3 * nx - 2] = s[nx - 1];
    c[3 * nx - 1] = (s[nx - 1] - before) / (2 * (x[nx - 1] - knot));
}

void linear(int64_t nx, const double* x, const double* y, double* c) {
    for (int64_t i = 0; i + 1 < nx; ++i) {
        c[2 * i] = y[i];
        c[2 * i + 1] = (y[i + 1] - y[i]) / (x[i + 1] - x[i]);
    }
}

namespace {

// The interval of an ascending site.
inline int64_t walk(int64_t p, int64_t nx, const double* x, double site) {
    while (p + 2 < nx && x[p + 1] <= site) ++p;
    return p;
}
inline double cubic(const double* c, double t) { return c[0] + t * (c[1] + t * (c[2] + t * c[3])); }

}  // namespace

void cubic_uniform_sites(int64_t nx, const double* x, const double* c, int64_t n, const double* ends, double* r) {
    const double step = (ends[1] - ends[0]) / double(n - 1);
    int64_t p = 0;
    for (int64_t i = 0; i < n; ++i) {
        const double site = ends[0] + double(i) * step;
        p = walk(p, nx, x, site);
        r[i] = cubic(c + 4 * p, site - x[p]);
    }
}
void search_uniform_sites(int64_t nx, const double* x, int64_t n, const double* ends, int64_t* cells) {
    const double step = (ends[1] - ends[0]) / double(n - 1);
    int64_t p = 0;
    for (int64_t i = 0; i < n; ++i) cells[i] = (p = walk(p, nx, x, ends[0] + double(i) * step)) + 1;
}
void cubic_sorted(int64_t nx, const double* x, const double* c, int64_t n, const double* site, double* r) {
    int64_t p = 0;
    for (int64_t i = 0; i < n; ++i) {
        p = walk(p, nx, x, site[i]);
        r[i] = cubic(c + 4 * p, site[i] - x[p]);
    }
}
void subbotin_sorted(int64_t nx, const double* x, const double* t, const double* c, int64_t n, const double* site,
                     double* r) {
    int64_t p = 0;
    for (int64_t i = 0; i < n; ++i) {
        while (p + 1 < nx && t[p + 1] <= site[i]) ++p;
        const double u = site[i] - x[p];
        r[i] = c[3 * p] + u * (c[3 * p + 1] + u * c[3 * p + 2]);
    }
}
void step_sorted(int64_t nx, const double* x, const double* y, int64_t n, const double* site, double* r, bool left) {
    int64_t p = 0;
    for (int64_t i = 0; i < n; ++i) {
        p = walk(p, nx, x, site[i]);
        r[i] = y[left && site[i] != x[p] ? p + 1 : p];
    }
}
void linear_sorted(int64_t nx, const double* x, const double* c, int64_t n, const double* site, double* r) {
    int64_t p = 0;
    for (int64_t i = 0; i < n; ++i) {
        p = walk(p, nx, x, site[i]);
        r[i] = c[2 * p] + (site[i] - x[p]) * c[2 * p + 1];
    }
}
void linear_random(int64_t nx, const double* x, const double* c, int64_t n, const double* site, double* r) {
    for (int64_t i = 0; i < n; ++i) {
        const int64_t p = std::clamp<int64_t>(std::upper_bound(x, x + nx, site[i]) - x - 1, 0, nx - 2);
        r[i] = c[2 * p] + (site[i] - x[p]) * c[2 * p + 1];
    }
}
void linear_uniform(int64_t nx, const double* ends, const double* c, int64_t n, const double* site, double* r) {
    const double scale = double(nx - 1) / (ends[1] - ends[0]), step = (ends[1] - ends[0]) / double(nx - 1);
    for (int64_t i = 0; i < n; ++i) {
        const int64_t p = std::clamp<int64_t>(int64_t((site[i] - ends[0]) * scale), 0, nx - 2);
        r[i] = c[2 * p] + (site[i] - (ends[0] + double(p) * step)) * c[2 * p + 1];
    }
}
void cubic_layout(int64_t nx, const double* x, const double* coeff, int64_t ny, int64_t orders, int64_t n,
                  const double* site, int64_t rhint, double* r) {
    const int64_t site_stride = rhint == 16 ? orders : rhint == 32 ? 1 : ny * orders;
    const int64_t function_stride = rhint == 16 || rhint == 32 ? n * orders : rhint == 256 ? orders : 1;
    const int64_t order_stride = rhint == 16 || rhint == 256 ? 1 : rhint == 32 ? n : ny;
    int64_t p = 0;
    for (int64_t i = 0; i < n; ++i) {
        p = walk(p, nx, x, site[i]);
        const double t = site[i] - x[p];
        for (int64_t j = 0; j < ny; ++j) {
            const double* c = coeff + 4 * ((nx - 1) * j + p);
            double* to = r + i * site_stride + j * function_stride;
            to[0] = cubic(c, t);
            if (orders > 1) to[order_stride] = c[1] + t * (2 * c[2] + 3 * t * c[3]);
            if (orders > 2) to[2 * order_stride] = 2 * c[2] + 6 * t * c[3];
        }
    }
}

}  // namespace nax::bench::plain
