// Writes vmath/trig/trig_tables.inc: sines, cosines and tangents of base points, and the bits of 1/(2 pi), 1/pi and
// 2/pi that long argument reductions multiply by.
#include <cinttypes>

#include "table_writer.h"

using namespace nax::gen;

namespace {

// 2/pi has some 1150 bits that matter to the largest double.
constexpr mpfr_prec_t kLongPrecision = 2400;

class Long {
public:
    Long() { mpfr_init2(value, kLongPrecision); }
    ~Long() { mpfr_clear(value); }
    Long(const Long&) = delete;
    Long& operator=(const Long&) = delete;
    mpfr_t value;
};

// The argument pi numerator/denominator's sine, cosine or tangent.
using Function = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
Wide at_part_of_pi(Function function, int numerator, int denominator) {
    if (numerator == 0) return Wide(function == mpfr_cos ? 1.0 : 0.0);
    Long angle;
    mpfr_const_pi(angle.value, MPFR_RNDN);
    mpfr_mul_si(angle.value, angle.value, numerator, MPFR_RNDN);
    mpfr_div_si(angle.value, angle.value, denominator, MPFR_RNDN);
    Wide result;
    function(result.get(), angle.value, MPFR_RNDN);
    // Zeros and ones come out exact: pi itself has an error of 2^-2400 only.
    if (mpfr_get_exp(result.get()) < -200) return Wide(0.0);
    return result;
}

double low_part(const Wide& x) { return (x - Wide(x.to_double())).to_double(); }

void write_pair(const char* stem, const char* comment, int size, const std::function<Wide(int)>& entry) {
    char name[64];
    std::snprintf(name, sizeof name, "%s_high", stem);
    write_array(Type::Double, name, comment, size, [&](int j) { return entry(j).to_double(); });
    std::snprintf(name, sizeof name, "%s_low", stem);
    write_array(Type::Double, name, "the rest", size, [&](int j) { return low_part(entry(j)); });
}

// Sine and cosine of 2 pi j/size, each high and low.
void write_circle(const char* name, const char* comment, int size) {
    std::printf("\n// %s\ninline constexpr double %s[%d][4] = {", comment, name, size);
    for (int j = 0; j < size; ++j) {
        const Wide sine = at_part_of_pi(mpfr_sin, 2 * j, size), cosine = at_part_of_pi(mpfr_cos, 2 * j, size);
        std::printf("\n    {%a, %a, %a, %a},", sine.to_double(), low_part(sine), cosine.to_double(), low_part(cosine));
    }
    std::printf("\n};\n");
}

// Row e: the bits of 1/(2 pi) for a double M 2^(e - 1075) of biased exponent e, M an integer. Of the product, only bits
// between 2^-192 and 1/2 turn matter: floor(2^(e - 1075 + 192)/(2 pi)) mod 2^192, the highest word first.
void write_turns_by_exponent() {
    constexpr int rows = 2048, words = 3, fraction = 64 * words;
    std::printf("\n// floor(2^(e - 1075 + %d)/(2 pi)) mod 2^%d for biased exponent e, the highest word first\n",
                fraction, fraction);
    std::printf("inline constexpr unsigned long turns_by_exponent[%d][%d] = {", rows, words);
    Long inverse;
    mpfr_const_pi(inverse.value, MPFR_RNDN);
    mpfr_ui_div(inverse.value, 1, inverse.value, MPFR_RNDN);
    mpz_t integer;
    mpz_init(integer);
    for (int e = 0; e < rows; ++e) {
        Long scaled;
        mpfr_mul_2si(scaled.value, inverse.value, e - 1075 + fraction - 1, MPFR_RNDN);
        mpfr_get_z(integer, scaled.value, MPFR_RNDD);
        mpz_fdiv_r_2exp(integer, integer, fraction);
        uint64_t word[words] = {};
        mpz_export(word, nullptr, -1, sizeof word[0], 0, 0, integer);
        std::printf("\n    {0x%016" PRIx64 "u, 0x%016" PRIx64 "u, 0x%016" PRIx64 "u},", word[2], word[1], word[0]);
    }
    mpz_clear(integer);
    std::printf("\n};\n");
}

// Row e: 1/pi less what makes whole turns of a float M 2^(e - 150) of biased exponent e: 1/pi mod 2^(151 - e), as a sum
// of two doubles.
void write_half_turns_by_exponent() {
    constexpr int rows = 256;
    std::printf("\n// 1/pi mod 2^(151 - e) for the biased exponent e of a float, high and low\n");
    std::printf("inline constexpr double half_turns_by_exponent[%d][2] = {", rows);
    Long inverse, whole, rest;
    mpfr_const_pi(inverse.value, MPFR_RNDN);
    mpfr_ui_div(inverse.value, 1, inverse.value, MPFR_RNDN);
    for (int e = 0; e < rows; ++e) {
        mpfr_mul_2si(rest.value, inverse.value, e - 151, MPFR_RNDN);
        mpfr_rint_floor(whole.value, rest.value, MPFR_RNDN);
        mpfr_sub(rest.value, rest.value, whole.value, MPFR_RNDN);
        mpfr_mul_2si(rest.value, rest.value, 151 - e, MPFR_RNDN);
        const double high = mpfr_get_d(rest.value, MPFR_RNDN);
        mpfr_sub_d(rest.value, rest.value, high, MPFR_RNDN);
        std::printf("\n    {%a, %a},", high, mpfr_get_d(rest.value, MPFR_RNDN));
    }
    std::printf("\n};\n");
}

// Piece k: bits 25 k + 1 to 25 (k + 1) of 2/pi behind the binary point, at their place for a factor of 2^200.
void write_pieces() {
    constexpr int pieces = 50, bits = 25;
    std::printf("\n// 2/pi in pieces of %d bits, times 2^200\ninline constexpr double two_over_pi_pieces[%d] = {", bits,
                pieces);
    Long rest, piece;
    mpfr_const_pi(rest.value, MPFR_RNDN);
    mpfr_ui_div(rest.value, 2, rest.value, MPFR_RNDN);
    for (int k = 0; k < pieces; ++k) {
        mpfr_mul_2si(piece.value, rest.value, bits * (k + 1), MPFR_RNDN);
        mpfr_rint_floor(piece.value, piece.value, MPFR_RNDN);
        mpfr_mul_2si(piece.value, piece.value, -bits * (k + 1), MPFR_RNDN);
        mpfr_sub(rest.value, rest.value, piece.value, MPFR_RNDN);
        mpfr_mul_2si(piece.value, piece.value, 200, MPFR_RNDN);
        std::printf("%s%a,", k % 4 == 0 ? "\n    " : " ", mpfr_get_d(piece.value, MPFR_RNDN));
    }
    std::printf("\n};\n");
}

// A constant as a sum of `count` numbers of the type, each cut off and so positive: multiples of 0 keep the sign of a
// -0 that they are taken off.
void write_parts(Type type, const char* name, const char* comment, int count, const Long& constant) {
    Long rest;
    mpfr_set(rest.value, constant.value, MPFR_RNDN);
    write_array(type, name, comment, count, [&](int) {
        const double part = type == Type::Double ? mpfr_get_d(rest.value, MPFR_RNDZ)
                                                 : static_cast<double>(mpfr_get_flt(rest.value, MPFR_RNDZ));
        mpfr_sub_d(rest.value, rest.value, part, MPFR_RNDN);
        return part;
    });
}

// pi/16 in three parts, the second a multiple of 2^-83: its product with the number of steps has no more than 53 bits,
// so a remainder can be taken off again without error.
void write_sixteenth_parts() {
    Long rest, part;
    mpfr_const_pi(rest.value, MPFR_RNDN);
    mpfr_div_ui(rest.value, rest.value, 16, MPFR_RNDN);
    write_array(Type::Double, "sixteenth_parts", "pi/16, the second part a multiple of 2^-83", 3, [&](int k) {
        mpfr_set(part.value, rest.value, MPFR_RNDN);
        if (k == 1) {
            mpfr_mul_2si(part.value, part.value, 83, MPFR_RNDN);
            mpfr_rint_floor(part.value, part.value, MPFR_RNDN);
            mpfr_mul_2si(part.value, part.value, -83, MPFR_RNDN);
        }
        const double x = mpfr_get_d(part.value, MPFR_RNDZ);
        mpfr_sub_d(rest.value, rest.value, x, MPFR_RNDN);
        return x;
    });
}

}  // namespace

