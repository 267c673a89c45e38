// Groups of observations with their running means and cross-products.
#pragma once

#include "stats/basic/kernels.h"
#include "stats/task.h"

namespace nax::stats::covariance {

// Memory of one group in a thread's area: the weights' sum and that of their squares, the mean, then the upper triangle
// of the cross-products by rows. Rows are as long as the padded mean.
template <class T>
struct GroupLayout {
    int64_t p;
    int64_t row;  // reals of a row, a multiple of a vector's lanes
    bool cross;
    [[gnu::always_inline]] int64_t head() const { return row < 2 ? 2 : row; }
    [[gnu::always_inline]] int64_t size() const { return head() + row + (cross ? p * row : 0); }
    [[gnu::always_inline]] T* weights(T* area, int64_t group) const { return area + group * size(); }
    [[gnu::always_inline]] T* mean(T* area, int64_t group) const { return area + group * size() + head(); }
    [[gnu::always_inline]] T* products(T* area, int64_t group) const { return mean(area, group) + row; }
};

// Adds the observations of a slice to their groups. `line` holds one observation, `row` reals.
template <class T>
void add_to_groups(const basic::Slice<T>& slice, bool columns, const Integers& groups, const GroupLayout<T>& layout,
                   T* area, T* line);

}  // namespace nax::stats::covariance
