// Timing of contenders that do the same work, and the report: a table on the screen, JSON, and a section of
// docs/performance.md.
//
// Contenders take turns in every round, so that the machine's moods meet all of them. Each figure is the time of one
// element: the minimum over the rounds, which repeats to a few per cent, and the median.
#pragma once

#include <sched.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace nax::bench {

// Keeps the process on the last core that it may use; the first one serves most interrupts.
inline void pin_to_one_core() {
    cpu_set_t allowed, one;
    if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) return;
    for (int core = CPU_SETSIZE - 1; core >= 0; --core) {
        if (!CPU_ISSET(core, &allowed)) continue;
        CPU_ZERO(&one);
        CPU_SET(core, &one);
        sched_setaffinity(0, sizeof one, &one);
        return;
    }
}

inline std::string processor_name() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);)
        if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
    return "unknown processor";
}

struct Contender {
    std::string name;
    std::function<void()> run;  // one pass over all elements
    double minimum_ns = 0, median_ns = 0;
};

struct Options {
    int rounds = 15;
    double seconds_per_round = 2e-4;
};

// Fills in the times of all contenders, per element.
inline void measure(std::vector<Contender>& contenders, int64_t elements, const Options& options = {}) {
    using Clock = std::chrono::steady_clock;
    const auto time = [](const std::function<void()>& run, int64_t calls) {
        const auto start = Clock::now();
        for (int64_t i = 0; i < calls; ++i) run();
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    std::vector<std::vector<double>> samples(contenders.size());
    std::vector<int64_t> calls(contenders.size(), 1);
    for (std::size_t k = 0; k < contenders.size(); ++k) {
        contenders[k].run();
        while (time(contenders[k].run, calls[k]) < options.seconds_per_round && calls[k] < (int64_t{1} << 30))
            calls[k] *= 2;
    }
    for (int round = 0; round < options.rounds; ++round)
        for (std::size_t k = 0; k < contenders.size(); ++k)
            samples[k].push_back(time(contenders[k].run, calls[k]) * 1e9 / static_cast<double>(calls[k] * elements));
    for (std::size_t k = 0; k < contenders.size(); ++k) {
        std::sort(samples[k].begin(), samples[k].end());
        contenders[k].minimum_ns = samples[k].front();
        contenders[k].median_ns = samples[k][samples[k].size() / 2];
    }
}

// One line of the report; the first contender is ours.
struct Row {
    std::string work, layout;
    int64_t elements;
    std::vector<Contender> contenders;
};

class Report {
public:
    explicit Report(std::string title) : title_(std::move(title)) {}

    void add(Row row) {
        std::printf("%-16s %-10s n=%-8lld", row.work.c_str(), row.layout.c_str(), static_cast<long long>(row.elements));
        for (const Contender& contender : row.contenders)
            std::printf("  %s %.4f", contender.name.c_str(), contender.minimum_ns);
        std::printf("\n");
        rows_.push_back(std::move(row));
    }

    bool write_json(const std::string& path) const {
        std::ofstream out(path);
        out << "{\"title\": \"" << title_ << "\", \"processor\": \"" << processor_name() << "\", \"compiler\": \""
            << __VERSION__ << "\", \"unit\": \"ns per element\", \"rows\": [\n";
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            const Row& row = rows_[i];
            out << "{\"work\": \"" << row.work << "\", \"layout\": \"" << row.layout << "\", \"n\": " << row.elements
                << ", \"times\": [";
            for (std::size_t k = 0; k < row.contenders.size(); ++k)
                out << (k ? ", " : "") << "{\"name\": \"" << row.contenders[k].name
                    << "\", \"min\": " << row.contenders[k].minimum_ns
                    << ", \"median\": " << row.contenders[k].median_ns << "}";
            out << "]}" << (i + 1 < rows_.size() ? ",\n" : "\n");
        }
        out << "]}\n";
        return static_cast<bool>(out);
    }

    // A section of docs/performance.md: the best rival beside ours, cases that we lose in bold.
    bool write_markdown(const std::string& path) const {
        std::ofstream out(path);
        out << "## " << title_ << "\n\n"
            << processor_name() << ", compiler " << __VERSION__
            << ". Nanoseconds per element, minimum of the rounds.\n\n"
            << "| work | layout | n | ours | best rival | its time | rival / ours |\n|---|---|---|---|---|---|---|\n";
        for (const Row& row : rows_) {
            const Contender& ours = row.contenders.front();
            const auto best =
                std::min_element(row.contenders.begin() + 1, row.contenders.end(),
                                 [](const Contender& a, const Contender& b) { return a.minimum_ns < b.minimum_ns; });
            char line[256];
            if (best == row.contenders.end()) {
                std::snprintf(line, sizeof line, "| %s | %s | %lld | %.4f | | | |\n", row.work.c_str(),
                              row.layout.c_str(), static_cast<long long>(row.elements), ours.minimum_ns);
            } else {
                const double ratio = best->minimum_ns / ours.minimum_ns;
                std::snprintf(line, sizeof line,
                              ratio < 1 ? "| %s | %s | %lld | %.4f | %s | %.4f | **%.2f** |\n"
                                        : "| %s | %s | %lld | %.4f | %s | %.4f | %.2f |\n",
                              row.work.c_str(), row.layout.c_str(), static_cast<long long>(row.elements),
                              ours.minimum_ns, best->name.c_str(), best->minimum_ns, ratio);
            }
            out << line;
        }
        return static_cast<bool>(out);
    }

    // Obeys --json FILE and --markdown FILE. Returns the exit code.
    int finish(int argc, char** argv) const {
        bool written = true;
        for (int i = 1; i + 1 < argc; ++i) {
            if (std::strcmp(argv[i], "--json") == 0) written &= write_json(argv[i + 1]);
            if (std::strcmp(argv[i], "--markdown") == 0) written &= write_markdown(argv[i + 1]);
        }
        if (!written) std::fprintf(stderr, "could not write the report\n");
        return written ? 0 : 1;
    }

private:
    std::string title_;
    std::vector<Row> rows_;
};

}  // namespace nax::bench
