// Which of the generations that matter to the library the processor belongs to, by its features (the processor makers'
// manuals, CPUID leaf 7 and XCR0), never by family and model numbers: these say nothing about the next processor.
#include <cpuid.h>

#include "service/service.h"

namespace {

enum Generation { kUnknown, kOther, kFirstAvx512, kVectorAes };

constexpr unsigned kOsxsave = 1u << 27;                       // leaf 1 ECX
constexpr unsigned kAvx512 = 1u << 16 | 1u << 17 |            // leaf 7 EBX: F, DQ,
                             1u << 28 | 1u << 30 | 1u << 31;  // CD, BW, VL
constexpr unsigned kVectorCrypto = 1u << 9 | 1u << 10;        // leaf 7 ECX: VAES, VPCLMULQDQ
constexpr unsigned kSavedState = 0xE6;                        // XCR0: SSE, AVX, mask registers, both halves of ZMM

unsigned saved_state() {
    unsigned low, high;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

Generation identify() {
    unsigned eax, ebx, ecx, edx;
    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx) || (ecx & kOsxsave) == 0) return kOther;
    if ((saved_state() & kSavedState) != kSavedState) return kOther;
    if (!__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) || (ebx & kAvx512) != kAvx512) return kOther;
    return (ecx & kVectorCrypto) == kVectorCrypto ? kVectorAes : kFirstAvx512;
}

// CPUID is slow under a hypervisor, so the answer is kept. Threads that come first at once find the same one.
Generation generation() {
    static int known = kUnknown;
    int found = __atomic_load_n(&known, __ATOMIC_RELAXED);
    if (found == kUnknown) {
        found = identify();
        __atomic_store_n(&known, found, __ATOMIC_RELAXED);
    }
    return static_cast<Generation>(found);
}

}  // namespace

extern "C" int nax_serv_cpuisqgd(void) { return generation() == kVectorAes; }
extern "C" int nax_serv_cpuisqfb(void) { return generation() == kFirstAvx512; }