int main() {
    begin_file("tools/gen/trig_tables.cpp");
    Long pi, degree;
    mpfr_const_pi(pi.value, MPFR_RNDN);
    mpfr_div_ui(degree.value, pi.value, 180, MPFR_RNDN);
    write_parts(Type::Double, "pi_parts", "pi", 3, pi);
    write_sixteenth_parts();
    write_parts(Type::Single, "pi_partsf", "pi", 3, pi);
    write_parts(Type::Double, "degree_parts", "pi/180", 2, degree);
    write_pair("sine_16", "sin(j pi/16), high part", 16, [](int j) { return at_part_of_pi(mpfr_sin, j, 16); });
    write_pair("cosine_16", "cos(j pi/16), high part", 16, [](int j) { return at_part_of_pi(mpfr_cos, j, 16); });
    // From the next multiple of pi/2: where that is an odd one, the tangent is -1/tan.
    write_pair("tangent_8", "tan(k pi/16), k = j or j - 8 in [-4, 4), high part", 8,
               [](int j) { return at_part_of_pi(mpfr_tan, j < 4 ? j : j - 8, 16); });
    write_circle("circle_64", "sine and cosine of j pi/32, high and low each: scalar paths", 64);
    write_circle("circle_512", "sine and cosine of 2 pi j/512, high and low each: long reduction", 512);
    write_half_turns_by_exponent();
    write_pieces();
    write_turns_by_exponent();
    end_file();
    return 0;
}
