// Integrals over pieces of splines. The antiderivative of c0 + c1 t + c2 t^2 + ... is t B(t) with B nested:
//   B = b0 + t (b1 + t (b2 + ...)),  b(m) = c(m) / (m + 1).
// Between the local coordinates u and v of the limits the integral is (v - u) (B(v) + u B[u, v]), B[u, v] being the
// divided difference, which Horner's scheme carries along: B(m)[u, v] = u B(m+1)[u, v] + B(m+1)(v). So no difference of
// antiderivatives loses the digits of a narrow interval far from the piece's point, and no power of a coordinate, which
// could overflow where the integral doesn't, is formed.
#include "fit/integrate/integral.h"
#include "fit/subgrid.h"
#include "nax/fitting_integration.h"

namespace nax::fit {
namespace {

// The partition; on a uniform one the points are made from the two ends.
template <class T>
struct Points {
    const T* x;
    T step, end;
    int64_t last;
    bool uniform;

    explicit Points(const Task& task)
        : x(partition<T>(task)),
          step(uniform_step<T>(task)),
          end(right_end<T>(task)),
          last(task.nx - 1),
          uniform(has_uniform_grid(task)) {}
    T operator[](int64_t i) const {
        if (!uniform) return x[i];
        return i == last ? end : fused(static_cast<T>(i), step, x[0]);
    }
};

template <class T, int64_t kOrder>
struct PolynomialPieces {
    Points<T> points;
    const T* c;
    int64_t order;

    PolynomialPieces(const Task& task, int64_t j)
        : points(task), c(coefficients<T>(task, j)), order(kOrder > 0 ? kOrder : task.s_order) {}
    T left(int64_t i) const { return points[i]; }
    T right(int64_t i) const { return points[i + 1]; }
    T origin(int64_t i) const { return points[i]; }

    T integral(int64_t i, T u, T v, T width) const {
        const T* const a = c + i * terms();
        // The first step apart: an infinite coordinate times a divided difference of zero would be no number.
        T divided = a[terms() - 1] * inverse(terms()), value = fused(v, divided, a[terms() - 2] * inverse(terms() - 1));
#pragma GCC unroll 4
        for (int64_t m = terms() - 2; m > 0; --m) {
            divided = fused(u, divided, value);
            value = fused(v, value, a[m - 1] * inverse(m));
        }
        return width * fused(u, divided, value);
    }
    T whole(int64_t i) const {
        const T h = right(i) - left(i);
        const T* const a = c + i * terms();
        T sum = a[terms() - 1] * inverse(terms());
#pragma GCC unroll 4
        for (int64_t m = terms() - 1; m > 0; --m) sum = fused(h, sum, a[m - 1] * inverse(m));
        return h * sum;
    }

private:
    int64_t terms() const { return kOrder > 0 ? kOrder : order; }
    static T inverse(int64_t m) { return m == 1 ? T(1) : m == 2 ? T(0.5) : T(1) / static_cast<T>(m); }
};
template <class T>
using LinearPieces = PolynomialPieces<T, 2>;
template <class T>
using QuadraticPieces = PolynomialPieces<T, 3>;
template <class T>
using CubicPieces = PolynomialPieces<T, 4>;

// Any number of coefficients; none at all when callbacks do everything.
template <class T>
struct ArbitraryPieces : PolynomialPieces<T, 0> {
    ArbitraryPieces(const Task& task, int64_t j) : PolynomialPieces<T, 0>(task, j) {}
};

// Parabolas around the points, from knot to knot.
template <class T>
struct SubbotinPieces {
    Subgrid<T> knots;
    const T* c;

    SubbotinPieces(const Task& task, int64_t j)
        : knots(subgrid_of<T>(task)), c(coefficients<T>(task, j)) {}
    T left(int64_t i) const { return knots[i]; }
    T right(int64_t i) const { return knots[i + 1]; }
    T origin(int64_t i) const { return knots.point(i); }
    T integral(int64_t i, T u, T v, T width) const {
        const T* const a = c + 3 * i;
        const T b2 = a[2] * T(1.0 / 3), b1 = fused(v, b2, a[1] / 2);
        return width * fused(u, fused(u, b2, b1), fused(v, b1, a[0]));
    }
    T whole(int64_t i) const { return integral(i, left(i) - origin(i), right(i) - origin(i), right(i) - left(i)); }
};

// Steps take the value at the left end of the cell (kSide 0) or at its right end (kSide 1).
template <class T, int64_t kSide>
struct Steps {
    Points<T> points;
    FunctionData<T> y;

