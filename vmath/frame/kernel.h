// The frame of a vector kernel, written once over operation and access: control words, full blocks, whole vectors,
// masked tail, rare lanes.
//
// An operation is a struct whose data members are its constants, one row to a vector, in order of use; the kernel's
// data block is a constant instance of it. It has
//   Precision              Double or Single
//   unroll                 vectors in a full block of the dense form
//   eval(x..., y&...[, care])
//                          results of one vector; returns the mask of rare lanes, or nothing if no lane is ever rare.
//                          A comparison that makes a mask takes a slot of the multipliers, so an operation that has
//                          better use for it returns Bits instead: set sign bits tell the lanes that may be rare.
//                          Or it returns a vector, often the result: there it is Inf or NaN in such lanes, and far
//                          from the largest number in all others.
//                          An operation that takes `care` hands it on to the wrappers that want it (simd/simd.h). The
//                          loop asks for the fast form; its verdict also tells the lanes where that isn't right. A step
//                          with such lanes is computed again, carefully
//   eval_wide(x..., y&...) another way for steps with lanes that eval finds rare, such as a long argument reduction: all
//                          results of the vector, and the mask of lanes that are rare even so; optional
//   is_rare(x...)          mask of the rare lanes; only if eval returns no mask, and asked only for a step with lanes
//                          that may be rare
//   rare                   scalar path; only if some lane may be rare. nullptr: eval_wide settles all that eval finds
//   always_settled         true if rare lanes go there also where reports are off: the vector code has no result for them;
//                          optional
// A result depends on the element's own arguments alone, so block, tail, dense and strided forms agree bit for bit.
#pragma once

#include <type_traits>
#include <utility>

#include "vmath/frame/memory.h"
#include "vmath/frame/rare_lanes.h"

