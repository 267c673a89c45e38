// The two flavours of the library side by side: the same bits, statuses, reports and exception flags from every kernel.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <immintrin.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "nax/error.h"
#include "nax/mode.h"
#include "tests/lib/vmath_runner.h"

namespace nax::testing {
namespace {

// The interpreter that stands in for a processor without AVX-512 is some thousand times slower.
int pool_size() { return __builtin_cpu_supports("avx512vl") ? 10007 : 193; }

constexpr unsigned kExceptionFlags = 0x3F;

struct Report {
    int32_t status, index;
    bool operator==(const Report&) const = default;
};
std::vector<Report> reports;
int32_t note_report(arq_error_record* record) {
    reports.push_back({record->status, record->index});
    return 0;
}

// A loaded copy of the library.
class Flavour {
public:
    explicit Flavour(const char* path) : handle_(dlopen(path, RTLD_LAZY | RTLD_LOCAL)) {
        if (handle_ == nullptr) ADD_FAILURE() << dlerror();
    }
    bool loaded() const { return handle_ != nullptr; }
    template <class F>
    F* find(const std::string& name) const {
        return reinterpret_cast<F*>(dlsym(handle_, name.c_str()));
    }
    Entry kernel(const Record& record, int slot) const {
        return find<Entry>("nax_arq_kernel_" + record.name() + "_ttab")[slot];
    }

private:
    void* handle_;
};

struct Outcome {
    Results results;
    std::vector<Report> reports;
    int32_t status;
    unsigned flags;
};

Outcome outcome_of(const Flavour& flavour, const Record& record, int slot, const ArgumentPool& pool, uint32_t mode) {
    flavour.find<uint32_t(uint32_t)>("_arqSetMode")(mode);
    flavour.find<int32_t()>("_arqClearErrStatus")();
    flavour.find<arq_error_callback(arq_error_callback)>("_arqSetErrorCallBack")(note_report);
    reports.clear();
    Outcome outcome;
    const unsigned before = _mm_getcsr();
    _mm_setcsr(before & ~kExceptionFlags);
    outcome.results = run(record, flavour.kernel(record, slot), pool, 0, pool.size(), {});
    outcome.flags = _mm_getcsr() & kExceptionFlags;
    _mm_setcsr(before);
    outcome.reports = reports;
    outcome.status = flavour.find<int32_t()>("_arqGetErrStatus")();
    return outcome;
}

// Functions whose flavours take different roads to the same accuracy, and why.
struct Difference {
    const char* function;
    const char* reason;
    bool many = false;  // in most results of LA or EP, not just in a few
};
constexpr Difference kDifferences[] = {
    {"Ln", "14-bit reciprocal"},
    {"Log2", "14-bit reciprocal"},
    {"Log10", "14-bit reciprocal"},
    {"Log1p", "14-bit reciprocal"},
    {"Sqrt", "14-bit inverse root in LA and EP", true},
    {"InvSqrt", "14-bit inverse root", true},
    {"Pow3o2", "14-bit inverse root in LA and EP", true},
    {"Hypot", "14-bit inverse root", true},
    {"Inv", "14-bit reciprocal in EP", true},
    {"Div", "14-bit reciprocal in EP", true},
};
const Difference* find_difference(const Record& record) {
    for (const Difference& d : kDifferences)
        if (std::strcmp(d.function, record.row->function) == 0) return &d;
    return nullptr;
}

// Beyond their range and without reports, exponentials may have either zero: the argument's remainder is chance there.
bool is_exponential(const Record& record) { return std::strncmp(record.row->function, "Exp", 3) == 0; }
bool is_zero(const unsigned char* real, std::size_t size) {
    return (real[size - 1] & 0x7F) == 0 &&
           std::all_of(real, real + size - 1, [](unsigned char byte) { return byte == 0; });
}

// Of results in which the flavours may differ, all but a few are the same, and those differ in the last places: of the
// level, 26 bits of a double and 11 of a float at the least.
template <class T>
::testing::AssertionResult nearly_same(const Bytes& a, const Bytes& b, bool many) {
    std::size_t differing = 0;
    for (std::size_t at = 0; at < a.size(); at += sizeof(T)) {
        if (std::memcmp(&a[at], &b[at], sizeof(T)) == 0) continue;
        T x, y;
        std::memcpy(&x, &a[at], sizeof x);
        std::memcpy(&y, &b[at], sizeof y);
        ++differing;
        // of denormal results in the last place
        constexpr T last = std::numeric_limits<T>::denorm_min();
        if (!(std::fabs(x - y) <= std::max(last, std::fabs(x) * T(sizeof(T) == 8 ? 0x1p-25 : 0x1p-10))))
            return ::testing::AssertionFailure() << x << " and " << y << " at element " << at / sizeof(T);
    }
    if (!many && differing * 100 > a.size() / sizeof(T)) return ::testing::AssertionFailure() << differing << " differ";
    return ::testing::AssertionSuccess();
}
::testing::AssertionResult same(const Record& record, const Bytes& a, const Bytes& b) {
    if (const Difference* const d = find_difference(record))
        return record.single() ? nearly_same<float>(a, b, d->many) : nearly_same<double>(a, b, d->many);
    const std::size_t size = real_size(record);
    for (std::size_t at = 0; at < a.size(); at += size)
        if (std::memcmp(&a[at], &b[at], size) != 0 &&
            !(is_exponential(record) && is_zero(&a[at], size) && is_zero(&b[at], size))) {
            auto failure = ::testing::AssertionFailure() << "at element " << at / size << ": ";
            for (const Bytes* bytes : {&a, &b}) {
                uint64_t bits = 0;
                std::memcpy(&bits, &(*bytes)[at], size);
                failure << std::hex << bits << ' ';
            }
            return failure;
        }
    return ::testing::AssertionSuccess();
}

class Flavours : public ::testing::TestWithParam<uint32_t> {};

TEST_P(Flavours, AgreeInBitsStatusesAndFlags) {
    const Flavour narrow(NAX_FLAVOUR_AVX2), wide(NAX_FLAVOUR_AVX512);
    ASSERT_TRUE(narrow.loaded() && wide.loaded());
    int compared = 0;
    for (const Record& record : all_records()) {
        if (record.pack()) continue;
        const ArgumentPool pool(record, pool_size(), 20);
        for (int slot = 0; slot < 3; ++slot) {
            const Outcome a = outcome_of(narrow, record, slot, pool, GetParam());
            const Outcome b = outcome_of(wide, record, slot, pool, GetParam());
            SCOPED_TRACE(record.name() + " slot " + std::to_string(slot));
            for (int k = 0; k < shape_of(record).outputs; ++k)
                EXPECT_TRUE(same(record, a.results.out[k], b.results.out[k])) << "output " << k;
            EXPECT_EQ(a.status, b.status);
            EXPECT_EQ(a.flags, b.flags);
            EXPECT_TRUE(a.reports == b.reports) << a.reports.size() << " and " << b.reports.size() << " reports";
            ++compared;
        }
    }
    EXPECT_GT(compared, 100);
}

INSTANTIATE_TEST_SUITE_P(Modes, Flavours,
                         ::testing::Values(ARQ_ERRMODE_CALLBACK | ARQ_DENORMALS_KEEP,
                                           ARQ_ERRMODE_NOERR | ARQ_DENORMALS_KEEP,
                                           ARQ_ERRMODE_CALLBACK | ARQ_DENORMALS_FLUSH,
                                           ARQ_ERRMODE_NOERR | ARQ_DENORMALS_FLUSH));

}  // namespace
}  // namespace nax::testing
