// Special values by table: result, status, report and errno of single elements, in every error mode, both denormal
// modes, dense and strided, at the first, a middle and the last element of a call.
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "nax/error.h"
#include "nax/mode.h"
#include "tests/lib/vmath_records.h"

namespace nax::testing {
namespace {

template <class T>
struct Special {
    const char* function;
    int inputs, outputs;
    T a, b;
    T r[2];
    int32_t status;
    bool flushed;
    const char* text;
};

template <class T>
std::vector<Special<T>> specials() {
    using Limits = std::numeric_limits<T>;
    [[maybe_unused]] constexpr T inf = Limits::infinity(), nan = Limits::quiet_NaN(), snan = Limits::signaling_NaN(),
                                 max = Limits::max(), tiny = Limits::min(), denorm = Limits::denorm_min(),
                                 eps = Limits::epsilon();
    return {
#define UNARY(f, a, r, status) {#f, 1, 1, T(a), 0, {T(r), 0}, status, false, #f "(" #a ")"},
#define BINARY(f, a, b, r, status) {#f, 2, 1, T(a), T(b), {T(r), 0}, status, false, #f "(" #a ", " #b ")"},
#define TWO_RESULTS(f, a, r1, r2, status) {#f, 1, 2, T(a), 0, {T(r1), T(r2)}, status, false, #f "(" #a ")"},
#define FLUSHED_UNARY(f, a, r, status) {#f, 1, 1, T(a), 0, {T(r), 0}, status, true, #f "(" #a "), flushed"},
#define FLUSHED_BINARY(f, a, b, r, status) \
    {#f, 2, 1, T(a), T(b), {T(r), 0}, status, true, #f "(" #a ", " #b "), flushed"},
#include "tests/vmath/specials.def"
    };
}

int32_t report_count, reported_status;
int32_t count_report(arq_error_record* record) {
    ++report_count;
    reported_status = record->status;
    return 0;
}

int expected_errno(int32_t status) { return status == 0 ? 0 : status == ARQ_STATUS_DOMAIN ? EDOM : ERANGE; }

template <class T>
bool is_quiet_nan(T x) {
    using U = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;
    U bits;
    std::memcpy(&bits, &x, sizeof x);
    return x != x && ((bits >> (std::numeric_limits<T>::digits - 2)) & 1) != 0;
}

template <class T>
::testing::AssertionResult same_value(T found, T expected) {
    const bool same = expected != expected ? is_quiet_nan(found) : std::memcmp(&found, &expected, sizeof found) == 0;
    if (same) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "found " << found << ", expected " << expected;
}

template <class T>
bool has_denormal(const Special<T>& special) {
    const T values[4] = {special.a, special.b, special.r[0], special.r[1]};
    for (const T x : values)
        if (std::fpclassify(x) == FP_SUBNORMAL) return true;
    return false;
}

// One call with the special element at `place` among NaN, which no function reports.
template <class T>
void check_call(const Record& record, Entry entry, const Special<T>& special, uint32_t error_mode, int place) {
    constexpr int n = 19, stride = 2;
    std::vector<T> a(n * stride, std::numeric_limits<T>::quiet_NaN()), b = a, r1(n * stride), r2(n * stride);
    const int step = record.strided ? stride : 1;
    a[static_cast<std::size_t>(place * step)] = special.a;
    b[static_cast<std::size_t>(place * step)] = special.b;
    Arguments arguments{n, {a.data(), b.data()}, {r1.data(), r2.data()}, {step, step}, {step, step}, {}, {}};
    _arqClearErrStatus();
    errno = 0;
    report_count = reported_status = 0;
    call(record, entry, arguments);

    const bool reports = error_mode != ARQ_ERRMODE_NOERR && special.status != 0;
    EXPECT_EQ(_arqGetErrStatus(), reports ? special.status : 0);
    EXPECT_EQ(report_count, reports && (error_mode & ARQ_ERRMODE_CALLBACK) ? 1 : 0);
    EXPECT_EQ(reported_status, report_count == 1 ? special.status : 0);
    EXPECT_EQ(errno, reports && (error_mode & ARQ_ERRMODE_ERRNO) ? expected_errno(special.status) : 0);
    // With reporting off a rare element keeps what the vector code made of it.
    if (error_mode == ARQ_ERRMODE_NOERR) return;
    EXPECT_TRUE(same_value(r1[static_cast<std::size_t>(place * step)], special.r[0]));
    if (special.outputs == 2) {
        EXPECT_TRUE(same_value(r2[static_cast<std::size_t>(place * step)], special.r[1]));
    }
}

template <class T>
void check_specials(char type) {
    constexpr uint32_t error_modes[] = {ARQ_ERRMODE_DEFAULT, ARQ_ERRMODE_IGNORE, ARQ_ERRMODE_ERRNO,
                                        ARQ_ERRMODE_CALLBACK, ARQ_ERRMODE_NOERR};
    for (const Special<T>& special : specials<T>())
        for (const char* form : {"", "I"}) {
            const Record* const record = find_record(type + std::string(special.function) + form);
            if (record == nullptr) continue;  // family not linked
            ASSERT_EQ(shape_of(*record).inputs, special.inputs) << special.text;
            ASSERT_EQ(shape_of(*record).outputs, special.outputs) << special.text;
            for (const bool flush : {false, true}) {
                if (special.flushed ? !flush : flush && has_denormal(special)) continue;
                for (const uint32_t error_mode : error_modes)
                    for (int slot = 0; slot < 3; ++slot)
                        for (const int place : {0, 9, 18}) {
                            SCOPED_TRACE(std::string(special.text) + " in " + record->name() + ", slot " +
                                         std::to_string(slot) + ", mode " + std::to_string(error_mode));
                            _arqSetMode(error_mode | (flush ? ARQ_DENORMALS_FLUSH : ARQ_DENORMALS_KEEP));
                            check_call(*record, record->ttab[slot], special, error_mode, place);
                            if (::testing::Test::HasFailure()) return;
                        }
            }
        }
}

class Specials : public ::testing::Test {
protected:
    void SetUp() override { _arqSetErrorCallBack(count_report); }
    void TearDown() override {
        _arqClearErrorCallBack();
        _arqSetMode(ARQ_ERRMODE_DEFAULT | ARQ_DENORMALS_KEEP);
        _arqClearErrStatus();
    }
};

TEST_F(Specials, Single) { check_specials<float>('s'); }
TEST_F(Specials, Double) { check_specials<double>('d'); }

}  // namespace
}  // namespace nax::testing
