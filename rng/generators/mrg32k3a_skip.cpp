// Powers of 3 by 3 matrices modulo 32-bit primes, and the tables that follow from MRG32K3A's recurrence.
#include "rng/generators/modular_power.h"
#include "rng/generators/mrg32k3a.h"
#include "service/block.h"

using namespace nax;
using namespace nax::rng;

namespace nax::rng {

struct Matrix {
    uint32_t entry[9];       // row by row
};
struct SkipTable {
    Matrix matrices[2 * kMrgMatrices];
};

}  // namespace nax::rng

namespace {

constexpr Matrix kIdentity = {{1, 0, 0, 0, 1, 0, 0, 0, 1}};

constexpr Matrix product(const Matrix& a, const Matrix& b, uint32_t m) {
    Matrix result{};
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            uint64_t sum = 0;
            for (int k = 0; k < 3; ++k) sum += multiply_mod(a.entry[3 * i + k], b.entry[3 * k + j], m);
            result.entry[3 * i + j] = static_cast<uint32_t>(sum % m);
        }
    }
    return result;
}

constexpr void apply(const Matrix& a, uint32_t x[3], uint32_t m) {
    uint64_t sum[3] = {};
    for (int i = 0; i < 3; ++i) {
        for (int k = 0; k < 3; ++k) sum[i] += multiply_mod(a.entry[3 * i + k], x[k], m);
    }
    for (int i = 0; i < 3; ++i) x[i] = static_cast<uint32_t>(sum[i] % m);
}

// Acts on (oldest, middle, newest); the row is that of the recurrence, the newest term's coefficient first.
constexpr Matrix companion(const uint32_t row[3]) { return {{0, 1, 0, 0, 0, 1, row[2], row[1], row[0]}}; }

// x := A^n x for the count whose bits stand in `bits`, lowest first.
void apply_power(uint32_t x[3], const uint32_t row[3], uint32_t m, const uint8_t* bits, long count) {
    Matrix power = kIdentity;
    Matrix square = companion(row);
    for (long i = 0; i < count; ++i) {
        if (bits[i] != 0) power = product(power, square, m);
        square = product(square, square, m);
    }
    apply(power, x, m);
}

// Spreads words to bits; returns how many there are up to the highest set one.
long spread_bits(int words, const uint64_t* n, uint8_t* bits) {
    long used = 0;
    for (int w = 0; w < words; ++w) {
        for (int b = 0; b < 64; ++b) {
            const uint8_t bit = n[w] >> b & 1;
            bits[64L * w + b] = bit;
            if (bit != 0) used = 64L * w + b + 1;
        }
    }
    return used;
}

// Applies the tabulated powers of the set bits, the highest first: the same vector as by their product, with a third of the
// multiplications.
template <uint32_t m>
void tabulated_power(uint32_t x[3], int words, const uint64_t* n, const uint32_t* table) {
    const Matrix* const powers = reinterpret_cast<const Matrix*>(table);
    for (int w = words - 1; w >= 0; --w) {
        for (uint64_t bits = n[w]; bits != 0;) {
            const int b = 63 - __builtin_clzll(bits);
            apply(powers[64 * w + b], x, m);
            bits ^= uint64_t{1} << b;
        }
    }
}

constexpr SkipTable skip_table() {
    SkipTable table{};
    const MrgComponent components[2] = {kMrgX, kMrgY};
    for (int c = 0; c < 2; ++c) {
        const uint32_t row[3] = {components[c].row(0), components[c].row(1), components[c].row(2)};
        Matrix power = companion(row);
        for (int k = 0; k < kMrgMatrices; ++k) {
            table.matrices[c * kMrgMatrices + k] = power;
            power = product(power, power, components[c].modulus);
        }
    }
    return table;
}

constexpr void fill(uint64_t (&vector)[8], uint64_t value) {
    for (uint64_t& lane : vector) lane = value;
}

