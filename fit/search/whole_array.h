// Search of a whole array of sites, with threads where they pay.
#pragma once

#include "fit/search/search.h"
#include "service/threaders.h"

namespace nax::fit {

template <class T>
struct SearchRequest {
    const Task* task;
    int64_t nsite;
    const T* site;
    bool uniform_sites;  // `site` holds two ends
    void* cell;
    BlockSearch<T> search;
    int64_t flags;
    const Threaders* threaders;
};

// By SearchAlgorithm.
template <class T>
struct WholeArraySearch {
    using Routine = int32_t (*)(const SearchRequest<T>&);
    static const Routine _SearchDispatch[kSearchAlgorithms];
};
extern template struct WholeArraySearch<double>;
extern template struct WholeArraySearch<float>;

// Searches sites first .. first + count - 1 of the request on the calling thread.
template <class T>
int32_t search_range(const SearchRequest<T>& request, const T* site, int64_t first, int64_t count);

// Whether a job of `nsite` sites on `nx` points is worth `threads` threads.
template <class T>
bool worth_threads(int32_t algorithm, int64_t nsite, int64_t nx, int threads);

}  // namespace nax::fit
