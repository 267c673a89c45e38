#ifdef NAX_HAVE_GSL
#include <gsl/gsl_qrng.h>
#endif

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstring>
#include <memory>
#include <thread>

#include "nax/threaders.h"
#include "rng/quasi/quasi_state.h"
#include "tests/lib/failing_service.h"
#include "tests/rng/generator_fixture.h"

using namespace nax::rng;
using nax::test::Words;

namespace {

// A stream with its chunks.
class Quasi {
public:
    explicit Quasi(int brng, const Words& params = {}) {
        status = __stoNewStreamEx(&stream, brng, static_cast<int>(params.size()), params.data());
        __stoGetBrngProperties(brng, &row);
    }
    Quasi(const Quasi& other) : row(other.row) { status = __stoCopyStream(&stream, other.stream); }
    Quasi& operator=(const Quasi&) = delete;
    ~Quasi() {
        if (stream != nullptr) __stoDeleteStream(&stream);
    }
    Words words(int n) {
        Words r(static_cast<size_t>(n));
        status = row.iBRng(stream, n, r.data());
        return r;
    }
    std::vector<double> doubles(int n, double a = 0, double b = 1) {
        std::vector<double> r(static_cast<size_t>(n));
        status = row.dBRng(stream, n, r.data(), a, b);
        return r;
    }
    std::vector<float> singles(int n, float a = 0, float b = 1) {
        std::vector<float> r(static_cast<size_t>(n));
        status = row.sBRng(stream, n, r.data(), a, b);
        return r;
    }
    int skip(uint64_t n) { return status = __stoSkipAheadStream(stream, n); }
    int select(int k, int n = kSelectOneCoordinate) { return status = __stoLeapfrogStream(stream, k, n); }
    QuasiPlace& place() { return payload<QuasiPlace>(stream); }

