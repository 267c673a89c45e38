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

// In the order of the linked objects.
inline std::vector<Kernel>& kernels() {
    static std::vector<Kernel> list;
    return list;
}

}  // namespace nax::tools
