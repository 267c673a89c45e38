// Search of a whole array: expands uniform sites, splits the work, and does what the split leaves over.
#include "fit/search/whole_array.h"

#include "service/block.h"

namespace nax::fit {
namespace {

constexpr int64_t kStackSites = 4096;

template <class T>
constexpr bool kDouble = sizeof(T) == sizeof(double);

// The first `threads * chunk` sites in equal chunks.
struct Split {
    int threads;
    int64_t chunk;
};

Split even_split(int64_t nsite, int threads) { return {threads, nsite / threads}; }

// Hybrid shares out whole blocks of sites, and uses no more threads than there are blocks.
template <class T>
Split block_split(int64_t nsite, int threads) {
    constexpr int64_t kBlock = kDouble<T> ? 128 : 32;
    const int64_t blocks = nsite / kBlock;
    const int used = blocks < threads ? static_cast<int>(blocks) : threads;
    return {used, used == 0 ? 0 : blocks / used * kBlock};
}

template <class T>
struct ThreadContext {
    const SearchRequest<T>* request;
    const T* site;
    int64_t chunk;
};

// Chunks are searched independently, each with its own running position.
template <class T>
void _v1DSearchThreader(int64_t item, int, int, void* context) {
    const auto& shared = *static_cast<const ThreadContext<T>*>(context);
    search_range(*shared.request, shared.site, item * shared.chunk, shared.chunk);
}

template <class T>
int32_t search_listed(const SearchRequest<T>& request, const T* site) {
    const int limit = thread_limit(request.threaders);
    const int32_t algorithm = request.search.algorithm;
    int64_t done = 0;
    if (worth_threads<T>(algorithm, request.nsite, request.search.nx, limit)) {
        const Split split =
            algorithm == kSearchHybrid ? block_split<T>(request.nsite, limit) : even_split(request.nsite, limit);
        ThreadContext<T> context{&request, site, split.chunk};
        request.threaders->parallel_for(split.threads, split.threads, &context, _v1DSearchThreader<T>);
        done = split.threads * split.chunk;
    }
    return search_range(request, site, done, request.nsite - done);
}

template <class T>
int32_t search_whole(const SearchRequest<T>& request) {
    if (!request.uniform_sites) return search_listed(request, request.site);
    const T origin = request.site[0];
    const T step = site_step(request.site, request.nsite);
    if (request.nsite <= kStackSites) {
        alignas(64) T site[kStackSites];
        expand_uniform_sites(origin, step, 0, request.nsite, site);
        return search_listed(request, site);
    }
    const service::Block<T> site(static_cast<std::size_t>(request.nsite));
    if (!site) return DfStatusMemory;
    expand_uniform_sites(origin, step, 0, request.nsite, site.get());
    return search_listed(request, site.get());
}

// One routine to an algorithm. They differ in what `request.search` names, in the split and in the thresholds.
template <class T>
int32_t _v1DSearchUniform(const SearchRequest<T>& request) {
    return search_whole(request);
}
template <class T>
int32_t _v1DSearchQuasiUniform(const SearchRequest<T>& request) {
    return search_whole(request);
}
template <class T>
int32_t _v1DSearchSorted(const SearchRequest<T>& request) {
    return search_whole(request);
}
template <class T>
int32_t _v1DSearchPeak(const SearchRequest<T>& request) {
    return search_whole(request);
}
template <class T>
int32_t _v1DSearchHybrid(const SearchRequest<T>& request) {
    return search_whole(request);
}
template <class T>
int32_t _v1DSearchUserDef(const SearchRequest<T>& request) {
    return search_whole(request);
}
template <class T>
int32_t _v1DSearchUserDefUni(const SearchRequest<T>& request) {
    return search_whole(request);
}

}  // namespace

template <class T>
int32_t search_range(const SearchRequest<T>& request, const T* site, int64_t first, int64_t count) {
    const BlockSearch<T>& search = request.search;
    const int64_t cell_size = (request.flags & kCells64) != 0 ? 8 : 4;
    void* const cell = static_cast<char*>(request.cell) + first * cell_size;
    const int32_t algorithm =
        kernel_of_call(*request.task, search.algorithm, request.uniform_sites, request.site, request.nsite);
    const T scale = algorithm == kSearchHybrid ? bin_scale<T>(*request.task) : search.scale;
    int64_t position = 0;
    return SearchTables<T>::_Search1DDispatch[algorithm](search.nx, search.x, count, site + first, &position,
                                                         search.callback, search.parameters, search.bin_table, cell,
                                                         request.flags, scale);
}

template <class T>
bool worth_threads(int32_t algorithm, int64_t nsite, int64_t nx, int threads) {
    if (threads <= 1) return false;
    switch (algorithm) {
        case kSearchUniform:
            return nsite > (kDouble<T> ? 5000 : 8192);
        case kSearchSorted:
            return nsite > 3000;
        case kSearchQuasiUniform:
            return nsite > 300 || (nsite > 150 && (nx >= 600 || (nx >= 40 && threads >= 4)));
        case kSearchPeak:
            return nsite > 1200 || nx > 1200;
        // More threads make a job of middle size not worth sharing.
        case kSearchHybrid:
            return nsite > (kDouble<T> ? 2000 : 1000) || (nsite > 600 && threads <= 4) || (nsite > 300 && threads == 2);
        default:
            return false;
    }
}

template <class T>
const typename WholeArraySearch<T>::Routine WholeArraySearch<T>::_SearchDispatch[kSearchAlgorithms] = {
    _v1DSearchUniform<T>, _v1DSearchQuasiUniform<T>, _v1DSearchSorted<T>,     _v1DSearchPeak<T>,
    _v1DSearchHybrid<T>,  _v1DSearchUserDef<T>,      _v1DSearchUserDefUni<T>,
};

template struct WholeArraySearch<double>;
template struct WholeArraySearch<float>;
template int32_t search_range(const SearchRequest<double>&, const double*, int64_t, int64_t);
template int32_t search_range(const SearchRequest<float>&, const float*, int64_t, int64_t);
template bool worth_threads<double>(int32_t, int64_t, int64_t, int);
template bool worth_threads<float>(int32_t, int64_t, int64_t, int);

}  // namespace nax::fit
