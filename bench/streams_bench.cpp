// Nanoseconds per number of the basic generators, beside the peers that a Debian system packages: libstdc++, Boost and GSL,
// all in the same run. `streams_bench [text]` runs the lines whose name contains the text.
//
// Columns: bulk is a million numbers into a buffer of 8192 that stays in the cache, n=1000 and n=16 are calls of that
// length. Figures are the minimum of many repetitions; skips and creations are per call.
#include <gsl/gsl_qrng.h>
#include <gsl/gsl_rng.h>

#include <algorithm>
#include <boost/random.hpp>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "nax/streams.h"

namespace {

constexpr int kBuffer = 8192;
const char* filter = "";
alignas(64) double buffer_doubles[4 * kBuffer];
volatile double sink;

bool wanted(const std::string& name) { return name.find(filter) != std::string::npos; }

double seconds_of(const std::function<void()>& run) {
    const auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Nanoseconds per item of `fill(n)` called until `total` items are made.
double time_fill(const std::function<void(int)>& fill, int n, int total) {
    double best = 1e9;
    for (int repetition = 0; repetition < 15; ++repetition) {
        best = std::min(best, seconds_of([&] {
            for (int done = 0; done < total; done += n) fill(n);
        }));
    }
    return best * 1e9 / total;
}

void report(const std::string& name, const std::function<void(int)>& fill, int total = 1 << 20) {
    if (!wanted(name)) return;
    std::printf("%-34s %9.3f %9.3f %9.3f\n", name.c_str(), time_fill(fill, kBuffer, total), time_fill(fill, 1000, total / 2),
                time_fill(fill, 16, total / 8));
}

void report_call(const std::string& name, const std::function<void()>& call, int calls) {
    if (!wanted(name)) return;
    double best = 1e9;
    for (int repetition = 0; repetition < 7; ++repetition) {
        best = std::min(best, seconds_of([&] {
            for (int i = 0; i < calls; ++i) call();
        }));
    }
    std::printf("%-34s %12.1f ns a call\n", name.c_str(), best * 1e9 / calls);
}

class Stream {
public:
    explicit Stream(int brng, uint32_t seed = 7) { status_ = __stoNewStreamEx(&stream_, brng, 1, &seed); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream() {
        if (stream_ != nullptr) __stoDeleteStream(&stream_);
    }
    bool usable() const { return status_ == STO_STATUS_OK; }
    nax_stream* get() const { return stream_; }

private:
    nax_stream* stream_ = nullptr;
    int status_;
};

struct Kind {
    const char* name;
    int brng;
};
const Kind kKinds[] = {{"MCG31", NAX_BRNG_MCG31},       {"R250", NAX_BRNG_R250},           {"MRG32K3A", NAX_BRNG_MRG32K3A},
                       {"MCG59", NAX_BRNG_MCG59},       {"WH", NAX_BRNG_WH},               {"MT19937", NAX_BRNG_MT19937},
                       {"MT2203", NAX_BRNG_MT2203},     {"SFMT19937", NAX_BRNG_SFMT19937}, {"PHILOX4X32X10", NAX_BRNG_PHILOX4X32X10},
                       {"ARS5", NAX_BRNG_ARS5}};

void bench_generators() {
    for (const Kind& kind : kKinds) {
        const Stream stream(kind.brng);
        if (!stream.usable()) continue;
        nax_brng_properties row;
        __stoGetBrngProperties(kind.brng, &row);
        const std::string name = kind.name;
        float* const singles = reinterpret_cast<float*>(buffer_doubles);
        report(name + " words", [&](int n) { row.iBRng(stream.get(), n, buffer_doubles); });
        report(name + " doubles", [&](int n) { row.dBRng(stream.get(), n, buffer_doubles, 0.0, 1.0); });
        report(name + " singles", [&](int n) { row.sBRng(stream.get(), n, singles, 0.0f, 1.0f); });
    }
}

template <class Engine>
void bench_engine(const std::string& name, Engine engine) {
    uint64_t* const words = reinterpret_cast<uint64_t*>(buffer_doubles);
    report("  peer " + name, [&](int n) {
        for (int i = 0; i < n; ++i) words[i] = engine();
    });
}

void bench_gsl(const char* name, const gsl_rng_type* type) {
    gsl_rng* const rng = gsl_rng_alloc(type);
    uint64_t* const words = reinterpret_cast<uint64_t*>(buffer_doubles);
    report(std::string("  peer GSL ") + name, [&](int n) {
        for (int i = 0; i < n; ++i) words[i] = gsl_rng_get(rng);
    });
    gsl_rng_free(rng);
}

void bench_peers() {
    bench_engine("libstdc++ LCG 2^31-1", std::linear_congruential_engine<uint64_t, 1132489760, 0, 2147483647>(1));
    bench_engine("libstdc++ minstd_rand", std::minstd_rand());
    bench_engine("Boost rand48", boost::random::rand48());
    bench_engine("libstdc++ mt19937", std::mt19937());
    bench_engine("Boost mt19937", boost::random::mt19937());
    std::mt19937_64 mt64;
    report("  peer libstdc++ mt19937_64 doubles", [&](int n) {
        std::uniform_real_distribution<double> uniform(0.0, 1.0);
        for (int i = 0; i < n; ++i) buffer_doubles[i] = uniform(mt64);
    });
    bench_gsl("r250", gsl_rng_r250);
    bench_gsl("cmrg", gsl_rng_cmrg);
    bench_gsl("mt19937", gsl_rng_mt19937);
}

void bench_quasi_random() {
    for (const int dimension : {10, 40}) {
        const std::string suffix = " " + std::to_string(dimension) + " dimensions";
        for (const Kind& kind : {Kind{"SOBOL", NAX_BRNG_SOBOL}, Kind{"NIEDERREITER", NAX_BRNG_NIEDERREITER}}) {
            const Stream stream(kind.brng, static_cast<uint32_t>(dimension));
            if (!stream.usable()) continue;
            nax_brng_properties row;
            __stoGetBrngProperties(kind.brng, &row);
            report(kind.name + suffix, [&](int n) { row.dBRng(stream.get(), n, buffer_doubles, 0.0, 1.0); });
        }
        gsl_qrng* const peer = gsl_qrng_alloc(gsl_qrng_sobol, static_cast<unsigned>(dimension));
        report("  peer GSL sobol" + suffix, [&](int n) {
            for (int i = 0; i < n; i += dimension) gsl_qrng_get(peer, buffer_doubles + i);
        });
        gsl_qrng_free(peer);
    }
}

void bench_calls() {
    for (const Kind& kind : kKinds) {
        report_call(std::string("new stream ") + kind.name, [&] { const Stream stream(kind.brng); }, 2000);
    }
    report_call("  peer new libstdc++ mt19937", [] { std::mt19937 engine(7); sink = static_cast<double>(engine()); }, 2000);
    const Stream mrg(NAX_BRNG_MRG32K3A), twister(NAX_BRNG_MT19937), sfmt(NAX_BRNG_SFMT19937), philox(NAX_BRNG_PHILOX4X32X10),
        ars(NAX_BRNG_ARS5);
    const uint64_t far[3] = {0, 0, uint64_t{1} << 52};
    report_call("MRG32K3A skip 2^180", [&] { __stoSkipAheadStreamEx(mrg.get(), 3, far); }, 200);
    report_call("MRG32K3A skip 2^40", [&] { __stoSkipAheadStream(mrg.get(), uint64_t{1} << 40); }, 200);
    if (twister.usable()) {
        report_call("MT19937 skip 2^60", [&] { __stoSkipAheadStream(twister.get(), uint64_t{1} << 60); }, 5);
        boost::random::mt19937 peer;
        report_call("  peer Boost mt19937 jump 2^60", [&] { peer.discard(boost::uintmax_t{1} << 60); }, 3);
    }
    if (sfmt.usable()) report_call("SFMT19937 skip 2^60", [&] { __stoSkipAheadStream(sfmt.get(), uint64_t{1} << 60); }, 5);
    if (philox.usable()) report_call("PHILOX4X32X10 skip 2^60", [&] { __stoSkipAheadStream(philox.get(), uint64_t{1} << 60); }, 2000);
    if (ars.usable()) report_call("ARS5 skip 2^60", [&] { __stoSkipAheadStream(ars.get(), uint64_t{1} << 60); }, 2000);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) filter = argv[1];
    std::printf("%-34s %9s %9s %9s   ns per number\n", "", "bulk", "n=1000", "n=16");
    bench_generators();
    bench_peers();
    bench_quasi_random();
    bench_calls();
    return 0;
}
