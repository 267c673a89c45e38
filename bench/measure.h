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
    int64_t elements = 0;       // of a pass, where it isn't the row's
    std::string note = {};      // what else is to be said of it, its difference from ours for instance
    double minimum_ns = 0, median_ns = 0;
};

struct Options {
    int rounds = 25;
    double seconds_per_round = 4e-4;
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
        if (contenders[k].elements == 0) contenders[k].elements = elements;
        contenders[k].run();
        while (time(contenders[k].run, calls[k]) < options.seconds_per_round && calls[k] < (int64_t{1} << 30))
            calls[k] *= 2;
    }
    for (int round = 0; round < options.rounds; ++round)
        for (std::size_t k = 0; k < contenders.size(); ++k) {
            contenders[k].run();  // brings its data back into the caches
            const double seconds = time(contenders[k].run, calls[k]);
            samples[k].push_back(seconds * 1e9 / static_cast<double>(calls[k] * contenders[k].elements));
        }
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

// The report of a program, which takes
//     --only TEXT        the rows whose work contains the text
//     --json FILE        all figures
//     --markdown FILE    a section of docs/performance.md
class Report {
public:
    Report(std::string title, int argc, char** argv) : title_(std::move(title)) {
        for (int i = 1; i + 1 < argc; i += 2) {
            const std::string option = argv[i];
            (option == "--only"       ? only_
             : option == "--json"     ? json_
             : option == "--markdown" ? markdown_
                                      : unknown_) = argv[i + 1];
        }
    }

    bool wanted(const std::string& work) const { return work.find(only_) != std::string::npos; }

    // Measures the contenders of a row that is wanted, and adds it. A pass of theirs may be several times `elements`.
    void time(const std::string& work, const std::string& layout, int64_t elements, std::vector<Contender> contenders,
              const Options& options = {}, int64_t passes = 1) {
        if (!wanted(work)) return;
        measure(contenders, elements * passes, options);
        add({work, layout, elements, std::move(contenders)});
    }

    void add(Row row) {
        std::printf("%-36s %-9s n=%-8lld", row.work.c_str(), row.layout.c_str(), static_cast<long long>(row.elements));
        const double ours = row.contenders.front().minimum_ns;
        for (const Contender& contender : row.contenders) {
            std::printf("  %s %.4g", contender.name.c_str(), contender.minimum_ns);
            if (&contender != &row.contenders.front()) std::printf(" (x%.2f)", contender.minimum_ns / ours);
            if (!contender.note.empty()) std::printf(" [%s]", contender.note.c_str());
        }
        std::printf("\n");
        std::fflush(stdout);
        rows_.push_back(std::move(row));
    }

    // Writes what the command line asks for. Returns the exit code.
    int finish() const {
        bool written = true;
        if (!json_.empty()) written &= write_json();
        if (!markdown_.empty()) written &= write_markdown();
        if (!written) std::fprintf(stderr, "could not write the report\n");
        return written ? 0 : 1;
    }

private:
    bool write_json() const {
        std::ofstream out(json_);
        out << "{\"title\": \"" << title_ << "\", \"processor\": \"" << processor_name() << "\", \"compiler\": \""
            << __VERSION__ << "\", \"unit\": \"ns per element\", \"rows\": [\n";
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            const Row& row = rows_[i];
            out << "{\"work\": \"" << row.work << "\", \"layout\": \"" << row.layout << "\", \"n\": " << row.elements
                << ", \"times\": [";
            for (std::size_t k = 0; k < row.contenders.size(); ++k) {
                const Contender& contender = row.contenders[k];
                out << (k ? ", " : "") << "{\"name\": \"" << contender.name << "\", \"min\": " << contender.minimum_ns
                    << ", \"median\": " << contender.median_ns;
                if (!contender.note.empty()) out << ", \"note\": \"" << contender.note << "\"";
                out << "}";
            }
            out << "]}" << (i + 1 < rows_.size() ? ",\n" : "\n");
        }
        out << "]}\n";
        return static_cast<bool>(out);
    }

    // A table of ours beside the best rival, the cases that we lose in bold.
    bool write_markdown() const {
        std::ofstream out(markdown_);
        out << "## " << title_ << "\n\nNanoseconds per element, minimum of the rounds.\n\n"
            << "| work | layout | n | ours | best rival | its time | rival / ours |\n|---|---|---|---|---|---|---|\n";
        for (const Row& row : rows_) {
            const Contender& ours = row.contenders.front();
            const auto best =
                std::min_element(row.contenders.begin() + 1, row.contenders.end(),
                                 [](const Contender& a, const Contender& b) { return a.minimum_ns < b.minimum_ns; });
            out << "| " << row.work << " | " << row.layout << " | " << row.elements << " | " << figure(ours.minimum_ns);
            if (best == row.contenders.end()) {
                out << " | | | |\n";
                continue;
            }
            const double ratio = best->minimum_ns / ours.minimum_ns;
            const char* const mark = ratio < 0.97 ? "**" : "";  // figures repeat to some per cent
            out << " | " << best->name << " | " << figure(best->minimum_ns) << " | " << mark << figure(ratio) << mark
                << " |\n";
        }
        return static_cast<bool>(out);
    }

    static std::string figure(double value) {
        char text[32];
        std::snprintf(text, sizeof text, value < 100 ? "%.3g" : "%.0f", value);
        return text;
    }

    std::string title_, only_, json_, markdown_, unknown_;
    std::vector<Row> rows_;
};

}  // namespace nax::bench
