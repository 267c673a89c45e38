// Service-layer memory under test control: counts live blocks, and makes the n-th allocation fail.
//
// A test program that uses anything of this header gets its own nax_serv_allocate, nax_serv_deallocate,
// nax_serv_malloc and nax_serv_free. They forward to those of libnax_serv.so, and they stand in for them everywhere in
// the program, also for libnax.so where that is linked. The other functions of the layer are untouched; they never
// take memory through these four. Releasing a block through the wrong family, twice, or one that was never allocated
// ends the program with a message.
//
// One allocation failing (the count starts when the object is made, 0 is the next allocation):
//
//     FailAllocation fail(2);                       // the third nax_serv_allocate from here on returns null
//     EXPECT_EQ(compute(...), kStatusMemory);       // fail.happened() tells whether there was a third one
//
// Every allocation of a call failing in turn, with a check that nothing leaks:
//
//     const int failures = for_each_failing_allocation([&] { return compute(...); }, kStatusMemory, 0);
//     EXPECT_GT(failures, 0);                       // the number of allocations that the call makes
#pragma once

#include <gtest/gtest.h>

#include <cstddef>

namespace nax::testing {

// Blocks taken and not yet given back, of nax_serv_allocate and of nax_serv_malloc.
long live_blocks();
long live_cells();

// Number of nax_serv_allocate calls that did not ask for alignment 128, since the program began.
long misaligned_requests();

// Which family of allocations a FailAllocation acts on.
enum class Family { kBlocks, kCells };

// While it lives, the n-th allocation from its making returns null. With `and_all_later` every one after it fails too.
// One object of each family at a time.
class FailAllocation {
public:
    explicit FailAllocation(long n, Family family = Family::kBlocks, bool and_all_later = false);
    FailAllocation(const FailAllocation&) = delete;
    FailAllocation& operator=(const FailAllocation&) = delete;
    ~FailAllocation();

    bool happened() const;  // an allocation was refused
    long requests() const;  // allocations asked for since the object was made, refused ones included

private:
    Family family_;
};

// Calls `body()` with allocation 0 failing, then with allocation 1 failing and so on, until a run asks for no further
// allocation. Each failing run must return `status_when_failing`, the last one `status_when_not`, and all of them must
// give back every block they took. `body` must release what it keeps (streams, tasks) before it returns. Returns the
// number of runs in which an allocation failed.
template <class Body, class Status>
int for_each_failing_allocation(Body body, Status status_when_failing, Status status_when_not) {
    for (int n = 0;; ++n) {
        const long live_before = live_blocks();
        Status status;
        bool failed;
        {
            FailAllocation fail(n);
            status = body();
            failed = fail.happened();
        }
        EXPECT_EQ(status, failed ? status_when_failing : status_when_not) << "allocation " << n;
        EXPECT_EQ(live_blocks(), live_before)
            << "blocks leaked with allocation " << n << (failed ? " failing" : " not failing");
        if (!failed || ::testing::Test::HasFailure()) return n;
    }
}

}  // namespace nax::testing
