// Calls any vector function on a pool of arguments, in any layout, and hands back the bytes of its results.
#pragma once

#include <cstring>
#include <vector>

#include "tests/lib/guarded_buffer.h"
#include "tests/lib/vmath_records.h"

namespace nax::testing {

// Bytes of `count` elements.
using Bytes = std::vector<unsigned char>;

// Where the vectors of a call lie. Strides matter to strided records.
struct Layout {
    Guard guard = Guard::kAfter;
    std::size_t offset = 0;  // elements between vector and guard page
    int32_t in_stride[2] = {1, 1};
    int32_t out_stride[2] = {1, 1};
};

// A caller's vector between two unmapped pages. Elements between the strides, and around the vector up to the page,
// hold a pattern that unchanged() looks for.
class CallerVector {
public:
    CallerVector(int64_t count, std::size_t element_size, int32_t stride, Guard guard, std::size_t offset);
    void* start();
    void set(int64_t index, const unsigned char* element) { std::memcpy(at(index), element, size_); }
    const unsigned char* get(int64_t index) { return at(index); }
    // True if every byte that belongs to no element still holds the pattern.
    bool gaps_unchanged() const;

private:
    unsigned char* at(int64_t index);

    int64_t count_, stride_;
    std::size_t size_;
    GuardedBuffer<unsigned char> bytes_;
};

// Argument tuples of a function: ordinary numbers of all sizes mixed with zeros, denormals, Inf, NaN and the ends of
// the range. Every record of a shape gets the same pool.
class ArgumentPool {
public:
    ArgumentPool(const Record& record, int size, uint64_t seed);
    int size() const { return size_; }
    std::size_t element_size() const { return element_size_; }
    const unsigned char* argument(int input, int64_t element) const {
        return values_[static_cast<std::size_t>(input)].data() +
               static_cast<std::size_t>(element % size_) * element_size_;
    }

private:
    int size_;
    std::size_t element_size_;
    Bytes values_[2];
};

struct Results {
    Bytes out[2];
    bool outside_untouched = true;
};

std::size_t real_size(const Record& record);
std::size_t result_size(const Record& record);

// n elements of the pool from `first` on, wrapping around.
Results run(const Record& record, Entry entry, const ArgumentPool& pool, int64_t first, int32_t n,
            const Layout& layout);

// The result of each pool element, each from a call of its own with n = 1; `statuses` gets the status of each.
Results run_one_by_one(const Record& record, Entry entry, const ArgumentPool& pool,
                       std::vector<int32_t>* statuses = nullptr);

}  // namespace nax::testing