    Steps(const Task& task, int64_t j) : points(task), y(function_data<T>(task, j)) {}
    T left(int64_t i) const { return points[i]; }
    T right(int64_t i) const { return points[i + 1]; }
    T origin(int64_t i) const { return points[i]; }
    T integral(int64_t i, T, T, T width) const { return y[i + kSide] * width; }
    T whole(int64_t i) const { return y[i + kSide] * (right(i) - left(i)); }
};
template <class T>
using LeftSteps = Steps<T, 1>;
template <class T>
using RightSteps = Steps<T, 0>;

// Sum of the whole pieces from .. to - 1; the negative sum when cells that don't fit their limits turn the order round.
template <class Pieces>
[[gnu::noinline]] double add_pieces(const Pieces& pieces, int64_t from, int64_t to) {
    // Knuth's two-sum with the errors added up apart, so that no addition waits for them (T. Ogita, S. M. Rump,
    // S. Oishi, SIAM J. Sci. Comput. 26 (2005) 1955-1988).
    double sum = 0, errors = 0;
    for (int64_t i = (from < to ? from : to); i < (from < to ? to : from); ++i) {
        const double whole = static_cast<double>(pieces.whole(i)), next = sum + whole, back = next - sum;
        errors += (sum - (next - back)) + (whole - back);
        sum = next;
    }
    if (__builtin_isfinite(sum)) sum += errors;  // beyond the finite range errors have no meaning
    return from <= to ? sum : -sum;
}

template <class T, class Pieces>
[[gnu::always_inline]] inline T integrate_pair(const Pieces& pieces, const RunningSum* sums, double trusted, T a, T b,
                                               int64_t p, int64_t q) {
    if (a == b) return T(0);  // also where the piece isn't finite, and where a local coordinate isn't
    // With both limits in one piece the second part and the middle shrink to nothing.
    const bool same = p == q;
    const T p_end = same ? b : pieces.right(p), q_start = same ? b : pieces.left(q);
    const T p_origin = pieces.origin(p), q_origin = pieces.origin(q);
    const T head = pieces.integral(p, a - p_origin, p_end - p_origin, p_end - a);
    const T tail = pieces.integral(q, q_start - q_origin, b - q_origin, b - q_start);
    const int64_t from = same ? q : p + 1;
    double middle = 0;
    if (sums != nullptr) middle = difference(sums[q], sums[from]);
    if (sums == nullptr || !(__builtin_fabs(middle) >= trusted)) middle = add_pieces(pieces, from, q);
    return static_cast<T>(middle + (static_cast<double>(head) + static_cast<double>(tail)));
}

template <class T, template <class> class PiecesOf, bool kCallbacks>
int32_t integrate(const Integration<T>& call, int64_t j, const LimitBlock<T>& block, T* r, int64_t stride) {
    // Without order there are no coefficients: callbacks cover all pairs.
    if (call.task->s_order == 0 && call.evaluator == kIntegrateArbitrary) {
        for (int64_t i = 0; i < block.count; ++i) r[i * stride] = block.sign[i] * block.added[j * block.count + i];
        return DfStatusOk;
    }
    const PiecesOf<T> pieces(*call.task, j);
    const RunningSum* const sums =
        call.sums == nullptr ? nullptr : call.sums + j * (piece_count(*call.task, call.evaluator) + 1);
    const double trusted = sums == nullptr ? 0 : call.sum_limits[j];
    for (int64_t i = 0; i < block.count; ++i) {
        T value = 0;
        if (!kCallbacks || !block.covered[i])
            value = integrate_pair(pieces, sums, trusted, block.a[i], block.b[i], block.p[i], block.q[i]);
        if constexpr (kCallbacks) {
            const int64_t last = piece_count(*call.task, call.evaluator) - 1;
            if (block.apart[i])
                value += integrate_pair(pieces, sums, trusted, block.tail_a[i], block.tail_b[i], last, last);
            value += block.added[j * block.count + i];
        }
        r[i * stride] = block.sign[i] * value;
    }
    return DfStatusOk;
}

template <class T, template <class> class PiecesOf>
void fill(const Task& task, int64_t j, int64_t count, RunningSum* sums, double& largest) {
    const PiecesOf<T> pieces(task, j);
    RunningSum sum{0, 0};
    largest = 0;
    for (int64_t i = 0; i < count; ++i) {
        sums[i] = sum;
        sum.add(static_cast<double>(pieces.whole(i)));
        const double size = __builtin_fabs(sum.high);
        largest = size > largest || size != size ? size : largest;
    }
    sums[count] = sum;
}

}  // namespace

// The rounding errors of n additions in twice the precision stay below n 2^-104 times the largest sum, so a difference
// of at least n 2^-50 of it is right to 2^-54. A sum that isn't finite is a NaN from then on; then no difference is
// trusted.
template <class T>
double fill_running_sums(const Integration<T>& call, int64_t j, RunningSum* sums) {
    const Task& task = *call.task;
    const int64_t count = piece_count(task, call.evaluator);
    double largest = 0;
    switch (call.evaluator) {
        case kIntegrateLinear:
            fill<T, LinearPieces>(task, j, count, sums, largest);
            break;
        case kIntegrateQuadratic:
            fill<T, QuadraticPieces>(task, j, count, sums, largest);
            break;
        case kIntegrateCubic:
            fill<T, CubicPieces>(task, j, count, sums, largest);
            break;
        case kIntegrateSubbotin:
            fill<T, SubbotinPieces>(task, j, count, sums, largest);
            break;
        case kIntegrateArbitrary:
            fill<T, ArbitraryPieces>(task, j, count, sums, largest);
            break;
        case kIntegrateStepLeft:
            fill<T, LeftSteps>(task, j, count, sums, largest);
            break;
        default:
            fill<T, RightSteps>(task, j, count, sums, largest);
            break;
    }
    if (!__builtin_isfinite(sums[count].high)) return __builtin_inf();
    return largest * static_cast<double>(count) * 0x1p-50;
}
template double fill_running_sums(const Integration<double>&, int64_t, RunningSum*);
template double fill_running_sums(const Integration<float>&, int64_t, RunningSum*);

}  // namespace nax::fit

