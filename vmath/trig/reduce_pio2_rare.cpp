// Below 2^30 by multiples of pi/2 in three parts (Cody and Waite), above by the bits of 2/pi that matter (M. Payne,
// R. Hanek, "Radian reduction for trigonometric functions", SIGNUM Newsletter 18, 1983).
#include <initializer_list>

#include "vmath/trig/reduce_pio2.h"
#include "vmath/trig/trig_tables.inc"

namespace nax::vmath {
namespace {

constexpr double kShifter = 0x1.8p+52;  // added and taken off again, it leaves the nearest integer
constexpr int kPieceBits = 25;
// Bits of the double's product with 2/pi from the highest that isn't a multiple of four down to 2^-170: the nearest
// that a double comes to a multiple of pi/2 is some 2^-61 of it, and two doubles hold 106 bits more.
constexpr int kPieces = 11;

DoubleWord two_sum(double a, double b) {
    const double sum = a + b, b_part = sum - a;
    return {sum, (a - (sum - b_part)) + (b - b_part)};
}

// A sum kept in three doubles of falling size.
struct TripleSum {
    double high = 0, middle = 0, low = 0;

    void add(double term) {
        const DoubleWord first = two_sum(high, term);
        const DoubleWord second = two_sum(middle, first.low);
        high = first.high;
        middle = second.high;
        low += second.low;
    }
    void normalise() {
        const DoubleWord lower = two_sum(middle, low), upper = two_sum(high, lower.high);
        high = upper.high;
        const DoubleWord rest = two_sum(upper.low, lower.low);
        middle = rest.high;
        low = rest.low;
    }
};

// x 2/pi modulo 4 for x >= 2^30.
TripleSum quarter_turns(double x) {
    const int first = (biased_exponent(x) - 1077) / kPieceBits;  // earlier pieces make multiples of four
    const double scaled = x * 0x1p-200;
    // Parts of 27 and 26 bits: their products with a piece are exact.
    const double head = from_bits<double>(bits_of(scaled) & ~uint64_t{0x3FFFFFF}), tail = scaled - head;
    TripleSum sum;
    for (int k = first; k < first + kPieces; ++k)
        for (const double part : {head, tail}) {
            const double product = part * two_over_pi_pieces[k];
            sum.add(product - 4.0 * std::rint(0.25 * product));
        }
    sum.normalise();
    return sum;
}

}  // namespace

DoubleWord less_multiple_of_pi(double x, double n, double scale) {
    const double difference = std::fma(-n, scale * pi_parts[0], x);
    const double product = n * (scale * pi_parts[1]);
    const double product_low = std::fma(n, scale * pi_parts[1], -product);
    const DoubleWord rest = two_sum(difference, -product);
    return fast_two_sum(rest.high, rest.low - (product_low + n * (scale * pi_parts[2])));
}

}  // namespace nax::vmath

extern "C" int32_t __internal_reduce_pio2d(nax::vmath::DoubleWord* r, double x) {
    using namespace nax::vmath;
    const double a = std::fabs(x);
    double n;
    if (a < 0x1p+30) {
        n = (a * 0.6366197723675814 + kShifter) - kShifter;  // 2/pi
        *r = less_multiple_of_pi(a, n, 0.5);
    } else {
        TripleSum turns = quarter_turns(a);
        n = std::rint(turns.high);
        turns.high -= n;
        turns.normalise();
        const double half_pi = 0.5 * pi_parts[0], half_pi_low = 0.5 * pi_parts[1];
        const double high = turns.high * half_pi;
        const double low = std::fma(turns.high, half_pi, -high) + (turns.high * half_pi_low + turns.middle * half_pi);
        *r = fast_two_sum(high, low);
    }
    const auto quadrant = static_cast<int32_t>(n);
    if (std::signbit(x)) {
        *r = {-r->high, -r->low};
        return -quadrant & 3;
    }
    return quadrant & 3;
}