namespace nax::vmath::NAX_ISA {

// The value for the precision at hand: a constant, name or function that the two precisions don't share.
template <class E, class S, class D>
constexpr auto by_precision(S single, D double_) {
    if constexpr (std::is_same_v<E, Single>)
        return single;
    else
        return double_;
}

// With 32 registers, up to this many rows are held over the loop; a larger block is read row by row where it is used,
// which costs less than filling and spilling registers. With 16 registers rows are operands in memory.
inline constexpr size_t kMaxHeldRows = sizeof(Double::Vector) == 64 ? 22 : 0;
template <class Op>
using Held = std::conditional_t<(sizeof(Op) <= kMaxHeldRows * sizeof(Double::Vector)), const Op, const Op&>;

// Vectors in flight: twice 16 registers' worth of them would spill.
template <class Op, class Access>
inline constexpr int kUnroll = !Access::dense ? 1 : sizeof(Double::Vector) == 64 || Op::unroll < 2 ? Op::unroll : 2;

// Calls eval, or eval_wide, with as many inputs and results as there are.
template <class Op, class Vector, int NI, int NO, class... Care>
NAX_VEC auto eval(const Op& op, const Vector (&x)[NI], Vector (&y)[NO], Care... care) {
    static_assert(NI * NO <= 2);
    if constexpr (NI == 2)
        return op.eval(x[0], x[1], y[0], care...);
    else if constexpr (NO == 2)
        return op.eval(x[0], y[0], y[1], care...);
    else
        return op.eval(x[0], y[0], care...);
}
template <class Op, class Vector, int NI, int NO>
NAX_VEC auto eval_wide(const Op& op, const Vector (&x)[NI], Vector (&y)[NO]) {
    if constexpr (NI == 2)
        return op.eval_wide(x[0], x[1], y[0]);
    else if constexpr (NO == 2)
        return op.eval_wide(x[0], y[0], y[1]);
    else
        return op.eval_wide(x[0], y[0]);
}
template <class Op, class Vector, int NI, int NO>
inline constexpr bool kTakesCare = requires(const Op& op, Vector (&x)[NI], Vector (&y)[NO]) {
    requires(NI == 1 && NO == 1 && requires { op.eval(x[0], y[0], Fast{}); }) ||
        (NI == 2 && requires { op.eval(x[0], x[NI - 1], y[0], Fast{}); }) ||
        (NO == 2 && requires { op.eval(x[0], y[0], y[NO - 1], Fast{}); });
};
template <class Op, class Vector, int NI, int NO, class Care>
NAX_VEC auto apply(const Op& op, const Vector (&x)[NI], Vector (&y)[NO], Care care) {
    if constexpr (kTakesCare<Op, Vector, NI, NO>)
        return eval(op, x, y, care);
    else
        return eval(op, x, y);
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
                                   std::declval<Vector (&)[NO]>(), Fast{}));
    static constexpr bool exact = std::is_same_v<Verdict, typename E::Mask>;
    static constexpr bool has_wide = requires(const Op& op) { &Op::eval_wide; };
    // Whether a step with suspect lanes is computed again.
    static constexpr bool looks_twice = has_wide || (!kFastIsCareful && kTakesCare<Op, Vector, NI, NO>);

    Vector y[U][NO];
    Verdict verdict[U];

    NAX_VEC bool any_suspect() const {
        Verdict any = verdict[0];
#pragma GCC unroll 8
        for (int u = 1; u < U; ++u) {
            if constexpr (std::is_same_v<Verdict, Vector>)
                any = add(any, verdict[u]);  // finite only if both are
            else
                any = any | verdict[u];
        }
        if constexpr (exact)
            return simd::any(any);
        else if constexpr (std::is_same_v<Verdict, Vector>)
            return simd::any(is_class<kNan | kInf>(any));
        else
            return simd::any(sign_mask(from_bits(any)));
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
            all |= uint64_t{lane_bits(mask)} << (u * E::lanes);
        }
        return all;
    }
    NAX_VEC uint64_t rare_lanes(const Op& op, const Access& access, ptrdiff_t i, int lanes) const {
        if constexpr (exact) {
            return lane_bits(verdict[0]);
        } else {
            Vector x[NI];
            read(access, i, lanes, x);
            return lane_bits(is_rare(op, x) & E::first_lanes(lanes));
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
            verdict[u] = apply(op, x, y[u], Fast{});
        }
    }
    NAX_VEC void read_and_eval(const Op& op, const Access& access, ptrdiff_t i, int lanes) {
        Vector x[NI];
        read(access, i, lanes, x);
        verdict[0] = apply(op, x, y[0], Fast{});
        // The filler is rare for some functions.
        if constexpr (exact) verdict[0] = verdict[0] & E::first_lanes(lanes);
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

// Computes `count` elements of a step again: results in rows of `pitch`, and the mask of rare lanes.
template <class Op, class Access>
[[gnu::cold, gnu::noinline]] uint64_t look_again(const Op& op, const Access& access, ptrdiff_t i, int count,
                                                 typename Access::T* results, int pitch) {
    using Step = Step<Op, Access, 1>;
    using E = typename Op::Precision;
    uint64_t rare = 0;
    for (int first = 0; first < count; first += E::lanes) {
        const int lanes = count - first < E::lanes ? count - first : E::lanes;
        typename E::Vector x[Access::inputs], y[Access::outputs];
        Step::read(access, i + first, lanes, x);
        typename E::Mask mask;
        if constexpr (Step::has_wide) {
            mask = eval_wide(op, x, y);
        } else if constexpr (Step::exact) {
            mask = apply(op, x, y, Careful{});
        } else {
            apply(op, x, y, Careful{});
            mask = is_rare(op, x);
        }
        rare |= uint64_t{lane_bits(mask & E::first_lanes(lanes))} << first;
        for (int k = 0; k < Access::outputs; ++k) store(results + k * pitch + first, y[k]);
    }
    return rare;
}

// Stores `count` results of a step.
template <class Access>
NAX_VEC void write_results(const Access& access, ptrdiff_t i, int count, const typename Access::T* results, int pitch) {
    constexpr int whole = sizeof(Double::Vector) / sizeof(typename Access::T);
    for (int first = 0; first < count; first += whole)
        for (int k = 0; k < Access::outputs; ++k)
            access.write(k, i + first, count - first < whole ? count - first : whole,
                         load(results + k * pitch + first));
}

template <class Op, class Access>
NAX_VEC RareCall<typename Op::Precision::Element> rare_call(const char* name, const Access& access) {
    constexpr int last_in = Access::inputs - 1, last_out = Access::outputs - 1;
    return {Op::rare,
            name,
            {access.in[0], access.in[last_in]},
            {access.out[0], access.out[last_out]},
            {access.in_stride(0), access.in_stride(last_in)},
            {access.out_stride(0), access.out_stride(last_out)},
            Access::inputs,
            Access::outputs,
            !Access::dense || access.in_stride(last_in) == 0};
}

// Operations whose vector code settles every lane.
template <const auto& kData, class Access>
NAX_VEC void run_without_rare(int32_t n, const Access& access) {
    using Op = std::remove_cvref_t<decltype(kData)>;
    using E = typename Op::Precision;
    using Vector = typename E::Vector;
    constexpr int NI = Access::inputs, NO = Access::outputs;
    constexpr int unroll = kUnroll<Op, Access>;
    constexpr int block = E::lanes * unroll;

    const MxcsrScope<kSuppressesExceptions> mxcsr(nax_arq_kernel_GetMode());
    Held<Op> op = kData;
    const auto whole_vector = [&](ptrdiff_t i) __attribute__((always_inline)) {
        Vector x[NI], y[NO];
        for (int k = 0; k < NI; ++k) x[k] = access.read(k, i);
        apply(op, x, y, Fast{});
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
        apply(op, x, y, Fast{});
        for (int k = 0; k < NO; ++k) access.write(k, i, lanes, y[k]);
    }
}

// Operations with rare lanes. The detour leaves the loop: the loop proper has no call, keeps its constants in registers
// and spills nothing.
template <const auto& kData, class Access>
NAX_VEC void run_with_rare(int32_t n, const Access& access, const char* name) {
    using Op = std::remove_cvref_t<decltype(kData)>;
    using E = typename Op::Precision;
    using T = typename E::Element;
    constexpr int unroll = kUnroll<Op, Access>;
    constexpr int block = E::lanes * unroll;
    static_assert(block <= kMaxBlock);
    constexpr bool looks_twice = Step<Op, Access, 1>::looks_twice;

    const uint32_t mode = nax_arq_kernel_GetMode();
    constexpr bool always_settled = requires { requires Op::always_settled; };
    const bool reports = always_settled || (mode & kErrorModeField) != kErrorModeNone;
    MxcsrScope<kSuppressesExceptions> mxcsr(mode);
    X87Scope x87;
    const Op* rows = &kData;
    alignas(64) T results[Access::outputs * block];
    ptrdiff_t i = 0;
    for (;;) {
        uint64_t rare = 0;
        int count;
        {
            asm("" : "+r"(rows));  // makes the rows load here, and their registers end here
            Held<Op> op = *rows;
            for (; i + block <= n; i += block) {
                Step<Op, Access, unroll> step;
                step.read_and_eval(op, access, i);
                if (step.any_suspect()) [[unlikely]] {
                    if constexpr (!looks_twice) rare = reports ? step.rare_lanes(op, access, i) : 0;
                    if (looks_twice || rare != 0) {
                        if constexpr (!looks_twice) step.spill(results, block);
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
                    if constexpr (!looks_twice) rare = reports ? step.rare_lanes(op, access, i, lanes) : 0;
                    if (looks_twice || rare != 0) {
                        if constexpr (!looks_twice) step.spill(results, block);
                        count = lanes;
                        goto detour;
                    }
                }
                step.write(access, i, lanes);
            }
        }
        return;
    detour:
        if constexpr (looks_twice) {
            rare = look_again(*rows, access, i, count, results, block);
            if (!reports) rare = 0;
        }
        if constexpr (std::is_same_v<decltype(Op::rare), const std::nullptr_t>) {
            write_results(access, i, count, results, block);
        } else if (rare != 0) {
            mxcsr.enter_scalar();
            settle_rare_lanes<T>(rare_call<Op>(name, access), x87, results, block, rare, i, count);
            mxcsr.leave_scalar();
        } else {
            write_results(access, i, count, results, block);
        }
        i += count;
    }
}

// `name`: what a report calls the function.
template <const auto& kData, class Access>
NAX_VEC void run(int32_t n, const Access& access, const char* name) {
    if (n <= 0) return;
    if constexpr (requires { std::remove_cvref_t<decltype(kData)>::rare; })
        run_with_rare<kData>(n, access, name);
    else
        run_without_rare<kData>(n, access);
}

}  // namespace nax::vmath::NAX_ISA
