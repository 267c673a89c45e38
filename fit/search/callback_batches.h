// Calls the caller's search in batches and completes the cells that it doesn't call final.
#pragma once

#include "fit/search/member.h"

namespace nax::fit {

inline constexpr int64_t kBatch = 128;

// finish(site, guess) completes a cell. The last call is made also when nothing is left for it.
template <class T, class Cell, class Finish>
int32_t search_batches(const SearchBlock<T>& block, const Finish& finish) {
    Cell* const result = static_cast<Cell*>(block.cell);
    const int64_t batches = (block.nsite > 0 ? block.nsite : 0) / kBatch;
    for (int64_t b = 0; b <= batches; ++b) {
        const int64_t first = b * kBatch;
        const int64_t count = b < batches ? kBatch : (block.nsite > 0 ? block.nsite - first : 0);
        const T* const site = count > 0 ? block.site + first : block.site;
        int64_t cell[kBatch] = {};
        int32_t flag[kBatch] = {};
        const int32_t status = block.callback(&count, site, cell, flag, block.parameters, nullptr);
        if (status < 0) return status;
        for (int64_t i = 0; i < count; ++i) {
            const bool final = status == DfStatusExactResult || flag[i] != 0;
            result[first + i] = static_cast<Cell>(final ? cell[i] : finish(site[i], cell[i]));
        }
    }
    return DfStatusOk;
}

}  // namespace nax::fit