    nax_stream* stream = nullptr;
    nax_brng_properties row{};
    int status = 0;
};

// Coordinates of points 1, 2, ... straight from direction numbers: the exclusive or at the bits of the Gray code.
Words points_of(const std::vector<std::array<uint32_t, 32>>& directions, int n) {
    Words r;
    for (uint32_t c = 1; static_cast<int>(r.size()) < n; ++c) {
        for (const auto& v : directions) {
            uint32_t x = 0;
            for (int bit = 0; bit < 32; ++bit) x ^= ((c ^ c >> 1) >> bit & 1) != 0 ? v[static_cast<size_t>(bit)] : 0;
            r.push_back(x);
        }
    }
    r.resize(static_cast<size_t>(n));
    return r;
}

// Directions that no sequence has: any numbers do for a test of the delivery.
std::vector<std::array<uint32_t, 32>> some_directions(int dimension) {
    std::vector<std::array<uint32_t, 32>> rows(static_cast<size_t>(dimension));
    uint32_t x = 12345;
    for (auto& row : rows) {
        for (uint32_t& word : row) word = x = x * 1664525u + 1013904223u;
    }
    return rows;
}

Words direction_parameters(const std::vector<std::array<uint32_t, 32>>& rows) {
    Words params = {static_cast<uint32_t>(rows.size()), 1, 4};
    for (const auto& row : rows) params.insert(params.end(), row.begin(), row.end());
    return params;
}

const std::vector<int> kBoth = {NAX_BRNG_SOBOL, NAX_BRNG_NIEDERREITER};

#ifdef NAX_HAVE_GSL
// The first 20,000 coordinates of every dimension that the GNU Scientific Library has; it delivers x / 2^30.
// Its Niederreiter sequence has the zero point.
void expect_gsl_points(int brng, const gsl_qrng_type* type, int dimensions, int common_bits, int unused_points) {
    for (int dimension = 1; dimension <= dimensions; ++dimension) {
        Quasi stream(brng, {static_cast<uint32_t>(dimension)});
        const int points = 20000 / dimension;
        const std::unique_ptr<gsl_qrng, void (*)(gsl_qrng*)> peer(
            gsl_qrng_alloc(type, static_cast<unsigned>(dimension)), gsl_qrng_free);
        const Words words = stream.words(points * dimension);
        std::vector<double> point(static_cast<size_t>(dimension));
        size_t i = 0;
        for (int p = 0; p < unused_points; ++p) gsl_qrng_get(peer.get(), point.data());
        for (int p = 0; p < points; ++p) {
            gsl_qrng_get(peer.get(), point.data());
            for (const double x : point) {
                const uint32_t theirs = static_cast<uint32_t>(std::ldexp(x, common_bits));
                ASSERT_EQ(words[i++] >> (32 - common_bits), theirs) << dimension << " " << p;
            }
        }
    }
}

TEST(Sobol, AgreesWithGsl) { expect_gsl_points(NAX_BRNG_SOBOL, gsl_qrng_sobol, 40, 30, 0); }
TEST(Niederreiter, AgreesWithGsl) { expect_gsl_points(NAX_BRNG_NIEDERREITER, gsl_qrng_niederreiter_2, 12, 30, 1); }
#endif

TEST(Sobol, FirstPointIsTheMiddle) {
    Quasi one(NAX_BRNG_SOBOL);
    EXPECT_EQ(one.doubles(3), (std::vector<double>{0.5, 0.75, 0.25}));
    for (const double x : Quasi(NAX_BRNG_SOBOL, {40}).doubles(40)) EXPECT_EQ(x, 0.5);
}

// A dimension whose polynomial has degree e is a (t, 1)-sequence, t = e - 1 for Niederreiter's and 0 for Sobol's
// construction: of its first 2^k points (the zero point counted) every dyadic interval of length 2^(t-k) has 2^t.
TEST(Quasi, EachDimensionIsEquidistributed) {
    constexpr int kBits = 12;
    constexpr int kPoints = (1 << kBits) - 1;
    const std::vector<std::pair<int, uint32_t>> sequences = {{NAX_BRNG_SOBOL, 40}, {NAX_BRNG_NIEDERREITER, 318}};
    for (const auto& [brng, dimension] : sequences) {
        const Words words = Quasi(brng, {dimension}).words(static_cast<int>(dimension) * kPoints);
        for (uint32_t d = 0; d < dimension; ++d) {
            const int t = brng == NAX_BRNG_SOBOL ? 0 : iNiederrIrredPolyDeg[d] - 1;
            std::vector<int> hits(size_t{1} << (kBits - t));
            hits[0] = 1;
            for (uint32_t p = 0; p < kPoints; ++p) ++hits[words[p * dimension + d] >> (32 - kBits + t)];
            ASSERT_EQ(std::count(hits.begin(), hits.end(), 1 << t), static_cast<long>(hits.size())) << brng << " " << d;
        }
    }
}

TEST(Quasi, TablesAreIrreducible) {
    const auto remainder = [](uint64_t a, uint64_t p) {
        while (a >> (std::bit_width(p) - 1) != 0) a ^= p << (std::bit_width(a) - std::bit_width(p));
        return a;
    };
    const auto irreducible = [&](uint32_t p) {
        for (uint32_t f = 2; std::bit_width(f) * 2 <= std::bit_width(p) + 1; ++f) {
            if (f != p && remainder(p, f) == 0) return false;
        }
        return true;
    };
    for (size_t i = 0; i < 320; ++i) {
        EXPECT_TRUE(irreducible(uNiederrIrredPoly[i])) << i;
        EXPECT_EQ(static_cast<int>(std::bit_width(uNiederrIrredPoly[i])) - 1, iNiederrIrredPolyDeg[i]);
        if (i > 0) {
            EXPECT_LT(uNiederrIrredPoly[i - 1], uNiederrIrredPoly[i]);
        }
    }
    for (size_t i = 0; i < 40; ++i) {
        const int degree = iSobolIrredPolyDeg[i];
        EXPECT_EQ(static_cast<int>(std::bit_width(uSobolIrredPoly[i])) - 1, degree);
        // x has order 2^degree - 1: the polynomial is primitive.
        uint64_t power = 2;
        int order = 1;
        for (; remainder(power, uSobolIrredPoly[i]) != 1 && order < 1000; ++order) {
            power = remainder(power, uSobolIrredPoly[i]) << 1;
        }
        EXPECT_EQ(order, (1 << degree) - 1) << i;
    }
}

// All dimension-specific loops and both sides of the blocks of 16 points and of 32 dimensions, by direction numbers.
TEST(Quasi, AnyCutGivesTheSamePoints) {
    for (const int brng : kBoth) {
        for (const int dimension : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 24, 31, 32, 33, 40}) {
            const auto rows = some_directions(dimension);
            const Words expected = points_of(rows, 320 + 80 * dimension);
            Quasi at(brng, direction_parameters(rows));
            for (int offset = 0; offset < 20 + dimension; offset += dimension < 16 ? 1 : 7) {
                for (int n = 0; n <= 300; n += 1 + n / 40) {
                    Quasi copy(at);
                    ASSERT_TRUE(std::equal_to<>()(copy.words(n), Words(expected.begin() + offset,
                                                                      expected.begin() + offset + n)))
                        << dimension << " " << offset << " " << n;
                    ASSERT_EQ(copy.words(1)[0], expected[static_cast<size_t>(offset + n)]);
                }
                at.words(dimension < 16 ? 1 : 7);
            }
            Quasi whole(brng, direction_parameters(rows));
            ASSERT_EQ(whole.words(static_cast<int>(expected.size())), expected) << dimension;
        }
    }
}

