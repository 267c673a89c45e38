// The floating-point control words during a kernel call. Everything here is inlined, so that each kernel keeps to its
// own instruction set.
#pragma once

#include <cstdint>

#include "platform/control_words.h"
#include "vmath/frame/runtime_calls.h"

namespace nax::vmath {

// Fields of the mode word that kernels read.
inline constexpr uint32_t kErrorModeField = 0xFF00, kErrorModeNone = 0x2000;
inline constexpr uint32_t kDenormalField = 0x3C0000, kDenormalsAreZero = 0x280000;

// Puts MXCSR in order for a call: round to nearest, all exceptions masked, denormals as the mode word says. At the end
// the caller's control bits come back, with the exception flags raised in between added. Where vector code can't
// suppress its exceptions, only those flags count that scalar code raises between enter_scalar and leave_scalar.
template <bool kSuppressed>
class MxcsrScope {
public:
    [[gnu::always_inline]] explicit MxcsrScope(uint32_t mode) {
        const uint32_t wanted = (mode & kDenormalField) == kDenormalsAreZero ? 0x9FC0 : 0x1F80;
        saved_ = platform::read_mxcsr();
        changed_ = (saved_ & 0xFFC0) != wanted;
        if constexpr (!kSuppressed) kept_ = (saved_ & 0xFFFF003F) | wanted;
        if (changed_) [[unlikely]] platform::write_mxcsr((saved_ & 0xFFFF003F) | wanted);
    }
    [[gnu::always_inline]] ~MxcsrScope() {
        if constexpr (kSuppressed) {
            if (changed_) [[unlikely]] platform::write_mxcsr(saved_ | (platform::read_mxcsr() & 0x3F));
        } else {
            platform::write_mxcsr(saved_ | (kept_ & 0x3F));
        }
    }
    MxcsrScope(const MxcsrScope&) = delete;
    MxcsrScope& operator=(const MxcsrScope&) = delete;

    [[gnu::always_inline]] void enter_scalar() {
        if constexpr (!kSuppressed) platform::write_mxcsr(kept_);
    }
    [[gnu::always_inline]] void leave_scalar() {
        if constexpr (!kSuppressed) kept_ = platform::read_mxcsr();
    }

private:
    uint32_t saved_;
    uint32_t kept_;  // control word of the call with the flags that count; unused where exceptions are suppressed
    bool changed_;
};

// Masks the x87 exceptions from the first rare lanes of a call to its end.
class X87Scope {
public:
    [[gnu::always_inline]] X87Scope() {}
    [[gnu::always_inline]] ~X87Scope() {
        if (changed_) [[unlikely]] {
            platform::write_x87_control(saved_);
        }
    }
    X87Scope(const X87Scope&) = delete;
    X87Scope& operator=(const X87Scope&) = delete;

    void mask_exceptions() {
        if (done_) return;
        done_ = true;
        changed_ = nax_arq_kernel_modify_fpucw_mask_exceptions(&saved_, &built_) != 0;
    }

private:
    uint16_t saved_, built_;
    bool done_ = false, changed_ = false;
};

}  // namespace nax::vmath
