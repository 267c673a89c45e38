#include <cstdlib>
#include <cstring>

#include "service/service.h"

namespace {

// aligned_alloc wants a size that is a multiple of the alignment; a size that would wrap is out of memory.
void* aligned_block(size_t size, size_t alignment) {
    if (size > SIZE_MAX - alignment) return nullptr;
    const size_t rounded = (size + alignment - 1) / alignment * alignment;
    return std::aligned_alloc(alignment, rounded == 0 ? alignment : rounded);
}

}  // namespace

extern "C" void* nax_serv_allocate(size_t size, size_t alignment) { return aligned_block(size, alignment); }
extern "C" void nax_serv_deallocate(void* block) { std::free(block); }
extern "C" void* nax_serv_malloc(size_t size, size_t alignment) { return aligned_block(size, alignment); }
extern "C" void nax_serv_free(void* block) { std::free(block); }

extern "C" int nax_serv_memcpy_s(void* destination, size_t destination_size, const void* source, size_t count) {
    if (count == 0) return 0;
    if (destination == nullptr || source == nullptr || count > destination_size) return -1;
    std::memcpy(destination, source, count);
    return 0;
}
