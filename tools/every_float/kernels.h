// The float kernels of the exponentials and logarithms, compiled over portable lanes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace nax::tools {

struct Kernel {
    std::string record;  // as in sExp
    std::string level;   // of its name; levels without a kernel of their own share it
    // Results of whole vectors of 16 lanes, and the masks of their rare lanes.
    void (*evaluate)(const float* x, float* y, uint16_t* rare, int vectors);
    int32_t (*rare)(const float* x, float* y);  // scalar path: result and status
};

inline constexpr int kLanes = 16;

// In the order of the linked objects.
std::vector<Kernel>& kernels();

// The kernel on any number of arguments, rare lanes settled.
void run_kernel(const Kernel& kernel, const float* x, int count, float* y, int32_t* statuses);

// Whether the kernel takes a 14-bit reciprocal.
bool uses_reciprocal(const Kernel& kernel);

}  // namespace nax::tools
