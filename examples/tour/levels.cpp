// One function at its three accuracy levels: what is lost, what is gained.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <vector>

#include "examples/tour/tour.h"
#include "nax/vmath.h"

namespace {

using Function = void (*)(int32_t n, const double* a, double* r);

// Largest error in units in the last place, against the C library in 64 bits.
double largest_error(const std::vector<double>& x, const std::vector<double>& y) {
    double largest = 0;
    for (size_t i = 0; i < x.size(); ++i) {
        const long double exact = std::exp(static_cast<long double>(x[i]));
        const long double ulp = std::scalbn(1.0L, std::ilogb(exact) - 52);
        largest = std::max(largest, static_cast<double>(std::fabs(static_cast<long double>(y[i]) - exact) / ulp));
    }
    return largest;
}

double nanoseconds_per_element(Function function, const std::vector<double>& x, std::vector<double>& y) {
    using Clock = std::chrono::steady_clock;
    double best = 1e9;
    for (int repetition = 0; repetition < 30; ++repetition) {
        const auto start = Clock::now();
        for (int call = 0; call < 20; ++call) function(static_cast<int32_t>(x.size()), x.data(), y.data());
        const std::chrono::duration<double, std::nano> taken = Clock::now() - start;
        best = std::min(best, taken.count() / 20 / static_cast<double>(x.size()));
    }
    return best;
}

// A program may have installed an interpreter of illegal instructions.
bool instructions_are_interpreted() {
    struct sigaction action = {};
    return sigaction(SIGILL, nullptr, &action) == 0 && action.sa_handler != SIG_DFL;
}

}  // namespace

void show_levels() {
    const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq");
    if (!avx512 && !instructions_are_interpreted()) {
        std::puts("This host has no AVX-512.");
        return;
    }
    constexpr struct {
        const char* name;
        Function function;
    } levels[] = {{"_arqdExp_HA", _arqdExp_HA}, {"_arqdExp_50", _arqdExp_50}, {"_arqdExp_26", _arqdExp_26}};
    std::vector<double> x(1000), y(x.size());
    for (size_t i = 0; i < x.size(); ++i) x[i] = -10.0 + 0.02 * static_cast<double>(i);
    std::printf("exp of %zu doubles in [-10, 10)\n%-14s %18s %14s\n", x.size(), "", "largest error, ulp",
                "correct bits");
    for (const auto& level : levels) {
        level.function(static_cast<int32_t>(x.size()), x.data(), y.data());
        const double error = largest_error(x, y);
        std::printf("%-14s %18.4g %14.1f", level.name, error, 53 - std::max(0.0, std::log2(error)));
        if (avx512) std::printf("%10.3f ns per element", nanoseconds_per_element(level.function, x, y));
        std::puts("");
    }
}
