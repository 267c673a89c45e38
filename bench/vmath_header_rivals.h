// Rivals of the vector functions that are headers only: xsimd and Eigen, compiled for AVX-512 in a file of their own.
#pragma once

#include <cstdint>
#include <vector>

namespace nax::bench {

template <class T>
struct ArrayRival {
    const char* library;
    const char* function;  // as in Exp
    void (*apply)(int64_t n, const T* a, T* r);
};

// All that were there when the benchmark was built.
template <class T>
std::vector<ArrayRival<T>> header_rivals();

}  // namespace nax::bench
