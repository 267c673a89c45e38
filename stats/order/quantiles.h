// Where the quantiles of one set of orders stand: the ranks that are needed, each once.
#pragma once

#include <algorithm>
#include <cstdint>

#include "service/small_block.h"
#include "stats/order/ranking.h"

namespace nax::stats {

template <class T>
class QuantileRanks {
public:
    // False when memory is short. n is at least 1.
    bool plan(const T* orders, int64_t m, int64_t n) {
        orders_ = orders;
        m_ = m;
        n_ = n;
        if (!ranks_.allocate(static_cast<std::size_t>(2 * m + 1))) return false;
        int64_t* const ranks = ranks_.get();
        for (int64_t r = 0; r < m; ++r) {
            const QuantilePlace<T> place = quantile_place(orders[r], n);
            ranks[2 * r] = place.k;
            ranks[2 * r + 1] = place.upper;
        }
        std::sort(ranks, ranks + 2 * m);
        count_ = std::unique(ranks, ranks + 2 * m) - ranks;
        return true;
    }
    const int64_t* ranks() const { return ranks_.get(); }
    int64_t count() const { return count_; }
    // `values` holds the elements of these ranks.
    void quantiles_of_selected(const T* values, T* quantiles) const {
        const int64_t* const ranks = ranks_.get();
        for (int64_t r = 0; r < m_; ++r) {
            const QuantilePlace<T> place = quantile_place(orders_[r], n_);
            const int64_t at = std::lower_bound(ranks, ranks + count_, place.k) - ranks;
            const int64_t next = place.upper > place.k ? at + 1 : at;
            quantiles[r] = quantile_of_selected(values[at], values[next], place.f);
        }
    }

private:
    const T* orders_ = nullptr;
    int64_t m_ = 0, n_ = 0, count_ = 0;
    service::SmallBlock<int64_t, 32> ranks_;
};

}  // namespace nax::stats