// Dimensions that only chunks hold.
TEST(Quasi, ManyDimensionsLiveInChunks) {
    const std::vector<std::pair<int, int>> sequences = {{NAX_BRNG_SOBOL, 41}, {NAX_BRNG_SOBOL, 101},
                                                        {NAX_BRNG_NIEDERREITER, 319}, {NAX_BRNG_NIEDERREITER, 400}};
    for (const auto& [brng, dimension] : sequences) {
        const auto rows = some_directions(dimension);
        const Words expected = points_of(rows, 60 * dimension);
        Quasi stream(brng, direction_parameters(rows));
        ASSERT_EQ(stream.status, 0);
        EXPECT_EQ(__stoGetNumChunks(stream.stream), brng == NAX_BRNG_SOBOL ? 2 : 1);
        Words drawn;
        for (const int n : {1, dimension - 2, 1, 3 * dimension + 5, 20 * dimension, 34 * dimension}) {
            const Words more = stream.words(n);
            drawn.insert(drawn.end(), more.begin(), more.end());
        }
        ASSERT_TRUE(std::equal(drawn.begin(), drawn.end(), expected.begin())) << dimension;
        Quasi skipped(brng, direction_parameters(rows));
        ASSERT_EQ(skipped.skip(drawn.size()), 0);
        EXPECT_EQ(skipped.words(100), stream.words(100));
    }
}

TEST(Quasi, CopiesShareDirectionsAndGoTheirOwnWay) {
    const auto rows = some_directions(50);
    const Words expected = points_of(rows, 500);
    Quasi first(NAX_BRNG_SOBOL, direction_parameters(rows));
    first.words(60);
    Quasi second(first);
    EXPECT_EQ(find_chunk(first.stream, ChunkId::kSobolDirections), find_chunk(second.stream, ChunkId::kSobolDirections));
    first.words(200);
    EXPECT_EQ(second.words(40), Words(expected.begin() + 60, expected.begin() + 100));
}

// Streams of all generators of words, stopped inside a block or a point, go on from an image as they would have.
TEST(Images, ContinueInTheMiddle) {
    std::vector<std::pair<int, Words>> kinds = {{NAX_BRNG_MT19937, {3}}, {NAX_BRNG_MT2203 + 9, {3}},
                                                {NAX_BRNG_SFMT19937, {3}}, {NAX_BRNG_PHILOX4X32X10, {3}},
                                                {NAX_BRNG_ARS5, {3}}, {NAX_BRNG_SOBOL, {7}},
                                                {NAX_BRNG_NIEDERREITER, {300}}};
    kinds.emplace_back(NAX_BRNG_SOBOL, direction_parameters(some_directions(50)));
    kinds.emplace_back(NAX_BRNG_NIEDERREITER, direction_parameters(some_directions(320)));
    for (const auto& [brng, params] : kinds) {
        Quasi stream(brng, params);
        for (const int n : {0, 1, 5, 623, 2}) {
            stream.words(n);
            std::vector<unsigned char> image(static_cast<size_t>(__stoGetStreamSize(stream.stream)));
            __stoSaveStreamM(stream.stream, image.data());
            nax_stream* loaded = nullptr;
            ASSERT_EQ(__stoLoadStreamM(&loaded, image.data()), 0) << brng;
            Words expected = Quasi(stream).words(700), r(700);
            ASSERT_EQ(stream.row.iBRng(loaded, 700, r.data()), 0);
            EXPECT_EQ(r, expected) << brng << " " << n;
            EXPECT_EQ(find_chunk(loaded, ChunkId::kSobolDirections), find_chunk(stream.stream, ChunkId::kSobolDirections));
            __stoDeleteStream(&loaded);
        }
    }
}

