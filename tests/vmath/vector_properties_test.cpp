// What holds for every vector function, whatever it computes: an element's result depends on its arguments alone, and
// nothing but the results is written.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "nax/error.h"
#include "nax/mode.h"
#include "tests/lib/vmath_runner.h"
#include "tests/runtime/fresh_thread.h"

namespace nax::testing {
namespace {

constexpr int kPoolSize = 67;  // coprime to all vector lengths, so that elements wander through the lanes

struct Kernel {
    const Record* record;
    Entry entry;
    std::string name;
};

// Every kernel once, with a record that reaches it.
std::vector<Kernel> element_kernels() {
    std::vector<Kernel> kernels;
    for (const Record& record : all_records()) {
        if (record.pack()) continue;
        for (int slot = 0; slot < 3; ++slot) {
            const Entry entry = record.kernels[slot];
            if (std::find(record.kernels, record.kernels + slot, entry) != record.kernels + slot) continue;
            kernels.push_back({&record, entry, record.name() + "_" + record.row->tags[slot]});
        }
    }
    return kernels;
}

// The contiguous kernel of the same function and slot.
Entry contiguous_twin(const Kernel& kernel) {
    const Record* const twin = find_record(kernel.record->row->type + std::string(kernel.record->row->function));
    const auto* const found = std::find(kernel.record->kernels, kernel.record->kernels + 3, kernel.entry);
    return twin->kernels[found - kernel.record->kernels];
}
const Record& contiguous_record(const Kernel& kernel) {
    return *find_record(kernel.record->row->type + std::string(kernel.record->row->function));
}

// Result i of `results` against result (first + i) modulo the pool size of the reference.
::testing::AssertionResult same_bits(const Kernel& kernel, const Results& results, const Results& reference,
                                     int64_t first, int32_t n) {
    const std::size_t size = result_size(*kernel.record);
    for (int k = 0; k < shape_of(*kernel.record).outputs; ++k)
        for (int32_t i = 0; i < n; ++i) {
            const auto expected = static_cast<std::size_t>((first + i) % kPoolSize) * size;
            const auto found = static_cast<std::size_t>(i) * size;
            if (std::memcmp(&results.out[k][found], &reference.out[k][expected], size) != 0)
                return ::testing::AssertionFailure() << "output " << k << ", element " << i << " of " << n;
        }
    if (!results.outside_untouched) return ::testing::AssertionFailure() << "wrote outside the results, n = " << n;
    return ::testing::AssertionSuccess();
}

class VectorProperties : public ::testing::Test {
protected:
    void SetUp() override {
        _arqSetMode(ARQ_ERRMODE_IGNORE);
        _arqClearErrStatus();
    }
    void TearDown() override {
        _arqClearErrorCallBack();
        _arqSetMode(ARQ_ERRMODE_DEFAULT | 0x140000);  // a denormal field of any other value means off
    }
};

void sweep(const std::vector<int32_t>& lengths, const std::vector<Layout>& strides) {
    for (const Kernel& kernel : element_kernels()) {
        SCOPED_TRACE(kernel.name);
        const ArgumentPool pool(*kernel.record, kPoolSize, 1);
        const Results reference = run_one_by_one(contiguous_record(kernel), contiguous_twin(kernel), pool);
        EXPECT_TRUE(reference.outside_untouched);
        std::size_t turn = 0;
        for (const int32_t n : lengths) {
            Layout layout = kernel.record->strided ? strides[turn % strides.size()] : Layout{};
            layout.guard = turn % 2 == 0 ? Guard::kAfter : Guard::kBefore;
            layout.offset = turn % 3 == 2 ? turn % 7 : 0;
            const auto first = static_cast<int64_t>(turn * 29 % kPoolSize);
            const Results results = run(*kernel.record, kernel.entry, pool, first, n, layout);
            ASSERT_TRUE(same_bits(kernel, results, reference, first, n))
                << "strides " << layout.in_stride[0] << ' ' << layout.in_stride[1] << " -> " << layout.out_stride[0];
            ++turn;
        }
    }
}

std::vector<Layout> stride_layouts() {
    std::vector<Layout> layouts;
    for (const int32_t in : {1, 2, 3, -1})
        for (const int32_t out : {1, 2, 5, -2}) layouts.push_back({Guard::kAfter, 0, {in, out}, {out, in}});
    return layouts;
}

TEST_F(VectorProperties, ResultsDoNotDependOnLengthPositionAlignmentOrStride) {
    sweep({1, 2, 7, 8, 9, 15, 16, 17, 31, 33, 47, 64, 65, 80, 129, 130}, stride_layouts());
}

TEST_F(VectorProperties, InPlaceGivesTheSameResults) {
    for (const Kernel& kernel : element_kernels()) {
        const Shape shape = shape_of(*kernel.record);
        if (shape.reals_in != shape.reals_out) continue;
        SCOPED_TRACE(kernel.name);
        const ArgumentPool pool(*kernel.record, kPoolSize, 2);
        const Results reference = run_one_by_one(contiguous_record(kernel), contiguous_twin(kernel), pool);
        const int32_t n = 85;
        for (int place = 0; place < shape.inputs; ++place) {
            const std::size_t size = pool.element_size();
            CallerVector in[2] = {{n, size, 1, Guard::kAfter, 0}, {n, size, 1, Guard::kAfter, 0}};
            for (int k = 0; k < 2; ++k)
                for (int32_t i = 0; i < n; ++i) in[k].set(i, pool.argument(k, i));
            CallerVector second(n, size, 1, Guard::kAfter, 0);
            Arguments arguments;
            arguments.n = n;
            arguments.in[0] = in[0].start();
            arguments.in[1] = in[1].start();
            arguments.out[0] = in[place].start();
            arguments.out[1] = second.start();
            call(*kernel.record, kernel.entry, arguments);
            Results results;
            for (int32_t i = 0; i < n; ++i) {
                results.out[0].insert(results.out[0].end(), in[place].get(i), in[place].get(i) + size);
                results.out[1].insert(results.out[1].end(), second.get(i), second.get(i) + size);
            }
            ASSERT_TRUE(same_bits(kernel, results, reference, 0, n)) << "over input " << place;
        }
    }
}

TEST_F(VectorProperties, LengthsBelowOneTouchNothing) {
    for (const Kernel& kernel : element_kernels()) {
        SCOPED_TRACE(kernel.name);
        unsigned char out[64], in[64];
        std::memset(out, 0x5A, sizeof out);
        std::memset(in, 0xFF, sizeof in);
        for (const int32_t n : {0, -1, INT32_MIN}) {
            Arguments arguments;
            arguments.n = n;
            arguments.in[0] = arguments.in[1] = in;
            arguments.out[0] = arguments.out[1] = out;
            _arqSetErrStatus(77);
            call(*kernel.record, kernel.entry, arguments);
            EXPECT_EQ(_arqGetErrStatus(), 77);
            EXPECT_TRUE(std::all_of(out, out + sizeof out, [](unsigned char byte) { return byte == 0x5A; }));
        }
    }
}

uint32_t read_mxcsr() {
    uint32_t word;
    asm volatile("stmxcsr %0" : "=m"(word));
    return word;
}
void load_mxcsr(uint32_t word) { asm volatile("ldmxcsr %0" : : "m"(word)); }
uint16_t read_x87() {
    uint16_t word;
    asm volatile("fnstcw %0" : "=m"(word));
    return word;
}
// Flags of earlier reports are cleared: unmasked they would trap.
void load_x87(uint16_t word) { asm volatile("fnclex\n\tfldcw %0" : : "m"(word)); }

// Rounding up, flushing, and x87 exceptions unmasked: the caller's words neither reach the results nor get lost.
TEST_F(VectorProperties, CallersControlWordsNeitherMatterNorChange) {
    constexpr uint32_t kRoundUpFlushing = 0xDFC0, kInexactSeen = 0x20;
    constexpr uint16_t kUnmasked = 0x0340;
    for (const Kernel& kernel : element_kernels()) {
        SCOPED_TRACE(kernel.name);
        const ArgumentPool pool(*kernel.record, kPoolSize, 3);
        const Results reference = run_one_by_one(contiguous_record(kernel), contiguous_twin(kernel), pool);
        const uint32_t mode = _arqGetMode(), mxcsr = read_mxcsr();
        const uint16_t x87 = read_x87();
        load_mxcsr(kRoundUpFlushing | kInexactSeen);
        load_x87(kUnmasked);
        const Results results = run(*kernel.record, kernel.entry, pool, 0, 85, Layout{});
        const uint16_t x87_after = read_x87();
        const uint32_t mxcsr_after = read_mxcsr();
        load_x87(x87);
        load_mxcsr(mxcsr);
        EXPECT_TRUE(same_bits(kernel, results, reference, 0, 85));
        EXPECT_EQ(x87_after, kUnmasked);
        EXPECT_EQ(mxcsr_after & 0xFFFFFFC0, kRoundUpFlushing);
        EXPECT_TRUE(mxcsr_after & kInexactSeen);
        EXPECT_EQ(_arqGetMode(), mode);
    }
}

struct Report {
    int32_t index, status;
    std::string name;
};
std::vector<Report> reports;
bool replace_results;

int32_t record_report(arq_error_record* report) {
    reports.push_back({report->index, report->status, report->name});
    if (replace_results) {
        report->r1 = 123.25;
        report->r2 = -7.5;
        report->r1_imag = 0.5;
        report->r2_imag = 0.75;
    }
    return 0;
}

// Each element that has a status on its own is reported once, in ascending order, under its index and the function's
// name; fillers of a partial vector are not. What the callback writes is what the caller gets.
TEST_F(VectorProperties, ReportsComeInOrderAndTheCallbacksResultStays) {
    for (const Kernel& kernel : element_kernels()) {
        SCOPED_TRACE(kernel.name);
        _arqSetMode(ARQ_ERRMODE_IGNORE);
        const ArgumentPool pool(*kernel.record, kPoolSize, 4);
        std::vector<int32_t> statuses;
        Results expected = run_one_by_one(contiguous_record(kernel), contiguous_twin(kernel), pool, &statuses);
        _arqSetMode(ARQ_ERRMODE_CALLBACK);
        _arqSetErrorCallBack(record_report);
        for (const bool replace : {false, true}) {
            replace_results = replace;
            const std::size_t size = result_size(*kernel.record);
            const bool single = kernel.record->single();
            for (std::size_t i = 0; replace && i < kPoolSize; ++i) {
                if (statuses[i] == 0) continue;
                const bool two = shape_of(*kernel.record).outputs == 2;
                const double values[2][2] = {{123.25, 0.5}, {two ? -7.5 : 123.25, two ? 0.75 : 0.5}};
                for (int k = 0; k < 2 && !expected.out[k].empty(); ++k)
                    for (std::size_t part = 0; part * real_size(*kernel.record) < size; ++part) {
                        unsigned char* const at = &expected.out[k][i * size + part * real_size(*kernel.record)];
                        const float narrow = static_cast<float>(values[k][part]);
                        std::memcpy(at, single ? static_cast<const void*>(&narrow) : &values[k][part],
                                    real_size(*kernel.record));
                    }
            }
            for (const int32_t n : {1, 13, 85}) {
                reports.clear();
                const Layout layout{Guard::kAfter, 0, {2, -3}, {3, -1}};
                const int64_t first = n * 5;
                const Results results = run(*kernel.record, kernel.entry, pool, first, n, layout);
                EXPECT_TRUE(same_bits(kernel, results, expected, first, n));
                std::size_t next = 0;
                for (int32_t i = 0; i < n; ++i) {
                    const int32_t status = statuses[static_cast<std::size_t>((first + i) % kPoolSize)];
                    if (status == 0) continue;
                    ASSERT_LT(next, reports.size());
                    EXPECT_EQ(reports[next].index, i);
                    EXPECT_EQ(reports[next].status, status);
                    EXPECT_EQ(reports[next].name,
                              std::string("v") + kernel.record->type() + kernel.record->row->function);
                    ++next;
                }
                EXPECT_EQ(next, reports.size());
            }
        }
    }
}

TEST_F(VectorProperties, NothingIsReportedWithReportingOff) {
    for (const Kernel& kernel : element_kernels()) {
        SCOPED_TRACE(kernel.name);
        const ArgumentPool pool(*kernel.record, kPoolSize, 5);
        _arqSetMode(ARQ_ERRMODE_NOERR);
        _arqSetErrorCallBack(record_report);
        reports.clear();
        _arqSetErrStatus(77);
        const Results one_by_one = run_one_by_one(contiguous_record(kernel), contiguous_twin(kernel), pool);
        _arqSetErrStatus(77);
        const Results results = run(*kernel.record, kernel.entry, pool, 0, 85, Layout{});
        EXPECT_EQ(_arqGetErrStatus(), 77);
        EXPECT_TRUE(reports.empty());
        EXPECT_TRUE(same_bits(kernel, results, one_by_one, 0, 85));
    }
}

// A kernel may be the first thing that a thread does: its mode word is made inside the call.
TEST_F(VectorProperties, FirstCallOnAThreadRunsInTheDefaultMode) {
    const Record* const record = find_record("dFmod");
    ASSERT_NE(record, nullptr);
    on_fresh_thread([record] {
        const double a[3] = {5.5, 1, -7}, b[3] = {2, 0, 4};
        double r[3];
        Arguments arguments{3, {a, b}, {r, nullptr}, {1, 1}, {1, 1}, {}, {}};
        errno = 0;
        call(*record, record->stubs[0], arguments);
        EXPECT_EQ(r[0], 1.5);
        EXPECT_NE(r[1], r[1]);
        EXPECT_EQ(r[2], -3);
        EXPECT_EQ(errno, ERANGE);
        EXPECT_EQ(_arqGetErrStatus(), ARQ_STATUS_SINGULARITY);
        EXPECT_EQ(_arqGetMode(), ARQ_MODE_DEFAULT);
    });
}

class VectorPropertiesFull : public VectorProperties {};

TEST_F(VectorPropertiesFull, EveryLengthInEveryStride) {
    std::vector<int32_t> lengths;
    for (std::size_t turn = 0; turn < stride_layouts().size(); ++turn)
        for (int32_t n = 1; n <= 131; ++n) lengths.push_back(n);
    sweep(lengths, stride_layouts());
}

}  // namespace
}  // namespace nax::testing
