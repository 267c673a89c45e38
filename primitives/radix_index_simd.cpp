// Stable radix sorts of indices by keys that stay where they are.
#include "nax/primitives.h"
#include "primitives/index_sort.h"
#include "primitives/sort_members.h"

using namespace nax::primitives;

namespace {

template <class T, Direction kDirection>
int sort_index(const T* source, int32_t distance, int32_t* index, int32_t* scratch, int32_t length) {
    using Order = KeyOrder<T, kDirection>;
    if (source == nullptr || index == nullptr || (sizeof(T) > 1 && scratch == nullptr)) return NAX_PRIMITIVES_NULL;
    if (length < 1 || distance < static_cast<int32_t>(sizeof(T))) return NAX_PRIMITIVES_SIZE;
    const StridedKeys<Order> keys{reinterpret_cast<const unsigned char*>(source), distance};
    if constexpr (sizeof(T) == 4) {
        sort_indices(keys, AllIndices{}, index, scratch, length, index, 0);
    } else {
        sort_narrow_indices(keys, index, scratch, length);
    }
    return 0;
}

}  // namespace

#define NAX_SORT_INDEX(suffix, type)                                                                              \
    extern "C" int nax_dft_avx2_opasSortRadixIndexAscend_##suffix(const type* source, int32_t distance,           \
                                                                  int32_t* index, int32_t* scratch, int32_t n) {  \
        return sort_index<type, Direction::kAscending>(source, distance, index, scratch, n);                      \
    }                                                                                                             \
    extern "C" int nax_dft_avx2_opasSortRadixIndexDescend_##suffix(const type* source, int32_t distance,          \
                                                                   int32_t* index, int32_t* scratch, int32_t n) { \
        return sort_index<type, Direction::kDescending>(source, distance, index, scratch, n);                     \
    }
NAX_SORTED_TYPES(NAX_SORT_INDEX)