TEST(Quasi, RealsAreMapsOfTheWords) {
    for (const int brng : kBoth) {
        for (const uint32_t dimension : {1u, 7u, 15u, 16u, 21u, 40u}) {
            const Quasi start(brng, {dimension});
            const Words words = Quasi(start).words(3000);
            const std::vector<double> d = Quasi(start).doubles(3000, -1, 4);
            const std::vector<float> s = Quasi(start).singles(3000, -1, 4);
            for (size_t i = 0; i < words.size(); ++i) {
                ASSERT_EQ(d[i], std::fma(5 * 0x1p-31, static_cast<double>(words[i] >> 1), -1.0)) << dimension << " " << i;
                ASSERT_EQ(s[i], std::fmaf(5 * 0x1p-31f, static_cast<float>(words[i] >> 1), -1.0f)) << dimension << " " << i;
            }
        }
    }
}

TEST(Quasi, SkipCountsNumbersAndCommutesWithDraws) {
    for (const int brng : kBoth) {
        const Quasi start(brng, {7});
        for (const int before : {0, 3, 7, 20}) {
            for (int n = 0; n < 60; ++n) {
                Quasi drawn(start), skipped(start);
                drawn.words(before + n);
                skipped.words(before);
                ASSERT_EQ(skipped.skip(static_cast<uint64_t>(n)), 0);
                ASSERT_EQ(std::memcmp(&drawn.place(), &skipped.place(), sizeof(QuasiPlace)), 0) << before << " " << n;
                ASSERT_EQ(drawn.words(50), skipped.words(50)) << before << " " << n;
            }
        }
        for (const uint64_t a : {uint64_t{5}, uint64_t{1} << 33}) {
            Quasi twice(start), once(start);
            twice.skip(a);
            twice.skip(12345);
            once.skip(a + 12345);
            EXPECT_EQ(twice.words(30), once.words(30));
        }
    }
}

TEST(Quasi, EndOfTheSequence) {
    Quasi stream(NAX_BRNG_SOBOL);
    ASSERT_EQ(stream.skip(0xFFFFFFFF - 11), 0);
    EXPECT_EQ(stream.place().counter, 0xFFFFFFFFu - 10);
    const Words untouched(11, 77);
    Words r = untouched;
    EXPECT_EQ(stream.row.iBRng(stream.stream, 11, r.data()), STO_STATUS_QRNG_PERIOD_ELAPSED);
    EXPECT_EQ(r, untouched);
    EXPECT_EQ(stream.skip(10), STO_STATUS_NO_SKIPAHEAD);
    stream.words(10);
    EXPECT_EQ(stream.status, 0);
    EXPECT_EQ(stream.place().counter, 0xFFFFFFFFu);
    EXPECT_EQ(Quasi(NAX_BRNG_NIEDERREITER, {3}).skip(~uint64_t{0}), STO_STATUS_NO_SKIPAHEAD);
}

TEST(Quasi, OneCoordinateStreams) {
    for (const int brng : kBoth) {
        constexpr int kDimension = 5;
        const Quasi start(brng, {kDimension});
        const Words points = Quasi(start).words(kDimension * 200);
        for (int k = 0; k < kDimension; ++k) {
            Quasi stream(start), skipped(start);
            ASSERT_EQ(stream.select(k), 0);
            skipped.select(k);
            const Words column = stream.words(150);
            for (size_t p = 0; p < column.size(); ++p) ASSERT_EQ(column[p], points[p * kDimension + static_cast<size_t>(k)]);
            skipped.skip(150);
            EXPECT_EQ(stream.words(20), skipped.words(20));
            ASSERT_EQ(stream.select(kDimension - 1), 0);  // a later choice goes on from the next point
            EXPECT_EQ(stream.words(1)[0], points[170 * kDimension + kDimension - 1]);
        }
        Quasi begun(start);
        begun.words(kDimension + 2);
        begun.select(1);  // the point begun is the first of the new kind
        EXPECT_EQ(begun.words(2), (Words{points[kDimension + 1], points[2 * kDimension + 1]}));
    }
}

