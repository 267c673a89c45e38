// Random streams: one sequence shared by four workers, a Monte Carlo estimate whose bits don't depend on the number of
// threads, and quasi-random against pseudo-random points.
//
// The example throughout is the mean distance of two random points in the unit cube, an integral over six coordinates
// whose value is known (Robbins' constant).
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "nax/streams.h"

void show_streams(const char* output_directory);

namespace {

constexpr double kRobbins = 0.66170718226717623515;
constexpr int kCoordinates = 6;

// An owner, so that every path deletes its stream.
class Stream {
public:
    Stream(int brng, uint32_t parameter) { __stoNewStreamEx(&stream_, brng, 1, &parameter); }
    explicit Stream(const Stream& other) { __stoCopyStream(&stream_, other.stream_); }
    Stream& operator=(const Stream&) = delete;
    ~Stream() {
        if (stream_ != nullptr) __stoDeleteStream(&stream_);
    }
    nax_stream* get() const { return stream_; }

private:
    nax_stream* stream_ = nullptr;
};

double distance(const double* p) { return std::sqrt(std::pow(p[0] - p[3], 2) + std::pow(p[1] - p[4], 2) + std::pow(p[2] - p[5], 2)); }

// ---- One sequence, four workers

void show_split() {
    constexpr int kWorkers = 4, kEach = 4;
    uint32_t parent_words[kWorkers * kEach][4], mine[kEach][4];
    const Stream root(NAX_BRNG_WH, 2024);
    const Stream parent(root);
    __stoiBRngWH(parent.get(), kWorkers * kEach, parent_words);
    std::puts("WH, first component; the parent draws");
    for (const auto& word : parent_words) std::printf(" %8u", word[0]);
    std::puts("\nleapfrog: worker k takes terms k, k + 4, k + 8 ...   skip-ahead: worker k takes terms 4k to 4k + 3");
    for (int k = 0; k < kWorkers; ++k) {
        const Stream leaper(root), skipper(root);
        __stoLeapfrogStream(leaper.get(), k, kWorkers);
        __stoiBRngWH(leaper.get(), kEach, mine);
        std::printf("  %d:", k);
        for (const auto& word : mine) std::printf(" %8u", word[0]);
        __stoSkipAheadStream(skipper.get(), static_cast<uint64_t>(k) * kEach);
        __stoiBRngWH(skipper.get(), kEach, mine);
        std::printf("      ");
        for (const auto& word : mine) std::printf(" %8u", word[0]);
        std::puts("");
    }
}

// ---- The same result on any number of threads

struct Sums {
    double value = 0, square = 0;
};

constexpr int kPieces = 64, kPointsPerPiece = 20000;

// Piece p of the work, with the numbers that belong to it.
Sums run_piece(const Stream& root, int piece) {
    const Stream stream(root);
    __stoSkipAheadStream(stream.get(), static_cast<uint64_t>(piece) * kPointsPerPiece * kCoordinates);
    Sums sums;
    std::vector<double> numbers(kCoordinates * 500);
    for (int done = 0; done < kPointsPerPiece; done += 500) {
        __stodBRngMRG32K3A(stream.get(), static_cast<int>(numbers.size()), numbers.data(), 0.0, 1.0);
        for (size_t i = 0; i < numbers.size(); i += kCoordinates) {
            const double value = distance(&numbers[i]);
            sums.value += value;
            sums.square += value * value;
        }
    }
    return sums;
}

// Pieces are dealt to the threads; their sums are added in the order of the pieces.
Sums run_on(int threads) {
    const Stream root(NAX_BRNG_MRG32K3A, 12345);
    std::vector<Sums> pieces(kPieces);
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([&root, &pieces, t, threads] {
            for (int p = t; p < kPieces; p += threads) pieces[static_cast<size_t>(p)] = run_piece(root, p);
        });
    }
    for (std::thread& worker : workers) worker.join();
    Sums total;
    for (const Sums& piece : pieces) {
        total.value += piece.value;
        total.square += piece.square;
    }
    return total;
}

void show_estimate() {
    constexpr double n = static_cast<double>(kPieces) * kPointsPerPiece;
    std::printf("\nmean distance of two points in the unit cube, %.0f pairs (exact: %.12f)\n", n, kRobbins);
    for (const int threads : {1, 2, 4}) {
        const Sums sums = run_on(threads);
        const double mean = sums.value / n;
        const double error = std::sqrt((sums.square / n - mean * mean) / n);
        std::printf("  %d thread%s  %.15f +- %.6f   bits %a\n", threads, threads == 1 ? " " : "s", mean, error, mean);
    }
}

// ---- Quasi-random and pseudo-random points

struct Curve {
    std::string name, colour;
    std::vector<double> points, errors;
};

constexpr int kSmallest = 4, kLargest = 16;      // powers of two

// Errors of one run after 2^4, 2^5, ... points.
template <class Draw>
std::vector<double> errors_along(const Draw& draw) {
    std::vector<double> errors, point(kCoordinates);
    double sum = 0;
    for (int i = 1; i <= 1 << kLargest; ++i) {
        draw(point.data());
        sum += distance(point.data());
        if (i >= 1 << kSmallest && (i & (i - 1)) == 0) errors.push_back(std::abs(sum / i - kRobbins));
    }
    return errors;
}

