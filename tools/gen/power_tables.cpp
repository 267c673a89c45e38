// Writes vmath/power/power_tables.inc: accurate tables of the roots and of Pow.
//
// The argument of an accurate table is not fixed beforehand: of the many close to the middle of its interval the one is
// taken at which the function is a short number to well beyond the format, so that no low part is needed (S. Gal and
// B. Bachelis, An accurate elementary mathematical library for the IEEE floating point standard, ACM Transactions on
// Mathematical Software 17 (1991), 26-45).
#include <bit>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "table_writer.h"

using namespace nax::gen;

namespace {

Wide power(const Wide& x, const Wide& exponent) {
    Wide r;
    mpfr_pow(r.get(), x.get(), exponent.get(), MPFR_RNDN);
    return r;
}

struct Entry {
    double reciprocal, value;
};

double distance(Type type, const Wide& exact) {
    return std::fabs((exact / Wide(round_to(type, exact)) - Wide(1.0)).to_double());
}

// The entry of m in [1 + j/16, 1 + (j+1)/16): a c with m c close to 1, and c^-a as a number of `bits` bits.
Entry root_entry(Type type, const Wide& a, int j, int bits, double width) {
    const double middle = 1.0 + (j + 0.5) / 16;
    const double centre = power(Wide(middle), a).to_double();
    const double unit = std::ldexp(1.0, std::ilogb(centre) + 1 - bits);
    const Wide back = Wide(-1.0) / a;
    Entry best{};
    double least = 1.0;
    const auto first = static_cast<long>(centre * (1.0 - width * std::fabs(a.to_double())) / unit) + 1;
    for (long k = first; static_cast<double>(k) * unit < centre * (1.0 + width * std::fabs(a.to_double())); ++k) {
        const double value = static_cast<double>(k) * unit;
        const Wide c = power(Wide(value), back);
        if (distance(type, c) >= least) continue;
        least = distance(type, c);
        best = {round_to(type, c), value};
    }
    return best;
}

// Reciprocals and values of x^a, then the factors 2^(a k) for an exponent's remainder k = 0, 1, -1 upon division by 3
// (entries 0, 1 and 7), as a short high part and the rest relative to it.
void write_root(Type type, const char* stem, int numerator) {
    const Wide a = Wide(numerator) / Wide(3.0);
    const bool single = type == Type::Single;
    const int bits = single ? 12 : 20, factor_bits = single ? 12 : 33;
    const double width = single ? 0x1p-8 : 0x1p-9;
    std::vector<Entry> entries;
    for (int j = 0; j < 16; ++j) entries.push_back(root_entry(type, a, j, bits, width));
    const std::string name = std::string(stem) + (single ? "f" : "");
    const auto factor = [=](int j) { return exp2(a * Wide(j == 7 ? -1.0 : j == 1 ? 1.0 : 0.0)); };
    const auto factor_high = [=](int j) {
        Wide high = factor(j);
        mpfr_prec_round(high.get(), factor_bits, MPFR_RNDN);
        return high.to_double();
    };
    write_array(type, (name + "_reciprocal").c_str(), "c near 16/(16 + j + 1/2) at which c^-a is a short number", 16,
                [&](int j) { return entries[static_cast<size_t>(j)].reciprocal; });
    write_array(type, (name + "_value").c_str(), "c^-a", 16,
                [&](int j) { return entries[static_cast<size_t>(j)].value; });
    write_array(type, (name + "_factor").c_str(), "2^(a k), rounded", 8,
                [&](int j) { return round_to(type, factor(j)); });
    write_array(type, (name + "_factor_high").c_str(), "2^(a k), leading bits", 8, factor_high);
    write_array(type, (name + "_factor_low").c_str(), "the rest, relative", 8,
                [&](int j) { return round_to(type, factor(j) / Wide(factor_high(j)) - Wide(1.0)); });
}

// The entry of m in [1 + (j - 1/2)/size, 1 + (j + 1/2)/size): -log2(c) is a multiple of 2^-40.
Entry log_entry(int j, int size) {
    if (j == 0) return {1.0, 0.0};
    const double centre = std::log2(1.0 + static_cast<double>(j) / size);
    const auto middle = static_cast<long>(std::ldexp(centre, 40));
    Entry best{};
    double least = 1.0;
    for (long k = middle - (1 << 19); k < middle + (1 << 19); ++k) {
        const double value = std::ldexp(static_cast<double>(k), -40);
        const Wide c = exp2(Wide(-value));
        if (distance(Type::Double, c) >= least) continue;
        least = distance(Type::Double, c);
        best = {c.to_double(), value};
    }
    return best;
}

void write_log(int size, const char* stem) {
    std::vector<Entry> entries;
    for (int j = 0; j < size; ++j) entries.push_back(log_entry(j, size));
    write_array(Type::Double, (std::string(stem) + "_reciprocal").c_str(), "c near 1/(1 + j/size)", size,
                [&](int j) { return entries[static_cast<size_t>(j)].reciprocal; });
    write_array(Type::Double, (std::string(stem) + "_value").c_str(), "-log2(c), a multiple of 2^-40", size,
                [&](int j) { return entries[static_cast<size_t>(j)].value; });
}

// Pow in float lanes: the logarithm rounded.
void write_short_log() {
    const auto reciprocal = [](int j) { return (Wide(16.0) / Wide(16.0 + j)).to_float(); };
    write_array(Type::Single, "pow_log2_16f_reciprocal", "c = 1/(1 + j/16), rounded", 16, reciprocal);
    write_array(Type::Single, "pow_log2_16f_value", "-log2(c), rounded", 16,
                [=](int j) { return (Wide(0.0) - log(Wide(reciprocal(j))) / log(Wide(2.0))).to_float(); });
}

// Powers 2^(j/16) less j units of their fourth mantissa bit: an integer sum with N in sixteenths, shifted up, makes
// 2^N of them.
void write_exp() {
    const auto high = [](int j) { return exp2(Wide(j / 16.0)); };
    write_array(Type::Double, "pow_exp2_16", "2^(j/16), bits less j 2^48", 16, [=](int j) {
        return std::bit_cast<double>(std::bit_cast<int64_t>(high(j).to_double()) - (static_cast<int64_t>(j) << 48));
    });
    write_array(Type::Double, "pow_exp2_16_low", "the rest, relative", 16,
                [=](int j) { return (high(j) / Wide(high(j).to_double()) - Wide(1.0)).to_double(); });
    write_array(Type::Single, "pow_exp2_16f", "2^(j/16), bits less j 2^19", 16, [=](int j) {
        const auto value = static_cast<float>(high(j).to_float());
        return static_cast<double>(std::bit_cast<float>(std::bit_cast<int32_t>(value) - (j << 19)));
    });
}

}  // namespace

int main() {
    begin_file("tools/gen/power_tables.cpp");
    for (const Type type : {Type::Double, Type::Single}) {
        write_root(type, "cbrt", 1);
        write_root(type, "inv_cbrt", -1);
        write_root(type, "pow2o3", 2);
    }
    write_log(32, "pow_log2_32");
    write_log(16, "pow_log2_16");
    write_short_log();
    write_exp();
    end_file();
    return 0;
}
