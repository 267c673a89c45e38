// Compiled for the baseline, so that kernels of every instruction set may come here.
#include "vmath/frame/rare_lanes.h"

namespace nax::vmath {
namespace {

void report(const RareCall<float>& call, int32_t status, int32_t index) {
    if (call.strided)
        nax_arq_kernel_sErrorI(status, index, call.in[0], call.in_stride[0], call.in[1], call.in_stride[1], call.out[0],
                               call.out_stride[0], call.out[1], call.out_stride[1], call.name);
    else
        nax_arq_kernel_sError(status, index, call.in[0], call.in[1], call.out[0], call.out[1], call.name);
}

void report(const RareCall<double>& call, int32_t status, int32_t index) {
    if (call.strided)
        nax_arq_kernel_dErrorI(status, index, call.in[0], call.in_stride[0], call.in[1], call.in_stride[1], call.out[0],
                               call.out_stride[0], call.out[1], call.out_stride[1], call.name);
    else
        nax_arq_kernel_dError(status, index, call.in[0], call.in[1], call.out[0], call.out[1], call.name);
}

template <class T>
int32_t call_scalar_path(const RareFunction<T>& function, const T* a, const T* b, T* r1, T* r2) {
    if (function.one_input != nullptr) return function.one_input(a, r1);
    if (function.two_inputs != nullptr) return function.two_inputs(a, b, r1);
    return function.two_results(a, r1, r2);
}

}  // namespace

template <class T>
[[gnu::cold, gnu::noinline]] void settle_rare_lanes(const RareCall<T>& call, X87Scope& x87, T* results, int pitch,
                                                    uint64_t rare, int64_t first, int count) {
    x87.mask_exceptions();
    // The arguments are copied first: a report stores its result, which in place overwrites the argument.
    T arguments[2][kMaxBlock];
    for (int k = 0; k < call.inputs; ++k)
        for (int lane = 0; lane < count; ++lane) arguments[k][lane] = call.in[k][(first + lane) * call.in_stride[k]];

    for (; rare != 0; rare &= rare - 1) {
        const int lane = __builtin_ctzll(rare);
        const int32_t status = call_scalar_path(call.function, &arguments[0][lane], &arguments[1][lane], &results[lane],
                                                &results[pitch + lane]);
        if (status == 0) continue;
        const int64_t element = first + lane;
        for (int k = 0; k < call.outputs; ++k) call.out[k][element * call.out_stride[k]] = results[k * pitch + lane];
        report(call, status, static_cast<int32_t>(element));
        // A callback may have changed the result.
        for (int k = 0; k < call.outputs; ++k) results[k * pitch + lane] = call.out[k][element * call.out_stride[k]];
    }
    for (int k = 0; k < call.outputs; ++k)
        for (int lane = 0; lane < count; ++lane)
            call.out[k][(first + lane) * call.out_stride[k]] = results[k * pitch + lane];
}

template void settle_rare_lanes<float>(const RareCall<float>&, X87Scope&, float*, int, uint64_t, int64_t, int);
template void settle_rare_lanes<double>(const RareCall<double>&, X87Scope&, double*, int, uint64_t, int64_t, int);

}  // namespace nax::vmath
