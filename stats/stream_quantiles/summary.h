// Summary of one variable's stream, from which quantiles of any order are read with a rank error of at most epsilon N.
//
// Level l holds values that stand for 16^l observations each; new observations go to level 0. A level that is full is
// sorted, and of every 16 neighbours the eighth goes to the next level. For any x, the count of the level's values up
// to x is then off by at most 8 of its own weights. With c(l) values made by each such step up to level l, all of those
// steps together are off by at most N / (2 c(l)), and
//
//     c(l) = l (l + 1) / (2 epsilon),     sum over l of 1 / (2 c(l)) = epsilon sum 1 / (l (l + 1)) < epsilon.
//
// The number of levels is unlimited, so N need not be known; memory grows with a power of the logarithm of epsilon N alone. The
// idea of levels of doubling weight is that of Munro and Paterson (Theor. Comput. Sci. 12, 1980), the bound by weights
// of Manku, Rajagopalan and Lindsay (SIGMOD 1998).
#pragma once

#include <cstdint>

namespace nax::stats {

// Values in any order, but for the first `sorted` ones.
struct StreamLevel {
    void* values;
    int64_t room, fill, sorted;
};

inline constexpr int64_t kStreamFan = 16;     // values that become one of the next level
inline constexpr int kMostStreamLevels = 16;  // 16^16 observations

struct StreamVariable {
    int64_t level_count;  // levels in use
    int64_t total;        // N
    int64_t selected;
    int64_t pending;  // a full level above the lowest awaits memory to be handed on
    StreamLevel* levels;
    void* scratch;  // for sorting
    int64_t scratch_room;
};

struct StreamState {
    int64_t variable_count;
    double epsilon;
    int64_t capacity[kMostStreamLevels];  // at which a level is full
    StreamVariable* variables;
};

void plan_levels(StreamState& state, double epsilon);
void release(StreamVariable& variable);

// Adds n values `stride` apart. False when memory is short; all values before some place have then been added.
template <class T>
bool add_values(const StreamState& state, StreamVariable& variable, const T* x, int64_t stride, int64_t n);
// Adds a value if that takes no more than to store it; else false.
template <class T>
inline bool add_one(const StreamState& state, StreamVariable& variable, T x) {
    if (variable.levels == nullptr || variable.pending != 0 || variable.selected == 0) return false;
    StreamLevel& level = variable.levels[0];
    if (level.fill >= level.room || level.fill >= state.capacity[0]) return false;
    static_cast<T*>(level.values)[level.fill++] = x;
    ++variable.total;
    return true;
}

// Quantiles of m orders, of at least one observation. False when memory is short.
template <class T>
bool read_quantiles(const StreamState& state, StreamVariable& variable, const T* orders, int64_t m, T* quantiles);

}  // namespace nax::stats