// Draws of any lengths from a selected coordinate, short and by blocks, in the payload and in chunks, leave the whole point
// where it belongs.
TEST(Quasi, SelectedCoordinatesMoveTheWholePoint) {
    const std::vector<Words> seeds = {{1}, {40}, direction_parameters(some_directions(330))};
    for (const int brng : kBoth) {
        for (const Words& seed : seeds) {
            Quasi whole(brng, seed), selected(whole);
            const int dimension = static_cast<int>(whole.place().dimension);
            const Words points = whole.words(dimension * 120);
            size_t point = 0;
            for (const int n : {1, 2, 15, 16, 17, 1, 60}) {
                const int k = static_cast<int>(point) * 7 % dimension;
                ASSERT_EQ(selected.select(k), 0);
                for (const uint32_t word : selected.words(n)) {
                    ASSERT_EQ(word, points[point++ * static_cast<size_t>(dimension) + static_cast<size_t>(k)]) << n;
                }
            }
        }
    }
}

// A new seed makes a stream of that seed, whatever form it had; chunks of others stay on it.
TEST(Quasi, SeedingAnewReplacesTheUserForm) {
    const std::vector<Words> seeds = {{3}, direction_parameters(some_directions(330)), {17}, {40},
                                      direction_parameters(some_directions(400)), {2, 1, 4}};
    const long live = nax::testing::live_blocks();
    for (const int brng : kBoth) {
        Quasi stream(brng, {5});
        void* const foreign[] = {nax_serv_allocate(8, 128), nax_serv_allocate(8, 128)};
        ASSERT_EQ(__stoAddChunk(stream.stream, 3, nullptr, foreign[0], 8), 0);
        ASSERT_EQ(__stoAddChunk(stream.stream, 4, nullptr, foreign[1], 8), 0);
        for (const Words& seed : seeds) {
            ASSERT_EQ(stream.row.InitStream(NAX_INIT_STANDARD, stream.stream, static_cast<int>(seed.size()), seed.data()), 0);
            Quasi fresh(brng, seed);
            const int n = 3 * static_cast<int>(fresh.place().dimension) + 1;
            EXPECT_EQ(stream.words(n), fresh.words(n));
            EXPECT_EQ(__stoGetNumChunks(stream.stream), __stoGetNumChunks(fresh.stream) + 2);
            EXPECT_EQ(__stoSearchChunk(stream.stream, 3), foreign[0]);
            EXPECT_EQ(__stoSearchChunk(stream.stream, 4), foreign[1]);
        }
    }
    EXPECT_EQ(nax::testing::live_blocks(), live);
}

TEST(Quasi, Refusals) {
    for (const int brng : kBoth) {
        Quasi stream(brng, {4});
        EXPECT_EQ(stream.select(4), STO_STATUS_NO_LEAPFROG);
        EXPECT_EQ(stream.select(1, 3), STO_STATUS_NO_LEAPFROG);
        const uint64_t count = 1;
        EXPECT_EQ(__stoSkipAheadStreamEx(stream.stream, 1, &count), STO_STATUS_NO_SKIPAHEADEX);
        EXPECT_EQ(stream.row.InitStream(NAX_INIT_SKIPAHEAD, stream.stream, 0, &count), STO_STATUS_NO_SKIPAHEAD);
        EXPECT_EQ(stream.row.InitStream(5, stream.stream, 2, &count), STO_STATUS_BAD_METHOD);
        EXPECT_EQ(stream.words(20), Quasi(brng, {4}).words(20));
        EXPECT_EQ(stream.words(0).size(), 0u);
    }
}

// Parameters that say nothing new give the default sequence, by every class.
TEST(Sobol, UserClassesReproduceTheDefault) {
    constexpr uint32_t kDimension = 40;
    const Words expected = Quasi(NAX_BRNG_SOBOL, {kDimension}).words(4000);
    const Words polynomials(uSobolIrredPoly, uSobolIrredPoly + kDimension - 1);
    const Words numbers(uSobolMInit[0], uSobolMInit[0] + 8 * (kDimension - 1));
    const auto joined = [](std::initializer_list<Words> parts) {
        Words r;
        for (const Words& part : parts) r.insert(r.end(), part.begin(), part.end());
        return r;
    };
    const Words class_1 = joined({{kDimension, 1, 1}, polynomials});
    const Words class_2 = joined({{kDimension, 1, 2, 8}, numbers});
    const Words class_3 = joined({{kDimension, 1, 3}, polynomials, {8}, numbers});
    const Words class_11 = joined({{kDimension, 1, 11, 1}, polynomials, {8}, Words(8, 1), numbers});
    for (const Words& params : {class_1, class_2, class_3, class_11}) {
        EXPECT_EQ(Quasi(NAX_BRNG_SOBOL, params).words(4000), expected) << params[2];
        Words cut(params.begin(), params.end() - 1);  // too short: the dimension alone counts
        EXPECT_EQ(Quasi(NAX_BRNG_SOBOL, cut).words(4000), expected) << params[2];
    }
    Words altered = class_2;
    altered[4 + 8] = 3;  // another m1 for dimension 3, out of range on purpose: taken as it stands
    EXPECT_NE(Quasi(NAX_BRNG_SOBOL, altered).words(4000), expected);
}

