// CPUID, XGETBV and what is said about the maker of the processor (the processor makers' manuals, CPUID and XCR0).
#pragma once

#include <cpuid.h>

#include <cstdint>

namespace nax::platform {

struct Registers {
    uint32_t eax, ebx, ecx, edx;
};

inline Registers cpuid(uint32_t leaf, uint32_t sub_leaf) {
    Registers r;
    __cpuid_count(leaf, sub_leaf, r.eax, r.ebx, r.ecx, r.edx);
    return r;
}
// All zero for a leaf that the processor doesn't have.
inline Registers cpuid_if_present(uint32_t leaf) {
    return leaf <= cpuid(leaf & 0x80000000, 0).eax ? cpuid(leaf, 0) : Registers{};
}

// XCR0: parts of the register state that the system saves. Zero where it doesn't let programs ask.
inline uint32_t saved_state() {
    constexpr uint32_t osxsave = 1u << 27;  // leaf 1 ECX
    if ((cpuid(1, 0).ecx & osxsave) == 0) return 0;
    uint32_t low, high;
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}
inline constexpr uint32_t kAvxState = 0x6;      // upper halves of YMM
inline constexpr uint32_t kAvx512State = 0xE6;  // and mask registers, both halves of ZMM

// Identification words of leaf 0.
inline bool made_by_vendor(const Registers& leaf0) {
    return leaf0.ebx == 0x756e6547 && leaf0.edx == 0x49656e69 && leaf0.ecx == 0x6c65746e;
}

}  // namespace nax::platform
