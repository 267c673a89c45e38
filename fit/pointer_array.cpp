#include "fit/pointer_array.h"

#include <cstdint>
#include <cstring>

#include "service/service.h"

namespace nax::fit {
namespace {

constexpr int64_t kFewEntries = 4;
static_assert(sizeof(Task::few_functions) == (kFewEntries + 1) * sizeof(void*));

// `entries` null pointers and one more, so that the index ny, which a query accepts, reads a null. Few stand in `few`.
void** new_array(int64_t entries, void** few) {
    // Functions are counted by a 32-bit number.
    if (entries < 0 || entries > INT32_MAX) return nullptr;
    const std::size_t bytes = (static_cast<std::size_t>(entries) + 1) * sizeof(void*);
    void* const block = entries <= kFewEntries ? few : nax_serv_allocate(bytes, 128);
    if (block != nullptr) std::memset(block, 0, bytes);
    return static_cast<void**>(block);
}
void free_array(void** array, const void* const* few) {
    if (array != nullptr && array != few) nax_serv_deallocate(array);
}

// Moves an array of `old_entries` to one of `entries`.
bool grow(void**& array, int64_t& old_entries, int64_t entries, void** few) {
    if (entries <= old_entries) return true;
    if (array == few && entries <= kFewEntries) {
        std::memset(few + old_entries, 0, static_cast<std::size_t>(entries + 1 - old_entries) * sizeof(void*));
    } else {
        void** const larger = new_array(entries, few);
        if (larger == nullptr) return false;
        std::memcpy(larger, array, static_cast<std::size_t>(old_entries) * sizeof(void*));
        free_array(array, few);
        array = larger;
    }
    old_entries = entries;
    return true;
}

}  // namespace

template <class T>
bool set_functions(Task& task, const T* base) {
    free_array(const_cast<void**>(task.y), task.few_functions);
    task.y_entries = 0;
    const int64_t entries = task.yhint == kColumns ? 1 : task.ny;
    task.y = const_cast<const void**>(new_array(entries, task.few_functions));
    if (task.y == nullptr) return false;
    task.y_entries = entries;
    const bool derive_all = task.yhint == kDefaultStorage || task.yhint == kRows;
    const int64_t derived = derive_all || entries == 0 ? entries : 1;
    const uint64_t row = static_cast<uint64_t>(task.nx) * sizeof(T);
    for (int64_t j = 0; j < derived; ++j)
        task.y[j] = reinterpret_cast<const T*>(reinterpret_cast<uintptr_t>(base) + static_cast<uint64_t>(j) * row);
    return true;
}

template <class T>
bool set_coefficients(Task& task, T* base, int64_t hint) {
    free_array(task.scoeff, task.few_coefficients);
    task.scoeff_entries = 0;
    task.scoeff = new_array(task.ny, task.few_coefficients);
    if (task.scoeff == nullptr) return false;
    task.scoeff_entries = task.ny;
    // A Subbotin spline has a piece around every point, the others one between two points.
    const int64_t cells = task.s_type == kSubbotin ? task.nx : task.nx - 1;
    const int64_t derived = (hint & kFirstOnly) != 0 ? 1 : task.ny;
    // An order that memory can't hold gives pointers that nobody may follow, but no overflow.
    const uint64_t row = static_cast<uint64_t>(cells) * static_cast<uint64_t>(task.s_order) * sizeof(T);
    for (int64_t j = 0; j < derived; ++j)
        task.scoeff[j] = reinterpret_cast<T*>(reinterpret_cast<uintptr_t>(base) + static_cast<uint64_t>(j) * row);
    return true;
}

bool grow_functions(Task& task) {
    return grow(const_cast<void**&>(task.y), task.y_entries, task.ny, task.few_functions);
}
bool grow_coefficients(Task& task) { return grow(task.scoeff, task.scoeff_entries, task.ny, task.few_coefficients); }
void free_pointers(Task& task) {
    free_array(const_cast<void**>(task.y), task.few_functions);
    free_array(task.scoeff, task.few_coefficients);
}

template bool set_functions(Task&, const double*);
template bool set_functions(Task&, const float*);
template bool set_coefficients(Task&, double*, int64_t);
template bool set_coefficients(Task&, float*, int64_t);

}  // namespace nax::fit
