// Which of the generations that matter to the library the processor belongs to, by its features (the processor makers'
// manuals, CPUID leaf 7 and XCR0), never by family and model numbers: these say nothing about the next processor.
#include "platform/cpuid.h"
#include "service/service.h"

using namespace nax::platform;

namespace {

enum Generation { kUnknown, kOther, kFirstAvx512, kVectorAes };

constexpr unsigned kAvx512 = 1u << 16 | 1u << 17 |            // leaf 7 EBX: F, DQ,
                             1u << 28 | 1u << 30 | 1u << 31;  // CD, BW, VL
constexpr unsigned kVectorCrypto = 1u << 9 | 1u << 10;        // leaf 7 ECX: VAES, VPCLMULQDQ

Generation identify() {
    if ((saved_state() & kAvx512State) != kAvx512State) return kOther;
    const Registers leaf7 = cpuid_if_present(7);
    if ((leaf7.ebx & kAvx512) != kAvx512) return kOther;
    return (leaf7.ecx & kVectorCrypto) == kVectorCrypto ? kVectorAes : kFirstAvx512;
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
