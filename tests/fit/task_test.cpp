// The task record: creation, editors, queries, the partition index.
#include <gtest/gtest.h>

#include <array>

#include "fit/partition_index.h"
#include "tests/fit/support.h"
#include "tests/lib/failing_service.h"

namespace nax::testing {
namespace {

template <class T>
class TaskOf : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(TaskOf, Precisions);

// Every call has all later arguments wrong too, so that the order of the tests shows.
TYPED_TEST(TaskOf, CreationReportsTheFirstBadArgument) {
    using T = TypeParam;
    const std::array<T, 4> x{0, 1, 2, 3}, y{1, 2, 3, 4};
    nax_df_task* task = nullptr;
    const auto create = [&](int64_t nx, const T* px, int64_t xhint, int64_t ny, const T* py, int64_t yhint) {
        return Fit<T>::create(&task, nx, px, xhint, ny, py, yhint, 0);
    };
    EXPECT_EQ(create(1, nullptr, 3, 1, nullptr, 1), DfStatusBadNx);
    EXPECT_EQ(create(0, nullptr, 3, 1, nullptr, 1), DfStatusBadNx);
    EXPECT_EQ(create(4, nullptr, 3, 1, nullptr, 1), DfStatusBadX);
    EXPECT_EQ(create(4, x.data(), 3, 1, nullptr, 1), DfStatusBadXHint);
    EXPECT_EQ(create(4, x.data(), 0, 1, nullptr, 1), DfStatusBadY);
    EXPECT_EQ(create(4, x.data(), 0, 0, y.data(), 1), DfStatusBadNy);
    EXPECT_EQ(create(4, x.data(), 0, -1, y.data(), 1), DfStatusBadNy);
    EXPECT_EQ(create(4, x.data(), 0, 0, nullptr, 1), DfStatusBadYHint);
    EXPECT_EQ(create(4, x.data(), 0, 1, y.data(), 64), DfStatusBadYHint);
    EXPECT_EQ(Fit<T>::create(nullptr, 4, x.data(), 0, 1, y.data(), 0, 0), DfStatusNullTask);
    EXPECT_EQ(task, nullptr);
}

TYPED_TEST(TaskOf, CreationSetsTheRecordAndDerivesFunctionPointers) {
    using T = TypeParam;
    const std::vector<T> x{0, 1, 3, 4}, y(12);
    for (const int64_t yhint : {0, 16, 32, 128}) {
        OwnedTask task(x, 4, 0, 7, 3, y.data(), yhint);
        EXPECT_EQ(task->component, 4);
        EXPECT_EQ(task->precision, sizeof(T) == 8 ? 1 : 0);
        EXPECT_EQ(task->dimension, 1);
        EXPECT_EQ(task->int_width, 7);
        EXPECT_EQ(task->s_order + task->s_type + task->ic_type + task->bc_type + task->scoeffhint + task->check_flag,
                  0);
        EXPECT_EQ(task->ic, nullptr);
        EXPECT_EQ(task->bc, nullptr);
        EXPECT_EQ(task->scoeff, nullptr);
        EXPECT_EQ(task->y[0], y.data());
        for (int64_t j = 1; j < 3 && yhint != 32; ++j)
            EXPECT_EQ(task->y[j], yhint == 128 ? nullptr : y.data() + 4 * j) << "hint " << yhint;
    }
}

TYPED_TEST(TaskOf, IndexPairsBoundEveryPointAndCountBins) {
    using T = TypeParam;
    const std::array<std::array<int64_t, 2>, 5> bins{{{2, 16}, {256, 16}, {1024, 64}, {16384, 1024}, {20000, 1024}}};
    for (const auto& [nx, nbins] : bins)
        for (const Partition<T>& p : partitions<T>(nx)) {
            OwnedTask task(p.x, nx, 0);
            ASSERT_EQ(task->nbins, nbins);
            const T scale = fit::bin_scale<T>(*task.get());
            for (int64_t i = 0; i < nx; ++i) {
                const T site = p.x[static_cast<std::size_t>(i)];
                const int64_t b = fit::bin_of(site, p.x[0], scale, static_cast<T>(nbins));
                const int64_t low = task->bin_table[2 * b], high = task->bin_table[2 * b + 1];
                ASSERT_TRUE(low >= 0 && high < nx && high >= 0) << p.name << " point " << i;
                ASSERT_LE(p.x[static_cast<std::size_t>(low)], site) << p.name << " point " << i;
                ASSERT_GE(p.x[static_cast<std::size_t>(high)], site) << p.name << " point " << i;
            }
        }
}

TYPED_TEST(TaskOf, IndexExistsByCreationHintAndIsRebuiltByEditingToOne) {
    using T = TypeParam;
    const std::vector<T> x{0, 1, 2, 5, 6, 7}, other{0, 4, 5, 6, 7, 9};
    for (const int64_t xhint : {0, 1, 2}) EXPECT_NE(OwnedTask(x, 6, xhint)->bin_table, nullptr);
    OwnedTask task(x, 2, 4);
    EXPECT_EQ(task->bin_table, nullptr);
    for (const int64_t xhint : {0, 2}) {
        EXPECT_EQ(nax_df_kernel_iEditVal(task.get(), 15, xhint), 0);
        EXPECT_EQ(task->bin_table, nullptr);
    }
    Fit<T>::edit_pointer(task.get(), 1, other.data());
    nax_df_kernel_iEditVal(task.get(), 14, 6);
    EXPECT_EQ(nax_df_kernel_iEditVal(task.get(), 15, 1), 0);
    ASSERT_NE(task->bin_table, nullptr);
    EXPECT_EQ(fit::bin_scale<T>(*task.get()), T(16) / T(9));
    EXPECT_EQ(nax_df_kernel_iEditVal(task.get(), 15, 4), 0);
    EXPECT_NE(task->bin_table, nullptr);
}

struct ValueCase {
    int64_t attribute;
    std::vector<int64_t> accepted, refused;
    int32_t status;
};
const std::vector<ValueCase> kValueCases{
    {14, {2, 100}, {1, 0, -5}, DfStatusBadNx},
    {15, {0, 2, 4}, {3, 5, -1, 8}, DfStatusBadXHint},
    {16, {1, 9}, {0, -1}, DfStatusBadNy},
    {17, {0, 16, 32, 128}, {1, 48, 64, -16}, DfStatusBadYHint},
    {18, {0, 4, 77}, {-1}, DfStatusBadOrder},
    {19, {0, 1, 2, 3, 4, 5, 9}, {6, 7, 8, 10, -1}, DfStatusBadType},
    {20, {0, 1, 2, 8, 9, 12, 24}, {3, 4, 16, 7}, DfStatusBadIcType},
    {21, {0, 3, 64, 1000}, {-1}, DfStatusBadBcType},
    {22, {0, 16, 32, 128}, {17, 64, -1}, DfStatusBadCoeffHint},
    {23, {0, 1}, {2, -1}, DfStatusBadFlag},
};

TEST(Task, ValueEditorAcceptsAndRefusesByTable) {
    const std::vector<double> x{0, 1, 2};
    for (const int64_t width : {0, 1})
        for (const ValueCase& c : kValueCases) {
            OwnedTask task(x, 3, 0, width);
            for (const int64_t value : c.accepted) {
                EXPECT_EQ(nax_df_kernel_iEditVal(task.get(), c.attribute, value), 0) << c.attribute << ' ' << value;
                int64_t wide = -1;
                EXPECT_EQ(nax_df_kernel_iQueryVal(task.get(), c.attribute, &wide), 0);
                // A 32-bit answer leaves the upper half of the caller's 64 bits alone.
                EXPECT_EQ(wide, width != 0 ? value : (value | (int64_t{-1} << 32))) << c.attribute;
            }
            for (const int64_t value : c.refused)
                EXPECT_EQ(nax_df_kernel_iEditVal(task.get(), c.attribute, value), c.status)
                    << c.attribute << ' ' << value;
            int64_t kept = 0;
            nax_df_kernel_iQueryVal(task.get(), c.attribute, &kept);
            EXPECT_EQ(static_cast<int32_t>(kept), c.accepted.back()) << "a refused value was stored";
        }
    OwnedTask task(x, 3, 0);
    int64_t value;
    for (const int64_t id : {13, 24, 1, -1}) {
        EXPECT_EQ(nax_df_kernel_iEditVal(task.get(), id, 1), DfStatusBadAttribute);
        EXPECT_EQ(nax_df_kernel_iQueryVal(task.get(), id, &value), DfStatusBadAttribute);
    }
    EXPECT_EQ(nax_df_kernel_iEditVal(nullptr, 99, 1), DfStatusNullTask);
    EXPECT_EQ(nax_df_kernel_iQueryVal(nullptr, 99, nullptr), DfStatusNullTask);
    EXPECT_EQ(nax_df_kernel_iQueryVal(task.get(), 99, nullptr), DfStatusNullOutput);
}

TYPED_TEST(TaskOf, PointerEditorAndQueryAgree) {
    using T = TypeParam;
    const std::vector<T> x{0, 1, 2}, y(6), other(12);
    OwnedTask task(x, 3, 0, 1, 2, y.data(), 16);
    const std::array<int32_t, 6> null_status{
        0, DfStatusBadX, DfStatusBadY, DfStatusBadIc, DfStatusBadBc, DfStatusBadCoeff};
    for (int64_t id = 1; id <= 5; ++id) {
        EXPECT_EQ(Fit<T>::edit_pointer(task.get(), id, nullptr), null_status[static_cast<std::size_t>(id)]);
        EXPECT_EQ(Fit<T>::edit_pointer(task.get(), id, other.data()), 0);
        T* found = nullptr;
        EXPECT_EQ(Fit<T>::query_pointer(task.get(), id, &found), 0);
        EXPECT_EQ(found, other.data()) << id;
    }
    EXPECT_EQ(task->y[1], other.data() + 3);
    T* found;
    for (const int64_t id : {0, 6, 14}) {
        EXPECT_EQ(Fit<T>::edit_pointer(task.get(), id, other.data()), DfStatusBadAttribute);
        EXPECT_EQ(Fit<T>::query_pointer(task.get(), id, &found), DfStatusBadAttribute);
    }
    EXPECT_EQ(Fit<T>::edit_pointer(nullptr, 0, nullptr), DfStatusNullTask);
    EXPECT_EQ(Fit<T>::query_pointer(task.get(), 0, nullptr), DfStatusNullOutput);
    OwnedTask without_functions(x, 3, 0);
    EXPECT_EQ(Fit<T>::edit_pointer(without_functions.get(), 5, other.data()), DfStatusBadNy);
    EXPECT_EQ(Fit<T>::query_pointer(without_functions.get(), 2, &found), 0);
    EXPECT_EQ(found, nullptr);
}

TYPED_TEST(TaskOf, IndexedEditorAndQueryDifferAtTheEnd) {
    using T = TypeParam;
    const std::vector<T> x{0, 1, 2}, y(6), other(12);
    T* found;
    OwnedTask task(x, 3, 0, 1, 2, y.data(), 128);
    const auto edit = [&](int64_t id, int64_t index, const T* p) {
        return Fit<T>::edit_indexed(task.get(), id, index, p);
    };
    const auto query = [&](int64_t id, int64_t index) { return Fit<T>::query_indexed(task.get(), id, index, &found); };
    EXPECT_EQ(edit(5, 0, other.data()), DfStatusBadCoeff) << "no coefficients set yet";
    ASSERT_EQ(Fit<T>::edit_pointer(task.get(), 5, other.data()), 0);
    for (const int64_t id : {2, 5}) {
        EXPECT_EQ(edit(id, 1, other.data() + 1), 0);
        EXPECT_EQ(query(id, 1), 0);
        EXPECT_EQ(found, other.data() + 1);
        EXPECT_EQ(edit(id, 2, other.data()), DfStatusBadIndex);
        EXPECT_EQ(query(id, 2), 0) << "one past the end passes the query";
        EXPECT_EQ(found, nullptr);
        EXPECT_EQ(query(id, 3), DfStatusBadIndex);
        EXPECT_EQ(edit(id, -1, nullptr), DfStatusBadIndex);
        EXPECT_EQ(query(id, -1), DfStatusBadIndex);
        EXPECT_EQ(edit(id, 0, nullptr), id == 2 ? DfStatusBadY : DfStatusBadCoeff);
    }
    EXPECT_EQ(edit(3, 7, nullptr), DfStatusBadAttribute);
    EXPECT_EQ(query(3, 7), DfStatusBadIndex) << "the query looks at the index first";
    EXPECT_EQ(query(3, 0), DfStatusBadAttribute);
    // More functions than there were pointers: the arrays grow.
    EXPECT_EQ(nax_df_kernel_iEditVal(task.get(), 16, 9), 0);
    for (const int64_t id : {2, 5}) {
        EXPECT_EQ(edit(id, 8, other.data() + 2), 0);
        EXPECT_EQ(query(id, 8), 0);
        EXPECT_EQ(found, other.data() + 2);
        EXPECT_EQ(query(id, 1), 0);
        EXPECT_EQ(found, other.data() + 1);
    }
    OwnedTask columns(x, 3, 0, 1, 2, y.data(), 32);
    EXPECT_EQ(Fit<T>::edit_indexed(columns.get(), 2, 77, nullptr), DfStatusBadYHint);
    EXPECT_EQ(Fit<T>::query_indexed(columns.get(), 2, 0, &found), DfStatusBadYHint);
}

TYPED_TEST(TaskOf, SplineEditorChecksInOrderAndKeepsEarlierStores) {
    using T = TypeParam;
    const std::vector<T> x{0, 1, 2}, y(6);
    std::vector<T> c(64);
    OwnedTask task(x, 3, 0, 1, 2, y.data(), 16);
    const auto edit = [&](int64_t order, int64_t type, int64_t bct, const T* bc, int64_t ict, const T* ic,
                          int64_t hint) {
        return Fit<T>::edit_spline(task.get(), order, type, bct, bc, ict, ic, c.data(), hint);
    };
    EXPECT_EQ(Fit<T>::edit_spline(nullptr, -1, -1, 3, nullptr, 0, x.data(), nullptr, 0), DfStatusNullTask);
    EXPECT_EQ(edit(-1, -1, 3, nullptr, 0, x.data(), 0), DfStatusBadOrder);
    EXPECT_EQ(edit(5, -1, 3, nullptr, 0, x.data(), 0), DfStatusBadType);
    EXPECT_EQ(task->s_order, 0);
    EXPECT_EQ(edit(5, 6, 3, nullptr, 0, x.data(), 0), DfStatusBadBc);
    EXPECT_EQ(task->s_order, 5);
    EXPECT_EQ(task->s_type, 6);
    EXPECT_EQ(edit(5, 6, 64, nullptr, 0, x.data(), 0), DfStatusBadIcType);
    EXPECT_EQ(task->bc_type, 64);
    EXPECT_EQ(edit(5, 6, 64, nullptr, 8, nullptr, 0), DfStatusBadIc);
    for (const int64_t type : {0, 1, 2, 8}) {
        ASSERT_EQ(edit(3, type, 12, x.data(), 8, x.data(), 999), 0);
        EXPECT_EQ(task->scoeffhint, 999) << "the hint isn't tested here";
        // 999 has bit 128 set: function 0 alone.
        EXPECT_EQ(task->scoeff[0], c.data());
        EXPECT_EQ(task->scoeff[1], nullptr);
        ASSERT_EQ(edit(3, type, 12, x.data(), 8, x.data(), 16), 0);
        EXPECT_EQ(task->scoeff[1], c.data() + 3 * (type == 1 ? 3 : 2)) << "a Subbotin spline has a piece more";
    }
    OwnedTask bare(x, 3, 0);
    EXPECT_EQ(Fit<T>::edit_spline(bare.get(), 4, 2, 0, nullptr, 0, nullptr, c.data(), 77), DfStatusBadNy);
    EXPECT_EQ(bare->scoeffhint, 0);
    EXPECT_EQ(Fit<T>::edit_spline(bare.get(), 4, 2, 0, nullptr, 0, nullptr, nullptr, 77), 0);
    EXPECT_EQ(bare->scoeffhint, 77);
}

// All editors and queries but that of a whole spline do nothing for a dimension that they don't know.
TEST(Task, OtherDimensionsAreLeftAlone) {
    const std::vector<double> x{0, 1, 2}, y(6);
    OwnedTask task(x, 3, 0, 1, 2, y.data(), 16);
    task->dimension = 2;
    const std::vector<double> other(6);
    double* found = nullptr;
    int64_t value = 12345;
    EXPECT_EQ(nax_df_kernel_dEditPtr(task.get(), 1, other.data()), 0);
    EXPECT_EQ(nax_df_kernel_dEditPtr(task.get(), 99, nullptr), 0);
    EXPECT_EQ(nax_df_kernel_dEditIdxPtr(task.get(), 2, 0, other.data()), 0);
    EXPECT_EQ(nax_df_kernel_iEditVal(task.get(), 14, 2), 0);
    EXPECT_EQ(nax_df_kernel_dQueryPtr(task.get(), 1, &found), 0);
    EXPECT_EQ(nax_df_kernel_dQueryIdxPtr(task.get(), 2, 0, &found), 0);
    EXPECT_EQ(nax_df_kernel_iQueryVal(task.get(), 14, &value), 0);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(value, 12345);
    EXPECT_EQ(task->x, x.data());
    EXPECT_EQ(task->y[0], y.data());
    EXPECT_EQ(task->nx, 3);
    EXPECT_EQ(nax_df_kernel_dEditPPSpline1D(task.get(), 4, 2, 0, nullptr, 0, nullptr, nullptr, 0), 0);
    EXPECT_EQ(task->s_order, 4);
}

TEST(Task, DeletionFreesTheRecordAndNothingOfTheCaller) {
    const std::vector<double> x{0, 1, 2}, y(6);
    nax_df_task* task = nullptr;
    EXPECT_EQ(nax_df_kernel_DeleteTask(&task), DfStatusNullTask);
    EXPECT_EQ(nax_df_kernel_DeleteTask(nullptr), DfStatusNullTask);
    const long before = live_blocks();
    std::vector<double> c(8);
    ASSERT_EQ(nax_df_kernel_dNewTask1D(&task, 3, x.data(), 0, 1, y.data(), 0, 0), 0);
    ASSERT_EQ(nax_df_kernel_dEditPtr(task, 5, c.data()), 0);
    EXPECT_EQ(nax_df_kernel_DeleteTask(&task), 0);
    EXPECT_EQ(task, nullptr);
    EXPECT_EQ(live_blocks(), before);
}

// A failure on the way leaves a record that can still be queried and deleted.
TYPED_TEST(TaskOf, EveryFailingAllocationIsReported) {
    using T = TypeParam;
    std::vector<T> x;
    for (int i = 0; i < 200; ++i) x.push_back(static_cast<T>(i));
    const std::vector<T> y(1200);
    std::vector<T> c(4800);
    const auto life = [&](int64_t nx, int64_t ny) -> int32_t {
        nax_df_task* task = nullptr;
        int32_t status = Fit<T>::create(&task, nx, x.data(), 0, ny, y.data(), 0, 0);
        if (status == 0) status = Fit<T>::edit_pointer(task, 2, y.data());
        if (status == 0) status = Fit<T>::edit_spline(task, 4, 2, 0, nullptr, 0, nullptr, c.data(), 16);
        if (status == 0) status = Fit<T>::edit_pointer(task, 5, c.data());
        if (status == 0) status = nax_df_kernel_iEditVal(task, 15, 1);
        if (status == 0) status = nax_df_kernel_iEditVal(task, 16, 20);
        if (status == 0) status = Fit<T>::edit_indexed(task, 2, 19, y.data());
        int64_t points = 0;
        if (task != nullptr) {
            EXPECT_EQ(nax_df_kernel_iQueryVal(task, 14, &points), 0);
            nax_df_kernel_DeleteTask(&task);
        }
        return status;
    };
    const auto failures = [&](int64_t nx, int64_t ny) {
        return for_each_failing_allocation([&] { return life(nx, ny); }, int32_t{DfStatusMemory}, int32_t{0});
    };
    EXPECT_EQ(failures(200, 6), 8);
    EXPECT_EQ(failures(3, 2), 2);  // record and the larger array: few functions and points stand in the record's block
    nax_df_task* task = nullptr;
    EXPECT_EQ(Fit<T>::create(&task, 3, x.data(), 0, int64_t{1} << 40, y.data(), 128, 0), DfStatusMemory);
    nax_df_kernel_DeleteTask(&task);
}

}  // namespace
}  // namespace nax::testing
