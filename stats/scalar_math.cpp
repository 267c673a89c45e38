#include "stats/scalar_math.h"

#include <cmath>

#include "nax/mode.h"
#include "nax/vmath.h"

namespace nax::stats {
namespace {

// The mode word of a computation inside the library: no report leaves it, denormals stay.
constexpr uint32_t kInnerMode = 0x140000;

class InnerMode {
public:
    InnerMode() : saved_(nax_arq_kernel_SetMode(kInnerMode)) {}
    InnerMode(const InnerMode&) = delete;
    InnerMode& operator=(const InnerMode&) = delete;
    ~InnerMode() { nax_arq_kernel_SetMode(saved_); }

private:
    uint32_t saved_;
};

double evaluate(void (*function)(int32_t, const double*, double*), double x) {
    const InnerMode mode;
    double y;
    function(1, &x, &y);
    return y;
}

}  // namespace

double exponential(double x) { return evaluate(_arqdExp, x); }
double logarithm(double x) { return evaluate(_arqdLn, x); }

double log_gamma(double a) {
    int sign;
    return lgamma_r(a, &sign);
}

// M. Abramowitz, I. A. Stegun, Handbook of Mathematical Functions (1964), 26.2.23: error below 4.5e-4.
double rough_inverse_normal(double q) {
    const double tail = q < 0.5 ? q : 1 - q;
    const double t = std::sqrt(-2 * logarithm(tail));
    const double z =
        t - (2.515517 + t * (0.802853 + t * 0.010328)) / (1 + t * (1.432788 + t * (0.189269 + t * 0.001308)));
    return q < 0.5 ? -z : z;
}

}  // namespace nax::stats