// v(n+19) = A^19 applied to (v(n), v(n+1), v(n+2)), first row. Coefficients above half the modulus are taken negative
// where the signs of the jump formula say so.
constexpr Mrg32k3aVectors jump_vectors() {
    Mrg32k3aVectors vectors{};
    fill(vectors.x_high, 0x1450198D);
    fill(vectors.x_mid, 0x66C6B6F6);
    fill(vectors.x_low, 0x03D06D27);
    fill(vectors.x_offset, uint64_t{0x03D06D27} * kMrgX.modulus);
    fill(vectors.y_high, 0x38D15DDD);
    fill(vectors.y_mid, 0x2FC56AA1);
    fill(vectors.y_low, 0x6DDC5401);
    fill(vectors.y_offset, uint64_t{0x2FC56AA1 + 0x6DDC5401u} * kMrgY.modulus);
    return vectors;
}

// The constants are the first row of A^19.
constexpr bool jump_is_power_19() {
    const MrgComponent components[2] = {kMrgX, kMrgY};
    const Mrg32k3aVectors v = jump_vectors();
    const uint32_t stated[2][3] = {
        {static_cast<uint32_t>(kMrgX.modulus - v.x_low[0]), static_cast<uint32_t>(v.x_mid[0]), static_cast<uint32_t>(v.x_high[0])},
        {static_cast<uint32_t>(kMrgY.modulus - v.y_low[0]), static_cast<uint32_t>(kMrgY.modulus - v.y_mid[0]), static_cast<uint32_t>(v.y_high[0])}};
    for (int c = 0; c < 2; ++c) {
        const uint32_t row[3] = {components[c].row(0), components[c].row(1), components[c].row(2)};
        Matrix power = kIdentity;
        for (int i = 0; i < 19; ++i) power = product(power, companion(row), components[c].modulus);
        for (int k = 0; k < 3; ++k) {
            if (power.entry[k] != stated[c][k]) return false;
        }
    }
    return true;
}
static_assert(jump_is_power_19());

}  // namespace

namespace nax::rng {
// The object behind _sto_mrg32k3a_skipahead_table.
extern const SkipTable mrg32k3a_skip_table __asm__("_sto_mrg32k3a_skipahead_table");
constinit const SkipTable mrg32k3a_skip_table = skip_table();
}

extern "C" {

constinit const Mrg32k3aVectors _sto_imrg32k3a_data = jump_vectors();
constinit const Mrg32k3aVectors _sto_dmrg32k3a_data = jump_vectors();
constinit const Mrg32k3aVectors _sto_smrg32k3a_data = jump_vectors();

void __stoiVect3PowMod(uint32_t x[3], const uint32_t row[3], uint32_t m, uint64_t n) {
    uint8_t bits[64];
    apply_power(x, row, m, bits, spread_bits(1, &n, bits));
}

int __stoiVect3PowArrayMod(uint32_t x[3], const uint32_t row[3], uint32_t m, int words, const uint64_t* n) {
    constexpr int kWordsOnStack = 10;
    uint8_t on_stack[64 * kWordsOnStack] = {};
    uint8_t* bits = on_stack;
    service::Block<uint8_t> block;
    if (words > kWordsOnStack) {
        if (!block.allocate(64 * static_cast<std::size_t>(words))) return STO_STATUS_NO_MEMORY;
        bits = block.get();
    }
    apply_power(x, row, m, bits, spread_bits(words, n, bits));
    return STO_STATUS_OK;
}

int __stoiVect3PowArrayMod_M1(uint32_t x[3], int words, const uint64_t* n, const uint32_t* table) {
    tabulated_power<kMrgX.modulus>(x, words, n, table);
    return STO_STATUS_OK;
}

int __stoiVect3PowArrayMod_M2(uint32_t x[3], int words, const uint64_t* n, const uint32_t* table) {
    tabulated_power<kMrgY.modulus>(x, words, n, table);
    return STO_STATUS_OK;
}

}  // extern "C"