// Root mean square error over runs with different seeds.
Curve pseudo_random() {
    constexpr int kRuns = 20;
    Curve curve{"pseudo-random (MRG32K3A, 20 runs)", "#D55E00", {}, {}};
    curve.errors.assign(kLargest - kSmallest + 1, 0.0);
    for (uint32_t run = 1; run <= kRuns; ++run) {
        const Stream stream(NAX_BRNG_MRG32K3A, run);
        const auto errors = errors_along([&](double* p) { __stodBRngMRG32K3A(stream.get(), kCoordinates, p, 0.0, 1.0); });
        for (size_t i = 0; i < errors.size(); ++i) curve.errors[i] += errors[i] * errors[i] / kRuns;
    }
    for (double& error : curve.errors) error = std::sqrt(error);
    return curve;
}

// Empty when the generator isn't there.
Curve quasi_random() {
    Curve curve{"Sobol points", "#0072B2", {}, {}};
    const Stream stream(NAX_BRNG_SOBOL, kCoordinates);
    nax_brng_properties row;
    if (stream.get() == nullptr || __stoGetBrngProperties(NAX_BRNG_SOBOL, &row) != STO_STATUS_OK) return curve;
    bool drawn = true;
    const auto errors = errors_along([&](double* p) { drawn = row.dBRng(stream.get(), kCoordinates, p, 0.0, 1.0) == STO_STATUS_OK && drawn; });
    if (drawn) curve.errors = errors;
    return curve;
}

// ---- The picture: error against points, both axes logarithmic

constexpr double kLeft = 80, kTop = 40, kWidth = 520, kHeight = 340;

double plot_x(double log2_points) { return kLeft + (log2_points - kSmallest) / (kLargest - kSmallest) * kWidth; }
double plot_y(double error) { return kTop + (std::log10(0.1) - std::log10(error)) / 5.0 * kHeight; }       // 0.1 down to 1e-6

void write_text(std::ofstream& svg, double x, double y, const std::string& anchor, const std::string& text) {
    svg << "<text x='" << x << "' y='" << y << "' text-anchor='" << anchor << "' font-size='13'>" << text << "</text>\n";
}

void write_axes(std::ofstream& svg) {
    for (int k = kSmallest; k <= kLargest; k += 2) {
        svg << "<line x1='" << plot_x(k) << "' x2='" << plot_x(k) << "' y1='" << kTop << "' y2='" << kTop + kHeight << "' stroke='#E0E0E0'/>\n";
        write_text(svg, plot_x(k), kTop + kHeight + 20, "middle", "2<tspan dy='-5' font-size='9'>" + std::to_string(k) + "</tspan>");
    }
    for (int d = 1; d <= 6; ++d) {
        const double y = plot_y(std::pow(10.0, -d));
        svg << "<line x1='" << kLeft << "' x2='" << kLeft + kWidth << "' y1='" << y << "' y2='" << y << "' stroke='#E0E0E0'/>\n";
        write_text(svg, kLeft - 8, y + 4, "end", "10<tspan dy='-5' font-size='9'>-" + std::to_string(d) + "</tspan>");
    }
    svg << "<rect x='" << kLeft << "' y='" << kTop << "' width='" << kWidth << "' height='" << kHeight << "' fill='none' stroke='#30343A'/>\n";
    write_text(svg, kLeft + kWidth / 2, kTop + kHeight + 42, "middle", "points");
    write_text(svg, kLeft, kTop - 14, "start", "Error of the mean distance of two points in the unit cube (6 dimensions)");
}

void write_picture(const std::string& path, const std::vector<Curve>& curves) {
    std::ofstream svg(path);
    svg << "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 640 440' font-family='sans-serif' fill='#30343A'>\n"
        << "<rect width='640' height='440' fill='white'/>\n";
    write_axes(svg);
    double legend = kTop + 24;
    for (const Curve& curve : curves) {
        if (curve.errors.empty()) continue;
        svg << "<polyline fill='none' stroke-width='2' stroke='" << curve.colour << "' points='";
        for (size_t i = 0; i < curve.errors.size(); ++i) {
            svg << plot_x(kSmallest + static_cast<double>(i)) << ',' << plot_y(std::max(curve.errors[i], 1e-6)) << ' ';
        }
        svg << "'/>\n<line x1='290' x2='320' y1='" << legend - 4 << "' y2='" << legend - 4 << "' stroke-width='2' stroke='" << curve.colour << "'/>\n";
        write_text(svg, 328, legend, "start", curve.name);
        legend += 20;
    }
    svg << "</svg>\n";
}

// Slope of log error against log points, by least squares.
double order_of(const Curve& curve) {
    const double n = static_cast<double>(curve.errors.size());
    double sx = 0, sy = 0, sxx = 0, sxy = 0;
    for (size_t i = 0; i < curve.errors.size(); ++i) {
        const double x = static_cast<double>(i), y = std::log2(curve.errors[i]);
        sx += x;
        sy += y;
        sxx += x * x;
        sxy += x * y;
    }
    return (n * sxy - sx * sy) / (n * sxx - sx * sx);
}

}  // namespace

void show_streams(const char* output_directory) {
    show_split();
    show_estimate();
    const std::vector<Curve> curves = {pseudo_random(), quasi_random()};
    std::printf("\nerror after 2^%d points, and its order in the number of points\n", kLargest);
    for (const Curve& curve : curves) {
        if (!curve.errors.empty()) std::printf("  %-34s %.2e   n^%.2f\n", curve.name.c_str(), curve.errors.back(), order_of(curve));
    }
    const std::string path = std::string(output_directory) + "/sobol-convergence.svg";
    write_picture(path, curves);
    std::printf("picture: %s\n", path.c_str());
}
