// The loops that a user would write instead of a call: what short of vectors by hand a compiler makes of them is the
// rival. Apart from each other, so that none is specialised to its arguments.
#pragma once

#include <algorithm>
#include <cstdint>

#pragma GCC visibility push(default)
namespace nax::bench::plain {

void default_cubic(int64_t nx, const double* x, const double* y, const double* second, double* c);
void standard_quadratic(int64_t nx, const double* x, const double* y, double middle, double* s, double* c);
void standard_quadratic_uniform(int64_t nx, const double* ends, const double* y, double middle, double* s, double* c);
// Knots with the ends of the partition, slopes at both ends; 4 nx elements of scratch.
void subbotin(int64_t nx, const double* x, const double* y, const double* knots, const double* slopes, double* scratch,
              double* c);
void linear(int64_t nx, const double* x, const double* y, double* c);

void cubic_uniform_sites(int64_t nx, const double* x, const double* c, int64_t n, const double* ends, double* r);
void search_uniform_sites(int64_t nx, const double* x, int64_t n, const double* ends, int64_t* cells);
void cubic_sorted(int64_t nx, const double* x, const double* c, int64_t n, const double* site, double* r);
void subbotin_sorted(int64_t nx, const double* x, const double* knots, const double* c, int64_t n, const double* site,
                     double* r);
void step_sorted(int64_t nx, const double* x, const double* y, int64_t n, const double* site, double* r, bool left);
void linear_sorted(int64_t nx, const double* x, const double* c, int64_t n, const double* site, double* r);
void linear_random(int64_t nx, const double* x, const double* c, int64_t n, const double* site, double* r);
void linear_uniform(int64_t nx, const double* ends, const double* c, int64_t n, const double* site, double* r);
// All functions of a site at once; c holds 4 (nx - 1) coefficients of each.
void cubic_layout(int64_t nx, const double* x, const double* c, int64_t ny, int64_t orders, int64_t n,
                  const double* site, int64_t rhint, double* r);

}  // namespace nax::bench::plain
#pragma GCC visibility pop
