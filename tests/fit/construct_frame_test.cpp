// What holds for all families of construction: layouts and threads give the same bits, statuses come in their order,
// nothing is written after a failure, and every index of the dispatch tables leads to its kernel.
#include <gtest/gtest.h>

#include <cstring>

#include "fit/construct/dispatch.h"
#include "tests/fit/spline_case.h"
#include "tests/lib/failing_service.h"

namespace {

using namespace nax::test;
namespace fit = nax::fit;

const std::vector<const Family*> kFamilies = {&kNatural, &kDefault, &kHermite, &kBessel, &kAkima,
                                              &kHyman,   &kLinear,  &kStandard, &kSubbotin};

template <class T>
class Frame : public testing::Test {};
using Precisions = testing::Types<double, float>;
TYPED_TEST_SUITE(Frame, Precisions);

template <class T>
void expect_same_bits(const SplineCase<T>& a, const SplineCase<T>& b, const char* what) {
    ASSERT_EQ(a.c.size(), b.c.size());
    for (size_t k = 0; k < a.c.size(); ++k) ASSERT_EQ(std::memcmp(&a.c[k], &b.c[k], sizeof(T)), 0) << what << ", coefficient " << k;
}

// Sizes around the limits of the serial paths and around whole tiles, chunks and registers.
TYPED_TEST(Frame, RowsColumnsAndThreadsGiveTheSameBits) {
    for (const Family* family : kFamilies)
        for (const int64_t boundary : {family->boundaries.front(), family->boundaries.back()})
            for (const auto& [nx, ny] : {std::pair<int64_t, int64_t>{7, 2}, {130, 5}, {258, 9}, {700, 6}, {2049, 4}, {4400, 3}})
                for (const bool uniform : {false, true}) {
                    SCOPED_TRACE(std::string(family->name) + " boundary " + std::to_string(boundary) + " nx " + std::to_string(nx));
                    SplineCase<TypeParam> rows = make_case<TypeParam>(*family, boundary, nx, ny, uniform, false), columns = rows;
                    ASSERT_EQ(rows.build(), 0);
                    columns.columns = true;
                    ASSERT_EQ(columns.build(), 0);
                    expect_same_bits(rows, columns, "columns");
                    for (const int threads : {1, 2, 4, 9}) {
                        ASSERT_EQ(columns.build(test_threads(threads)), 0);
                        expect_same_bits(rows, columns, "threads");
                    }
                    // A function doesn't know its neighbours.
                    SplineCase<TypeParam> alone = rows;
                    alone.y = {rows.y[1]};
                    ASSERT_EQ(alone.build(), 0);
                    for (int64_t k = 0; k < rows.cells() * family->order; ++k) ASSERT_EQ(alone.c[size_t(k)], rows.cell(1, 0)[k]);
                    if (testing::Test::HasFatalFailure()) return;
                }
}

TYPED_TEST(Frame, UniformAndGeneralPartitionsAgree) {
    for (const Family* family : kFamilies)
        for (const int64_t boundary : family->boundaries) {
            SplineCase<TypeParam> general = make_case<TypeParam>(*family, boundary, 33, 2, true, false), uniform = general;
            general.uniform = false;
            ASSERT_EQ(general.build(), 0);
            ASSERT_EQ(uniform.build(), 0);
            for (size_t k = 0; k < general.c.size(); ++k)
                ASSERT_NEAR(double(general.c[k]), double(uniform.c[k]), 2e4 * double(std::numeric_limits<TypeParam>::epsilon())) << family->name;
        }
}

// Every index of the tables: the kernel in it builds what the entry builds for its layout, grid and boundary, and the
// tables' holes are where no kernel exists.
template <class T>
void walk(const Family& family, bool columns, bool uniform, int boundary, const std::function<int32_t(nax_df_task*)>& kernel) {
    SplineCase<T> s = make_case<T>(family, family.boundaries[size_t(boundary)], 12, 3, uniform, columns), direct = s;
    ASSERT_EQ(s.build(), 0);
    ASSERT_EQ(direct.build(nullptr, kernel), 0);
    expect_same_bits(s, direct, family.name);
}
TYPED_TEST(Frame, DispatchIndicesLeadToTheirKernels) {
    using T = TypeParam;
    int index = 0;
    for (const bool columns : {true, false})
        for (const bool uniform : {false, true}) {
            const int four = index / 7;
            for (int boundary = 0; boundary < 7; ++boundary, ++index) {
                walk<T>(kNatural, columns, uniform, boundary, [&](nax_df_task* t) { return fit::_DispatchNatural[index](t, nullptr); });
                walk<T>(kDefault, columns, uniform, boundary, [&](nax_df_task* t) { return fit::_DispatchDefault[index](t, nullptr); });
            }
            for (int boundary = 0; boundary < 8; ++boundary) {
                walk<T>(kAkima, columns, uniform, boundary, [&](nax_df_task* t) { return fit::_DispatchAkima[four](t, boundary, nullptr); });
                walk<T>(kBessel, columns, uniform, boundary, [&](nax_df_task* t) { return fit::_DispatchBessel[four](t, boundary, nullptr); });
                walk<T>(kHyman, columns, uniform, boundary, [&](nax_df_task* t) { return fit::_DispatchHyman[four](t, boundary, nullptr); });
                walk<T>(kHermite, columns, uniform, boundary, [&](nax_df_task* t) { return fit::_DispatchHermite[four](t, boundary, nullptr); });
            }
            walk<T>(kLinear, columns, uniform, 0, [&](nax_df_task* t) { return fit::_Dispatch[four](t, nullptr); });
            walk<T>(kStandard, columns, uniform, 0, [&](nax_df_task* t) { return fit::_Dispatch_Std[four](t, nullptr); });
            for (int boundary = 0; boundary < 7; ++boundary)
                for (int subgrid = 0; subgrid < 2; ++subgrid) {
                    const fit::Kernel kernel = fit::_Dispatch_Subb[subgrid * 28 + four * 7 + boundary];
                    ASSERT_EQ(kernel == nullptr, boundary < 2 || boundary > 5);
                    if (kernel != nullptr && subgrid == 0)
                        walk<T>(kSubbotin, columns, uniform, boundary - 2, [&](nax_df_task* t) { return kernel(t, nullptr); });
                }
        }
    // One spelled-out name at each end of the order.
    EXPECT_EQ(fit::_DispatchNatural[0], &_v1DCSNaturalYColsNoUniformGridNotAKnot);
    EXPECT_EQ(fit::_DispatchNatural[22], &_v1DCSNaturalYRowsUniformGridFreeEnd);
    EXPECT_EQ(fit::_Dispatch_Subb[55 - 1], &_v1DQSSubbUniformSubgridYRowsUniformGrid2nd2nd);
    EXPECT_EQ(fit::_DispatchHermite[2], &_v1DCSHermiteYRowsNoUniformGrid);
}

// Builds with one field changed and checks that nothing was written.
template <class T>
int32_t status_of(SplineCase<T> s, const std::function<void(nax_df_task*)>& change, int64_t method = 0) {
    std::vector<T> before;
    const int32_t status = s.build(nullptr, [&](nax_df_task* task) {
        change(task);
        return s.family->template build<T>()(task, 0, method, nullptr);
    });
    for (const T c : s.c) EXPECT_EQ(c, T(-77)) << "written after a failure";
    return status;
}

TYPED_TEST(Frame, CubicStatusesInOrder) {
    using T = TypeParam;
    for (const Family* family : kCubicFamilies) {
        SCOPED_TRACE(family->name);
        const SplineCase<T> s = make_case<T>(*family, 12, 9, 2, false, false);
        // Each change breaks all that is tested after it as well.
        const auto no_arrays = [](nax_df_task* t) { t->y = nullptr, t->scoeff = nullptr; };
        const auto no_conditions = [&](nax_df_task* t) { no_arrays(t), t->ic = nullptr; };
        const auto no_values = [&](nax_df_task* t) { no_conditions(t), t->bc = nullptr; };
        const auto bad_boundary = [&](nax_df_task* t) { no_values(t), t->bc_type = 3; };
        const auto bad_hint = [&](nax_df_task* t) { bad_boundary(t), t->yhint = 8; };
        const auto few_points = [&](nax_df_task* t) { bad_hint(t), t->nx = family->minimum - 1; };
        EXPECT_EQ(family->template build<T>()(nullptr, 0, 0, nullptr), DfStatusNullTask);
        EXPECT_EQ(status_of(s, few_points, family == &kNatural ? 1 : 0), family == &kNatural ? DfStatusBadMethod : DfStatusBadNx);
        EXPECT_EQ(status_of(s, few_points), DfStatusBadNx);
        EXPECT_EQ(status_of(s, bad_hint), DfStatusBadYHint);
        EXPECT_EQ(status_of(s, bad_boundary), DfStatusBadBcType);
        for (const int64_t type : {12, 24, 36, 48})
            EXPECT_EQ(status_of(s, [&](nax_df_task* t) { no_values(t), t->bc_type = type; }), DfStatusBadBc);
        const bool given = family == &kDefault || family == &kHermite;
        EXPECT_EQ(status_of(s, no_conditions), given ? DfStatusBadIc : DfStatusBadY);
        EXPECT_EQ(status_of(s, no_arrays), DfStatusBadY);
        EXPECT_EQ(status_of(s, [](nax_df_task* t) { t->y[1] = nullptr, t->scoeff = nullptr; }), DfStatusBadY);
        EXPECT_EQ(status_of(s, [](nax_df_task* t) { t->scoeff = nullptr; }), DfStatusBadCoeff);
        EXPECT_EQ(status_of(s, [](nax_df_task* t) { t->scoeff[1] = nullptr; }), DfStatusBadCoeff);
        EXPECT_EQ(status_of(s, [](nax_df_task* t) { t->bc_type = 64; }), DfStatusBadPeriodicVal);
        if (given) {
            EXPECT_EQ(status_of(s, [](nax_df_task* t) { t->bc_type = 64, t->bc = nullptr; }), DfStatusBadBc);
        }
        const bool unset = family->boundaries.back() == 0;
        if (!unset) {
            EXPECT_EQ(status_of(s, [](nax_df_task* t) { t->bc_type = 0; }), DfStatusBadBcType);
        }
        SplineCase<T> nan = make_case<T>(*family, 64, 9, 1, false, true);
        nan.y[0].front() = nan.y[0].back() = std::numeric_limits<T>::quiet_NaN();
        EXPECT_EQ(status_of(nan, [](nax_df_task*) {}), DfStatusBadPeriodicVal);
    }
    const SplineCase<T> two = make_case<T>(kNatural, 2, 2, 1, false, false);
    EXPECT_EQ(status_of(two, [](nax_df_task* t) { t->bc_type = 1; }), DfStatusBadNx);
}

// The number of functions may be edited above what the pointer arrays hold; what stands behind them isn't read.
TYPED_TEST(Frame, FunctionsWithoutPointersAreRefused) {
    for (const Family* family : kFamilies)
        for (const bool columns : {false, true}) {
            SCOPED_TRACE(family->name);
            const SplineCase<TypeParam> s = make_case<TypeParam>(*family, family->boundaries.front(), 9, 2, false, columns);
            EXPECT_EQ(status_of(s, [](nax_df_task* t) { t->scoeff_entries = 1; }), DfStatusBadCoeff);
            if (columns) continue;
            EXPECT_EQ(status_of(s, [](nax_df_task* t) {
                for (void*& behind : t->few_functions) behind = t->few_functions[0];
                EXPECT_EQ(nax_df_kernel_iEditVal(t, NAX_DF_ATTRIBUTE_NY, 4), 0);
            }), DfStatusBadY);
        }
}

TYPED_TEST(Frame, LinearAndQuadraticStatusesInOrder) {
    using T = TypeParam;
    const SplineCase<T> linear = make_case<T>(kLinear, 0, 9, 1, false, false);
    const auto all_wrong = [](nax_df_task* t) { t->nx = 1, t->yhint = 8, t->y = nullptr; };
    EXPECT_EQ(status_of(linear, all_wrong, 1), DfStatusBadMethod);
    EXPECT_EQ(status_of(linear, all_wrong), DfStatusBadNx);
    EXPECT_EQ(status_of(linear, [](nax_df_task* t) { t->yhint = 8, t->y = nullptr; }), DfStatusBadYHint);
    EXPECT_EQ(status_of(linear, [](nax_df_task* t) { t->y = nullptr; }), DfStatusBadY);
    EXPECT_EQ(status_of(linear, [](nax_df_task* t) { t->scoeff = nullptr; }), DfStatusBadCoeff);
    EXPECT_EQ(status_of(linear, [](nax_df_task* t) { t->bc_type = 64; }), DfStatusBadPeriodicVal);

    const SplineCase<T> standard = make_case<T>(kStandard, 128, 9, 1, false, false);
    EXPECT_EQ(status_of(standard, [](nax_df_task* t) { t->yhint = 8, t->s_type = 2; }), DfStatusBadYHint);
    EXPECT_EQ(status_of(standard, [](nax_df_task* t) { t->s_type = 2, t->bc_type = 0; }), DfStatusBadMethod);
    EXPECT_EQ(status_of(standard, [](nax_df_task* t) { t->bc_type = 12, t->bc = nullptr; }), DfStatusBadBcType);
    EXPECT_EQ(status_of(standard, [](nax_df_task* t) { t->bc = nullptr; }), DfStatusBadBc);

    const SplineCase<T> subbotin = make_case<T>(kSubbotin, 12, 9, 1, false, false);
    EXPECT_EQ(status_of(subbotin, [](nax_df_task* t) { t->ic_type = 4, t->bc_type = 3; }), DfStatusBadIcType);
    for (const int64_t type : {1, 2, 64, 0, 3})
        EXPECT_EQ(status_of(subbotin, [&](nax_df_task* t) { t->bc_type = type, t->bc = nullptr; }), DfStatusBadBcType);
    EXPECT_EQ(status_of(subbotin, [](nax_df_task* t) { t->bc = nullptr, t->ic_type = 12; }), DfStatusBadBc);
    EXPECT_EQ(status_of(subbotin, [](nax_df_task* t) { t->ic_type = 12; }), DfStatusBadIc);
}

TYPED_TEST(Frame, SubbotinKnotsMustLieInsideTheirIntervals) {
    using T = TypeParam;
    SplineCase<T> s = make_case<T>(kSubbotin, 12, 5, 1, false, false);
    s.ic = {s.x[0]};
    for (size_t k = 1; k < 5; ++k) s.ic.push_back((s.x[k - 1] + s.x[k]) / 2);
    s.ic.push_back(s.x[4]);
    ASSERT_EQ(SplineCase<T>(s).build(), 0);
    const auto with = [&](size_t k, T knot) {
        SplineCase<T> changed = s;
        changed.ic[k] = knot;
        return status_of(changed, [](nax_df_task*) {});
    };
    EXPECT_EQ(with(0, std::nextafter(s.x[0], T(9))), DfStatusBadIc);
    EXPECT_EQ(with(5, std::nextafter(s.x[4], T(0))), DfStatusBadIc);
    EXPECT_EQ(with(2, s.x[1]), DfStatusBadIc);
    EXPECT_EQ(with(2, s.x[2]), DfStatusBadIc);
    EXPECT_EQ(with(3, std::numeric_limits<T>::quiet_NaN()), DfStatusBadIc);
    s.ic_type = 12;
    for (const auto& [first, last] : {std::pair<T, T>{s.x[0], s.x[3] + T(0.01)}, {s.x[0] + T(0.01), s.x[4]}}) {
        s.ic = {first, last};
        EXPECT_EQ(status_of(s, [](nax_df_task*) {}), DfStatusBadIc);
    }
}

TYPED_TEST(Frame, CoincidingPointsFailInTheSolver) {
    SplineCase<TypeParam> s = make_case<TypeParam>(kNatural, 2, 6, 1, false, false);
    for (TypeParam& x : s.x) x = TypeParam(2);
    EXPECT_EQ(s.build(), DfStatusSolverFailure);
}

// One cell between two points, one parabola through three: the smallest cases that aren't refused.
TYPED_TEST(Frame, ThreePointsWithoutKnotsGiveTheParabola) {
    SplineCase<TypeParam> s = make_case<TypeParam>(kNatural, 1, 3, 5, false, true);
    ASSERT_EQ(s.build(), 0);
    for (int64_t j = 0; j < 5; ++j) {
        for (int64_t i = 0; i < 2; ++i) EXPECT_NEAR(double(s.cell(j, i)[3]), 0, double(kTolerance<TypeParam> * 1000));
        EXPECT_NEAR(double(s.at_right(j, 0, 1)), double(s.at(j, 1, 0, 1)), double(kTolerance<TypeParam> * 40));
    }
}

TYPED_TEST(Frame, EveryAllocationMayFail) {
    for (const Family* family : kFamilies) {
        SCOPED_TRACE(family->name);
        const int64_t nx = 600;
        for (const int threads : {1, 2}) {
            SplineCase<TypeParam> s = make_case<TypeParam>(*family, family->boundaries.front(), nx, 9, false, false);
            const int failures = s.build(nullptr, [&](nax_df_task* task) {
                return nax::testing::for_each_failing_allocation(
                    [&] { return family->template build<TypeParam>()(task, 0, 0, test_threads(threads)); }, int32_t{DfStatusMemory}, 0);
            });
            EXPECT_EQ(failures, family == &kLinear || family == &kDefault || family == &kStandard ? 0 : 1);
        }
    }
    EXPECT_EQ(nax::testing::misaligned_requests(), 0);
}

}  // namespace
