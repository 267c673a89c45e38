// A buffer whose first or last element touches an unmapped page, so that a read or write outside it ends the program.
//
//     GuardedBuffer<double> x(n);                    // x[n] is the first byte of an unmapped page
//     GuardedBuffer<double> y(n, Guard::kBefore);    // the byte before y[0] belongs to an unmapped page
//     kernel(n, x.data(), y.data());
//
// Both sides always end in an unmapped page; the guard chosen is the one that the elements touch. Elements start as
// zero bytes. The address is a multiple of sizeof(T) with kAfter and of the page size with kBefore. `offset` elements
// may be left between the elements and the guard, to run through alignments.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <type_traits>

namespace nax::testing {

enum class Guard { kBefore, kAfter };

template <class T>
class GuardedBuffer {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    explicit GuardedBuffer(std::size_t count, Guard guard = Guard::kAfter, std::size_t offset = 0) : count_(count) {
        const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t bytes = (count + offset) * sizeof(T);
        const std::size_t usable = (bytes + page - 1) / page * page;
        map_size_ = usable + 2 * page;
        void* const map = mmap(nullptr, map_size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (map == MAP_FAILED) std::abort();
        map_ = static_cast<char*>(map);
        char* const first = map_ + page;
        if (usable != 0 && mprotect(first, usable, PROT_READ | PROT_WRITE) != 0) std::abort();
        char* const start = guard == Guard::kBefore ? first + offset * sizeof(T) : first + usable - bytes;
        data_ = reinterpret_cast<T*>(start);
    }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;
    ~GuardedBuffer() { munmap(map_, map_size_); }

    T* data() { return data_; }
    const T* data() const { return data_; }
    std::size_t size() const { return count_; }
    T* begin() { return data_; }
    T* end() { return data_ + count_; }
    const T* begin() const { return data_; }
    const T* end() const { return data_ + count_; }
    T& operator[](std::size_t index) { return data_[index]; }
    const T& operator[](std::size_t index) const { return data_[index]; }
    operator std::span<T>() { return {data_, count_}; }

private:
    std::size_t count_;
    std::size_t map_size_;
    char* map_;
    T* data_;
};

}  // namespace nax::testing
