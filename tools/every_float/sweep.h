// Every float through kernels of one function: errors against the double-precision function, special values, statuses.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/lib/reference.h"
#include "tools/every_float/kernels.h"

namespace nax::tools {

struct Case {
    float x, y;
    double error;  // in ulp
};

// What a kernel did over a set of arguments.
class Tally {
public:
    static constexpr int kept = 8;
    std::vector<Case> worst;                        // largest errors found, the largest first
    double sum = 0;                                 // of the errors of finite results
    uint64_t not_nearest = 0;                       // results with an error above 1/2
    uint64_t wrong_values = 0, wrong_statuses = 0;  // special values or signs, and statuses, other than they must be
    float wrong_value_at = 0, wrong_status_at = 0;

    // Replaces the kept errors by exact ones.
    void settle(const testing::Reference& reference);
    void merge(const Tally& other);
    void keep(const Case& c);
    // An error up to this one need not be kept.
    double kept_from() const { return worst.size() < kept ? 0 : worst.back().error; }
};

struct Run {
    const Kernel* kernel;
    Tally tally = {};
    uint64_t outside = 0;  // of a kernel with three reciprocals, in its own: results that neither of the others has
};

struct Sweep {
    std::vector<Run> runs;  // of one function
    uint64_t arguments = 0, finite_results = 0;
};

// Meets all 2^32 bit patterns, or every `stride`-th block of 2048 of them. The runs share the function's scalar path;
// those of one kernel with other reciprocals follow its own.
void sweep(const testing::Reference& reference, uint32_t stride, unsigned threads, Sweep& sweep);

}  // namespace nax::tools
