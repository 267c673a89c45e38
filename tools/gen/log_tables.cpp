// Writes vmath/log/log_tables.inc: logarithms of the rounded reciprocals c of the mantissa.
// Entry j of a table of 2^b entries belongs to the c whose first b mantissa bits are j, c = (1 + j/2^b)/2 in [1/2, 1).
// For c below 3/4 the kernel adds 1 to the exponent, so the entry is log(1/(2c)) there: near 1 nothing cancels, and
// c = 1 and c = 1/2 share entry 0, which is 0.
#include "table_writer.h"

using namespace nax::gen;

namespace {

enum class Base { E, Two, Ten };

Wide log_base(Base base, const Wide& x) {
    if (base == Base::E) return log(x);
    return log(x) / log(Wide(base == Base::Two ? 2.0 : 10.0));
}

Wide entry(Base base, int j, int size) {
    const double c = 0.5 * (1.0 + static_cast<double>(j) / size);
    return Wide(0.0) - log_base(base, Wide(c < 0.75 ? 2.0 * c : c));
}

// High part: a multiple of 2^-grid, so that its sum with the exponent's term is exact.
void write_pair(Type type, Base base, const char* stem, int size, int grid) {
    char name[64], comment[96];
    std::snprintf(name, sizeof name, "%s_high", stem);
    std::snprintf(comment, sizeof comment, "high part, a multiple of 2^-%d", grid);
    write_array(type, name, comment, size, [=](int j) { return round_to_multiple(grid, entry(base, j, size)); });
    std::snprintf(name, sizeof name, "%s_low", stem);
    write_array(type, name, "the rest", size, [=](int j) {
        const Wide x = entry(base, j, size);
        return round_to(type, x - Wide(round_to_multiple(grid, x)));
    });
}

void write_single(Type type, Base base, const char* name, int size) {
    write_array(type, name, "rounded to nearest", size, [=](int j) { return round_to(type, entry(base, j, size)); });
}

// Scalar path: z in [1, 2) belongs to row j = round(64 (z - 1)), which holds a reciprocal of 1 + j/64 of 14 bits (its
// product with a 31-bit high part of z is exact) and minus its logarithm.
double row_reciprocal(int j) { return round_to_multiple(14, Wide(64.0) / Wide(64.0 + j)); }

void write_scalar_rows() {
    constexpr int rows = 65;
    write_array(Type::Double, "log_rows_reciprocal", "about 64/(64 + j), a multiple of 2^-14: scalar path", rows,
                row_reciprocal);
    write_array(Type::Double, "log_rows_high", "-ln of the reciprocal, a multiple of 2^-42", rows,
                [](int j) { return round_to_multiple(42, Wide(0.0) - log(Wide(row_reciprocal(j)))); });
    write_array(Type::Double, "log_rows_low", "the rest", rows, [](int j) {
        const Wide x = Wide(0.0) - log(Wide(row_reciprocal(j)));
        return (x - Wide(round_to_multiple(42, x))).to_double();
    });
}

}  // namespace

int main() {
    begin_file("tools/gen/log_tables.cpp");
    // Multiples of 2^-42 stay exact under sums up to 2^11 in double, those of 2^-16 under sums up to 2^8 in float.
    write_pair(Type::Double, Base::E, "ln_16", 16, 42);
    write_pair(Type::Double, Base::Two, "log2_16", 16, 42);
    write_pair(Type::Double, Base::Ten, "log10_16", 16, 42);
    write_single(Type::Double, Base::E, "ln_16", 16);
    write_single(Type::Double, Base::Two, "log2_16", 16);
    write_single(Type::Double, Base::Ten, "log10_16", 16);
    write_pair(Type::Single, Base::E, "ln_32f", 32, 16);
    write_pair(Type::Single, Base::Two, "log2_32f", 32, 16);
    write_pair(Type::Single, Base::Ten, "log10_32f", 32, 18);
    write_single(Type::Single, Base::E, "ln_16f", 16);
    write_single(Type::Single, Base::Two, "log2_16f", 16);
    write_single(Type::Single, Base::Ten, "log10_16f", 16);
    write_scalar_rows();
    end_file();
    return 0;
}
