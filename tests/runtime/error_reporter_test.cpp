// The eight reporters in every error mode: status, errno, callback, messages, x87 flags and traps, write-back.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>
#include <vector>

#include "nax/error.h"
#include "nax/mode.h"
#include "runtime/x87_environment.h"
#include "tests/runtime/fresh_thread.h"

namespace nax::testing {
namespace {

using runtime::X87Environment;

X87Environment x87() {
    X87Environment environment;
    environment.store();
    __asm__ volatile("fldcw %0" : : "m"(environment.control));  // fnstenv masks everything
    return environment;
}
void clear_x87_flags() { __asm__ volatile("fnclex"); }

// What a report of one double element did.
struct Outcome {
    int32_t status;
    int error_number;
    int x87_flags;
    double result;
};

constexpr int kOldErrno = 77;

Outcome report_in_mode(uint32_t mode, int32_t status, arq_error_callback callback = nullptr) {
    Outcome outcome;
    on_fresh_thread([&] {
        _arqSetMode(mode);
        _arqSetErrorCallBack(callback);
        double argument = -1, result = 42;
        clear_x87_flags();
        errno = kOldErrno;
        nax_arq_kernel_dError(status, 0, &argument, &argument, &result, &result, "vdTest");
        outcome.error_number = errno;
        outcome.status = _arqGetErrStatus();
        outcome.x87_flags = x87().status & 0x3F;
        outcome.result = result;
    });
    return outcome;
}

TEST(Reporter, StatusDecidesErrnoAndX87Flag) {
    const struct {
        int32_t status;
        int error_number, flag;
    } rows[] = {{0, 0, 0},      {1, EDOM, 1},    {2, ERANGE, 4},  {3, ERANGE, 8}, {4, ERANGE, 16},
                {5, EFAULT, 0}, {-3, EFAULT, 0}, {-1, EINVAL, 0}, {-2, EACCES, 0}};
    for (const auto& row : rows)
        for (const uint32_t mode : {ARQ_ERRMODE_DEFAULT, ARQ_ERRMODE_ERRNO | ARQ_ERRMODE_EXCEPT}) {
            const Outcome outcome = report_in_mode(mode, row.status);
            EXPECT_EQ(outcome.status, row.status);
            EXPECT_EQ(outcome.error_number, row.error_number) << row.status;
            EXPECT_EQ(outcome.x87_flags, row.flag) << row.status;
            EXPECT_EQ(outcome.result, 42);
        }
}

TEST(Reporter, ModeDecidesWhatIsDone) {
    const struct {
        uint32_t mode;
        bool keeps_status, sets_errno, raises;
    } rows[] = {{ARQ_ERRMODE_NOERR, false, false, false},
                {ARQ_ERRMODE_IGNORE, true, false, false},
                {ARQ_ERRMODE_ERRNO, true, true, false},
                {ARQ_ERRMODE_EXCEPT, true, false, true},
                {ARQ_ERRMODE_CALLBACK, true, false, false},
                {ARQ_ERRMODE_NOERR | ARQ_ERRMODE_ERRNO, true, true, false},
                {ARQ_ERRMODE_IGNORE | ARQ_ERRMODE_EXCEPT, true, false, true},
                {ARQ_ERRMODE_IGNORE | ARQ_ERRMODE_NOERR, true, false, false}};
    for (const auto& row : rows) {
        const Outcome outcome = report_in_mode(row.mode, ARQ_STATUS_OVERFLOW);
        EXPECT_EQ(outcome.status, row.keeps_status ? ARQ_STATUS_OVERFLOW : 0) << std::hex << row.mode;
        EXPECT_EQ(outcome.error_number, row.sets_errno ? ERANGE : kOldErrno) << std::hex << row.mode;
        EXPECT_EQ(outcome.x87_flags, row.raises ? 8 : 0) << std::hex << row.mode;
    }
}

TEST(Reporter, TheLastReportWinsAndSuccessfulCallsDoNotClear) {
    on_fresh_thread([] {
        double x = 1;
        nax_arq_kernel_dError(ARQ_STATUS_DOMAIN, 0, &x, &x, &x, &x, "vdTest");
        nax_arq_kernel_dError(ARQ_STATUS_UNDERFLOW, 0, &x, &x, &x, &x, "vdTest");
        EXPECT_EQ(_arqGetErrStatus(), ARQ_STATUS_UNDERFLOW);
    });
}

// --- callback

int32_t replace_and_go_on(arq_error_record* record) {
    record->r1 = 0.1;
    return 0;
}
int32_t replace_and_stop(arq_error_record* record) {
    record->r1 = 0.1;
    return 1;
}
int32_t change_mode(arq_error_record*) {
    _arqSetMode(ARQ_ERRMODE_IGNORE);
    return 0;
}

TEST(Reporter, CallbackReturningZeroReplacesTheResultAfterTheStandardActions) {
    const Outcome outcome = report_in_mode(ARQ_ERRMODE_DEFAULT, ARQ_STATUS_DOMAIN, replace_and_go_on);
    EXPECT_EQ(outcome.result, 0.1);
    EXPECT_EQ(outcome.error_number, EDOM);
    EXPECT_EQ(outcome.x87_flags, 1);
}

TEST(Reporter, CallbackReturningNonZeroEndsTheReport) {
    const Outcome outcome = report_in_mode(ARQ_ERRMODE_DEFAULT, ARQ_STATUS_DOMAIN, replace_and_stop);
    EXPECT_EQ(outcome.status, ARQ_STATUS_DOMAIN);
    EXPECT_EQ(outcome.result, 42);
    EXPECT_EQ(outcome.error_number, kOldErrno);
    EXPECT_EQ(outcome.x87_flags, 0);
}

TEST(Reporter, CallbackIsNotCalledWithoutItsModeBit) {
    EXPECT_EQ(report_in_mode(ARQ_ERRMODE_ERRNO, ARQ_STATUS_DOMAIN, replace_and_go_on).result, 42);
    EXPECT_EQ(report_in_mode(ARQ_ERRMODE_NOERR, ARQ_STATUS_DOMAIN, replace_and_go_on).result, 42);
}

TEST(Reporter, ActionsFollowTheModeThatTheCallbackLeaves) {
    const Outcome outcome = report_in_mode(ARQ_ERRMODE_DEFAULT, ARQ_STATUS_DOMAIN, change_mode);
    EXPECT_EQ(outcome.error_number, kOldErrno);
    EXPECT_EQ(outcome.x87_flags, 0);
}

// --- elements of all types, contiguous and strided

arq_error_record seen;
int32_t keep_record(arq_error_record* record) {
    seen = *record;
    record->a1 = record->a2 = -99;
    record->r1 = 0.1;
    record->r2 = 0.2;
    record->r1_imag = 0.3;
    record->r2_imag = 0.4;
    return 0;
}

// Four vectors of 20 elements whose values tell where they come from.
template <class Real>
struct Case {
    std::vector<Real> a1, a2, r1, r2;
    Case() : a1(40), a2(40), r1(40), r2(40) {
        for (size_t i = 0; i < 40; ++i) {
            a1[i] = static_cast<Real>(1000 + i);
            a2[i] = static_cast<Real>(2000 + i);
            r1[i] = static_cast<Real>(3000 + i);
            r2[i] = static_cast<Real>(4000 + i);
        }
    }
};

// `parts` is 2 for complex types; the element of vector k is index * stride[k].
template <class Real>
void expect_element_reported(const Case<Real>& before, const Case<Real>& after, int parts, int index,
                             const int (&stride)[4]) {
    const auto at = [&](int k) { return static_cast<size_t>(index * stride[k] * parts); };
    EXPECT_EQ(seen.status, ARQ_STATUS_OVERFLOW);
    EXPECT_EQ(seen.index, index);
    EXPECT_EQ(seen.a1, before.a1[at(0)]);
    EXPECT_EQ(seen.a2, before.a2[at(1)]);
    EXPECT_EQ(seen.r1, before.r1[at(2)]);
    EXPECT_EQ(seen.r2, before.r2[at(3)]);
    Case<Real> expected = before;
    expected.r1[at(2)] = static_cast<Real>(0.1);
    expected.r2[at(3)] = static_cast<Real>(0.2);
    if (parts == 2) {
        EXPECT_EQ(seen.a1_imag, before.a1[at(0) + 1]);
        EXPECT_EQ(seen.a2_imag, before.a2[at(1) + 1]);
        EXPECT_EQ(seen.r1_imag, before.r1[at(2) + 1]);
        EXPECT_EQ(seen.r2_imag, before.r2[at(3) + 1]);
        expected.r1[at(2) + 1] = static_cast<Real>(0.3);
        expected.r2[at(3) + 1] = static_cast<Real>(0.4);
    }
    EXPECT_EQ(after.a1, expected.a1);
    EXPECT_EQ(after.a2, expected.a2);
    EXPECT_EQ(after.r1, expected.r1);
    EXPECT_EQ(after.r2, expected.r2);
}

template <class Real, class Contiguous, class Strided>
void check_element_access(int parts, Contiguous contiguous, Strided strided) {
    on_fresh_thread([=] {
        _arqSetMode(ARQ_ERRMODE_CALLBACK);
        _arqSetErrorCallBack(keep_record);
        const Case<Real> before;
        for (const int index : {0, 1, 6}) {
            Case<Real> after;
            contiguous(ARQ_STATUS_OVERFLOW, index, after.a1.data(), after.a2.data(), after.r1.data(), after.r2.data(),
                       "name");
            expect_element_reported(before, after, parts, index, {1, 1, 1, 1});
            after = before;
            strided(ARQ_STATUS_OVERFLOW, index, after.a1.data(), 2, after.a2.data(), 1, after.r1.data(), 3,
                    after.r2.data(), 2, "name");
            expect_element_reported(before, after, parts, index, {2, 1, 3, 2});
        }
    });
}

TEST(Reporter, ReachesElementsOfEveryTypeAndStride) {
    check_element_access<float>(1, nax_arq_kernel_sError, nax_arq_kernel_sErrorI);
    check_element_access<double>(1, nax_arq_kernel_dError, nax_arq_kernel_dErrorI);
    check_element_access<float>(2, nax_arq_kernel_cError, nax_arq_kernel_cErrorI);
    check_element_access<double>(2, nax_arq_kernel_zError, nax_arq_kernel_zErrorI);
}

TEST(Reporter, WithOneResultVectorTheFirstResultWins) {
    on_fresh_thread([] {
        _arqSetErrorCallBack(keep_record);
        double x = 1, r = 2;
        nax_arq_kernel_dError(ARQ_STATUS_DOMAIN, 0, &x, &x, &r, &r, "vdTest");
        EXPECT_EQ(r, 0.1);
    });
}

TEST(Reporter, IndexCountsFromTheWholeVectorWhateverTheStride) {
    on_fresh_thread([] {
        _arqSetErrorCallBack(keep_record);
        std::vector<double> memory(40);
        const double* const whole = memory.data();
        const auto* const floats = reinterpret_cast<const float*>(whole);
        double r[2] = {};
        float* const rf = reinterpret_cast<float*>(r);
        _arqSetInterfInputVectorPointer(whole);
        nax_arq_kernel_dError(1, 0, whole + 10, whole + 10, r, r, "n");
        EXPECT_EQ(seen.index, 10);
        nax_arq_kernel_sError(1, 1, floats + 10, floats + 10, rf, rf, "n");
        EXPECT_EQ(seen.index, 11);
        nax_arq_kernel_cError(1, 0, floats + 20, floats + 20, rf, rf, "n");
        EXPECT_EQ(seen.index, 10);
        nax_arq_kernel_zErrorI(1, 0, whole + 20, 3, whole + 20, 3, r, 1, r, 1, "n");
        EXPECT_EQ(seen.index, 10);
        nax_arq_kernel_SetInterfInputVectorPointer(whole + 12);
        nax_arq_kernel_dErrorI(1, 2, whole + 10, 5, whole, 1, r, 0, r, 0, "n");
        EXPECT_EQ(seen.index, 0);
        _arqSetInterfInputVectorPointer(nullptr);
        nax_arq_kernel_dError(1, 1, whole + 10, whole, r, r, "n");
        EXPECT_EQ(seen.index, 1);
    });
}

TEST(Reporter, NamesAreCutTo47Characters) {
    on_fresh_thread([] {
        _arqSetErrorCallBack(keep_record);
        double x = 1;
        for (const size_t length : {0u, 5u, 46u, 47u, 48u, 50u, 200u}) {
            const std::string name(length, 'n');
            nax_arq_kernel_dError(1, 0, &x, &x, &x, &x, name.c_str());
            const size_t kept = length < 47 ? length : 47;
            EXPECT_EQ(seen.name_length, static_cast<int32_t>(kept));
            EXPECT_EQ(std::string(seen.name), name.substr(0, kept));
        }
    });
}

TEST(Reporter, CallingLayersStatusesTouchNoVector) {
    on_fresh_thread([] {
        _arqSetMode(ARQ_ERRMODE_CALLBACK);
        _arqSetErrorCallBack(keep_record);
        for (const int32_t status : {ARQ_STATUS_BAD_ARGUMENT, ARQ_STATUS_BAD_MEMORY}) {
            nax_arq_kernel_zErrorI(status, 3, nullptr, 1, nullptr, 1, nullptr, 1, nullptr, 1, "vzTest");
            EXPECT_EQ(seen.status, status);
            EXPECT_EQ(seen.index, 3);
            EXPECT_EQ(_arqGetErrStatus(), status);
        }
    });
}

// --- printing

std::string printed(int32_t status, double a1, double a2, double r1, double r2) {
    ::testing::internal::CaptureStderr();
    on_fresh_thread([=]() mutable {
        _arqSetMode(ARQ_ERRMODE_STDERR);
        nax_arq_kernel_dError(status, 0, &a1, &a2, &r1, &r2, "vdTest");
    });
    return ::testing::internal::GetCapturedStderr();
}

TEST(Reporter, PrintsSecondValuesOnlyWhereTheySaySomething) {
    const std::string domain = "nax: vdTest: argument outside the domain of the function\n";
    EXPECT_EQ(printed(1, -1, -1, 5, 5), domain + "nax:   argument [0] = -1\nnax:   result   [0] = 5\n");
    EXPECT_EQ(printed(1, -1, 0.0, 5, -0.0), domain + "nax:   argument [0] = -1\nnax:   result   [0] = 5\n");
    EXPECT_EQ(printed(1, -1, -1, 5, 6), domain +
                                            "nax:   argument      [0] = -1\nnax:   first result  [0] = 5\n"
                                            "nax:   second result [0] = 6\n");
    EXPECT_EQ(printed(1, -1, 2, 5, 5), domain +
                                           "nax:   first argument  [0] = -1\nnax:   second argument [0] = 2\n"
                                           "nax:   result          [0] = 5\n");
    EXPECT_EQ(printed(1, -1, 2, 5, 6), domain +
                                           "nax:   first argument  [0] = -1\nnax:   second argument [0] = 2\n"
                                           "nax:   first result    [0] = 5\nnax:   second result   [0] = 6\n");
}

TEST(Reporter, PrintsALineForEachStatus) {
    EXPECT_EQ(printed(0, 1, 1, 1, 1), "");
    EXPECT_EQ(printed(-1, 1, 1, 1, 1), "nax: vdTest: bad argument, index 0\n");
    EXPECT_EQ(printed(-2, 1, 1, 1, 1), "nax: vdTest: not enough memory\n");
    const char* const texts[] = {"domain", "pole", "overflow", "underflow", "unknown error"};
    for (int32_t status = 1; status <= 5; ++status) {
        const std::string text = printed(status, 1, 1, 1, 1);
        EXPECT_NE(text.find(texts[status - 1]), std::string::npos) << text;
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3);
    }
}

// --- the x87 environment

TEST(Reporter, RaisingKeepsTheX87StackAndEndsWithAllExceptionsMasked) {
    on_fresh_thread([] {
        double x = 1;
        const uint16_t precision_unmasked = 0x035F;
        uint16_t before_tag, depth;
        __asm__ volatile("fninit\n\tfldcw %0\n\tfld1\n\tfldpi" : : "m"(precision_unmasked));
        before_tag = x87().tag;
        nax_arq_kernel_dError(ARQ_STATUS_DOMAIN, 0, &x, &x, &x, &x, "vdTest");
        const X87Environment after = x87();
        double pi, one;
        __asm__ volatile("fstpl %0\n\tfstpl %1" : "=m"(pi), "=m"(one));
        depth = static_cast<uint16_t>((x87().status >> 11) & 7);
        __asm__ volatile("fninit");
        EXPECT_EQ(after.tag, before_tag);
        EXPECT_EQ(after.control, 0x037F);
        EXPECT_EQ(after.status & 0x3F, 1);
        EXPECT_EQ(pi, 3.14159265358979323846);
        EXPECT_EQ(one, 1);
        EXPECT_EQ(depth, 0);
    });
}

TEST(Reporter, FlagsOfEarlierReportsStay) {
    on_fresh_thread([] {
        double x = 1;
        clear_x87_flags();
        nax_arq_kernel_dError(ARQ_STATUS_DOMAIN, 0, &x, &x, &x, &x, "vdTest");
        nax_arq_kernel_dError(ARQ_STATUS_OVERFLOW, 0, &x, &x, &x, &x, "vdTest");
        EXPECT_EQ(x87().status & 0x3F, 1 | 8);
    });
}

TEST(ReporterDeathTest, ATrapBitTurnsItsStatusIntoASignal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const uint32_t traps[] = {ARQ_TRAP_INVALID, ARQ_TRAP_DIVBYZERO, ARQ_TRAP_OVERFLOW, ARQ_TRAP_UNDERFLOW};
    for (int32_t status = 1; status <= 4; ++status) {
        const uint32_t trap = traps[status - 1];
        EXPECT_EXIT(report_in_mode(ARQ_ERRMODE_EXCEPT | trap, status), ::testing::KilledBySignal(SIGFPE), "");
        EXPECT_EQ(report_in_mode(ARQ_ERRMODE_EXCEPT | (ARQ_TRAP_MASK & ~trap), status).status, status);
        EXPECT_EQ(report_in_mode(ARQ_ERRMODE_ERRNO | trap, status).error_number, status == 1 ? EDOM : ERANGE);
    }
}

}  // namespace
}  // namespace nax::testing
