// The frame of a vector kernel, written once over operation and access: control words, full blocks, whole vectors,
// masked tail, rare lanes.
//
// An operation is a struct whose data members are its constants, one row to a vector, in order of use; the kernel's
// data block is a constant instance of it. It has
//   Precision              Double or Single
//   unroll                 vectors in a full block of the dense form
//   eval(x..., y&...)      results of one vector; returns the mask of rare lanes, or nothing if no lane is ever rare.
//                          A comparison that makes a mask takes a slot of the multipliers, so an operation that has
//                          better use for it returns Bits instead: set sign bits tell the lanes that may be rare
//   is_rare(x...)          mask of the rare lanes; only if eval returns Bits, and asked only for a step with such lanes
//   rare, name             scalar path and user-visible name; only if some lane may be rare
// A result depends on the element's own arguments alone, so block, tail, dense and strided forms agree bit for bit.
#pragma once

#include <type_traits>
#include <utility>

#include "vmath/frame/memory.h"
#include "vmath/frame/rare_lanes.h"

namespace nax::vmath::avx512 {

// The value for the precision at hand: a constant, name or function that the two precisions don't share.
template <class E, class S, class D>
constexpr auto by_precision(S single, D double_) {
    if constexpr (std::is_same_v<E, Single>)
        return single;
    else
        return double_;
}

// Up to this many rows are held in registers over the loop; a larger block is read row by row where it is used, which
// costs less than filling and spilling registers.
inline constexpr size_t kMaxHeldRows = 22;
template <class Op>
using Held = std::conditional_t<(sizeof(Op) <= kMaxHeldRows * 64), const Op, const Op&>;

template <class Op, class Vector, int NI, int NO>
NAX_VEC auto apply(const Op& op, const Vector (&x)[NI], Vector (&y)[NO]) {
    static_assert(NI * NO <= 2);
    if constexpr (NI == 2)
        return op.eval(x[0], x[1], y[0]);
    else if constexpr (NO == 2)
        return op.eval(x[0], y[0], y[1]);
    else
        return op.eval(x[0], y[0]);
}

template <class Op, class Vector, int NI>
NAX_VEC auto is_rare(const Op& op, const Vector (&x)[NI]) {
    if constexpr (NI == 2)
        return op.is_rare(x[0], x[1]);
    else
        return op.is_rare(x[0]);
}

// One step of the loop: `U` whole vectors, or one partial vector of `lanes`.
template <class Op, class Access, int U>
struct Step {
    using E = typename Op::Precision;
    using T = typename E::Element;
    using Vector = typename E::Vector;
    static constexpr int NI = Access::inputs, NO = Access::outputs;

    using Verdict = decltype(apply(std::declval<const Op&>(), std::declval<const Vector (&)[NI]>(),
                                   std::declval<Vector (&)[NO]>()));
    static constexpr bool exact = std::is_same_v<Verdict, typename E::Mask>;

    Vector y[U][NO];
    Verdict verdict[U];

