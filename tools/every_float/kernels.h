// The float kernels with one argument, as the library has them, and those of the logarithms with other 14-bit reciprocals.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nax::tools {

// Which reciprocal a kernel takes: its own, or one a hair further off than any processor's may be.
enum class Reciprocal { kOwn, kLow, kHigh };

struct Kernel {
    std::string record;  // as in sExp
    std::string level;   // of its name; levels without a kernel of their own share it
    Reciprocal reciprocal;
    void (*run)(int32_t n, const float* x, float* y);
};

// All of them; the three of one name follow each other.
const std::vector<Kernel>& kernels();

// Takes note of a kernel with another reciprocal; those of functions with one float argument only.
struct Registration {
    Registration(char type, const char* function, const char* tag, Reciprocal reciprocal,
                 void (*run)(int32_t n, const float* x, float* y));
    Registration(char, const char*, const char*, Reciprocal, void (*)(int32_t, const double*, double*)) {}
};

// What a function's scalar path makes of some arguments, as far as it has been asked.
struct ScalarResults {
    explicit ScalarResults(size_t n) : y(n), status(n), known(n) {}
    std::vector<float> y;
    std::vector<uint8_t> status, known;
};

// Runs the kernel under the thread's mode word, and tells the status of each element instead of reporting it. Kernels
// of one function may share the scalar results for the same arguments.
void run_kernel(const Kernel& kernel, int32_t n, const float* x, float* y, uint8_t* statuses, ScalarResults& scalar);

}  // namespace nax::tools
