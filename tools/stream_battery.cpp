// stream_battery [log2 of the words a case]: a battery of statistical tests over the basic generators, as they come and
// split in every way that they offer. Prints the table of docs/battery.md.
//
// A case is a sequence of 30-bit words. Generators with 32-bit output give two: the upper and the lower 30 bits of their
// raw words; the others give the upper 30 bits of their doubles. Every test yields a p-value, uniform on (0, 1) for a perfect
// source; below 1e-10 or above 1 - 1e-10 counts as a failure, beyond 1e-4 as suspicious.
#include <algorithm>
#include <array>
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/normal.hpp>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "nax/abi/streams.h"

namespace {

using Words = std::vector<uint32_t>;      // 30 bits each
constexpr int kBits = 30;

double chi_square(const std::vector<double>& counts, const std::vector<double>& expected) {
    double sum = 0;
    for (size_t i = 0; i < counts.size(); ++i) sum += (counts[i] - expected[i]) * (counts[i] - expected[i]) / expected[i];
    const boost::math::chi_squared distribution(static_cast<double>(counts.size() - 1));
    return boost::math::cdf(boost::math::complement(distribution, sum));
}

double uniform_cells(const std::vector<double>& counts) {
    double total = 0;
    for (const double count : counts) total += count;
    return chi_square(counts, std::vector<double>(counts.size(), total / static_cast<double>(counts.size())));
}

double upper_tail(double value, double mean, double deviation) {
    return boost::math::cdf(boost::math::complement(boost::math::normal(mean, deviation), value));
}

// Tuples of `length` words, `bits` of each from `shift` on, over all cells.
double serial(const Words& words, size_t length, unsigned bits, unsigned shift) {
    std::vector<double> counts(size_t{1} << (bits * length));
    for (size_t i = 0; i + length <= words.size(); i += length) {
        size_t cell = 0;
        for (size_t j = 0; j < length; ++j) cell = cell << bits | (words[i + j] >> shift & ((1u << bits) - 1));
        ++counts[cell];
    }
    return uniform_cells(counts);
}

// Orders of five words.
double permutations(const Words& words) {
    std::vector<double> counts(120);
    for (size_t i = 0; i + 5 <= words.size(); i += 5) {
        size_t code = 0;
        for (size_t j = 0; j < 5; ++j) {
            size_t below = 0;
            for (size_t k = j + 1; k < 5; ++k) below += words[i + k] < words[i + j];
            code = code * (5 - j) + below;
        }
        ++counts[code];
    }
    return uniform_cells(counts);
}

// Marsaglia's birthday spacings: 4096 birthdays in a year of 2^30 days give Poisson(16) equal spacings.
double birthday_spacings(const Words& words) {
    constexpr size_t kBirthdays = 4096;
    double equal = 0, years = 0;
    Words days(kBirthdays);
    for (size_t i = 0; i + kBirthdays <= words.size(); i += kBirthdays, ++years) {
        std::copy_n(words.begin() + static_cast<long>(i), kBirthdays, days.begin());
        std::sort(days.begin(), days.end());
        for (size_t j = kBirthdays - 1; j > 0; --j) days[j] -= days[j - 1];
        std::sort(days.begin(), days.end());
        for (size_t j = 1; j < kBirthdays; ++j) equal += days[j] == days[j - 1];
    }
    const double mean = 16 * years;
    return upper_tail(equal, mean, std::sqrt(mean));
}

int rank_of(std::array<uint32_t, kBits> rows) {
    int rank = 0;
    for (int bit = 0; bit < kBits; ++bit) {
        const auto pivot = std::find_if(rows.begin() + rank, rows.end(), [bit](uint32_t row) { return row >> bit & 1; });
        if (pivot == rows.end()) continue;
        std::swap(*pivot, rows[static_cast<size_t>(rank)]);
        for (auto row = rows.begin() + rank + 1; row != rows.end(); ++row) {
            if (*row >> bit & 1) *row ^= rows[static_cast<size_t>(rank)];
        }
        ++rank;
    }
    return rank;
}

// Ranks of 30 by 30 bit matrices: full, one less, fewer.
double matrix_ranks(const Words& words) {
    double full = 1;
    for (int i = 1; i <= kBits; ++i) full *= 1 - std::ldexp(1.0, -i);
    const double one_less = 2 * full * (1 - std::ldexp(1.0, -kBits));
    std::vector<double> counts(3);
    double total = 0;
    for (size_t i = 0; i + kBits <= words.size(); i += kBits, ++total) {
        std::array<uint32_t, kBits> rows;
        std::copy_n(words.begin() + static_cast<long>(i), kBits, rows.begin());
        ++counts[static_cast<size_t>(std::min(2, kBits - rank_of(rows)))];
    }
    return chi_square(counts, {total * full, total * one_less, total * (1 - full - one_less)});
}

// Weights of three neighbouring words, each light, middling or heavy.
double weights(const Words& words) {
    double probability[3] = {};
    for (int weight = 0; weight <= kBits; ++weight) {
        const double p = std::exp(std::lgamma(kBits + 1) - std::lgamma(weight + 1) - std::lgamma(kBits - weight + 1) - kBits * std::log(2.0));
        probability[weight < 14 ? 0 : weight <= 16 ? 1 : 2] += p;
    }
    const auto grade = [](uint32_t word) { const int w = __builtin_popcount(word); return w < 14 ? 0u : w <= 16 ? 1u : 2u; };
    std::vector<double> counts(27), expected(27);
    const double total = static_cast<double>(words.size() / 3);
    for (size_t i = 0; i + 3 <= words.size(); i += 3) ++counts[grade(words[i]) * 9 + grade(words[i + 1]) * 3 + grade(words[i + 2])];
    for (size_t c = 0; c < 27; ++c) expected[c] = total * probability[c / 9] * probability[c / 3 % 3] * probability[c % 3];
    return chi_square(counts, expected);
}

// Walks of 1000 steps by the top bit: the squared displacement. Sensitive to sums over long lags.
double random_walks(const Words& words) {
    constexpr size_t kSteps = 1000;
    double squares = 0, walks = 0;
    for (size_t i = 0; i + kSteps <= words.size(); i += kSteps, ++walks) {
        double place = 0;
        for (size_t j = 0; j < kSteps; ++j) place += words[i + j] >> (kBits - 1) ? 1 : -1;
        squares += place * place / kSteps;
    }
    return upper_tail(squares, walks, std::sqrt(walks * (2 - 2.0 / kSteps)));
}

struct Test {
    const char* name;
    double (*p_value)(const Words&);
};
const Test kTests[] = {
    {"cells", [](const Words& w) { return serial(w, 1, 16, kBits - 16); }},
    {"pairs", [](const Words& w) { return serial(w, 2, 8, kBits - 8); }},
    {"triples", [](const Words& w) { return serial(w, 3, 5, kBits - 5); }},
    {"low pairs", [](const Words& w) { return serial(w, 2, 8, 0); }},
    {"orders", permutations},
    {"birthdays", birthday_spacings},
    {"ranks", matrix_ranks},
    {"weights", weights},
    {"walks", random_walks},
};

// ---- Cases

class Stream {
public:
    explicit Stream(int brng, std::vector<uint32_t> seeds) {
        if (__stoNewStreamEx(&stream_, brng, static_cast<int>(seeds.size()), seeds.data()) != STO_STATUS_OK) std::abort();
    }
    Stream(Stream&& other) noexcept : stream_(other.stream_) { other.stream_ = nullptr; }
    Stream& operator=(Stream&&) = delete;
    ~Stream() {
        if (stream_ != nullptr) __stoDeleteStream(&stream_);
    }
    nax_stream* get() const { return stream_; }

private:
    nax_stream* stream_ = nullptr;
};

enum class View { kHigh, kLow, kReal };

void draw(const Stream& stream, View view, uint32_t* out, size_t stride, size_t count) {
    nax_brng_properties row;
    __stoGetBrngProperties(__stoGetStreamStateBrng(stream.get()), &row);
    std::vector<double> reals(count);
    std::vector<uint32_t> raw(count);
    if (view == View::kReal) row.dBRng(stream.get(), static_cast<int>(count), reals.data(), 0.0, 1.0);
    else row.iBRng(stream.get(), static_cast<int>(count), raw.data());
    for (size_t i = 0; i < count; ++i) {
        const uint32_t mask = (1u << kBits) - 1;
        // The largest doubles may have been rounded up to 1.
        const uint32_t from_real = std::min(static_cast<uint32_t>(reals[i] * (1u << kBits)), mask);
        out[i * stride] = view == View::kReal ? from_real : view == View::kHigh ? raw[i] >> 2 : raw[i] & mask;
    }
}

// Streams taken in turns, one word of each.
Words in_turns(const std::vector<Stream>& streams, View view, size_t count) {
    constexpr size_t kEach = 4096;
    const size_t n = streams.size();
    Words words(count / (kEach * n) * kEach * n);
    for (size_t at = 0; at < words.size(); at += kEach * n) {
        for (size_t s = 0; s < n; ++s) draw(streams[s], view, &words[at + s], n, kEach);
    }
    return words;
}

int suspicious = 0, failed = 0;

void run_case(const std::string& generator, const std::string& split, const std::vector<Stream>& streams, View view, size_t count) {
    const Words words = in_turns(streams, view, count);
    const char* const views[] = {"upper", "lower", "reals"};
    std::printf("| %s | %s | %s |", generator.c_str(), split.c_str(), views[static_cast<int>(view)]);
    for (const Test& test : kTests) {
        const double p = test.p_value(words);
        const double extreme = std::min(p, 1 - p);
        failed += extreme < 1e-10;
        suspicious += extreme >= 1e-10 && extreme < 1e-4;
        std::printf(extreme < 1e-10 ? " **%.0e** |" : extreme < 1e-4 ? " *%.1e* |" : " %.3f |", extreme < 1e-4 ? extreme : p);
    }
    std::puts("");
    std::fflush(stdout);
}

struct Generator {
    const char* name;
    int brng;
    bool words32, leapfrogs, skips, family, keys;
};
const Generator kGenerators[] = {
    {"MCG31", NAX_BRNG_MCG31, false, true, true, false, false},
    {"R250", NAX_BRNG_R250, true, false, false, false, false},
    {"MRG32K3A", NAX_BRNG_MRG32K3A, true, false, true, false, false},
    {"MCG59", NAX_BRNG_MCG59, false, true, true, false, false},
    {"WH", NAX_BRNG_WH, false, true, true, true, false},
    {"MT19937", NAX_BRNG_MT19937, true, false, true, false, false},
    {"MT2203", NAX_BRNG_MT2203, true, false, false, true, false},
    {"SFMT19937", NAX_BRNG_SFMT19937, true, false, true, false, false},
    {"ARS5", NAX_BRNG_ARS5, true, false, true, false, true},
    {"PHILOX4X32X10", NAX_BRNG_PHILOX4X32X10, true, false, true, false, true},
};

std::vector<Stream> streams_of(int count, const std::function<Stream(uint32_t)>& make) {
    std::vector<Stream> streams;
    for (uint32_t i = 0; i < static_cast<uint32_t>(count); ++i) streams.push_back(make(i));
    return streams;
}

void run_generator(const Generator& g, View view, size_t count) {
    const uint32_t seed = 20240229;
    run_case(g.name, "one stream", streams_of(1, [&](uint32_t) { return Stream(g.brng, {seed}); }), view, count);
    if (g.leapfrogs) {
        for (const int n : {7, 16}) {
            const auto leaper = streams_of(1, [&](uint32_t) {
                Stream stream(g.brng, {seed});
                __stoLeapfrogStream(stream.get(), 3, n);
                return stream;
            });
            run_case(g.name, "leapfrog by " + std::to_string(n), leaper, view, count);
        }
    }
    if (g.skips) {
        // MCG31 has 2^31 numbers in all.
        const uint64_t stride = g.brng == NAX_BRNG_MCG31 ? 134217689 : 1000000000039;
        const auto blocks = streams_of(16, [&](uint32_t i) {
            Stream stream(g.brng, {seed});
            __stoSkipAheadStream(stream.get(), i * stride);
            return stream;
        });
        run_case(g.name, "16 blocks in turns", blocks, view, count);
    }
    if (g.family) run_case(g.name, "16 members in turns", streams_of(16, [&](uint32_t i) { return Stream(g.brng + static_cast<int>(i), {seed}); }), view, count);
    if (g.keys) run_case(g.name, "16 keys in turns", streams_of(16, [&](uint32_t i) { return Stream(g.brng, {i}); }), view, count);
    else run_case(g.name, "16 seeds in turns", streams_of(16, [&](uint32_t i) { return Stream(g.brng, {i + 1}); }), view, count);
}

}  // namespace

int main(int argc, char** argv) {
    const int log2_count = argc > 1 ? std::atoi(argv[1]) : 24;
    if (log2_count < 18 || log2_count > 30) return 2;
    std::printf("| generator | streams | words |");
    for (const Test& test : kTests) std::printf(" %s |", test.name);
    std::printf("\n|---|---|---|");
    for (size_t i = 0; i < std::size(kTests); ++i) std::printf("---|");
    std::puts("");
    for (const Generator& g : kGenerators) {
        if (!g.words32) {
            run_generator(g, View::kReal, size_t{1} << log2_count);
            continue;
        }
        for (const View view : {View::kHigh, View::kLow}) run_generator(g, view, size_t{1} << log2_count);
    }
    std::printf("\n2^%d words a case; %d failures, %d suspicious p-values.\n", log2_count, failed, suspicious);
    return 0;
}
