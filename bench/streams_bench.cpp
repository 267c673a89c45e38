// The basic generators beside GSL, Boost, libstdc++ and Random123: nanoseconds per number, and per call of creation and
// skips. Buffers stay in the caches. Takes the options of bench/measure.h.
#ifdef NAX_HAVE_GSL
#include <gsl/gsl_qrng.h>
#include <gsl/gsl_rng.h>
#endif
#if __has_include(<Random123/philox.h>)
#include <Random123/philox.h>
#define NAX_HAVE_RANDOM123
#endif

#ifdef NAX_HAVE_BOOST
#include <boost/random.hpp>
#include <boost/random/niederreiter_base2.hpp>
#include <boost/random/sobol.hpp>
#endif
#include <memory>
#include <random>

#include "bench/measure.h"
#include "bench/stream_plain_rivals.h"
#include "nax/streams.h"

namespace nax::bench {
namespace {

constexpr int kBuffer = 8192;
alignas(64) double buffer[2 * kBuffer];  // a word of WH has 16 bytes
uint64_t* const words = reinterpret_cast<uint64_t*>(buffer);

class Stream {
public:
    explicit Stream(int brng, uint32_t param = 7) { __stoNewStreamEx(&stream_, brng, 1, &param); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream() { __stoDeleteStream(&stream_); }
    operator nax_stream*() const { return stream_; }

private:
    nax_stream* stream_ = nullptr;
};

// A generator of another library that makes n numbers.
struct Peer {
    std::string name;
    std::function<void(int)> fill;
};

template <class Engine>
Peer engine_peer(const char* name, Engine engine) {
    return {name, [engine](int n) mutable {
                for (int i = 0; i < n; ++i) words[i] = engine();
            }};
}

#ifdef NAX_HAVE_GSL
Peer gsl_peer(const gsl_rng_type* type) {
    const std::shared_ptr<gsl_rng> rng(gsl_rng_alloc(type), gsl_rng_free);
    return {"GSL", [rng](int n) {
                for (int i = 0; i < n; ++i) words[i] = gsl_rng_get(rng.get());
            }};
}
Peer gsl_quasi_peer(const gsl_qrng_type* type, int dimension) {
    const std::shared_ptr<gsl_qrng> rng(gsl_qrng_alloc(type, static_cast<unsigned>(dimension)), gsl_qrng_free);
    return {"GSL", [rng, dimension](int n) {
                for (int i = 0; i < n; i += dimension) gsl_qrng_get(rng.get(), buffer + i);
            }};
}
#endif
#ifdef NAX_HAVE_RANDOM123
Peer random123_peer() {
    using Philox = r123::Philox4x32_R<10>;
    return {"Random123", [](int n) {
                uint32_t* const r = reinterpret_cast<uint32_t*>(buffer);
                Philox::ctr_type counter{};
                for (int i = 0; i < n; i += 4, ++counter[0]) {
                    const auto block = Philox()(counter, {{7, 0}});
                    for (std::size_t j = 0; j < 4; ++j) r[i + static_cast<int>(j)] = block[j];
                }
            }};
}
#endif

// The same recurrence in other libraries, or the nearest they have.
std::vector<Peer> peers_of(const std::string& name) {
    std::vector<Peer> peers;
    if (name == "MCG31") {
        using Lehmer = std::linear_congruential_engine<uint64_t, 1132489760, 0, 2147483647>;
        peers.push_back(engine_peer("libstdc++ LCG", Lehmer(1)));
        peers.push_back(engine_peer("libstdc++ minstd_rand", std::minstd_rand()));
    }
    if (name == "MT19937") peers.push_back(engine_peer("libstdc++", std::mt19937()));
#ifdef NAX_HAVE_BOOST
    if (name == "MCG59") peers.push_back(engine_peer("Boost rand48", boost::random::rand48()));
    if (name == "MT19937") peers.push_back(engine_peer("Boost", boost::random::mt19937()));
#endif
#ifdef NAX_HAVE_GSL
    if (name == "MT19937") peers.push_back(gsl_peer(gsl_rng_mt19937));
    if (name == "R250") peers.push_back(gsl_peer(gsl_rng_r250));
    if (name == "MRG32K3A") peers.push_back(gsl_peer(gsl_rng_cmrg));
#endif
#ifdef NAX_HAVE_RANDOM123
    if (name == "PHILOX4X32X10") peers.push_back(random123_peer());
#endif
    return peers;
}

// Words, doubles and singles of a stream; the peers make words.
void time_stream(Report& report, const std::string& name, int brng, nax_stream* stream, const char* layout,
                 const std::vector<int>& lengths, const std::vector<Peer>& word_peers,
                 const std::vector<Peer>& double_peers) {
    nax_brng_properties row;
    __stoGetBrngProperties(brng, &row);
    const auto time = [&](const char* kind, const std::function<void(int)>& fill, const std::vector<Peer>& peers) {
        for (const int n : lengths) {
            std::vector<Contender> contenders = {{"ours", [&] { fill(n); }}};
            for (const Peer& peer : peers) contenders.push_back({peer.name, [&] { peer.fill(n); }});
            report.time(name + kind, layout, n, std::move(contenders));
        }
    };
    time(
        " words", [&](int n) { row.iBRng(stream, n, buffer); }, word_peers);
    time(
        " doubles", [&](int n) { row.dBRng(stream, n, buffer, 0.0, 1.0); }, double_peers);
    time(" singles", [&](int n) { row.sBRng(stream, n, reinterpret_cast<float*>(buffer), 0.0f, 1.0f); }, {});
}

struct Kind {
    const char* name;
    int brng;
};
constexpr Kind kPseudo[] = {{"MCG31", NAX_BRNG_MCG31},
                            {"R250", NAX_BRNG_R250},
                            {"MRG32K3A", NAX_BRNG_MRG32K3A},
                            {"MCG59", NAX_BRNG_MCG59},
                            {"WH", NAX_BRNG_WH},
                            {"MT19937", NAX_BRNG_MT19937},
                            {"MT2203", NAX_BRNG_MT2203},
                            {"SFMT19937", NAX_BRNG_SFMT19937},
                            {"PHILOX4X32X10", NAX_BRNG_PHILOX4X32X10},
                            {"ARS5", NAX_BRNG_ARS5}};

void time_pseudo_random(Report& report) {
    std::mt19937_64 engine;
    const Peer uniform = {"libstdc++ mt19937_64", [&engine](int n) {
                              std::uniform_real_distribution<double> distribution(0.0, 1.0);
                              for (int i = 0; i < n; ++i) buffer[i] = distribution(engine);
                          }};
    for (const Kind& kind : kPseudo) {
        const Stream stream(kind.brng);
        std::vector<Peer> double_peers;
        if (kind.brng == NAX_BRNG_MT19937) double_peers.push_back(uniform);
        time_stream(report, kind.name, kind.brng, stream, "", {kBuffer, 1000, 16}, peers_of(kind.name), double_peers);
    }
}

void time_quasi_random(Report& report, int dimension) {
    const int n = kBuffer / dimension * dimension;
    for (const Kind& kind : {Kind{"SOBOL", NAX_BRNG_SOBOL}, Kind{"NIEDERREITER", NAX_BRNG_NIEDERREITER}}) {
        const bool sobol = kind.brng == NAX_BRNG_SOBOL;
        if (sobol && dimension > 40) continue;
        const Stream stream(kind.brng, static_cast<uint32_t>(dimension));
        std::vector<Peer> word_peers, double_peers;
#ifdef NAX_HAVE_BOOST
        const auto size = static_cast<std::size_t>(dimension);
        if (dimension == 10 || dimension == 40)
            word_peers.push_back(sobol ? engine_peer("Boost", boost::random::sobol(size))
                                       : engine_peer("Boost", boost::random::niederreiter_base2(size)));
#endif
#ifdef NAX_HAVE_GSL
        // GSL's Niederreiter points have 12 dimensions at the most.
        if (dimension == 10 || (dimension == 40 && sobol))
            double_peers.push_back(gsl_quasi_peer(sobol ? gsl_qrng_sobol : gsl_qrng_niederreiter_2, dimension));
#endif
        time_stream(report, kind.name, kind.brng, stream, ("dim " + std::to_string(dimension)).c_str(), {n}, word_peers,
                    double_peers);
    }
}

// Calls of all lengths beside loops without a library.
void time_beside_plain_loops(Report& report) {
    constexpr int kMany = 1000000;
    std::vector<double> memory(kMany);
    double* const doubles = memory.data();
    float* const singles = reinterpret_cast<float*>(doubles);
    uint32_t* const integers = reinterpret_cast<uint32_t*>(doubles);
    nax_brng_properties row;
    const auto peers_and = [](std::vector<Contender> contenders, const char* library, std::function<void(int)> fill, int n) {
        if (fill) contenders.push_back({library, [fill, n] { fill(n); }});
        return contenders;
    };
    std::function<void(int)> gsl;
#ifdef NAX_HAVE_GSL
    const std::shared_ptr<gsl_rng> rng(gsl_rng_alloc(gsl_rng_mt19937), gsl_rng_free);
    gsl = [&](int n) {
        for (int i = 0; i < n; ++i) doubles[i] = gsl_rng_uniform(rng.get());
    };
#endif
    {
        const Stream stream(NAX_BRNG_MT19937);
        __stoGetBrngProperties(NAX_BRNG_MT19937, &row);
        PlainTwister plain(7);
        for (const int n : {1, 4, 16, 100, 1000, kMany}) {
            report.time("MT19937 words, plain", "", n, {{"ours", [&, n] { row.iBRng(stream, n, integers); }}, {"plain loop", [&, n] { plain.words(integers, n); }}});
            report.time("MT19937 doubles, plain", "", n,
                        peers_and({{"ours", [&, n] { row.dBRng(stream, n, doubles, 0, 1); }}, {"plain loop", [&, n] { plain.doubles(doubles, n, 0, 1); }}}, "GSL", gsl, n));
            report.time("MT19937 singles, plain", "", n, {{"ours", [&, n] { row.sBRng(stream, n, singles, 0, 1); }}, {"plain loop", [&, n] { plain.singles(singles, n, 0, 1); }}});
        }
        report.time("MT19937 creation, plain", "", 1,
                    {{"ours", [&] { const Stream made(NAX_BRNG_MT19937); }}, {"plain loop", [&] { const auto made = std::make_unique<PlainTwister>(7); words[0] = reinterpret_cast<uintptr_t>(made.get()); }}});
    }
    const Stream sfmt(NAX_BRNG_SFMT19937), ars(NAX_BRNG_ARS5);
    PlainSfmt plain_sfmt;
    PlainArs5 plain_ars;
    nax_brng_properties ars_row;
    __stoGetBrngProperties(NAX_BRNG_SFMT19937, &row);
    __stoGetBrngProperties(NAX_BRNG_ARS5, &ars_row);
    for (const int n : {4, 16, 1000, kMany}) {
        report.time("SFMT19937 words, plain", "", n, {{"ours", [&, n] { row.iBRng(sfmt, n, integers); }}, {"plain loop", [&, n] { plain_sfmt.words(integers, n); }}});
        report.time("SFMT19937 doubles, plain", "", n, {{"ours", [&, n] { row.dBRng(sfmt, n, doubles, 0, 1); }}, {"plain loop", [&, n] { plain_sfmt.doubles(doubles, n, 0, 1); }}});
        report.time("ARS5 words, plain", "", n, {{"ours", [&, n] { ars_row.iBRng(ars, n, integers); }}, {"plain loop", [&, n] { plain_ars.words(integers, n); }}});
    }
    for (const int dimension : {1, 2, 3, 5, 8, 10, 16, 20, 40}) {
        const Stream stream(NAX_BRNG_SOBOL, static_cast<uint32_t>(dimension)), selected(NAX_BRNG_SOBOL, static_cast<uint32_t>(dimension)),
            alone(NAX_BRNG_SOBOL, 1);
        __stoLeapfrogStream(selected, dimension - 1, 0x7FFFFFFF);
        __stoGetBrngProperties(NAX_BRNG_SOBOL, &row);
        uint32_t numbers[40][32];
        for (int d = 0; d < 40; ++d) {
            for (int bit = 0; bit < 32; ++bit) numbers[d][bit] = 0x80000000u >> bit;  // the work doesn't depend on them
        }
        PlainDigital plain(numbers, dimension), plain_one(numbers, 1);
        std::function<void(int)> gsl_points;
#ifdef NAX_HAVE_GSL
        const std::shared_ptr<gsl_qrng> points(gsl_qrng_alloc(gsl_qrng_sobol, static_cast<unsigned>(dimension)), gsl_qrng_free);
        gsl_points = [&, dimension](int n) {
            for (int i = 0; i < n; i += dimension) gsl_qrng_get(points.get(), doubles + i);
        };
#endif
        const std::string layout = "dim " + std::to_string(dimension);
        for (const int count : {1, 16}) {
            const int n = count * dimension;
            report.time("SOBOL doubles, plain", layout, n,
                        peers_and({{"ours", [&, n] { row.dBRng(stream, n, doubles, 0, 1); }}, {"plain loop", [&, count] { plain.doubles(doubles, count); }}}, "GSL", gsl_points, n));
        }
        for (const int n : {1, 16, 1000}) {
            report.time("SOBOL one coordinate, plain", layout, n, {{"ours", [&, n] { row.dBRng(selected, n, doubles, 0, 1); }}, {"one dimension", [&, n] { row.dBRng(alone, n, doubles, 0, 1); }}, {"plain loop", [&, n] { plain_one.doubles(doubles, n); }}});
        }
    }
}

void time_calls(Report& report) {
    const Options once{7, 0};
    for (const Kind& kind : kPseudo) {
        std::vector<Contender> contenders = {{"ours", [&] { const Stream stream(kind.brng); }}};
        if (kind.brng == NAX_BRNG_MT19937)
            contenders.push_back({"libstdc++", [] {
                                      std::mt19937 engine(7);
                                      words[0] = engine();
                                  }});
        report.time(std::string("creation of ") + kind.name, "", 1, std::move(contenders));
    }
    const auto time_skip = [&](const Kind& kind, int log2, std::vector<Contender> peers) {
        const auto stream = std::make_shared<Stream>(kind.brng);
        peers.insert(peers.begin(), {"ours", [stream, log2] { __stoSkipAheadStream(*stream, uint64_t{1} << log2); }});
        report.time(std::string(kind.name) + " skip of 2^" + std::to_string(log2), "", 1, std::move(peers), once);
    };
    const Stream mrg(NAX_BRNG_MRG32K3A);
    const uint64_t far[3] = {0, 0, uint64_t{1} << 52};
    report.time("MRG32K3A skip of 2^180", "", 1, {{"ours", [&] { __stoSkipAheadStreamEx(mrg, 3, far); }}});
    time_skip({"MRG32K3A", NAX_BRNG_MRG32K3A}, 40, {});
    time_skip({"MT19937", NAX_BRNG_MT19937}, 22, {});
    std::vector<Contender> jump;
#ifdef NAX_HAVE_BOOST
    boost::random::mt19937 peer(7);
    jump.push_back({"Boost", [&] { peer.discard(boost::uintmax_t{1} << 60); }});
#endif
    time_skip({"MT19937", NAX_BRNG_MT19937}, 60, jump);
    time_skip({"SFMT19937", NAX_BRNG_SFMT19937}, 60, {});
    time_skip({"PHILOX4X32X10", NAX_BRNG_PHILOX4X32X10}, 60, {});
    time_skip({"ARS5", NAX_BRNG_ARS5}, 60, {});
}

}  // namespace
}  // namespace nax::bench

int main(int argc, char** argv) {
    using namespace nax::bench;
    pin_to_one_core();
    Report report("Random streams", argc, argv);
    time_pseudo_random(report);
    for (const int dimension : {1, 3, 10, 12, 16, 40, 318}) time_quasi_random(report, dimension);
    time_beside_plain_loops(report);
    time_calls(report);
    return report.finish();
}
