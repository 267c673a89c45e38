// The block forms of the linear generators against their definitions, for every length and every cut.
#include <gtest/gtest.h>

#include "tests/rng/linear_model.h"
#include "tests/rng/test_stream.h"

namespace nax::testing {
namespace {

constexpr int kLongest = 300;

// Expected outputs of `total` terms, words and reals on an interval whose middle is not 0.
template <class Model>
struct Expected {
    std::vector<uint32_t> words;
    std::vector<double> doubles;
    std::vector<float> singles;

    Expected(Model model, int total) {
        for (int i = 0; i < total; ++i) {
            for (const uint32_t word : model.words()) words.push_back(word);
            doubles.push_back(model.real(-0.75, 3.0));
            singles.push_back(model.real(-0.75f, 3.0f));
            model.step();
        }
    }
};

template <class T>
bool same_bits(const T* a, const T* b, int n) {
    return std::memcmp(a, b, static_cast<size_t>(n) * sizeof(T)) == 0;
}

// From every offset in a block, every length: two calls that meet at the offset give the definition's numbers.
template <class Model>
void check_all_cuts(int brng, const std::vector<uint32_t>& seeds, const Model& model, int offsets) {
    const Expected<Model> expected(model, offsets + kLongest);
    const TestStream start(brng, seeds);
    for (int offset = 0; offset < offsets; ++offset) {
        for (int n = 0; n <= kLongest; n += offset == 0 || offset == 5 ? 1 : 37) {
            SCOPED_TRACE(::testing::Message() << "offset " << offset << ", n " << n);
            const TestStream by_word = start.copy(), by_double = start.copy(), by_single = start.copy();
            draw_words(by_word, offset);
            const auto words = draw_words(by_word, n);
            ASSERT_TRUE(same_bits(words.data(), expected.words.data() + offset * Model::kWords, n * Model::kWords));
            draw_doubles(by_double, offset);
            const auto doubles = draw_doubles(by_double, n, -0.75, 3.0);
            ASSERT_TRUE(same_bits(doubles.data(), expected.doubles.data() + offset, n));
            draw_singles(by_single, offset);
            const auto singles = draw_singles(by_single, n, -0.75f, 3.0f);
            ASSERT_TRUE(same_bits(singles.data(), expected.singles.data() + offset, n));
        }
    }
}

TEST(LinearSequence, Mcg31) {
    Mcg31Model model;
    model.x = 987654321;
    check_all_cuts(NAX_BRNG_MCG31, {987654321}, model, 33);
}

TEST(LinearSequence, Mcg59) {
    Mcg59Model model;
    model.x = 0x123456789ABCDEFu;
    check_all_cuts(NAX_BRNG_MCG59, {0x89ABCDEF, 0x01234567}, model, 33);
}

TEST(LinearSequence, Mrg32k3a) {
    Mrg32k3aModel model;
    model.x = {4294967086, 1, 4294967086};
    model.y = {4294944442, 4294944442, 7};
    model.make();
    check_all_cuts(NAX_BRNG_MRG32K3A, {4294967086, 1, 4294967086, 4294944442, 4294944442, 7}, model, 17);
}

TEST(LinearSequence, R250) {
    R250Model model;
    for (uint32_t k = 0; k < 250; ++k) model.history.push_back((k + 1) * 2654435761u ^ (k << 7));
    const std::vector<uint32_t> seeds = model.history;
    model.step();
    check_all_cuts(NAX_BRNG_R250, seeds, model, 260);
}

TEST(LinearSequence, Wh) {
    for (const int row : {0, 100, 272}) {
        WhModel model(row);
        model.x = {5, 16700001, 77, 12345678};
        check_all_cuts(NAX_BRNG_WH + row, {5, 16700001, 77, 12345678}, model, row == 0 ? 17 : 3);
    }
}

// Long calls: many rounds of the main loops, ends that are not multiples of a block.
TEST(LinearSequence, LongCallsMatchShortOnes) {
    for (const Generator& generator : kLinear) {
        SCOPED_TRACE(generator.name);
        constexpr int kTotal = 10007, kPiece = 13;
        const TestStream bulk(generator.brng, {20240229, 5}), pieces(generator.brng, {20240229, 5});
        const auto all = draw_words(bulk, kTotal);
        std::vector<uint32_t> joined;
        for (int done = 0; done < kTotal; done += kPiece) append(joined, draw_words(pieces, std::min(kPiece, kTotal - done)));
        EXPECT_EQ(all, joined);
        const TestStream bulk_real(generator.brng, {20240229, 5}), piece_real(generator.brng, {20240229, 5});
        const auto all_real = draw_doubles(bulk_real, kTotal);
        std::vector<double> joined_real;
        for (int done = 0; done < kTotal; done += kPiece) append(joined_real, draw_doubles(piece_real, std::min(kPiece, kTotal - done)));
        EXPECT_EQ(all_real, joined_real);
        EXPECT_EQ(draw_words(bulk_real, 300), draw_words(piece_real, 300));
    }
}

// Reals after integers start where the last reals ended; integers after reals go on behind them.
TEST(LinearSequence, MultiplicativeGeneratorsKeepTwoPositions) {
    for (const int brng : {NAX_BRNG_MCG31, NAX_BRNG_MCG59}) {
        const TestStream reference(brng, {3}), stream(brng, {3}), words(brng, {3});
        const auto reals = draw_doubles(reference, 40);
        const auto raw = draw_words(words, 60);
        const size_t width = raw.size() / 60;
        draw_words(stream, 25);
        EXPECT_EQ(draw_doubles(stream, 40), reals);
        const auto behind = draw_words(stream, 20);
        EXPECT_EQ(behind, std::vector<uint32_t>(raw.begin() + static_cast<long>(40 * width), raw.end()));
    }
}

TEST(LinearSequence, NothingIsWrittenForNonPositiveCounts) {
    for (const Generator& generator : kLinear) {
        const TestStream stream(generator.brng, {9});
        const auto before = payload_bytes(stream);
        const nax_brng_properties row = properties(stream);
        for (const int n : {0, -1, -300}) {
            double r = 42.0;
            float s = 42.0f;
            EXPECT_EQ(row.dBRng(stream, n, &r, 0.0, 1.0), STO_STATUS_OK);
            EXPECT_EQ(row.sBRng(stream, n, &s, 0.0f, 1.0f), STO_STATUS_OK);
            EXPECT_EQ(row.iBRng(stream, n, &r), STO_STATUS_OK);
            EXPECT_EQ(r, 42.0);
            EXPECT_EQ(s, 42.0f);
        }
        EXPECT_EQ(payload_bytes(stream), before) << generator.name;
    }
}

}  // namespace
}  // namespace nax::testing