#define NAX_DF_MEMBER(name, pieces, T, callbacks)                                                                      \
    int32_t name(const void* call, int64_t function, const void* block, void* r, int64_t stride) {                     \
        using namespace nax::fit;                                                                                      \
        return integrate<T, pieces, callbacks>(*static_cast<const Integration<T>*>(call), function,                    \
                                               *static_cast<const LimitBlock<T>*>(block), static_cast<T*>(r), stride); \
    }
#define NAX_DF_FAMILY(name, pieces, T, precision)                       \
    NAX_DF_MEMBER(nax_df_kernel_##precision##_##name, pieces, T, false) \
    NAX_DF_MEMBER(nax_df_kernel_##precision##_##name##CB, pieces, T, true)
// The integration evaluators in the order of their indices: ROW(name, class of the pieces, what else the caller wants).
#define NAX_DF_INTEGRALS(ROW, ...)                         \
    ROW(IntegrateLinearSpline, LinearPieces, __VA_ARGS__)  \
    ROW(IntegrateQuadSpline, QuadraticPieces, __VA_ARGS__) \
    ROW(IntegrateCubSpline, CubicPieces, __VA_ARGS__)      \
    ROW(IntegrateSubbSpline, SubbotinPieces, __VA_ARGS__)  \
    ROW(IntegrateArbSpline, ArbitraryPieces, __VA_ARGS__)  \
    ROW(IntegratePwLSpline, LeftSteps, __VA_ARGS__)        \
    ROW(IntegratePwRSpline, RightSteps, __VA_ARGS__)
NAX_DF_INTEGRALS(NAX_DF_FAMILY, double, d)
NAX_DF_INTEGRALS(NAX_DF_FAMILY, float, s)

namespace nax::fit {

#define NAX_DF_ENTRY(name, pieces, precision, member) nax_df_kernel_##precision##_##name##member,
#define NAX_DF_TABLE(T, table, precision, member)                            \
    template <>                                                              \
    const IntegralFunction IntegralTables<T>::table[kIntegralEvaluators] = { \
        NAX_DF_INTEGRALS(NAX_DF_ENTRY, precision, member)};
NAX_DF_TABLE(double, _Integrate1DDispatch, d, )
NAX_DF_TABLE(double, _Integrate1DDispatchCB, d, CB)
NAX_DF_TABLE(float, _Integrate1DDispatch, s, )
NAX_DF_TABLE(float, _Integrate1DDispatchCB, s, CB)

}  // namespace nax::fit
