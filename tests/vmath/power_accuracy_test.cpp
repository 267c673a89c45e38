// Accuracy of the functions with two arguments, at points that their algorithms find hard: next to the borders of table
// intervals, bases next to 1 with huge exponents, results at both ends of the range.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "nax/mode.h"
#include "tests/lib/accuracy.h"

namespace nax::testing {
namespace {

template <class T>
struct Point {
    T a, b;
};

struct Held {
    const char* function;
    ExactBinary exact;
    double single[kSlots], twice[kSlots];  // largest error of float and double, by slot
};
// LA, HA, EP. The levels that share a kernel, or a quotient of the processor's, share the bound.
constexpr Held kHeld[] = {
    {"Pow", mpfr_pow, {1.1, 0.6, 4096}, {2.5, 0.75, 0x1p26}},
    {"Powr", mpfr_pow, {1.1, 0.6, 4096}, {2.5, 0.75, 0x1p26}},
    {"Powx", mpfr_pow, {0.6, 0.6, 4096}, {2.5, 0.75, 0x1p26}},
    {"Div", mpfr_div, {0.501, 0.501, 1200}, {0.501, 0.501, 0x1p25}},
    {"Hypot", mpfr_hypot, {2.5, 0.6, 1200}, {2.5, 0.6, 0x1p26}},
};

template <class T>
class Sampler {
public:
    explicit Sampler(uint64_t seed) : random_(seed) {}

    double uniform(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random_); }
    double sign() { return (random_() & 1) != 0 ? 1.0 : -1.0; }
    // Any binade, denormal ones too.
    T any_size() {
        constexpr int lowest = std::numeric_limits<T>::min_exponent - std::numeric_limits<T>::digits;
        const double exponent = uniform(lowest, std::numeric_limits<T>::max_exponent - 1);
        return static_cast<T>(std::ldexp(uniform(1, 2), static_cast<int>(std::floor(exponent))));
    }
    // 1 +- 2^-k, k up to the last place.
    T next_to_one() {
        const double k = uniform(1, std::numeric_limits<T>::digits);
        return static_cast<T>(1 + sign() * std::exp2(-k) * uniform(1, 2) / 2);
    }
    // Some steps from 1 + (2j + 1)/64, where the table's interval changes.
    T table_border() {
        T x = static_cast<T>(1 + (2 * std::floor(uniform(0, 32)) + 1) / 64);
        for (int step = static_cast<int>(uniform(0, 4)); step > 0; --step)
            x = std::nextafter(x, static_cast<T>(sign() * 9));
        return static_cast<T>(std::ldexp(x, static_cast<int>(uniform(-20, 20))));
    }

private:
    std::mt19937_64 random_;
};

// Base and exponent of a power of about 2^t.
template <class T>
Point<T> power_of(T x, double t) {
    const double y = t / std::log2(static_cast<double>(x));
    constexpr double largest = static_cast<double>(std::numeric_limits<T>::max());
    return {x, static_cast<T>(std::fmin(std::fmax(y, -largest), largest))};
}

template <class T>
Point<T> power_point(Sampler<T>& s, int kind) {
    constexpr double top = std::numeric_limits<T>::max_exponent;
    constexpr double bottom = std::numeric_limits<T>::min_exponent - std::numeric_limits<T>::digits;
    const auto some_base = [&] { return kind & 1 ? s.any_size() : kind & 2 ? s.next_to_one() : s.table_border(); };
    switch (kind / 4 % 4) {
        case 0:
            return power_of(some_base(), s.uniform(bottom, top));
        case 1:  // denormal
            return power_of(some_base(), s.uniform(bottom, bottom + std::numeric_limits<T>::digits + 2));
        case 2:  // about to overflow, or large
            return power_of(some_base(), top - std::exp2(s.uniform(-30, 6)));
        default:
            return {static_cast<T>(s.uniform(0.5, 2)), static_cast<T>(s.uniform(-6, 6))};
    }
}

template <class T>
Point<T> plain_point(Sampler<T>& s, int kind) {
    if (kind % 2 == 0) return {static_cast<T>(s.sign() * s.uniform(1, 4)), static_cast<T>(s.sign() * s.uniform(1, 4))};
    const T a = s.any_size();
    if (kind % 4 == 1) return {a, s.any_size()};
    const double ratio = std::exp2(s.uniform(-60, 60));
    const double b = static_cast<double>(a) * ratio;
    constexpr double largest = static_cast<double>(std::numeric_limits<T>::max());
    return {
        a, static_cast<T>(std::fmin(std::fmax(b, static_cast<double>(std::numeric_limits<T>::denorm_min())), largest))};
}

template <class T>
void call_all(const Record& record, int slot, const std::vector<Point<T>>& points, std::vector<T>& results) {
    const size_t n = points.size();
    std::vector<T> a(n), b(n);
    for (size_t i = 0; i < n; ++i) {
        a[i] = points[i].a;
        b[i] = points[i].b;
    }
    results.resize(n);
    if (record.row->signature == Signature::BINARY) {
        reinterpret_cast<void (*)(int32_t, const T*, const T*, T*)>(record.ttab[slot])(
            static_cast<int32_t>(n), a.data(), b.data(), results.data());
        return;
    }
    for (size_t i = 0; i < n; ++i)
        reinterpret_cast<void (*)(int32_t, const T*, T, T*)>(record.ttab[slot])(1, &a[i], b[i], &results[i]);
}

template <class T>
void check_function(const Held& held, int count) {
    const char type = sizeof(T) == 8 ? 'd' : 's';
    const Record& record = *find_record(type + std::string(held.function));
    const bool power = held.exact == mpfr_pow;
    Sampler<T> sampler(17);
    std::vector<Point<T>> points;
    for (int i = 0; i < count; ++i) points.push_back(power ? power_point(sampler, i) : plain_point(sampler, i));
    for (int slot = 0; slot < kSlots; ++slot) {
        std::vector<T> results;
        call_all(record, slot, points, results);
        double largest = 0;
        Point<T> worst{};
        for (size_t i = 0; i < points.size(); ++i) {
            const double error = exact_ulp_error(held.exact, points[i].a, points[i].b, results[i]);
            if (!(error <= largest)) {
                largest = error;
                worst = points[i];
            }
        }
        const double bound = type == 'd' ? held.twice[slot] : held.single[slot];
        char text[160];
        std::snprintf(text, sizeof text, "%s %s: %.4g ulp at (%a, %a)", record.name().c_str(), kLevels[slot], largest,
                      static_cast<double>(worst.a), static_cast<double>(worst.b));
        EXPECT_LE(largest, bound) << text;
        EXPECT_GT(largest, 0.25) << text;  // a measurement that saw nothing
        if (count > 10000) std::printf("%s\n", text);
    }
}

void check_all(int count) {
    const auto mode = _arqSetMode(ARQ_ERRMODE_IGNORE | ARQ_DENORMALS_KEEP);
    for (const Held& held : kHeld) {
        check_function<float>(held, count);
        check_function<double>(held, count);
    }
    _arqSetMode(mode);
}

TEST(PowerAccuracy, HardPoints) { check_all(4000); }
TEST(PowerAccuracyFull, ManyHardPoints) { check_all(400000); }

}  // namespace
}  // namespace nax::testing