    NAX_VEC bool any_suspect() const {
        Verdict any = verdict[0];
#pragma GCC unroll 8
        for (int u = 1; u < U; ++u) any |= verdict[u];
        if constexpr (exact)
            return any != 0;
        else
            return sign_mask(from_bits(any)) != 0;
    }
    // Rare lanes of the step at element i, in element order; `lanes` of a partial vector.
    NAX_VEC uint64_t rare_lanes(const Op& op, const Access& access, ptrdiff_t i) const {
        uint64_t all = 0;
#pragma GCC unroll 8
        for (int u = 0; u < U; ++u) {
            typename E::Mask mask;
            if constexpr (exact) {
                mask = verdict[u];
            } else {
                Vector x[NI];
                read(access, i + u * E::lanes, x);
                mask = is_rare(op, x);
            }
            all |= uint64_t{mask} << (u * E::lanes);
        }
        return all;
    }
    NAX_VEC uint64_t rare_lanes(const Op& op, const Access& access, ptrdiff_t i, int lanes) const {
        if constexpr (exact) {
            return verdict[0];
        } else {
            Vector x[NI];
            read(access, i, lanes, x);
            return is_rare(op, x) & Dense<E, NI, NO>::lane_mask(lanes);
        }
    }
    NAX_VEC void spill(T* results, int pitch) const {
#pragma GCC unroll 8
        for (int u = 0; u < U; ++u)
            for (int k = 0; k < NO; ++k) store(results + k * pitch + u * E::lanes, y[u][k]);
    }
    NAX_VEC static void read(const Access& access, ptrdiff_t i, Vector (&x)[NI]) {
        for (int k = 0; k < NI; ++k) x[k] = access.read(k, i);
    }
    NAX_VEC static void read(const Access& access, ptrdiff_t i, int lanes, Vector (&x)[NI]) {
        for (int k = 0; k < NI; ++k) x[k] = access.read(k, i, lanes);
    }
    NAX_VEC void read_and_eval(const Op& op, const Access& access, ptrdiff_t i) {
#pragma GCC unroll 8
        for (int u = 0; u < U; ++u) {
            Vector x[NI];
            read(access, i + u * E::lanes, x);
            verdict[u] = apply(op, x, y[u]);
        }
    }
    NAX_VEC void read_and_eval(const Op& op, const Access& access, ptrdiff_t i, int lanes) {
        Vector x[NI];
        read(access, i, lanes, x);
        verdict[0] = apply(op, x, y[0]);
        // The filler is rare for some functions.
        if constexpr (exact) verdict[0] = Verdict(verdict[0] & Dense<E, NI, NO>::lane_mask(lanes));
    }
    NAX_VEC void write(const Access& access, ptrdiff_t i) const {
#pragma GCC unroll 8
        for (int u = 0; u < U; ++u)
            for (int k = 0; k < NO; ++k) access.write(k, i + u * E::lanes, y[u][k]);
    }
    NAX_VEC void write(const Access& access, ptrdiff_t i, int lanes) const {
        for (int k = 0; k < NO; ++k) access.write(k, i, lanes, y[0][k]);
    }
};

template <class Op, class Access>
NAX_VEC RareCall<typename Op::Precision::Element> rare_call(const Access& access) {
    constexpr int last_in = Access::inputs - 1, last_out = Access::outputs - 1;
    return {Op::rare,
            Op::name,
            {access.in[0], access.in[last_in]},
            {access.out[0], access.out[last_out]},
            {access.in_stride(0), access.in_stride(last_in)},
            {access.out_stride(0), access.out_stride(last_out)},
            Access::inputs,
            Access::outputs,
            !Access::dense};
}

// Operations whose vector code settles every lane.
template <const auto& kData, class Access>
NAX_VEC void run_without_rare(int32_t n, const Access& access) {
    using Op = std::remove_cvref_t<decltype(kData)>;
    using E = typename Op::Precision;
    using Vector = typename E::Vector;
    constexpr int NI = Access::inputs, NO = Access::outputs;
    constexpr int unroll = Access::dense ? Op::unroll : 1;
    constexpr int block = E::lanes * unroll;

    const MxcsrScope mxcsr(nax_arq_kernel_GetMode());
    Held<Op> op = kData;
    const auto whole_vector = [&](ptrdiff_t i) __attribute__((always_inline)) {
        Vector x[NI], y[NO];
        for (int k = 0; k < NI; ++k) x[k] = access.read(k, i);
        apply(op, x, y);
        for (int k = 0; k < NO; ++k) access.write(k, i, y[k]);
    };
    ptrdiff_t i = 0;
    for (; i + block <= n; i += block)
#pragma GCC unroll 8
        for (int u = 0; u < unroll; ++u) whole_vector(i + u * E::lanes);
    if constexpr (unroll > 1)
        for (; i + E::lanes <= n; i += E::lanes) whole_vector(i);
    if (i < n) {
        const int lanes = static_cast<int>(n - i);
        Vector x[NI], y[NO];
        for (int k = 0; k < NI; ++k) x[k] = access.read(k, i, lanes);
        apply(op, x, y);
        for (int k = 0; k < NO; ++k) access.write(k, i, lanes, y[k]);
    }
}

// Operations with rare lanes. The detour leaves the loop: the loop proper has no call, keeps its constants in registers
// and spills nothing.
template <const auto& kData, class Access>
NAX_VEC void run_with_rare(int32_t n, const Access& access) {
    using Op = std::remove_cvref_t<decltype(kData)>;
    using E = typename Op::Precision;
    using T = typename E::Element;
    constexpr int unroll = Access::dense ? Op::unroll : 1;
    constexpr int block = E::lanes * unroll;
    static_assert(block <= kMaxBlock);

    const uint32_t mode = nax_arq_kernel_GetMode();
    const bool reports = (mode & kErrorModeField) != kErrorModeNone;
    const MxcsrScope mxcsr(mode);
    X87Scope x87;
    const Op* rows = &kData;
    alignas(64) T results[Access::outputs * block];
    ptrdiff_t i = 0;
    for (;;) {
        uint64_t rare;
        int count;
        {
            asm("" : "+r"(rows));  // makes the rows load here, and their registers end here
            Held<Op> op = *rows;
            for (; i + block <= n; i += block) {
                Step<Op, Access, unroll> step;
                step.read_and_eval(op, access, i);
                if (step.any_suspect()) [[unlikely]] {
                    rare = reports ? step.rare_lanes(op, access, i) : 0;
                    if (rare != 0) {
                        step.spill(results, block);
                        count = block;
                        goto detour;
                    }
                }
                step.write(access, i);
            }
            for (; i < n; i += E::lanes) {
                Step<Op, Access, 1> step;
                const int lanes = n - i < E::lanes ? static_cast<int>(n - i) : E::lanes;
                step.read_and_eval(op, access, i, lanes);
                if (step.any_suspect()) [[unlikely]] {
                    rare = reports ? step.rare_lanes(op, access, i, lanes) : 0;
                    if (rare != 0) {
                        step.spill(results, block);
                        count = lanes;
                        goto detour;
                    }
                }
                step.write(access, i, lanes);
            }
        }
        return;
    detour:
        settle_rare_lanes<T>(rare_call<Op>(access), x87, results, block, rare, i, count);
        i += count;
    }
}

template <const auto& kData, class Access>
NAX_VEC void run(int32_t n, const Access& access) {
    if (n <= 0) return;
    if constexpr (requires { std::remove_cvref_t<decltype(kData)>::rare; })
        run_with_rare<kData>(n, access);
    else
        run_without_rare<kData>(n, access);
}

}  // namespace nax::vmath::avx512
