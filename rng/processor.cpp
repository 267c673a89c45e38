// What the processor offers to the counter-based and the hardware generators.
#include <cpuid.h>

#include "nax/streams.h"
#include "service/service.h"

namespace {

struct Leaf {
    unsigned eax, ebx, ecx, edx;
};

Leaf cpuid_leaf(unsigned number) {
    Leaf leaf{};
    __get_cpuid_count(number, 0, &leaf.eax, &leaf.ebx, &leaf.ecx, &leaf.edx);
    return leaf;
}

// The system saves the upper halves of vector registers.
bool saves_vector_state() {
    if ((cpuid_leaf(1).ecx & bit_OSXSAVE) == 0) return false;
    unsigned low = 0, high = 0;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return (low & 6) == 6;
}

}  // namespace

extern "C" {

int __stoCPUisAES(void) { return (cpuid_leaf(1).ecx & bit_AES) != 0; }

// The generation tagged qgd has vector AES and its state; of any other processor it is asked.
int __stoCPUisVAES(void) {
    const bool has_vaes = (cpuid_leaf(7).ecx & bit_VAES) != 0;
    return has_vaes && (nax_serv_cpuisqgd() != 0 || saves_vector_state());
}

int __stoCPUisRDRAND(void) { return (cpuid_leaf(1).ecx & bit_RDRND) != 0; }

}  // extern "C"
