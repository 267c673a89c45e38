#include "tools/every_float/kernels.h"

#include <algorithm>
#include <bit>

#include "tests/lib/vmath_records.h"
#include "vmath/frame/rare_lanes.h"

namespace nax::tools {
namespace {

struct Call {
    uint8_t* statuses;
    ScalarResults* scalar;
};
thread_local Call call;

std::vector<Kernel>& registered() {
    static std::vector<Kernel> list;
    return list;
}

std::vector<Kernel> all_kernels() {
    std::vector<Kernel> all;
    for (const testing::Record& record : testing::all_records()) {
        if (record.type() != 's' || record.strided || record.row->signature != Signature::UNARY) continue;
        for (int slot = 0; slot < 3; ++slot) {
            const auto* const first = std::find(record.kernels, record.kernels + slot, record.kernels[slot]);
            if (first != record.kernels + slot) continue;
            const std::string level = record.row->tags[slot] + 2;
            all.push_back({record.name(), level, Reciprocal::kOwn,
                           reinterpret_cast<void (*)(int32_t, const float*, float*)>(record.kernels[slot])});
            for (const Reciprocal other : {Reciprocal::kLow, Reciprocal::kHigh})
                for (const Kernel& kernel : registered())
                    if (kernel.record == record.name() && kernel.level == level && kernel.reciprocal == other)
                        all.push_back(kernel);
        }
    }
    return all;
}

}  // namespace

Registration::Registration(char type, const char* function, const char* tag, Reciprocal reciprocal,
                           void (*run)(int32_t n, const float* x, float* y)) {
    registered().push_back({type + std::string(function), tag + 2, reciprocal, run});
}

const std::vector<Kernel>& kernels() {
    static const std::vector<Kernel> list = all_kernels();
    return list;
}

void run_kernel(const Kernel& kernel, int32_t n, const float* x, float* y, uint8_t* statuses, ScalarResults& scalar) {
    call = {statuses, &scalar};
    std::fill_n(statuses, n, uint8_t{0});
    kernel.run(n, x, y);
}

// The detour of rare lanes, in the place of the library's (the program is linked with --wrap).
void settle(const vmath::RareCall<float>& rare_call, float* results, uint64_t rare, int64_t first, int count) {
    const Call& c = call;
    const float* const x = rare_call.in[0] + first;
    float* const y = rare_call.out[0] + first;
    float* const scalar_y = c.scalar->y.data() + first;
    uint8_t* const status = c.scalar->status.data() + first;
    uint8_t* const known = c.scalar->known.data() + first;
    if (std::find(known, known + count, 0) != known + count)
        for (int lane = 0; lane < count; ++lane) {
            if ((rare >> lane & 1) == 0 || known[lane]) continue;
            status[lane] = static_cast<uint8_t>(rare_call.function.one_input(&x[lane], &scalar_y[lane]));
            known[lane] = true;
        }
    // Arguments come in order: often all lanes are rare.
    if (std::popcount(rare) == count) {
        std::copy_n(scalar_y, count, y);
        std::copy_n(status, count, c.statuses + first);
        return;
    }
    std::copy_n(results, count, y);
    for (; rare != 0; rare &= rare - 1) {
        const int lane = std::countr_zero(rare);
        y[lane] = scalar_y[lane];
        c.statuses[first + lane] = status[lane];
    }
}

}  // namespace nax::tools

#define NAX_SETTLE _ZN3nax5vmath17settle_rare_lanesIfEEvRKNS0_8RareCallIT_EERNS0_8X87ScopeEPS3_imli
#define NAX_WRAPPED(name) NAX_WRAPPED_(name)
#define NAX_WRAPPED_(name) __wrap_##name
extern "C" void NAX_WRAPPED(NAX_SETTLE)(const nax::vmath::RareCall<float>& call, nax::vmath::X87Scope&, float* results,
                                        int, uint64_t rare, int64_t first, int count) {
    nax::tools::settle(call, results, rare, first, count);
}
