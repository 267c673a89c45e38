#include <cpuid.h>

#include "nax/processor.h"

namespace {

// Nothing passes CPUID in either direction.
void fence() {
    unsigned eax, ebx, ecx, edx;
    __cpuid(0, eax, ebx, ecx, edx);
}

uint64_t combined(uint32_t low, uint32_t high) { return uint64_t{high} << 32 | low; }

uint64_t rdtsc() {
    uint32_t low, high;
    __asm__ volatile("rdtsc" : "=a"(low), "=d"(high) : : "memory");
    return combined(low, high);
}

uint64_t rdtscp() {
    uint32_t low, high, processor;
    __asm__ volatile("rdtscp" : "=a"(low), "=d"(high), "=c"(processor) : : "memory");
    return combined(low, high);
}

}  // namespace

extern "C" {

uint64_t nax_dft_opa_get_kestrel_counter() { return rdtsc(); }

uint64_t nax_dft_opaStartTsc() {
    fence();
    return rdtsc();
}
uint64_t nax_dft_opaStopTsc() {
    const uint64_t now = rdtsc();
    fence();
    return now;
}
uint64_t nax_dft_opaStartTscp() {
    fence();
    return rdtscp();
}
uint64_t nax_dft_opaStopTscp() {
    const uint64_t now = rdtscp();
    fence();
    return now;
}

}  // extern "C"
