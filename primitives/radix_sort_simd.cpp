// Radix sorts in place, of all key types.
#include "nax/primitives.h"
#include "primitives/bucket_sort.h"
#include "primitives/narrow_sort.h"
#include "primitives/sort_members.h"

using namespace nax::primitives;

namespace {

template <class T, Direction kDirection>
int sort_in_place(T* array, T* scratch, int32_t length) {
    using Order = KeyOrder<T, kDirection>;
    using K = typename Order::Key;
    if (array == nullptr || (sizeof(T) > 1 && scratch == nullptr)) return NAX_PRIMITIVES_NULL;
    if (length < 1) return NAX_PRIMITIVES_SIZE;
    auto* const keys = reinterpret_cast<K*>(array);
    if constexpr (sizeof(T) == 1)
        sort_bytes<Order>(keys, length);
    else if constexpr (sizeof(T) == 2)
        sort_words<Order>(keys, reinterpret_cast<K*>(scratch), length);
    else
        sort_keys<Order>(keys, reinterpret_cast<K*>(scratch), length);
    return 0;
}

}  // namespace

#define NAX_SORT(suffix, type)                                                                         \
    extern "C" int nax_dft_avx2_opasSortRadixAscend_##suffix##_I(type* a, type* scratch, int32_t n) {  \
        return sort_in_place<type, Direction::kAscending>(a, scratch, n);                              \
    }                                                                                                  \
    extern "C" int nax_dft_avx2_opasSortRadixDescend_##suffix##_I(type* a, type* scratch, int32_t n) { \
        return sort_in_place<type, Direction::kDescending>(a, scratch, n);                             \
    }
NAX_SORTED_TYPES(NAX_SORT)
NAX_SORT(64f, double)
