// Integrals against antiderivatives in long double, cell by cell, and the rules for limits, layouts and callbacks.
#include <gtest/gtest.h>

#include <algorithm>

#include "fit/integrate/integral.h"
#include "nax/fitting_integration.h"
#include "tests/fit/spline_case.h"
#include "tests/lib/failing_service.h"

namespace {

using namespace nax::test;
using nax::fit::IntegralCallback;
using nax::fit::SearchCallback;

template <class T>
struct Call {
    std::vector<T> llim, rlim;
    int64_t nlim = -1, lhint = 0, rlim_hint = 0, rhint = 16;
    const T *left_data_hint = nullptr, *right_data_hint = nullptr;
    IntegralCallback<T> callbacks[3] = {};
    void* parameters = nullptr;
    SearchCallback<T> search = nullptr;
    const nax_threaders* threaders = nullptr;
    std::vector<T> r;

    int32_t run(const nax_df_task* task) {
        if (nlim < 0) nlim = static_cast<int64_t>(llim.size());
        r.assign(static_cast<size_t>(nlim * std::max<int64_t>(task->ny, 1)) + 1, T(-77));
        const auto entry = [] {
            if constexpr (sizeof(T) == sizeof(double))
                return nax_df_kernel_dDFIntegrate1D;
            else
                return nax_df_kernel_sDFIntegrate1D;
        }();
        return entry(task, 0, nlim, llim.data(), lhint, rlim.data(), rlim_hint, left_data_hint, right_data_hint, r.data(), rhint,
                     callbacks[0], parameters, callbacks[1], parameters, callbacks[2], parameters, search, parameters, threaders);
    }
};

// A task over arrays that it keeps alive; coefficients random, so that a spline's pieces needn't join.
template <class T>
struct Spline {
    std::vector<T> x, ends, y, c, ic;
    std::vector<void*> rows;
    nax_df_task* task = nullptr;
    int64_t nx, ny, order;