TEST(Niederreiter, UserPolynomials) {
    Words params = {60, 1, 1};
    params.insert(params.end(), uNiederrIrredPoly, uNiederrIrredPoly + 60);
    EXPECT_EQ(Quasi(NAX_BRNG_NIEDERREITER, params).words(600), Quasi(NAX_BRNG_NIEDERREITER, {60}).words(600));
    Words large = {320, 1, 1};
    large.insert(large.end(), uNiederrIrredPoly, uNiederrIrredPoly + 320);
    const Words points = Quasi(NAX_BRNG_NIEDERREITER, large).words(320 * 20);
    const Words known = Quasi(NAX_BRNG_NIEDERREITER, {318}).words(318 * 20);
    for (size_t p = 0; p < 20; ++p) {
        for (size_t d = 0; d < 318; ++d) ASSERT_EQ(points[p * 320 + d], known[p * 318 + d]);
    }
}

TEST(Quasi, DroppedAndRejectedParameters) {
    const auto dimension = [](int brng, const Words& params) { return Quasi(brng, params).place().dimension; };
    EXPECT_EQ(dimension(NAX_BRNG_SOBOL, {}), 1u);
    EXPECT_EQ(dimension(NAX_BRNG_SOBOL, {0}), 1u);
    EXPECT_EQ(dimension(NAX_BRNG_SOBOL, {40}), 40u);
    EXPECT_EQ(dimension(NAX_BRNG_SOBOL, {41}), 1u);
    EXPECT_EQ(dimension(NAX_BRNG_NIEDERREITER, {318}), 318u);
    EXPECT_EQ(dimension(NAX_BRNG_NIEDERREITER, {319}), 1u);
    EXPECT_EQ(dimension(NAX_BRNG_SOBOL, {5, 1, 7, 3, 3, 3, 3}), 5u);
    Words beyond = {41, 1, 1};
    beyond.resize(60, 3);
    EXPECT_EQ(dimension(NAX_BRNG_SOBOL, beyond), 1u);
    EXPECT_EQ(Quasi(NAX_BRNG_SOBOL, {3, 1, 1, 7, 529}).status, STO_STATUS_BAD_ARGUMENT);  // degree 9
    EXPECT_EQ(Quasi(NAX_BRNG_SOBOL, {2, 1, 3, 7, 1, 1}).status, STO_STATUS_BAD_ARGUMENT);  // one number for degree 2
    EXPECT_EQ(Quasi(NAX_BRNG_NIEDERREITER, {2, 1, 1, 2, 1}).status, STO_STATUS_BAD_ARGUMENT);  // constant
}

TEST(Quasi, EveryFailingAllocationIsReported) {
    const std::vector<std::pair<int, int>> sequences = {{NAX_BRNG_SOBOL, 64}, {NAX_BRNG_NIEDERREITER, 330}};
    for (const auto& [brng, dimension] : sequences) {
        const Words params = direction_parameters(some_directions(dimension));
        const auto create = [&, id = brng] { return Quasi(id, params).status; };
        EXPECT_GE(nax::testing::for_each_failing_allocation(create, int{STO_STATUS_NO_MEMORY}, 0), 3);
    }
    Quasi stream(NAX_BRNG_NIEDERREITER, direction_parameters(some_directions(330)));
    __stoDeleteChunks(stream.stream);
    stream.words(5);
    EXPECT_EQ(stream.status, STO_STATUS_NO_MEMORY);
}

TEST(Twisters, EveryFailingAllocationOfASkipIsReported) {
    for (const int brng : {NAX_BRNG_MT19937, NAX_BRNG_SFMT19937}) {
        const uint32_t seed = 1;
        nax_stream* stream = nullptr;
        ASSERT_EQ(__stoNewStreamEx(&stream, brng, 1, &seed), 0);
        const auto skip = [&] { return __stoSkipAheadStream(stream, 0x1000001); };
        EXPECT_EQ(nax::testing::for_each_failing_allocation(skip, int{STO_STATUS_NO_MEMORY}, 0), 3);
        __stoDeleteStream(&stream);
    }
}

