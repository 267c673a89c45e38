// Which variables of each observation are observed, and the observations by pattern.
#pragma once

#include <cstdint>

#include "service/block.h"
#include "nax/status.h"

namespace nax::stats::missing {

// The observation matrix in either storage. A missing entry is a NaN with the sign, all exponent bits and the quiet bit
// set.
template <class T>
struct Observations {
    const T* x;
    int64_t p, n;
    bool rows;

    T at(int64_t i, int64_t j) const { return rows ? x[j * n + i] : x[i * p + j]; }
    static bool is_missing(T value);
};

// Distinct patterns in the order of their first appearance; the observations of a pattern in their own order. Imputed
// values follow the same order.
class Patterns {
public:
    // Status: Memory.
    template <class T>
    int32_t find(const Observations<T>& data);

    int64_t count() const { return count_; }
    int64_t missing_entries() const { return missing_entries_; }
    bool is_observed(int64_t pattern, int64_t j) const {
        return (words_[static_cast<std::size_t>(pattern * width_ + j / 64)] >> (j % 64) & 1) != 0;
    }
    // Observations of a pattern: members()[begin(pattern)] ... members()[begin(pattern + 1) - 1].
    int64_t begin(int64_t pattern) const { return begins_[static_cast<std::size_t>(pattern)]; }
    const int64_t* members() const { return members_.get(); }

private:
    int64_t width_ = 0, count_ = 0, missing_entries_ = 0;
    service::Block<uint64_t> words_;   // width_ for each pattern
    service::Block<int64_t> begins_;   // count() + 1
    service::Block<int64_t> members_;  // n
    service::Block<int64_t> pattern_of_;
};

}  // namespace nax::stats::missing
