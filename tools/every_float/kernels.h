// The float kernels of the exponentials and logarithms, compiled over portable lanes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nax::tools {

struct Kernel {
    std::string record;  // as in sExp
    std::string level;   // of its name; levels without a kernel of their own share it
    void (*run)(int32_t n, const float* x, float* y);
};

// In the order of the linked objects.
std::vector<Kernel>& kernels();

// What a function's scalar path makes of some arguments, as far as it has been asked.
struct ScalarResults {
    explicit ScalarResults(size_t n) : y(n), status(n), known(n) {}
    std::vector<float> y;
    std::vector<uint8_t> status, known;
};

// Runs the kernel under the thread's mode word, and tells the status of each element instead of reporting it. Kernels
// of one function may share the scalar results for the same arguments.
void run_kernel(const Kernel& kernel, int32_t n, const float* x, float* y, uint8_t* statuses, ScalarResults& scalar);

// Whether the kernel takes a 14-bit reciprocal.
bool uses_reciprocal(const Kernel& kernel);

}  // namespace nax::tools
