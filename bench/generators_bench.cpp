// Nanoseconds per coordinate of the quasi-random generators and per word of the counter-based ones, beside GSL, Boost and
// Random123, and microseconds of the skips, all in the same run. streams_bench has the bulk figures of all generators.
//
// Figures are the minimum of many repetitions; buffers of 8192 numbers stay in the cache.
#ifdef NAX_HAVE_GSL
#include <gsl/gsl_qrng.h>
#endif
#if __has_include(<Random123/philox.h>)
#include <Random123/philox.h>
#define NAX_HAVE_RANDOM123
#endif

#include <algorithm>
#include <boost/random.hpp>
#include <boost/random/niederreiter_base2.hpp>
#include <boost/random/sobol.hpp>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>

#include "nax/streams.h"

namespace {

constexpr int kBuffer = 8192;
alignas(64) double buffer[kBuffer + 512];

template <class Run>
double best_seconds(int repetitions, const Run& run) {
    double best = 1e9;
    for (int i = 0; i < repetitions; ++i) {
        const auto start = std::chrono::steady_clock::now();
        run();
        best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

// fill(n) makes n numbers.
template <class Fill>
void report(const std::string& name, int n, const Fill& fill) {
    constexpr int kCalls = 64;
    const double seconds = best_seconds(40, [&] {
        for (int i = 0; i < kCalls; ++i) fill(n);
    });
    std::printf("%-40s %9.3f ns\n", name.c_str(), seconds * 1e9 / kCalls / n);
}

template <class Call>
void report_call(const std::string& name, int calls, const Call& call) {
    const double seconds = best_seconds(7, [&] {
        for (int i = 0; i < calls; ++i) call();
    });
    std::printf("%-40s %9.3f us a call\n", name.c_str(), seconds * 1e6 / calls);
}

class Stream {
public:
    Stream(int brng, uint32_t param) { __stoNewStreamEx(&stream_, brng, 1, &param); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream() { __stoDeleteStream(&stream_); }
    operator nax_stream*() const { return stream_; }

private:
    nax_stream* stream_ = nullptr;
};

void bench_quasi(const char* name, int brng, int dimension) {
    nax_brng_properties row;
    __stoGetBrngProperties(brng, &row);
    const Stream stream(brng, static_cast<uint32_t>(dimension));
    const int n = kBuffer / dimension * dimension;
    const std::string label = std::string(name) + " " + std::to_string(dimension) + " dimensions ";
    report(label + "words", n, [&](int count) { row.iBRng(stream, count, buffer); });
    report(label + "doubles", n, [&](int count) { row.dBRng(stream, count, buffer, 0.0, 1.0); });
    report(label + "singles", n, [&](int count) { row.sBRng(stream, count, reinterpret_cast<float*>(buffer), 0.f, 1.f); });
}

#ifdef NAX_HAVE_GSL
void bench_gsl(const char* name, const gsl_qrng_type* type, int dimension) {
    gsl_qrng* const peer = gsl_qrng_alloc(type, static_cast<unsigned>(dimension));
    report(std::string("  peer GSL ") + name + " " + std::to_string(dimension), kBuffer / dimension * dimension, [&](int n) {
        for (int i = 0; i < n; i += dimension) gsl_qrng_get(peer, buffer + i);
    });
    gsl_qrng_free(peer);
}
#endif

template <class Engine>
void bench_boost_quasi(const char* name, int dimension) {
    Engine engine(static_cast<std::size_t>(dimension));
    uint64_t* const words = reinterpret_cast<uint64_t*>(buffer);
    report(std::string("  peer Boost ") + name + " " + std::to_string(dimension), kBuffer / dimension * dimension,
           [&](int n) {
               for (int i = 0; i < n; ++i) words[i] = engine();
           });
}

void bench_counters() {
    uint32_t* const words = reinterpret_cast<uint32_t*>(buffer);
    const Stream philox(NAX_BRNG_PHILOX4X32X10, 7), ars(NAX_BRNG_ARS5, 7);
    for (const int n : {kBuffer, 16}) {
        const std::string label = " words, n = " + std::to_string(n);
        report("PHILOX4X32X10" + label, n, [&](int count) { __stoiBRngPHILOX4X32X10(philox, count, words); });
        report("ARS5" + label, n, [&](int count) { __stoiBRngARS5(ars, count, words); });
    }
#ifdef NAX_HAVE_RANDOM123
    using Peer = r123::Philox4x32_R<10>;
    report("  peer Random123 philox4x32", kBuffer, [&](int n) {
        Peer::ctr_type counter{};
        const Peer::key_type key{{7, 0}};
        for (int i = 0; i < n; i += 4, ++counter[0]) {
            const auto block = Peer()(counter, key);
            for (std::size_t j = 0; j < 4; ++j) words[i + static_cast<int>(j)] = block[j];
        }
    });
#endif
}

void bench_skips() {
    const Stream mt(NAX_BRNG_MT19937, 7), sfmt(NAX_BRNG_SFMT19937, 7);
    const Stream philox(NAX_BRNG_PHILOX4X32X10, 7), ars(NAX_BRNG_ARS5, 7);
    const uint64_t far = uint64_t{1} << 60;
    report_call("MT19937 skip of 2^60", 4, [&] { __stoSkipAheadStream(mt, far); });
    report_call("MT19937 skip of 2^22", 4, [&] { __stoSkipAheadStream(mt, 1 << 22); });
    report_call("SFMT19937 skip of 2^60", 4, [&] { __stoSkipAheadStream(sfmt, far); });
    report_call("PHILOX4X32X10 skip of 2^60", 10000, [&] { __stoSkipAheadStream(philox, far); });
    report_call("ARS5 skip of 2^60", 10000, [&] { __stoSkipAheadStream(ars, far); });
    boost::random::mt19937 peer(7);
    report_call("  peer Boost mt19937 discard of 2^60", 1, [&] { peer.discard(far); });
}

}  // namespace

int main() {
    for (const int dimension : {1, 3, 10, 12, 16, 40}) {
        bench_quasi("SOBOL", NAX_BRNG_SOBOL, dimension);
        bench_quasi("NIEDERREITER", NAX_BRNG_NIEDERREITER, dimension);
    }
    bench_quasi("NIEDERREITER", NAX_BRNG_NIEDERREITER, 318);
#ifdef NAX_HAVE_GSL
    for (const int dimension : {10, 40}) bench_gsl("sobol", gsl_qrng_sobol, dimension);
    bench_gsl("niederreiter_2", gsl_qrng_niederreiter_2, 10);
#endif
    for (const int dimension : {10, 40}) {
        bench_boost_quasi<boost::random::sobol>("sobol", dimension);
        bench_boost_quasi<boost::random::niederreiter_base2>("niederreiter", dimension);
    }
    bench_counters();
    bench_skips();
}
