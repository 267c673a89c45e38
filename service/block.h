// Owning scratch block of the service layer: allocates, tests for null, frees on every path.
#pragma once

#include <cstddef>
#include <cstdint>

#include "service/service.h"

namespace nax::service {

inline constexpr std::size_t kBlockAlignment = 128;

template <class T>
class Block {
public:
    Block() = default;
    explicit Block(std::size_t count) { allocate(count); }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block() { release(); }

    // False when memory is short or the byte count overflows; the block is then empty.
    bool allocate(std::size_t count) {
        release();
        if (count > SIZE_MAX / sizeof(T)) return false;
        data_ = static_cast<T*>(nax_serv_allocate(count * sizeof(T), kBlockAlignment));
        return data_ != nullptr;
    }
    void release() {
        if (data_ != nullptr) nax_serv_deallocate(data_);
        data_ = nullptr;
    }
    // Hands the memory to a new owner, who frees it with nax_serv_deallocate.
    T* detach() {
        T* const data = data_;
        data_ = nullptr;
        return data;
    }

    explicit operator bool() const { return data_ != nullptr; }
    T* get() const { return data_; }
    T& operator[](std::size_t index) const { return data_[index]; }

private:
    T* data_ = nullptr;
};

}  // namespace nax::service
