// The radix sorts beside std::sort, std::stable_sort, Boost's spreadsort and Highway's vectorised quicksort, where
// these are installed. Nanoseconds per key; every pass sorts fresh copies, whose making isn't timed. Takes the options
// of bench/measure.h.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "nax/primitives.h"
#ifdef NAX_HAVE_BOOST
#include <boost/sort/spreadsort/spreadsort.hpp>
#endif
#ifdef NAX_HAVE_HIGHWAY
#include <hwy/contrib/sort/vqsort.h>
#endif

namespace nax::bench {
namespace {

using Clock = std::chrono::steady_clock;

// Times the contenders in turns; each gets its data afresh before a pass.
template <class Prepare>
void time_row(Report& report, Row row, const std::vector<std::function<void()>>& runs, Prepare prepare, int64_t keys) {
    if (!report.wanted(row.work)) return;
    const int rounds = keys > 2000000 ? 3 : keys > 200000 ? 7 : 21;
    std::vector<std::vector<double>> samples(runs.size());
    for (int round = 0; round < rounds; ++round)
        for (std::size_t k = 0; k < runs.size(); ++k) {
            prepare();
            const auto start = Clock::now();
            runs[k]();
            samples[k].push_back(std::chrono::duration<double>(Clock::now() - start).count() * 1e9 /
                                 static_cast<double>(keys));
        }
    for (std::size_t k = 0; k < runs.size(); ++k) {
        std::sort(samples[k].begin(), samples[k].end());
        row.contenders[k].minimum_ns = samples[k].front();
        row.contenders[k].median_ns = samples[k][samples[k].size() / 2];
        row.contenders[k].elements = keys;
    }
    report.add(std::move(row));
}

// Arrays enough for some ten thousand keys, all different in order: a sort must not learn its branches by heart.
template <class T>
struct Arrays {
    template <class Make>
    Arrays(int64_t length, Make make) : n(length), count(std::max<int64_t>(1, 20000 / length)) {
        std::mt19937_64 g(42);
        for (int64_t i = 0; i < n * count; ++i) source.push_back(make(i % n, n, g));
        work = source;
        scratch.resize(static_cast<std::size_t>(n));
    }
    template <class Sort>
    std::function<void()> sorting(Sort sort) {
        return [this, sort] {
            for (int64_t k = 0; k < count; ++k) sort(work.data() + k * n, scratch.data(), n);
        };
    }
    int64_t n, count;
    std::vector<T> source, work, scratch;
};

template <class T>
using InPlace = int (*)(T*, T*, int32_t);

template <class T, class Make>
void time_in_place(Report& report, const std::string& work, const char* kind, int64_t n, InPlace<T> ours, Make make) {
    if (!report.wanted(work)) return;
    Arrays<T> arrays(n, make);
    Row row{work, kind, n, {{"ours", {}}, {"std::sort", {}}, {"std::stable_sort", {}}}};
    std::vector<std::function<void()>> runs{
        arrays.sorting([ours](T* x, T* scratch, int64_t m) { ours(x, scratch, static_cast<int32_t>(m)); }),
        arrays.sorting([](T* x, T*, int64_t m) { std::sort(x, x + m); }),
        arrays.sorting([](T* x, T*, int64_t m) { std::stable_sort(x, x + m); })};
#ifdef NAX_HAVE_BOOST
    row.contenders.push_back({"boost spreadsort", {}});
    runs.push_back(arrays.sorting([](T* x, T*, int64_t m) { boost::sort::spreadsort::spreadsort(x, x + m); }));
#endif
#ifdef NAX_HAVE_HIGHWAY
    if constexpr (sizeof(T) > 1) {
        row.contenders.push_back({"vqsort", {}});
        static const hwy::Sorter sorter;
        runs.push_back(
            arrays.sorting([](T* x, T*, int64_t m) { sorter(x, static_cast<std::size_t>(m), hwy::SortAscending()); }));
    }
#endif
    time_row(
        report, std::move(row), runs,
        [&] { std::copy(arrays.source.begin(), arrays.source.end(), arrays.work.begin()); }, n * arrays.count);
}

template <class T>
T uniform(std::mt19937_64& g) {
    if constexpr (std::is_floating_point_v<T>)
        return static_cast<T>(std::uniform_real_distribution<double>()(g));
    else
        return static_cast<T>(g());
}

template <class T>
void time_type(Report& report, const std::string& type, InPlace<T> ours) {
    const auto random = [](int64_t, int64_t, auto& g) { return uniform<T>(g); };
    for (const int64_t n : {2, 4, 10, 30, 64, 100, 300, 1000, 10000, 100000, 1000000, 10000000})
        time_in_place(report, "sort " + type, "random", n, ours, random);
}

template <class T>
void time_kinds(Report& report, const std::string& type, InPlace<T> ours, int64_t n) {
    const std::string work = "sort " + type + ", kinds";
    time_in_place(report, work, "normal", n, ours, [](int64_t, int64_t, auto& g) {
        return static_cast<T>(std::normal_distribution<double>()(g) * 1e6);
    });
    time_in_place(report, work, "lognormal", n, ours, [](int64_t, int64_t, auto& g) {
        return static_cast<T>(std::min(1e9, std::lognormal_distribution<double>(2, 3)(g)));
    });
    time_in_place(report, work, "sorted", n, ours, [](int64_t i, int64_t, auto&) { return static_cast<T>(i); });
    time_in_place(report, work, "reversed", n, ours, [](int64_t i, int64_t m, auto&) { return static_cast<T>(m - i); });
    time_in_place(report, work, "pipe", n, ours,
                  [](int64_t i, int64_t m, auto&) { return static_cast<T>(std::min(i, m - i)); });
    time_in_place(report, work, "16 values", n, ours,
                  [](int64_t, int64_t, auto& g) { return static_cast<T>(g() % 16); });
    time_in_place(report, work, "one value", n, ours, [](int64_t, int64_t, auto&) { return static_cast<T>(3); });
}

template <class T>
void time_index(Report& report, const std::string& type, int (*ours)(const T*, int32_t, int32_t*, int32_t*, int32_t)) {
    for (const int64_t n : {10, 100, 1000, 10000, 100000, 1000000, 10000000}) {
        const std::string work = "index sort " + type;
        if (!report.wanted(work)) continue;
        Arrays<T> keys(n, [](int64_t, int64_t, auto& g) { return uniform<T>(g); });
        std::vector<int32_t> index(static_cast<std::size_t>(n)), scratch(index.size());
        const auto over_all = [&](auto sort) {
            return [&keys, sort] {
                for (int64_t k = 0; k < keys.count; ++k) sort(keys.work.data() + k * keys.n);
            };
        };
        const auto m = static_cast<int32_t>(n);
        time_row(
            report, {work, "random", n, {{"ours", {}}, {"std::stable_sort", {}}}},
            {over_all([&, m](const T* x) { ours(x, sizeof(T), index.data(), scratch.data(), m); }),
             over_all([&](const T* x) {
                 std::iota(index.begin(), index.end(), 0);
                 std::stable_sort(index.begin(), index.end(), [x](int32_t a, int32_t b) { return x[a] < x[b]; });
             })},
            [] {}, n * keys.count);
    }
}

}  // namespace
}  // namespace nax::bench

int main(int argc, char** argv) {
    using namespace nax::bench;
    pin_to_one_core();
    Report report("Sorting", argc, argv);
    time_type<float>(report, "32f", nax_dft_avx2_opasSortRadixAscend_32f_I);
    time_type<int32_t>(report, "32s", nax_dft_avx2_opasSortRadixAscend_32s_I);
    time_type<double>(report, "64f", nax_dft_avx2_opasSortRadixAscend_64f_I);
    time_type<int16_t>(report, "16s", nax_dft_avx2_opasSortRadixAscend_16s_I);
    time_type<uint8_t>(report, "8u", nax_dft_avx2_opasSortRadixAscend_8u_I);
    time_kinds<double>(report, "64f", nax_dft_avx2_opasSortRadixAscend_64f_I, 1000000);
    time_kinds<int32_t>(report, "32s", nax_dft_avx2_opasSortRadixAscend_32s_I, 1000000);
    time_index<float>(report, "32f", nax_dft_avx2_opasSortRadixIndexAscend_32f);
    time_index<uint16_t>(report, "16u", nax_dft_avx2_opasSortRadixIndexAscend_16u);
    return report.finish();
}