TEST(Quasi, ThreadingLadder) {
    EXPECT_FALSE(worth_threading(1 << 20, 32));
    EXPECT_FALSE(worth_threading(0x1FFFF, 33));
    EXPECT_TRUE(worth_threading(0x20000, 33));
    EXPECT_FALSE(worth_threading(0x1FFFF, 249));
    EXPECT_TRUE(worth_threading(8192, 250));
    EXPECT_FALSE(worth_threading(255, 999));
    EXPECT_TRUE(worth_threading(64, 1000));
    EXPECT_FALSE(worth_threading(1, 31999));
    EXPECT_TRUE(worth_threading(1, 32000));
}

// Stands in for the threading pair: `threads` of them take the chunks in turn, from the last one down.
int threads = 0;  // 0: the service layer's own pair
int parallel_calls = 0;

int limit_under_test() { return threads; }

void for_under_test(int chunks, int, void* context, nax_serv_chunk_body body) {
    ++parallel_calls;
    std::atomic<int> next{chunks};
    std::vector<std::thread> crew;
    for (int i = 0; i < threads; ++i) {
        crew.emplace_back([&] {
            for (int chunk = --next; chunk >= 0; chunk = --next) body(chunk, 0, 0, context);
        });
    }
    for (std::thread& member : crew) member.join();
}

}  // namespace

extern "C" void* nax_serv_load_thread_fun(const char* name) {
    if (threads == 0) {
        return reinterpret_cast<void* (*)(const char*)>(dlsym(RTLD_NEXT, "nax_serv_load_thread_fun"))(name);
    }
    if (std::strcmp(name, "nax_sto_serv_threader_for") == 0) return reinterpret_cast<void*>(for_under_test);
    return reinterpret_cast<void*>(limit_under_test);
}

namespace {

// Aligned and unaligned outputs, dimensions in the payload and in chunks, full and partial last blocks of dimensions.
TEST(Quasi, AnyNumberOfThreadsGivesTheSameBits) {
    const std::vector<std::pair<int, int>> sequences = {{NAX_BRNG_SOBOL, 1024}, {NAX_BRNG_SOBOL, 1003},
                                                        {NAX_BRNG_NIEDERREITER, 1001}, {NAX_BRNG_NIEDERREITER, 318}};
    for (const auto& [brng, dimension] : sequences) {
        const int points = dimension < 500 ? 8192 : 300;
        const Quasi start(brng, direction_parameters(some_directions(dimension)));
        std::vector<double> doubles[3];
        std::vector<float> singles[3];
        Words words[3], after[3];
        int i = 0;
        for (const int crew : {1, 2, 4}) {
            Quasi stream(start);
            threads = crew;
            parallel_calls = 0;
            const int n = points * dimension;
            doubles[i] = stream.doubles(n + 1);
            singles[i] = stream.singles(n + dimension - 1);
            words[i] = stream.words(n);
            threads = 1;
            after[i] = stream.words(2 * dimension);
            EXPECT_EQ(parallel_calls, crew == 1 ? 0 : 3) << dimension;
            threads = 0;
            ++i;
        }
        for (const int j : {1, 2}) {
            EXPECT_EQ(doubles[0], doubles[j]) << dimension;
            EXPECT_EQ(singles[0], singles[j]) << dimension;
            EXPECT_EQ(words[0], words[j]) << dimension;
            EXPECT_EQ(after[0], after[j]) << dimension;
        }
    }
}

TEST(Quasi, TheLayersOwnThreadsGiveTheSameBits) {
    const Quasi start(NAX_BRNG_SOBOL, direction_parameters(some_directions(1024)));
    Quasi serial(start), threaded(start);
    threads = 1;
    const std::vector<double> one = serial.doubles(150 * 1024);
    threads = 0;
    EXPECT_EQ(one, threaded.doubles(150 * 1024));
    // In a forked child the pool's threads are gone.
    Quasi in_child(start);
    const pid_t child = fork();
    if (child == 0) {
        alarm(20);
        _exit(in_child.doubles(150 * 1024) == one ? 0 : 1);
    }
    int status = 1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

}  // namespace
