#include "tools/every_float/kernels.h"

#include <algorithm>

#include "tools/every_float/reciprocal.h"

namespace nax::tools {

std::vector<Kernel>& kernels() {
    static std::vector<Kernel> list;
    return list;
}

void run_kernel(const Kernel& kernel, const float* x, int count, float* y, int32_t* statuses) {
    for (int i = 0; i < count; i += kLanes) {
        const int lanes = std::min(kLanes, count - i);
        float arguments[kLanes] = {}, results[kLanes];
        uint16_t rare;
        std::copy_n(x + i, lanes, arguments);
        kernel.evaluate(arguments, results, &rare, 1);
        for (int lane = 0; lane < lanes; ++lane) {
            statuses[i + lane] = rare >> lane & 1 ? kernel.rare(&arguments[lane], &results[lane]) : 0;
        }
        std::copy_n(results, lanes, y + i);
    }
}

bool uses_reciprocal(const Kernel& kernel) {
    static thread_local bool called;
    const portable::Reciprocal before = portable::reciprocal14;
    called = false;
    portable::reciprocal14 = [](__m256 x) {
        called = true;
        return portable::nearest_reciprocal(x);
    };
    const float x = 1.5f;
    float y;
    int32_t status;
    run_kernel(kernel, &x, 1, &y, &status);
    portable::reciprocal14 = before;
    return called;
}

}  // namespace nax::tools
