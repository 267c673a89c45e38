// The detour of lanes that vector code can't settle: each goes to the function's scalar path, and what went wrong goes
// to the error reporter.
#pragma once

#include <cstdint>

#include "vmath/frame/call_environment.h"

namespace nax::vmath {

// A function's scalar path. It writes the results and returns a status, 0 if nothing is wrong.
template <class T>
struct RareFunction {
    using OneInput = int32_t (*)(const T* a, T* r);
    using TwoInputs = int32_t (*)(const T* a, const T* b, T* r);
    using TwoResults = int32_t (*)(const T* a, T* r1, T* r2);

    constexpr RareFunction(OneInput f) : one_input(f) {}
    constexpr RareFunction(TwoInputs f) : two_inputs(f) {}
    constexpr RareFunction(TwoResults f) : two_results(f) {}

    OneInput one_input = nullptr;
    TwoInputs two_inputs = nullptr;
    TwoResults two_results = nullptr;
};

inline constexpr int kMaxBlock = 64;  // elements in the largest block of any kernel

// What the detour knows about the call; vectors and strides (in elements) are the caller's. A function with one input
// or one result repeats it.
template <class T>
struct RareCall {
    RareFunction<T> function;
    const char* name;
    const T* in[2];
    T* out[2];
    int32_t in_stride[2];
    int32_t out_stride[2];
    int32_t inputs;
    int32_t outputs;
    bool strided;
};

// Settles one block: elements first to first + count - 1 of the call, whose vector results stand in `results` (and, for
// a second output, `pitch` further on). Lanes set in `rare` are computed anew in ascending order, and reported if their
// status asks for it; then the whole block is stored.
template <class T>
void settle_rare_lanes(const RareCall<T>& call, X87Scope& x87, T* results, int pitch, uint64_t rare, int64_t first,
                       int count);

extern template void settle_rare_lanes<float>(const RareCall<float>&, X87Scope&, float*, int, uint64_t, int64_t, int);
extern template void settle_rare_lanes<double>(const RareCall<double>&, X87Scope&, double*, int, uint64_t, int64_t,
                                               int);

}  // namespace nax::vmath
