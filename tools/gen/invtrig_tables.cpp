// Writes vmath/invtrig/invtrig_tables.inc: arctangents of the base points, in radians and in half-turns, the points of
// Atan2 in all quadrants, reciprocals with their logarithms, and pi.
#include "table_writer.h"

using namespace nax::gen;

namespace {

Wide pi() {
    Wide r;
    mpfr_const_pi(r.get(), MPFR_RNDN);
    return r;
}

Wide atan(const Wide& x) {
    Wide r;
    mpfr_atan(r.get(), x.get(), MPFR_RNDN);
    return r;
}

using Rule = std::function<Wide(int)>;

// High part rounded to the type, and the rest rounded to it.
void write_pair(Type type, const char* stem, const char* comment, int size, const Rule& rule) {
    char name[64];
    const bool single = type == Type::Single;
    std::snprintf(name, sizeof name, "%s_%d%s_high", stem, size, single ? "f" : "");
    write_array(type, name, comment, size, [&](int j) { return round_to(type, rule(j)); });
    std::snprintf(name, sizeof name, "%s_%d%s_low", stem, size, single ? "f" : "");
    write_array(type, name, "the rest", size,
                [&](int j) { return round_to(type, rule(j) - Wide(round_to(type, rule(j)))); });
}

Wide base_point(int j) { return atan(Wide(j) / Wide(4)); }

// Bits 0 and 1 of j: 0, 2 or 3 for the base points 0, 1/2 and 1 of the smaller magnitude over the larger. Bit 2: the
// first argument has the larger magnitude. Bit 3: the second is negative.
Wide octant_point(int j) {
    const Wide base = atan(Wide((j & 2) == 0 ? 0.0 : 0.5 * ((j & 3) - 1)));
    const Wide half_pi = pi() / Wide(2);
    switch (j >> 2) {
        case 0:
            return base;
        case 1:
            return half_pi - base;
        case 2:
            return pi() - base;
        default:
            return half_pi + base;
    }
}

Wide in_half_turns(const Wide& x) { return x / pi(); }

void write_arctangents(Type type) {
    write_pair(type, "atan", "atan(j/4), to nearest", 16, base_point);
    write_pair(type, "atanpi", "atan(j/4)/pi, to nearest", 16, [](int j) { return in_half_turns(base_point(j)); });
    write_pair(type, "atan2", "angle of base point j & 3 in octant j >> 2, to nearest", 16, octant_point);
    write_pair(type, "atan2pi", "the same over pi, to nearest", 16,
               [](int j) { return in_half_turns(octant_point(j)); });
}

void write_constants(Type type) {
    const char* const suffix = type == Type::Single ? "f" : "";
    const auto parts = [&](const char* stem, const Wide& x) {
        char name[32], comment[32];
        std::snprintf(name, sizeof name, "%s%s", stem, suffix);
        std::snprintf(comment, sizeof comment, "to nearest, and the rest");
        write_array(type, name, comment, 2, [&](int j) {
            const double head = round_to(type, x);
            return j == 0 ? head : round_to(type, x - Wide(head));
        });
    };
    parts("pi_parts", pi());
    parts("half_pi_parts", pi() / Wide(2));
    parts("inverse_pi_parts", Wide(1) / pi());
}

// m in [1 + j/16, 1 + (j + 1)/16) times this, a multiple of 1/64, is 1 + r with -5/512 <= r < 1/16. m is never below 1,
// so nothing cancels.
double reciprocal(int j) { return round_to_multiple(6, Wide(16) / Wide(16 + j)); }

void write_logarithms(Type type, const char* suffix, int grid) {
    char name[32], comment[64];
    const auto minus_ln = [](int j) { return Wide(0.0) - log(Wide(reciprocal(j))); };
    std::snprintf(name, sizeof name, "reciprocal_16%s", suffix);
    write_array(type, name, "16/(16 + j), to the nearest multiple of 1/64", 16, reciprocal);
    std::snprintf(name, sizeof name, "minus_ln_16%s", suffix);
    write_array(type, name, "-ln of it, to nearest", 16, [&](int j) { return round_to(type, minus_ln(j)); });
    std::snprintf(name, sizeof name, "minus_ln_16%s_high", suffix);
    std::snprintf(comment, sizeof comment, "a multiple of 2^-%d", grid);
    write_array(type, name, comment, 16, [&](int j) { return round_to_multiple(grid, minus_ln(j)); });
    std::snprintf(name, sizeof name, "minus_ln_16%s_low", suffix);
    write_array(type, name, "the rest", 16,
                [&](int j) { return round_to(type, minus_ln(j) - Wide(round_to_multiple(grid, minus_ln(j)))); });
}

}  // namespace

int main() {
    begin_file("tools/gen/invtrig_tables.cpp");
    for (const Type type : {Type::Double, Type::Single}) {
        write_arctangents(type);
        write_constants(type);
    }
    // Sums with up to 1026 ln2 or 130 ln2 are exact.
    write_logarithms(Type::Double, "", 43);
    write_logarithms(Type::Single, "f", 17);
    const Wide ln2 = log(Wide(2));
    write_array(Type::Double, "ln2_parts",
                "ln2: a multiple of 2^-42, whose products with exponents are exact, and the rest", 2, [&](int j) {
                    return j == 0 ? round_to_multiple(42, ln2) : (ln2 - Wide(round_to_multiple(42, ln2))).to_double();
                });
    write_array(Type::Single, "ln2_partsf", "ln2: a multiple of 2^-16, and the rest", 2, [&](int j) {
        return j == 0 ? round_to_multiple(16, ln2) : (ln2 - Wide(round_to_multiple(16, ln2))).to_float();
    });
    end_file();
    return 0;
}
