// Writes vmath/exp/exp_tables.inc: the powers 2^(j/N) by which the exponentials rebuild their result.
// A low part is relative, (2^(j/N) - T)/T, where the kernel computes T + T (t + p), and absolute where it computes
// T + (t + T p).
#include "table_writer.h"

using namespace nax::gen;

namespace {

Wide power(int j, int size) { return exp2(Wide(j) / Wide(size)); }

double high(Type type, int j, int size) { return round_to(type, power(j, size)); }

double low_absolute(Type type, int j, int size) { return round_to(type, power(j, size) - Wide(high(type, j, size))); }

double low_relative(Type type, int j, int size) {
    const Wide t(high(type, j, size));
    return round_to(type, (power(j, size) - t) / t);
}

void write_high(Type type, const char* name, int entries, int size, const char* comment) {
    write_array(type, name, comment, entries, [=](int j) { return high(type, j, size); });
}

void write_low(Type type, const char* name, int size, bool relative, const char* comment) {
    write_array(type, name, comment, size,
                [=](int j) { return relative ? low_relative(type, j, size) : low_absolute(type, j, size); });
}

}  // namespace

int main() {
    begin_file("tools/gen/exp_tables.cpp");
    write_high(Type::Double, "exp2_16", 16, 16, "2^(j/16), rounded to nearest");
    write_low(Type::Double, "exp2_16_relative_low", 16, true, "(2^(j/16) - T)/T, T the entry above");
    write_low(Type::Double, "exp2_16_absolute_low", 16, false, "2^(j/16) - T");
    write_high(Type::Double, "exp2_64", 64, 64, "2^(j/64), rounded to nearest: scalar path");
    write_low(Type::Double, "exp2_64_absolute_low", 64, false, "2^(j/64) - T");
    write_high(Type::Single, "exp2_16f", 16, 16, "2^(j/16), rounded to nearest");
    write_low(Type::Single, "exp2_16f_relative_low", 16, true, "(2^(j/16) - T)/T");
    write_high(Type::Single, "exp2_32f", 32, 32, "2^(j/32), rounded to nearest");
    write_low(Type::Single, "exp2_32f_relative_low", 32, true, "(2^(j/32) - T)/T");
    write_high(Type::Single, "exp2_1024f", 32, 1024, "2^(j/1024), first 32");
    write_high(Type::Single, "exp2_16384f", 16, 16384, "2^(j/16384), first 16");
    end_file();
    return 0;
}
