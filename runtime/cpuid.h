// CPUID and what is said about the maker of the processor.
#pragma once

#include <cpuid.h>

#include <cstdint>

namespace nax::runtime {

struct Registers {
    uint32_t eax, ebx, ecx, edx;
};

inline Registers cpuid(uint32_t leaf, uint32_t sub_leaf) {
    Registers r;
    __cpuid_count(leaf, sub_leaf, r.eax, r.ebx, r.ecx, r.edx);
    return r;
}

// Identification words of leaf 0 (processor maker's manual, CPUID leaf 0).
inline bool made_by_vendor(const Registers& leaf0) {
    return leaf0.ebx == 0x756e6547 && leaf0.edx == 0x49656e69 && leaf0.ecx == 0x6c65746e;
}

}  // namespace nax::runtime
