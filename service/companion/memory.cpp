#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "service/service.h"

namespace {

// aligned_alloc wants a power of two and a size that is a multiple of it; a size that would wrap is out of memory.
// The caller's errno stays as it was: a report of a kernel may be in it.
void* aligned_block(size_t size, size_t alignment) {
    if (alignment == 0 || (alignment & (alignment - 1)) != 0 || size > SIZE_MAX - alignment) return nullptr;
    const size_t wanted = size == 0 ? 1 : size;
    const int saved_errno = errno;
    void* const block = std::aligned_alloc(alignment, (wanted + alignment - 1) & ~(alignment - 1));
    errno = saved_errno;
    return block;
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
