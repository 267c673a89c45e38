// Rivals of the vector functions: loops that the compiler vectorises, the C library one element at a time, the vector
// libraries libmvec and SLEEF and the headers xsimd and Eigen where they are installed. Each is compiled twice, for AVX2 and
// for AVX-512, and meets a flavour of the library on its own ground.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace nax::bench {

// r[i] = f(a[i], b[i]) with strides in elements; a function of one argument ignores b.
template <class T>
using Loop = void (*)(int64_t n, const T* a, int64_t inca, const T* b, int64_t incb, T* r, int64_t incr);

template <class T>
struct PlainLoop {
    const char* function;  // as in Exp
    Loop<T> loop;
};

template <class T>
struct ArrayRival {
    const char* library;
    const char* function;
    void (*apply)(int64_t n, const T* a, T* r);
};

// What one instruction set has.
template <class T>
struct Rivals {
    std::vector<PlainLoop<T>> loops;
    std::vector<ArrayRival<T>> arrays;
    // A function of whole vectors over a dense array; the rest of fewer than a vector goes through a padded one.
    void (*apply_unary)(void* function, int64_t n, const T* a, T* r);
    void (*apply_binary)(void* function, int64_t n, const T* a, const T* b, T* r);
    std::string libmvec_prefix;  // before "v_exp"
    std::string sleef_lanes;     // "d8", "f16", ...
    std::string sleef_suffix;    // "avx512f", ...
};

// Those of the instruction set that the library's flavour has, too.
template <class T>
Rivals<T> make_rivals();

}  // namespace nax::bench
