// Equally spaced sites: element i is the fused a + i * step, whatever block it is computed in.
#include "fit/packs.h"
#include "fit/search/search.h"

namespace nax::fit {
namespace {

template <class T>
void expand(T origin, T step, int64_t first, int64_t count, T* site) {
    using P = Pack<T>;
    int64_t i = 0;
    // Single precision numbers its sites in 32 bits, while they fit.
    if (sizeof(T) == sizeof(double) || first + count < INT32_MAX)
        for (; i + P::kLanes <= count; i += P::kLanes) {
            const auto number = P::from_int(P::iadd(P::iset(first + i), P::iota()));
            P::store(site + i, P::fma(P::set(step), number, P::set(origin)));
        }
    for (; i < count; ++i) site[i] = Lane<T>::fma(step, static_cast<T>(first + i), origin);
}

}  // namespace

template <>
void expand_uniform_sites(double origin, double step, int64_t first, int64_t count, double* site) {
    expand(origin, step, first, count, site);
}
template <>
void expand_uniform_sites(float origin, float step, int64_t first, int64_t count, float* site) {
    expand(origin, step, first, count, site);
}

}  // namespace nax::fit
