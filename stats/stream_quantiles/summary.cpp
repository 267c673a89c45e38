#include "stats/stream_quantiles/summary.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "primitives/key_order.h"
#include "service/block.h"
#include "stats/order/ranking.h"

namespace nax::stats {
namespace {

// Makes room for `wanted` reals, at least twice what there was; keeps the first `kept`.
template <class T>
bool grow(void*& block, int64_t& room, int64_t wanted, int64_t kept) {
    if (wanted <= room) return true;
    const int64_t larger = std::max(wanted, 2 * room);
    service::Block<T> grown(static_cast<std::size_t>(larger));
    if (!grown) return false;
    if (kept > 0) std::memcpy(grown.get(), block, static_cast<std::size_t>(kept) * sizeof(T));
    if (block != nullptr) nax_serv_deallocate(block);
    block = grown.detach();
    room = larger;
    return true;
}

template <class T>
bool sort_level(StreamVariable& variable, StreamLevel& level) {
    if (level.sorted == level.fill) return true;
    T* const values = static_cast<T*>(level.values);
    // Few new values behind many sorted ones stay a run of their own.
    const int64_t first = (level.fill - level.sorted) * 8 < level.fill ? level.sorted : 0;
    const int64_t n = level.fill - first;
    if (!grow<T>(variable.scratch, variable.scratch_room, n, 0)) return false;
    sort_reals(values + first, static_cast<T*>(variable.scratch), n);
    if (first == 0) level.sorted = level.fill;
    return true;
}

// Hands one of every 16 values of a full level to the next one; nothing changes when memory is short, but that levels
// below have been handed on.
template <class T>
bool collapse(const StreamState& state, StreamVariable& variable, int64_t l) {
    for (; l + 1 < kMostStreamLevels; ++l) {
        StreamLevel &level = variable.levels[l], &next = variable.levels[l + 1];
        if (level.fill < state.capacity[l]) return true;
        const int64_t picked = level.fill / kStreamFan;
        if (!grow<T>(variable.scratch, variable.scratch_room, level.fill, 0) ||
            !grow<T>(next.values, next.room, next.fill + picked, next.fill)) {
            variable.pending = l > 0;
            return false;
        }
        T* const values = static_cast<T*>(level.values);
        sort_reals(values, static_cast<T*>(variable.scratch), level.fill);
        T* const target = static_cast<T*>(next.values) + next.fill;
        for (int64_t k = 0; k < picked; ++k) target[k] = values[kStreamFan * k + kStreamFan / 2 - 1];
        next.fill += picked;
        const int64_t rest = level.fill - kStreamFan * picked;
        std::copy(values + level.fill - rest, values + level.fill, values);
        level.fill = level.sorted = rest;
        variable.level_count = std::max(variable.level_count, l + 2);
    }
    return true;
}

// Makes up for what calls that ran out of memory left undone.
template <class T>
bool catch_up(const StreamState& state, StreamVariable& variable) {
    if (variable.pending == 0) return true;
    variable.pending = 0;
    for (int64_t l = 1; l < variable.level_count; ++l)
        if (!collapse<T>(state, variable, l)) return false;
    return true;
}

// A sorted part of a level, and the elements of it that are still in question.
template <class K>
struct Run {
    const K* keys;
    int64_t weight;
    int64_t from, to;
};

// Number of keys of the run up to `key`, by bisection between from and to.
template <class Order, class K>
int64_t count_up_to(const Run<K>& run, K key) {
    int64_t from = run.from, to = run.to;
    while (from < to) {
        const int64_t middle = from + (to - from) / 2;
        if (Order::to_key(run.keys[middle]) <= key)
            from = middle + 1;
        else
            to = middle;
    }
    return from;
}

// The smallest key that observations of at least `rank` in number don't exceed, found by halving the range of keys.
template <class T, class K = primitives::KeyBits<T>>
T value_of_rank(Run<K>* runs, int count, int64_t rank) {
    using Order = primitives::KeyOrder<T>;
    using Wide = __int128;
    K low = std::numeric_limits<K>::max(), high = std::numeric_limits<K>::min();
    for (int r = 0; r < count; ++r) {
        low = std::min(low, Order::to_key(runs[r].keys[runs[r].from]));
        high = std::max(high, Order::to_key(runs[r].keys[runs[r].to - 1]));
    }
    while (low < high) {
        const K middle = static_cast<K>((static_cast<Wide>(low) + static_cast<Wide>(high)) >> 1);
        int64_t place[2 * kMostStreamLevels], sum = 0;
        for (int r = 0; r < count; ++r) {
            place[r] = count_up_to<Order>(runs[r], middle);
            sum += place[r] * runs[r].weight;
        }
        const bool reached = sum >= rank;
        for (int r = 0; r < count; ++r) (reached ? runs[r].to : runs[r].from) = place[r];
        if (reached)
            high = middle;
        else
            low = static_cast<K>(middle + 1);
    }
    const K bits = Order::from_key(low);
    T value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

}  // namespace

void plan_levels(StreamState& state, double epsilon) {
    constexpr double kMost = 0x1p40;  // more than memory holds
    state.epsilon = epsilon;
    for (int l = 0; l < kMostStreamLevels; ++l) {
        const double made = std::ceil((l + 1.0) * (l + 2.0) / (2 * epsilon));
        state.capacity[l] = kStreamFan * static_cast<int64_t>(made < kMost ? made : kMost);
    }
    state.capacity[kMostStreamLevels - 1] = INT64_MAX;
}

void release(StreamVariable& variable) {
    if (variable.levels != nullptr) {
        for (int l = 0; l < kMostStreamLevels; ++l)
            if (variable.levels[l].values != nullptr) nax_serv_deallocate(variable.levels[l].values);
        nax_serv_deallocate(variable.levels);
    }
    if (variable.scratch != nullptr) nax_serv_deallocate(variable.scratch);
    variable = {};
}

template <class T>
bool add_values(const StreamState& state, StreamVariable& variable, const T* x, int64_t stride, int64_t n) {
    if (n < 1) return true;
    if (variable.levels == nullptr) {
        service::Block<StreamLevel> levels(kMostStreamLevels);
        if (!levels) return false;
        std::memset(levels.get(), 0, kMostStreamLevels * sizeof(StreamLevel));
        variable.levels = levels.detach();
        variable.level_count = 1;
    }
    if (!catch_up<T>(state, variable)) return false;
    StreamLevel& level = variable.levels[0];
    while (n > 0) {
        if (level.fill >= state.capacity[0] && !collapse<T>(state, variable, 0)) return false;
        const int64_t piece = std::min(n, state.capacity[0] - level.fill);
        if (level.fill + piece > level.room) {
            constexpr int64_t kLeast = 64;
            const int64_t wanted =
                std::min(std::max(level.fill + piece, std::max(kLeast, 2 * level.room)), state.capacity[0]);
            if (!grow<T>(level.values, level.room, wanted, level.fill)) return false;
        }
        T* const target = static_cast<T*>(level.values) + level.fill;
        for (int64_t i = 0; i < piece; ++i) target[i] = x[i * stride];
        level.fill += piece;
        variable.total += piece;
        x += piece * stride;
        n -= piece;
    }
    return true;
}

template <class T>
bool read_quantiles(const StreamState& state, StreamVariable& variable, const T* orders, int64_t m, T* quantiles) {
    using K = primitives::KeyBits<T>;
    if (!catch_up<T>(state, variable)) return false;
    Run<K> all[2 * kMostStreamLevels], runs[2 * kMostStreamLevels];
    int count = 0;
    int64_t weight = 1;
    for (int64_t l = 0; l < variable.level_count; ++l, weight *= kStreamFan) {
        StreamLevel& level = variable.levels[l];
        if (!sort_level<T>(variable, level)) return false;
        const K* const keys = static_cast<const K*>(level.values);
        if (level.sorted > 0) all[count++] = {keys, weight, 0, level.sorted};
        if (level.sorted < level.fill) all[count++] = {keys + level.sorted, weight, 0, level.fill - level.sorted};
    }
    const double total = static_cast<double>(variable.total);
    for (int64_t r = 0; r < m; ++r) {
        const auto rank = static_cast<int64_t>(static_cast<double>(orders[r]) * total);
        std::copy(all, all + count, runs);
        quantiles[r] = value_of_rank<T>(runs, count, std::clamp<int64_t>(rank, 1, variable.total));
    }
    return true;
}

template bool add_values(const StreamState&, StreamVariable&, const double*, int64_t, int64_t);
template bool add_values(const StreamState&, StreamVariable&, const float*, int64_t, int64_t);
template bool read_quantiles(const StreamState&, StreamVariable&, const double*, int64_t, double*);
template bool read_quantiles(const StreamState&, StreamVariable&, const float*, int64_t, float*);

}  // namespace nax::stats
