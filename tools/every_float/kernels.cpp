#include "tools/every_float/kernels.h"

#include <algorithm>
#include <bit>

#include "tools/every_float/reciprocal.h"
#include "vmath/frame/rare_lanes.h"

namespace nax::tools {
namespace {

struct Call {
    uint8_t* statuses;
    ScalarResults* scalar;
};
thread_local Call call;

}  // namespace

std::vector<Kernel>& kernels() {
    static std::vector<Kernel> list;
    return list;
}

void run_kernel(const Kernel& kernel, int32_t n, const float* x, float* y, uint8_t* statuses, ScalarResults& scalar) {
    call = {statuses, &scalar};
    std::fill_n(statuses, n, uint8_t{0});
    kernel.run(n, x, y);
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
    uint8_t status;
    ScalarResults scalar(1);
    run_kernel(kernel, 1, &x, &y, &status, scalar);
    portable::reciprocal14 = before;
    return called;
}

}  // namespace nax::tools

namespace nax::vmath {

// The detour of the portable kernels, under the name that the build gives it.
template <class T>
void settle_rare_lanes(const RareCall<T>& rare_call, X87Scope&, T* results, int, uint64_t rare, int64_t first,
                       int count) {
    const tools::Call& call = tools::call;
    const T* const x = rare_call.in[0] + first;
    T* const y = rare_call.out[0] + first;
    T* const scalar_y = call.scalar->y.data() + first;
    uint8_t* const status = call.scalar->status.data() + first;
    uint8_t* const known = call.scalar->known.data() + first;
    if (std::find(known, known + count, 0) != known + count)
        for (int lane = 0; lane < count; ++lane) {
            if ((rare >> lane & 1) == 0 || known[lane]) continue;
            status[lane] = static_cast<uint8_t>(rare_call.function.one_input(&x[lane], &scalar_y[lane]));
            known[lane] = true;
        }
    // Arguments come in order: often all lanes are rare.
    if (std::popcount(rare) == count) {
        std::copy_n(scalar_y, count, y);
        std::copy_n(status, count, call.statuses + first);
        return;
    }
    std::copy_n(results, count, y);
    for (; rare != 0; rare &= rare - 1) {
        const int lane = std::countr_zero(rare);
        y[lane] = scalar_y[lane];
        call.statuses[first + lane] = status[lane];
    }
}
template void settle_rare_lanes<float>(const RareCall<float>&, X87Scope&, float*, int, uint64_t, int64_t, int);

}  // namespace nax::vmath
