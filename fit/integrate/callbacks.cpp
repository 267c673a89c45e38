// The parts of integrals that callbacks compute: each pair is cut at the ends of the partition.
#include "fit/integrate/block.h"

namespace nax::fit {
namespace {

// The intervals of one callback and the pairs that they belong to.
template <class T>
struct Batch {
    int64_t count = 0;
    T a[kBlockLimits], b[kBlockLimits];
    int64_t a_cell[kBlockLimits], b_cell[kBlockLimits], target[kBlockLimits];

    void push(T from, T to, int64_t from_cell, int64_t to_cell, int64_t pair) {
        a[count] = from, b[count] = to;
        a_cell[count] = from_cell, b_cell[count] = to_cell;
        target[count++] = pair;
    }
};

template <class T>
struct Cutter {
    const Integration<T>& call;
    LimitBlock<T>& block;
    const T start = partition<T>(*call.task)[0], end = right_end<T>(*call.task);
    Cutter(const Integration<T>& c, LimitBlock<T>& b) : call(c), block(b) {}
    const int64_t nx = call.task->nx, last_piece = piece_count(*call.task, call.evaluator) - 1;
    Batch<T> parts[kParts];

    bool has(Part part) const { return call.callbacks[part] != nullptr; }

    // What is left of the pair for the spline ends up in a .. b, and in the tail when the middle is gone.
    void cut(int64_t i, int64_t a_cell, int64_t b_cell) {
        const T a = block.a[i], b = block.b[i];
        if (a == b) {  // zero, whatever the callbacks are
            block.covered[i] = true;
            return;
        }
        const bool starts_left = a<start, ends_right = b> end;
        const T inner_a = starts_left ? start : a, inner_b = ends_right ? end : b;
        if (starts_left && has(kLeftPart)) {
            parts[kLeftPart].push(a, b < start ? b : start, 0, 0, i);
            block.a[i] = inner_a, block.p[i] = 0;
            if (b <= start) block.covered[i] = true;
        }
        if (ends_right && has(kRightPart)) {
            parts[kRightPart].push(a > end ? a : end, b, nx, nx, i);
            block.b[i] = inner_b, block.q[i] = last_piece;
            if (a >= end) block.covered[i] = true;
        }
        if (!has(kInteriorPart) || inner_a >= inner_b) return;  // a NaN goes to the callback
        parts[kInteriorPart].push(inner_a, inner_b, starts_left ? 1 : a_cell, ends_right ? nx - 1 : b_cell, i);
        const bool left_stays = starts_left && !has(kLeftPart), right_stays = ends_right && !has(kRightPart);
        block.covered[i] = !left_stays;
        block.b[i] = start, block.q[i] = 0;
        block.apart[i] = right_stays;
        block.tail_a[i] = end, block.tail_b[i] = b;
    }
};

}  // namespace

template <class T>
int32_t run_callbacks(const Integration<T>& call, LimitBlock<T>& block, const int64_t* a_cell, const int64_t* b_cell,
                      T* work) {
    Cutter<T> cutter(call, block);
    T *const added = work, *const output = work + call.ny * kBlockLimits;
    for (int64_t i = 0; i < block.count; ++i) {
        block.covered[i] = block.apart[i] = false;
        cutter.cut(i, a_cell[i], b_cell[i]);
    }
    for (int64_t k = 0; k < call.ny * block.count; ++k) added[k] = 0;
    for (int part = 0; part < kParts; ++part) {
        const Batch<T>& batch = cutter.parts[part];
        if (batch.count == 0) continue;
        for (int64_t k = 0; k < call.ny * batch.count; ++k) output[k] = 0;
        const int32_t status = call.callbacks[part](&batch.count, batch.a_cell, batch.a, batch.b_cell, batch.b, output,
                                                    call.parameters[part], nullptr);
        if (status < 0) return status;
        for (int64_t j = 0; j < call.ny; ++j)
            for (int64_t k = 0; k < batch.count; ++k)
                added[j * block.count + batch.target[k]] += output[j * batch.count + k];
    }
    block.added = added;
    return DfStatusOk;
}
template int32_t run_callbacks(const Integration<double>&, LimitBlock<double>&, const int64_t*, const int64_t*,
                               double*);
template int32_t run_callbacks(const Integration<float>&, LimitBlock<float>&, const int64_t*, const int64_t*, float*);

}  // namespace nax::fit
