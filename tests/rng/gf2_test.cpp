#include <algorithm>
#include <random>
#include <set>

#include "rng/generators/gf2_polynomial.h"
#include "rng/generators/mt2203.h"
#include "tests/rng/generator_fixture.h"
#include "tools/gen/mt2203_tempering.h"

using namespace nax::rng;

namespace {

// Polynomials over GF(2) by the book: one bit at a time.
struct Poly {
    std::vector<uint64_t> words;

    explicit Poly(int bits = 64) : words(static_cast<size_t>(bits) / 64 + 1) {}
    bool operator[](int i) const {
        return static_cast<size_t>(i) / 64 < words.size() && (words[static_cast<size_t>(i) / 64] >> i % 64 & 1) != 0;
    }
    void flip(int i) { words[static_cast<size_t>(i) / 64] ^= uint64_t{1} << i % 64; }
    int degree() const {
        for (int i = static_cast<int>(words.size()) * 64 - 1; i >= 0; --i) {
            if ((*this)[i]) return i;
        }
        return -1;
    }
    void add_shifted(const Poly& other, int shift) {
        const int top = other.degree();
        for (int w = 0; w <= top / 64; ++w) {
            const uint64_t word = other.words[static_cast<size_t>(w)];
            const size_t place = static_cast<size_t>(w + shift / 64);
            words[place] ^= word << shift % 64;
            if (shift % 64 != 0 && word >> (64 - shift % 64) != 0) words[place + 1] ^= word >> (64 - shift % 64);
        }
    }
};

Poly product(const Poly& a, const Poly& b) {
    const int top_a = a.degree(), top_b = b.degree();
    Poly r(top_a + top_b + 128);
    for (int i = 0; i <= top_a; ++i) {
        if (a[i]) r.add_shifted(b, i);
    }
    return r;
}

Poly remainder(Poly a, const Poly& p) {
    const int top = p.degree();
    for (int i = a.degree(); i >= top; --i) {
        if (a[i]) a.add_shifted(p, i - top);
    }
    return a;
}

Poly random_poly(std::mt19937_64& engine, int words) {
    Poly p(64 * words - 1);
    for (uint64_t& word : p.words) word = engine();
    return p;
}

TEST(Gf2, ProductsOfEveryLengthUpToTheTwisters) {
    std::mt19937_64 engine(1);
    for (const int words : {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18,
                            19, 20, 21, 22, 37, 38, 39, 40, 41, 42, 58, 77, 78, 79, 80, 156, 200}) {
        const Poly a = random_poly(engine, words), b = random_poly(engine, words);
        const Poly expected = product(a, b);
        const size_t size = static_cast<size_t>(2 * words);
        std::vector<uint64_t> scratch(poly_mul_scratch(static_cast<size_t>(words)));
        for (const auto multiply : {poly_mul_kar, poly_mul_tc3}) {
            std::vector<uint64_t> r(size + 1, 0xABCD);
            multiply(r.data(), a.words.data(), b.words.data(), words, scratch.data());
            ASSERT_TRUE(std::equal(r.begin(), r.begin() + 2 * words, expected.words.begin())) << words;
            ASSERT_EQ(r[size], 0xABCDu) << words;
        }
    }
}

TEST(Gf2, ProductsOfUnequalLengths) {
    std::mt19937_64 engine(2);
    for (const auto& [m, n] : std::vector<std::pair<int, int>>{{1, 7}, {5, 3}, {50, 120}, {81, 40}, {40, 81}, {1, 1}}) {
        const Poly a = random_poly(engine, m), b = random_poly(engine, n);
        const Poly expected = product(a, b);
        const size_t shorter = static_cast<size_t>(std::min(m, n));
        std::vector<uint64_t> scratch(poly_mul_scratch(shorter) + 3 * shorter);
        std::vector<uint64_t> r(static_cast<size_t>(m + n));
        poly_mul(r.data(), 64 * m - 1, a.words.data(), 64 * n - 1, b.words.data(), scratch.data());
        EXPECT_TRUE(std::equal(r.begin(), r.end(), expected.words.begin())) << m << " " << n;
    }
}

// Against division by the book, for degrees on both sides of word and half-word boundaries.
TEST(Gf2, BarrettRemainders) {
    std::mt19937_64 engine(3);
    for (const int degree : {1, 2, 31, 63, 64, 65, 127, 128, 129, 191, 192, 300, 2203, 5000}) {
        const int words = poly_mod_words(degree);
        const size_t size = static_cast<size_t>(words);
        Poly p(degree + 1);
        for (int i = 0; i < degree; ++i) {
            if (i == 0 || engine() % 2 != 0) p.flip(i);
        }
        p.flip(degree);
        std::vector<uint64_t> dense(size), inverse(size), scratch(poly_mod_scratch(size));
        std::copy_n(p.words.begin(), std::min(p.words.size(), size), dense.begin());
        poly_inverse(inverse.data(), degree, dense.data(), words, scratch.data());
        for (int round = 0; round < 20; ++round) {
            Poly value(128 * words - 1);
            for (int i = 0; i < 2 * degree; ++i) {
                if (engine() % 2 != 0) value.flip(i);
            }
            const Poly expected = remainder(value, p);
            poly_mod_p(value.words.data(), degree, inverse.data(), dense.data(), words, scratch.data());
            ASSERT_EQ(value.words, expected.words) << degree;
        }
    }
}

TEST(Gf2, FoldingByPolynomialsOfFewTerms) {
    std::mt19937_64 engine(5);
    for (const int degree : {512, 575, 576, 1000, 1024, 5003, 19937}) {
        for (const int terms : {2, 3, 17, kFoldTerms}) {
            std::set<int32_t> exponents = {0, degree};
            const int highest = degree - 64 * kFoldBlock;
            if (terms > 2) exponents.insert(highest);
            while (static_cast<int>(exponents.size()) < std::min(terms, highest / 2)) {
                exponents.insert(static_cast<int32_t>(engine() % static_cast<uint64_t>(highest + 1)));
            }
            const std::vector<int32_t> table(exponents.begin(), exponents.end());
            const int count = static_cast<int>(table.size());
            ASSERT_TRUE(poly_folds(degree, count, table.data()));
            Poly p(degree + 1);
            for (const int32_t exponent : table) p.flip(exponent);
            const int words = (2 * degree / 64 / kFoldBlock + 1) * kFoldBlock;
            Poly value(64 * words - 1);
            value.words.resize(static_cast<size_t>(words));
            for (int i = 0; i < 64 * words - 1; ++i) {
                if (engine() % 2 != 0) value.flip(i);
            }
            const Poly expected = remainder(value, p);
            std::vector<uint64_t> scratch(static_cast<size_t>(words + kFoldPadding), ~uint64_t{0});
            poly_fold(value.words.data(), words, degree, count, table.data(), scratch.data());
            ASSERT_EQ(value.words, expected.words) << degree << ' ' << count;
        }
    }
    const std::vector<int32_t> near = {0, 489, 1000}, twice = {0, 3, 3, 1000}, lower = {0, 3, 999};
    EXPECT_FALSE(poly_folds(1000, 3, near.data()));
    EXPECT_FALSE(poly_folds(1000, 4, twice.data()));
    EXPECT_FALSE(poly_folds(1000, 3, lower.data()));
}

TEST(Gf2, PowersOfX) {
    const std::vector<int32_t> table = {0, 3, 31};  // a primitive trinomial: x has order 2^31 - 1
    std::vector<uint64_t> out(2);
    ASSERT_EQ(__stoPolyRem(30, 31, 3, table.data(), 2, out.data()), 0);
    EXPECT_EQ(out, (std::vector<uint64_t>{uint64_t{1} << 30, 0}));
    ASSERT_EQ(__stoPolyRem(31, 31, 3, table.data(), 2, out.data()), 0);
    EXPECT_EQ(out, (std::vector<uint64_t>{9, 0}));
    ASSERT_EQ(__stoPolyRem(0x7FFFFFFF, 31, 3, table.data(), 2, out.data()), 0);
    EXPECT_EQ(out, (std::vector<uint64_t>{1, 0}));
    ASSERT_EQ(__stoPolyRem(uint64_t{0x7FFFFFFF} * 0xFFFFFFFF + 2, 31, 3, table.data(), 2, out.data()), 0);
    EXPECT_EQ(out, (std::vector<uint64_t>{4, 0}));
}

// A shift register of degree 31 in the payload of an MT19937-sized block: the skips know nothing of a generator.
struct Register {
    static uint64_t& value(nax_stream* s) { return payload<uint64_t>(s); }
    static void zero(nax_stream* s) { value(s) = 0; }
    static void add(nax_stream* to, const nax_stream* from) { value(to) ^= payload<uint64_t>(from); }
    static void copy(nax_stream* to, const nax_stream* from) { value(to) = payload<uint64_t>(from); }
    static void update(nax_stream* s) {
        value(s) <<= 1;
        if ((value(s) >> 31 & 1) != 0) value(s) ^= uint64_t{1} << 31 | 9;
    }
    static void finish(nax_stream* to, nax_stream* work, int extra) { value(to) = value(work) + static_cast<uint64_t>(extra) * 0; }
    static int process(nax_stream*, uint64_t*, int*) { return 1; }
};

TEST(Gf2, BothSkipsOnAnyLinearState) {
    const std::vector<int32_t> table = {0, 3, 31};
    alignas(128) unsigned char block[2520] = {};
    nax_stream* const stream = reinterpret_cast<nax_stream*>(block);
    for (const uint64_t n : {1ull, 2ull, 7ull, 8ull, 31ull, 1000ull, 123456ull}) {
        Register::value(stream) = 12345;
        for (uint64_t i = 0; i < n; ++i) Register::update(stream);
        const uint64_t expected = Register::value(stream);
        const nax_skip_parameters params = {Register::process, n, 8, 31, 2520, 3, table.data()};
        for (const auto skip : {__sto_SkipAheadHorner, __sto_SkipAheadSWin}) {
            Register::value(stream) = 12345;
            ASSERT_EQ(skip(stream, Register::zero, Register::add, Register::copy, Register::update, Register::finish,
                           &params), 0);
            EXPECT_EQ(Register::value(stream), expected) << n;
        }
    }
}

Poly power_of(const Poly& base, int exponent) {
    Poly r;
    r.flip(0);
    for (int i = 0; i < exponent; ++i) r = product(r, base);
    return r;
}

// The characteristic polynomial of an MT2203 step, X = t^69 + t^34, Y = t^68 + t^33, a_i = bit i of MatrixA:
//   X^27 Y^5 + sum(i < 5) a_i X^27 Y^(4-i) + sum(i >= 5) a_i X^(31-i).
Poly mt2203_polynomial(uint32_t matrix_a) {
    Poly x(69), y(68);
    x.flip(69), x.flip(34), y.flip(68), y.flip(33);
    const Poly x27 = power_of(x, 27);
    Poly p(2400);
    p.add_shifted(product(x27, power_of(y, 5)), 0);
    for (int i = 0; i < 32; ++i) {
        if ((matrix_a >> i & 1) == 0) continue;
        p.add_shifted(i < 5 ? product(x27, power_of(y, 4 - i)) : power_of(x, 31 - i), 0);
    }
    return p;
}

// t^(2^2203) = t mod p: with 2203 prime and p without the factors t and t + 1, p is irreducible, and since 2^2203 - 1 is
// prime, primitive.
bool is_primitive_of_degree_2203(const Poly& p) {
    constexpr int kDegree = 2203;
    const int words = poly_mod_words(kDegree);
    const size_t size = static_cast<size_t>(words);
    std::vector<uint64_t> dense(p.words.begin(), p.words.begin() + words), inverse(size), power(2 * size), square(2 * size);
    std::vector<uint64_t> scratch(poly_mod_scratch(size));
    if (p.degree() != kDegree || !p[0]) return false;
    poly_inverse(inverse.data(), kDegree, dense.data(), words, scratch.data());
    power[0] = 2;
    for (int i = 0; i < kDegree; ++i) {
        poly_square(square.data(), power.data(), words);
        poly_mod_p(square.data(), kDegree, inverse.data(), dense.data(), words, scratch.data());
        power.swap(square);
    }
    const uint64_t head = std::exchange(power[0], 0);
    return head == 2 && std::all_of(power.begin(), power.end(), [](uint64_t word) { return word == 0; });
}

TEST(Mt2203Table, RowsAreDistinctAndOfTheRightForm) {
    std::set<uint32_t> seen;
    for (const auto& row : _sto_mt2203_table) {
        EXPECT_TRUE(seen.insert(row[0]).second);
        EXPECT_EQ(row[0] >> 31, 1u);
    }
    EXPECT_EQ(seen.size(), 6024u);
}

TEST(Mt2203Table, SampledRowsArePrimitive) {
    for (const int offset : {0, 1, 2, 3, 1249, 3000, 5999, 6022, 6023}) {
        EXPECT_TRUE(is_primitive_of_degree_2203(mt2203_polynomial(_sto_mt2203_table[offset][0]))) << offset;
    }
    EXPECT_FALSE(is_primitive_of_degree_2203(mt2203_polynomial(_sto_mt2203_table[0][0] ^ 4)));
}

// k(v) by lattice reduction against Gaussian elimination on the outputs of the unit states, for resolutions at which that is
// quick, and the bounds that the rows were chosen by.
int dimension_by_elimination(int v, const uint32_t* row) {
    std::vector<std::vector<uint64_t>> columns;  // of each state bit, the v upper bits of successive outputs
    const int outputs = 2203 / v + 1;
    for (int bit = 0; bit < 2203; ++bit) {
        nax::test::TestStream stream(NAX_BRNG_MT2203);
        Mt2203State& state = stream.state<Mt2203State>();
        state = {};
        const int position = bit + 5;  // the lower five bits of the oldest word have no part
        state.x[position / 32] = 1u << (position % 32);
        state.next = kMt2203Words;
        state.matrix_a = row[0], state.temper_b = row[1], state.temper_c = row[2];
        const nax::test::Words words = stream.words(outputs);
        std::vector<uint64_t> column((static_cast<size_t>(outputs * v) + 63) / 64);
        for (int i = 0; i < outputs * v; ++i) {
            const uint64_t value = words[static_cast<size_t>(i / v)] >> (31 - i % v) & 1;
            column[static_cast<size_t>(i) / 64] |= value << i % 64;
        }
        columns.push_back(column);
    }
    // All values are taken as long as every output bit adds to the rank.
    size_t used = 0;
    for (int i = 0; i < outputs * v; ++i) {
        const auto has_bit = [i](const std::vector<uint64_t>& c) { return (c[static_cast<size_t>(i) / 64] >> i % 64 & 1) != 0; };
        const auto pivot = std::find_if(columns.begin() + static_cast<long>(used), columns.end(), has_bit);
        if (pivot == columns.end()) return i / v;
        std::swap(columns[used], *pivot);
        for (size_t j = used + 1; j < columns.size(); ++j) {
            if (!has_bit(columns[j])) continue;
            for (size_t w = static_cast<size_t>(i) / 64; w < columns[j].size(); ++w) columns[j][w] ^= columns[used][w];
        }
        ++used;
    }
    return outputs;
}

TEST(Mt2203Table, SampledRowsAreWellTempered) {
    const auto& first = _sto_mt2203_table[0];
    for (const int v : {3, 17, 32}) {
        EXPECT_EQ(nax::gen::Lattice(first[0], first[1], first[2], v).shortest(), dimension_by_elimination(v, first)) << v;
    }
    for (const int offset : {0, 1, 2, 500, 2500, 4321, 6022, 6023}) {
        const auto& row = _sto_mt2203_table[offset];
        nax::gen::Tempering t{row[1], row[2]};
        for (int v = 1; v <= 32; ++v) t = nax::gen::extended(row[0], t, v);
        EXPECT_LE(t.defect, 772) << offset;
        EXPECT_LE(t.largest_term, 68) << offset;
    }
}

TEST(Mt2203Table, AllRowsArePrimitiveFull) {
    for (int offset = 0; offset < 6024; ++offset) {
        ASSERT_TRUE(is_primitive_of_degree_2203(mt2203_polynomial(_sto_mt2203_table[offset][0]))) << offset;
    }
}

// The polynomial is that of the sequence which the generator delivers.
TEST(Mt2203Table, PolynomialAnnihilatesTheOutput) {
    nax::test::TestStream stream(NAX_BRNG_MT2203 + 77, {3});
    const nax::test::Words words = stream.words(2203 + 200);
    const Poly p = mt2203_polynomial(_sto_mt2203_table[77][0]);
    for (int n = 0; n < 200; ++n) {
        uint32_t sum = 0;
        for (int i = 0; i <= 2203; ++i) {
            if (p[i]) sum ^= words[static_cast<size_t>(n + i)];
        }
        ASSERT_EQ(sum, 0u) << n;
    }
}

}  // namespace