    Spline(int64_t points, int64_t functions, int64_t s_order, int64_t s_type, bool uniform, uint64_t seed = 1)
        : nx(points), ny(functions), order(s_order) {
        x = make_partition<T>(nx, uniform, seed);
        ends = {x.front(), x.back()};
        std::mt19937_64 engine(seed + 7);
        std::uniform_real_distribution<double> any(-1, 1);
        for (int64_t k = 0; k < nx * ny; ++k) y.push_back(T(any(engine)));
        for (int64_t k = 0; k < nx * ny * std::max<int64_t>(order, 1); ++k) c.push_back(T(any(engine)));
        EXPECT_EQ(new_task<T>(&task, nx, uniform ? ends.data() : x.data(), uniform ? 4 : 0, ny, y.data(), 16), 0);
        for (int64_t j = 0; j < ny; ++j) rows.push_back(c.data() + j * nx * order);
        task->s_order = s_order, task->s_type = s_type, task->scoeff = order > 0 ? rows.data() : nullptr;
        task->scoeff_entries = order > 0 ? ny : 0;
        if (order == 3 && s_type == 1) task->ic_type = 8;
    }
    Spline(const Spline&) = delete;
    ~Spline() {
        task->scoeff = nullptr, task->scoeff_entries = 0;
        nax_df_kernel_DeleteTask(&task);
    }
    bool subbotin() const { return order == 3 && task->s_type == 1; }
    int64_t pieces() const { return subbotin() ? nx : nx - 1; }
    // Where piece i starts; the first and last reach to infinity.
    long double border(int64_t i) const {
        if (!subbotin() || i == 0) return x[size_t(i)];
        return i == nx ? x.back() : (x[size_t(i) - 1] + x[size_t(i)]) / 2;
    }
    long double antiderivative(int64_t j, int64_t piece, long double at) const {
        const long double t = at - x[size_t(piece)];
        if (order == 0) return y[size_t(j * nx + piece + (task->s_type == 8 ? 1 : 0))] * t;
        long double sum = 0;
        for (int64_t m = order; m-- > 0;) sum = sum * t + static_cast<long double>(c[size_t((j * nx + piece) * order + m)]) / (m + 1);
        // Horner from the highest power: sum is c0 + c1 t / 2 + ...
        return sum * t;
    }
    int64_t piece_of(long double at) const {
        int64_t i = 0;
        while (i + 1 < pieces() && border(i + 1) <= at) ++i;
        return i;
    }
    long double exact(int64_t j, long double a, long double b) const {
        if (b < a) return -exact(j, b, a);
        const int64_t p = piece_of(a), q = piece_of(b);
        if (p == q) return antiderivative(j, p, b) - antiderivative(j, p, a);
        long double sum = antiderivative(j, p, border(p + 1)) - antiderivative(j, p, a);
        for (int64_t i = p + 1; i < q; ++i) sum += antiderivative(j, i, border(i + 1)) - antiderivative(j, i, border(i));
        return sum + antiderivative(j, q, b) - antiderivative(j, q, border(q));
    }
};

struct Kind {
    int64_t order, type;
};
const std::vector<Kind> kKinds = {{2, 0}, {3, 0}, {4, 5}, {3, 1}, {7, 0}, {0, 8}, {0, 7}};

template <class T>
class Integrate : public testing::Test {
protected:
    // Pairs in one cell, across cells, reversed, equal, on points, outside at both sides.
    static Call<T> mixed_limits(const Spline<T>& s, int64_t count, uint64_t seed) {
        std::mt19937_64 engine(seed);
        const double width = double(s.x.back() - s.x.front());
        std::uniform_real_distribution<double> any(double(s.x.front()) - 0.1 * width, double(s.x.back()) + 0.1 * width);
        Call<T> call;
        for (int64_t i = 0; i < count; ++i) {
            const T a = T(any(engine));
            call.llim.push_back(i % 7 == 3 ? s.x[engine() % s.x.size()] : a);
            call.rlim.push_back(i % 11 == 5 ? call.llim.back() : i % 5 == 2 ? T(a + T(0.01)) : T(any(engine)));
        }
        return call;
    }
    static void expect_exact(const Spline<T>& s, const Call<T>& call, bool by_function = true) {
        const double eps = double(std::numeric_limits<T>::epsilon());
        for (int64_t j = 0; j < s.ny; ++j)
            for (int64_t i = 0; i < call.nlim; ++i) {
                const T got = call.r[size_t(by_function ? j * call.nlim + i : i * s.ny + j)];
                const long double a = call.llim[size_t(i)], b = call.rlim[size_t(i)];
                ASSERT_NEAR(double(got), double(s.exact(j, a, b)), 200 * eps * double(1 + s.nx / 16)) << i << ": " << double(a) << " " << double(b);
            }
        ASSERT_EQ(call.r.back(), T(-77)) << "written past the end";
    }
};
using Precisions = testing::Types<double, float>;
TYPED_TEST_SUITE(Integrate, Precisions);

TYPED_TEST(Integrate, EqualsTheSumOfCellsForEverySpline) {
    for (const Kind& kind : kKinds)
        for (const int64_t nx : {2, 3, 5, 20, 77})
            for (const bool uniform : {false, true})
                for (const int64_t count : {1, 5, 300}) {  // few pairs add cells, many take running sums
                    SCOPED_TRACE("order " + std::to_string(kind.order) + " type " + std::to_string(kind.type) + " nx " + std::to_string(nx) +
                                 (uniform ? " uniform" : ""));
                    const Spline<TypeParam> s(nx, 3, kind.order, kind.type, uniform);
                    Call<TypeParam> call = this->mixed_limits(s, count, 3);
                    ASSERT_EQ(call.run(s.task), 0);
                    this->expect_exact(s, call);
                    call.rhint = 0;
                    ASSERT_EQ(call.run(s.task), 0);
                    this->expect_exact(s, call, false);
                    if (testing::Test::HasFatalFailure()) return;
                }
}

TYPED_TEST(Integrate, SplitsReversesAndVanishes) {
    const Spline<TypeParam> s(40, 2, 4, 2, false);
    Call<TypeParam> forward = this->mixed_limits(s, 200, 9), backward = forward, empty = forward;
    std::swap(backward.llim, backward.rlim);
    empty.rlim = empty.llim;
    ASSERT_EQ(forward.run(s.task), 0);
    ASSERT_EQ(backward.run(s.task), 0);
    ASSERT_EQ(empty.run(s.task), 0);
    for (size_t i = 0; i < 400; ++i) {
        EXPECT_EQ(forward.r[i], -backward.r[i]);
        EXPECT_EQ(empty.r[i], TypeParam(0));
    }
}

// A narrow interval far from the start of its cell keeps all its digits; so does a pair next to huge cells.
TYPED_TEST(Integrate, NarrowIntervalsAndSmallSumsKeepTheirDigits) {
    Spline<TypeParam> s(300, 1, 4, 0, true);
    const double eps = double(std::numeric_limits<TypeParam>::epsilon());
    for (size_t k = 0; k < s.c.size(); ++k) s.c[k] = k / 4 < 100 ? TypeParam(1e18) : k % 4 == 0 ? TypeParam(1) : TypeParam(0.125);
    Call<TypeParam> call;
    for (int i = 0; i < 100; ++i) {
        const TypeParam a = s.x[size_t(120 + i)] + TypeParam(0.1);
        call.llim.push_back(a);
        call.rlim.push_back(i % 2 == 0 ? std::nextafter(a, TypeParam(1000)) : s.x[size_t(160 + i)]);
    }
    call.llim.push_back(s.x[0]), call.rlim.push_back(s.x.back());
    ASSERT_EQ(call.run(s.task), 0);
    for (size_t i = 0; i < 100; ++i) {
        double exact = double(s.exact(0, call.llim[i], call.rlim[i]));
        if (i % 2 == 0) {  // one unit wide: the function hardly changes
            const double t = double(call.llim[i]) - double(s.x[size_t(120) + i]);
            exact = (1 + 0.125 * t * (1 + t * (1 + t))) * (double(call.rlim[i]) - double(call.llim[i]));
        }
        ASSERT_NEAR(double(call.r[i]), exact, 8 * eps * exact) << i;
    }
}

// Running sums give the rounded exact sum of the cells, also when they add up to little.
TYPED_TEST(Integrate, RunningSumsStayWithinUnitsOfTheSumOfCells) {
    const Spline<TypeParam> s(1000, 1, 4, 0, false, 4);
    Call<TypeParam> many, one;
    std::mt19937_64 engine(2);
    for (int i = 0; i < 2000; ++i) {
        const size_t p = engine() % 999, q = engine() % 999;
        many.llim.push_back(s.x[p]), many.rlim.push_back(s.x[q]);
    }
    ASSERT_EQ(many.run(s.task), 0);
    for (size_t i = 0; i < 2000; ++i) {
        one.llim = {many.llim[i]}, one.rlim = {many.rlim[i]}, one.nlim = 1;
        ASSERT_EQ(one.run(s.task), 0);
        const double scale = std::max(std::fabs(double(one.r[0])), 0.05);  // the two cells at the limits are rounded apart
        ASSERT_NEAR(double(many.r[i]), double(one.r[0]), 4 * double(std::numeric_limits<TypeParam>::epsilon()) * scale);
    }
}

TYPED_TEST(Integrate, UnfinishedCellsSpoilOnlyIntervalsThatHoldThem) {
    Spline<TypeParam> s(60, 1, 4, 0, false);
    s.c[size_t(4 * 30)] = std::numeric_limits<TypeParam>::quiet_NaN();
    s.c[size_t(4 * 40)] = std::numeric_limits<TypeParam>::infinity();
    Call<TypeParam> call = this->mixed_limits(s, 400, 8);
    ASSERT_EQ(call.run(s.task), 0);
    for (size_t i = 0; i < 400; ++i) {
        const long double a = std::min(call.llim[i], call.rlim[i]), b = std::max(call.llim[i], call.rlim[i]);
        if (b < s.x[30] || a >= s.x[41] || (a >= s.x[31] && b < s.x[40])) {
            ASSERT_NEAR(double(call.r[i]), double(s.exact(0, call.llim[i], call.rlim[i])), 2000 * double(std::numeric_limits<TypeParam>::epsilon()));
        } else if (a < s.x[30] && b > s.x[31]) {
            ASSERT_TRUE(std::isnan(call.r[i]));
        } else if (a >= s.x[31] && a < s.x[40] && b > s.x[41]) {
            ASSERT_TRUE(std::isinf(call.r[i]));
        }
    }
    Call<TypeParam> bad;
    bad.llim = {std::numeric_limits<TypeParam>::quiet_NaN(), s.x[2]};
    bad.rlim = {s.x[3], std::numeric_limits<TypeParam>::quiet_NaN()};
    ASSERT_EQ(bad.run(s.task), 0);
    EXPECT_TRUE(std::isnan(bad.r[0]) && std::isnan(bad.r[1]));
}

TYPED_TEST(Integrate, HintsAgreeWithListedLimits) {
    const Spline<TypeParam> s(50, 2, 4, 0, false);
    Call<TypeParam> listed;
    for (int i = 0; i < 700; ++i) {
        listed.llim.push_back(std::fma(TypeParam(i), (s.x[30] - s.x[0]) / TypeParam(699), s.x[0]));
        listed.rlim.push_back(std::fma(TypeParam(i), (s.x[49] - s.x[10]) / TypeParam(699), s.x[10]));
    }
    ASSERT_EQ(listed.run(s.task), 0);
    Call<TypeParam> uniform = listed, sorted = listed, peak = listed;
    uniform.llim = {s.x[0], s.x[30]}, uniform.rlim = {s.x[10], s.x[49]}, uniform.lhint = uniform.rlim_hint = 4;
    sorted.lhint = 64;
    const TypeParam hint[] = {0, 1, 0, 0, 20};
    peak.left_data_hint = peak.right_data_hint = hint;
    for (Call<TypeParam>* call : {&uniform, &sorted, &peak})
        for (const int threads : {1, 2, 4}) {
            call->threaders = test_threads(threads);
            ASSERT_EQ(call->run(s.task), 0);
            EXPECT_EQ(call->r, listed.r);
        }
    Call<TypeParam> single;
    single.llim = {s.x[3], s.x[40]}, single.rlim = {s.x[5], s.x[41]}, single.lhint = single.rlim_hint = 4, single.nlim = 1;
    ASSERT_EQ(single.run(s.task), 0);
    EXPECT_NEAR(double(single.r[0]), double(s.exact(0, s.x[3], s.x[5])), 1e-5) << "one pair: the step is zero";
}

TYPED_TEST(Integrate, ThreadsGiveTheSameBits) {
    for (const int64_t count : {255, 256, 640, 641, 769, 3000})
        for (const Kind& kind : kKinds) {
            const Spline<TypeParam> s(90, 3, kind.order, kind.type, false);
            Call<TypeParam> serial = this->mixed_limits(s, count, 5), parallel = serial;
            serial.rhint = parallel.rhint = count % 2 == 0 ? 16 : 32;
            ASSERT_EQ(serial.run(s.task), 0);
            for (const int threads : {1, 2, 4}) {
                parallel.threaders = test_threads(threads);
                ASSERT_EQ(parallel.run(s.task), 0);
                ASSERT_EQ(parallel.r, serial.r);
            }
        }
}

// A callback that returns the integral of part + 1 + j, and checks what it is given.
template <class T, int kPart>
int32_t constant_callback(const int64_t* n, const int64_t* lcell, const T* llim, const int64_t* rcell, const T* rlim, T* r,
                          void* parameters, void* reserved) {
    const Spline<T>& s = *static_cast<const Spline<T>*>(parameters);
    EXPECT_EQ(reserved, nullptr);
    EXPECT_GE(*n, 1);
    EXPECT_LE(*n, 128);
    for (int64_t i = 0; i < *n; ++i) {
        EXPECT_LE(llim[i], rlim[i]);
        if (kPart == 0) {
            EXPECT_TRUE(lcell[i] == 0 && rcell[i] == 0 && rlim[i] <= s.x.front());
        } else if (kPart == 1) {
            EXPECT_TRUE(lcell[i] == s.nx && rcell[i] == s.nx && llim[i] >= s.x.back());
        } else {
            EXPECT_TRUE(lcell[i] >= 1 && lcell[i] <= rcell[i] && rcell[i] <= s.nx - 1);
            EXPECT_TRUE(s.x[size_t(lcell[i]) - 1] <= llim[i] && rlim[i] <= s.x[size_t(rcell[i])]);
        }
        for (int64_t j = 0; j < s.ny; ++j) r[j * *n + i] = T(kPart + 1 + j) * (rlim[i] - llim[i]);
    }
    return 17;  // positive: no failure
}

TYPED_TEST(Integrate, CallbacksServeTheirPartOfEachPair) {
    using T = TypeParam;
    for (const Kind& kind : kKinds)
        for (int mask = 1; mask < 8; ++mask)
            for (const int threads : {1, 3}) {
                Spline<T> s(20, 20, kind.order, kind.type, false);
                Call<T> call = this->mixed_limits(s, 300, 12);
                call.llim.push_back(s.x[0] - 1), call.rlim.push_back(s.x[19] + 1);
                call.llim.push_back(s.x[19]), call.rlim.push_back(s.x[0]);
                if (mask & 1) call.callbacks[0] = constant_callback<T, 0>;
                if (mask & 2) call.callbacks[1] = constant_callback<T, 1>;
                if (mask & 4) call.callbacks[2] = constant_callback<T, 2>;
                call.parameters = &s;
                call.threaders = test_threads(threads);
                ASSERT_EQ(call.run(s.task), 0);
                const long double start = s.x.front(), end = s.x.back();
                for (int64_t j = 0; j < s.ny; ++j)
                    for (int64_t i = 0; i < call.nlim; ++i) {
                        const long double l = call.llim[size_t(i)], r = call.rlim[size_t(i)], a = std::min(l, r), b = std::max(l, r);
                        const auto part = [&](int bit, long double from, long double to) {
                            if (from >= to) return 0.0L;
                            return (mask & (1 << bit)) != 0 ? (bit + 1 + j) * (to - from) : s.exact(j, from, to);
                        };
                        const long double sum = part(0, a, std::min(b, start)) + part(1, std::max(a, end), b) +
                                                part(2, std::max(a, start), std::min(b, end));
                        ASSERT_NEAR(double(call.r[size_t(j * call.nlim + i)]), double(r < l ? -sum : sum),
                                    2000 * double(std::numeric_limits<T>::epsilon()))
                            << "order " << kind.order << " callbacks " << mask << " pair " << double(l) << " " << double(r);
                    }
            }
}

TYPED_TEST(Integrate, CallbackStatusStopsTheCall) {
    using T = TypeParam;
    Spline<T> s(20, 1, 4, 0, false);
    for (const int threads : {1, 2})
        for (int part = 0; part < 3; ++part) {
            Call<T> call = this->mixed_limits(s, 1000, 2);
            call.callbacks[part] = [](const int64_t*, const int64_t*, const T*, const int64_t*, const T*, T*, void*, void*) { return int32_t{-55}; };
            call.threaders = test_threads(threads);
            EXPECT_EQ(call.run(s.task), -55);
        }
    Call<T> call = this->mixed_limits(s, 10, 2);
    call.search = [](const int64_t*, const T*, int64_t*, int32_t*, void*, void*) { return int32_t{-7}; };
    EXPECT_EQ(call.run(s.task), -7);
    // Cells that a search invents are kept inside the partition.
    call.search = [](const int64_t* n, const T*, int64_t* cell, int32_t*, void*, void*) {
        for (int64_t i = 0; i < *n; ++i) cell[i] = i % 2 == 0 ? -5 : 1000;
        return int32_t{1000};
    };
    EXPECT_EQ(call.run(s.task), 0);
}

TYPED_TEST(Integrate, OrderZeroLeavesEverythingToCallbacks) {
    Spline<TypeParam> s(20, 2, 0, 0, false);
    Call<TypeParam> call = this->mixed_limits(s, 40, 4);
    EXPECT_EQ(call.run(s.task), DfStatusBadType);
    call.callbacks[0] = constant_callback<TypeParam, 0>;
    call.callbacks[1] = constant_callback<TypeParam, 1>;
    EXPECT_EQ(call.run(s.task), DfStatusBadType);
    call.callbacks[2] = constant_callback<TypeParam, 2>;
    call.parameters = &s;
    ASSERT_EQ(call.run(s.task), 0);
    EXPECT_NE(call.r[0], TypeParam(-77));
}

TYPED_TEST(Integrate, StatusesInOrder) {
    using T = TypeParam;
    Spline<T> s(20, 1, 4, 0, false);
    Call<T> call = this->mixed_limits(s, 3, 1);
    const auto with_task = [&](auto&& change, auto&& also) {
        nax_df_task changed = *s.task;
        Call<T> other = call;
        change(changed);
        also(other);
        return other.run(&changed);
    };
    const auto nothing = [](auto&) {};
    const T bad_hint[] = {0, 2, 0, 0, 0};
    const auto malformed = [&](Call<T>& c) { c.right_data_hint = bad_hint, c.rhint = 5; };
    EXPECT_EQ(with_task([](nax_df_task& t) { t.s_type = 1, t.scoeff = nullptr; }, malformed), DfStatusBadType);
    EXPECT_EQ(with_task([](nax_df_task& t) { t.s_order = 0, t.s_type = 6; }, malformed), DfStatusBadType);
    EXPECT_EQ(with_task([](nax_df_task& t) { t.scoeff = nullptr; }, malformed), DfStatusBadDataHint);
    EXPECT_EQ(with_task([](nax_df_task& t) { t.scoeff = nullptr; }, [](Call<T>& c) { c.rhint = 256; }), DfStatusBadIntegralHint);
    EXPECT_EQ(with_task([](nax_df_task& t) { t.scoeff = nullptr; }, nothing), DfStatusBadCoeff);
    EXPECT_EQ(with_task([](nax_df_task& t) { t.s_order = 0, t.s_type = 7, t.y = nullptr; }, nothing), DfStatusBadY);
    Spline<T> two(20, 2, 4, 0, false);
    for (const size_t pairs : {1, 200}) {  // both the way of short calls and the general one
        const auto status_with = [&](auto&& change) {
            nax_df_task changed = *two.task;
            change(changed);
            return this->mixed_limits(two, int64_t(pairs), 1).run(&changed);
        };
        EXPECT_EQ(status_with([](nax_df_task& t) { t.scoeff_entries = 1; }), DfStatusBadCoeff) << "pointers behind the array aren't read";
        EXPECT_EQ(status_with([](nax_df_task& t) { t.s_order = 0, t.s_type = 7, t.y_entries = 1; }), DfStatusBadY);
        EXPECT_EQ(status_with([](nax_df_task& t) { t.y_entries = 1; }), 0) << "polynomials don't read the functions";
    }
    EXPECT_EQ(with_task(nothing, [](Call<T>& c) { c.nlim = 0; }), 0);
    if (sizeof(T) == sizeof(double)) {
        EXPECT_EQ(nax_df_kernel_dDFIntegrate1D(nullptr, 0, 1, nullptr, 0, nullptr, 0, nullptr, nullptr, nullptr, 16, nullptr, nullptr,
                                               nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), DfStatusNullTask);
    }
}

TYPED_TEST(Integrate, ResultsOfCallbacksNeedMemory) {
    using T = TypeParam;
    Spline<T> s(200, 20, 4, 0, false);
    Call<T> call = this->mixed_limits(s, 500, 1);
    call.callbacks[0] = constant_callback<T, 0>;
    call.parameters = &s;
    const long live = nax::testing::live_blocks();
    const nax::testing::FailAllocation failing(0);
    EXPECT_EQ(call.run(s.task), DfStatusMemory);
    EXPECT_EQ(nax::testing::live_blocks(), live);
}

// Running sums are for speed alone: without memory for them, or for the limits of trust in them, cells are added singly.
TYPED_TEST(Integrate, NeedsNoMemoryForRunningSums) {
    using T = TypeParam;
    Spline<T> s(300, 3, 4, 0, false);
    Call<T> call = this->mixed_limits(s, 400, 1);
    ASSERT_EQ(call.run(s.task), 0);
    for (int nth = 0; nth < 2; ++nth) {
        const nax::testing::FailAllocation failing(nth);
        EXPECT_EQ(call.run(s.task), 0);
        EXPECT_TRUE(failing.happened());
        this->expect_exact(s, call);
    }
}

// Coordinates whose powers leave the range of the type, and integrals that don't.
TYPED_TEST(Integrate, ScalesOfThePartitionDoNotMatter) {
    using T = TypeParam;
    int scales = 0;
    for (const Kind kind : {Kind{2, 0}, Kind{3, 0}, Kind{3, 1}, Kind{4, 5}, Kind{7, 0}, Kind{9, 0}})
        for (int exponent = -1000; exponent <= 1000; exponent += 8) {
            Spline<T> unit(12, 1, kind.order, kind.type, false), scaled(12, 1, kind.order, kind.type, false);
            // Partition times 2^exponent, coefficient m divided by its m-th power: the integral is times 2^exponent.
            bool representable = exponent > std::numeric_limits<T>::min_exponent + 2 * std::numeric_limits<T>::digits;
            for (T& x : scaled.x) {
                x = std::ldexp(x, exponent);
                representable = representable && (x == 0 || std::isnormal(x));
            }
            for (std::size_t k = 0; k < scaled.c.size(); ++k) {
                scaled.c[k] = std::ldexp(scaled.c[k], -exponent * static_cast<int>(k % std::size_t(kind.order)));
                representable = representable && std::isnormal(scaled.c[k]);
            }
            if (!representable) continue;
            ++scales;
            nax_df_kernel_iEditVal(scaled.task, NAX_DF_ATTRIBUTE_XHINT, NAX_DF_PARTITION_NON_UNIFORM);
            Call<T> call = this->mixed_limits(unit, 50, 3), large = call;
            for (T& a : large.llim) a = std::ldexp(a, exponent);
            for (T& b : large.rlim) b = std::ldexp(b, exponent);
            ASSERT_EQ(call.run(unit.task), 0);
            ASSERT_EQ(large.run(scaled.task), 0);
            for (std::size_t i = 0; i < call.llim.size(); ++i)
                ASSERT_EQ(large.r[i], std::ldexp(call.r[i], exponent)) << kind.order << " 2^" << exponent << " " << i;
        }
    EXPECT_GT(scales, sizeof(T) == 4 ? 40 : 400);
}

TYPED_TEST(Integrate, EqualLimitsGiveZeroEverywhere) {
    using T = TypeParam;
    for (const Kind kind : kKinds) {
        Spline<T> s(20, 2, kind.order, kind.type, false);
        for (std::size_t k = 0; k < s.c.size(); k += 5) s.c[k] = k % 2 ? std::numeric_limits<T>::infinity() : T(NAN);
        for (std::size_t k = 0; k < s.y.size(); k += 5) s.y[k] = k % 2 ? std::numeric_limits<T>::infinity() : T(NAN);
        Call<T> call;
        const T inf = std::numeric_limits<T>::infinity(), huge = T(sizeof(T) == 4 ? 1e37 : 1e300);
        call.llim = {inf, -inf, huge, -huge, std::numeric_limits<T>::max(), 0};
        for (const T x : s.x) call.llim.push_back(x), call.llim.push_back(x + T(0.01));
        call.rlim = call.llim;
        ASSERT_EQ(call.run(s.task), 0);
        for (std::size_t i = 0; i + 1 < call.r.size(); ++i) ASSERT_EQ(call.r[i], 0) << i;
        for (auto& callback : call.callbacks) callback = constant_callback<T, 0>;
        call.parameters = &s;
        ASSERT_EQ(call.run(s.task), 0);
        for (std::size_t i = 0; i + 1 < call.r.size(); ++i) ASSERT_EQ(call.r[i], 0) << i;
    }
}

}  // namespace
