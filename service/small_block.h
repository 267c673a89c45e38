// Scratch that stands in the object itself, on the stack as a rule, while it is small, and in a Block otherwise.
#pragma once

#include <cstddef>

#include "service/block.h"

namespace nax::service {

template <class T, std::size_t kOwn>
class SmallBlock {
public:
    SmallBlock() {}  // not defaulted: its own place would be cleared
    SmallBlock(const SmallBlock&) = delete;
    SmallBlock& operator=(const SmallBlock&) = delete;

    // False when memory is short.
    bool allocate(std::size_t count) {
        if (count <= kOwn) {
            data_ = own_;
            return true;
        }
        if (!block_.allocate(count)) return false;
        data_ = block_.get();
        return true;
    }
    T* get() const { return data_; }
    T& operator[](std::size_t index) const { return data_[index]; }

private:
    T* data_ = nullptr;
    Block<T> block_;
    alignas(64) T own_[kOwn];
};

}  // namespace nax::service
