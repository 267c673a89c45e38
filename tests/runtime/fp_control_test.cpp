// Control words: each test leaves the thread's words as it found them.
#include "platform/control_words.h"

#include <gtest/gtest.h>

#include "nax/processor.h"

namespace nax::testing {
namespace {

using namespace nax::platform;

class ControlWords : public ::testing::Test {
protected:
    ControlWords() : mxcsr_(read_mxcsr()), x87_(read_x87_control()) {
        write_mxcsr(0x1F80);
        clear_x87_exceptions();
        write_x87_control(0x037F);
    }
    ~ControlWords() override {
        clear_x87_exceptions();
        write_x87_control(x87_);
        write_mxcsr(mxcsr_);
    }

private:
    uint32_t mxcsr_, x87_;
};

void set_x87_zero_divide_flag() { __asm__ volatile("fldz\n\tfld1\n\tfdivp\n\tfstp %%st(0)" : : : "st"); }

TEST_F(ControlWords, MxcsrFunctionsReturnTheOldWordAndChangeTheirBits) {
    EXPECT_EQ(nax_dft_ps_set_ssx(0xFFFF, 0x8040), 0x1F80u);
    EXPECT_EQ(nax_dft_ps_get_ssx(), 0x9FC0u);
    EXPECT_EQ(nax_dft_opa_set_rc_ssx(0x4000 | 0x0F), 0x9FC0u);
    EXPECT_EQ(nax_dft_ps_get_ssx(), 0xDFC0u);
    EXPECT_EQ(nax_dft_opa_set_rc_ssx(0x4000), 0xDFC0u);
    EXPECT_EQ(nax_dft_opa_clear_ssx(), 0xDFC0u);
    EXPECT_EQ(nax_dft_ps_get_ssx(), 0x1F80u);
    nax_dft_opa_set_cw_ssx(0x3F80);
    EXPECT_EQ(nax_dft_ps_get_ssx(), 0x3F80u);
    EXPECT_EQ(nax_dft_opa_tst_daz_ssx(), 1);
}

TEST_F(ControlWords, X87FunctionsReturnTheOldWordAndChangeTheirBits) {
    EXPECT_EQ(nax_dft_ps_set_cw_fpu(0x0C00, 0x0C00), 0x037Fu);
    EXPECT_EQ(nax_dft_ps_get_cw_fpu(), 0x0F7Fu);
    EXPECT_EQ(nax_dft_opa_set_rcpc_fpu(0x0200, 0x0F00), 0x0F7Fu);
    EXPECT_EQ(nax_dft_ps_get_cw_fpu(), 0x027Fu);
    EXPECT_EQ(nax_dft_opa_set_rcpc_fpu(0x0200, 0x0F00), 0x027Fu);
    nax_dft_opa_set_cw_fpu(0x037F);
    EXPECT_EQ(nax_dft_ps_get_cw_fpu(), 0x037Fu);
    set_x87_zero_divide_flag();
    EXPECT_EQ(nax_dft_ps_get_sw_fpu() & 0x3F, 4u);
    EXPECT_EQ(nax_dft_ps_clear_fpu() & 0x3F, 4u);
    EXPECT_EQ(nax_dft_ps_get_sw_fpu() & 0x3F, 0u);
}

TEST_F(ControlWords, AbstractControlIsMappedBitByBit) {
    const struct {
        uint32_t abstract, mask, x87, mxcsr;
    } rows[] = {
        {NAX_CW87_INVALID, NAX_CW87_EXCEPTIONS, 0x0341, 0x0080},
        {NAX_CW87_DENORMAL, NAX_CW87_EXCEPTIONS, 0x0342, 0x0100},
        {NAX_CW87_ZERODIVIDE, NAX_CW87_EXCEPTIONS, 0x0344, 0x0200},
        {NAX_CW87_OVERFLOW, NAX_CW87_EXCEPTIONS, 0x0348, 0x0400},
        {NAX_CW87_UNDERFLOW, NAX_CW87_EXCEPTIONS, 0x0350, 0x0800},
        {NAX_CW87_INEXACT, NAX_CW87_EXCEPTIONS, 0x0360, 0x1000},
        {0x100, NAX_CW87_ROUNDING, 0x077F, 0x3F80},
        {0x200, NAX_CW87_ROUNDING, 0x0B7F, 0x5F80},
        {0x300, NAX_CW87_ROUNDING, 0x0F7F, 0x7F80},
        {0x10000, NAX_CW87_PRECISION, 0x027F, 0x1F80},
        {0x20000, NAX_CW87_PRECISION, 0x007F, 0x1F80},
        {NAX_CW87_INFINITY, NAX_CW87_INFINITY, 0x137F, 0x1F80},
        {0x1000000, NAX_CW87_DENORMALS, 0x037F, 0x9FC0},
        {0x2000000, NAX_CW87_DENORMALS, 0x037F, 0x1FC0},
        {0x3000000, NAX_CW87_DENORMALS, 0x037F, 0x9F80},
    };
    for (const auto& row : rows) {
        write_x87_control(0x037F);
        write_mxcsr(0x1F80);
        const uint32_t word = nax_dft_opa_control87(row.abstract, row.mask);
        EXPECT_EQ(word & row.mask, row.abstract);
        EXPECT_EQ(word & ~row.mask, NAX_CW87_EXCEPTIONS & ~row.mask);
        EXPECT_EQ(read_x87_control(), row.x87) << std::hex << row.abstract;
        EXPECT_EQ(read_mxcsr(), row.mxcsr) << std::hex << row.abstract;
        EXPECT_EQ(nax_dft_opa_control87(0, 0), word);
    }
}

TEST_F(ControlWords, UnitsThatDifferAreShownAsAmbiguousAndKeepTheirState) {
    write_mxcsr(0x3F80);
    EXPECT_EQ(nax_dft_opa_control87(0, 0), NAX_CW87_EXCEPTIONS | NAX_CW87_AMBIGUOUS);
    nax_dft_opa_control87(0x10000, NAX_CW87_PRECISION);
    EXPECT_EQ(read_mxcsr(), 0x3F80u);
    EXPECT_EQ(read_x87_control(), 0x027Fu);
}

TEST_F(ControlWords, AbstractStatusMergesBothUnits) {
    set_x87_zero_divide_flag();
    write_mxcsr(0x1F80 | 0x22);  // denormal and inexact
    const uint32_t expected = NAX_CW87_ZERODIVIDE | NAX_CW87_DENORMAL | NAX_CW87_INEXACT;
    EXPECT_EQ(nax_dft_opa_status87(), expected);
    EXPECT_EQ(nax_dft_opa_clear87(), expected);
    EXPECT_EQ(nax_dft_opa_status87(), 0u);
    EXPECT_EQ(read_mxcsr(), 0x1F80u);
}

TEST_F(ControlWords, KernelsMaskExceptionsOnlyWhereOneIsUnmasked) {
    uint16_t old_word = 1, new_word = 2;
    EXPECT_EQ(nax_arq_kernel_modify_fpucw_mask_exceptions(&old_word, &new_word), 0);
    EXPECT_EQ(old_word, 1);
    EXPECT_EQ(new_word, 2);
#ifndef __clang__  // whose strict floating-point model waits for x87 exceptions after each access to the unit
    set_x87_zero_divide_flag();
#endif
    write_x87_control(0x0E7B);  // unmasks the flag that is set: the next instruction that looks would trap
    EXPECT_EQ(nax_arq_kernel_modify_fpucw_mask_exceptions(&old_word, &new_word), 1);
    EXPECT_EQ(old_word, 0x0E7B);
    EXPECT_EQ(new_word, 0x0E7F);
    EXPECT_EQ(read_x87_control(), 0x0E7Fu);
    EXPECT_EQ(read_x87_status() & 0x3F, 0u);
}

}  // namespace
}  // namespace nax::testing
