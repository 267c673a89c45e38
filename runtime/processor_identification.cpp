// Features of the processor, from CPUID leaf 1 and the extended leaves (the processor makers' manuals, CPUID).
#include <cstdint>
#include <cstring>

#include "nax/processor.h"
#include "platform/cpuid.h"

namespace nax::runtime {
namespace {

using namespace platform;

constexpr uint32_t kExtendedLeaves = 0x80000000;

bool bit(uint32_t word, int position) { return ((word >> position) & 1) != 0; }
uint32_t bits(uint32_t word, int first, int last) { return (word >> first) & ((2u << (last - first)) - 1); }

Registers features() { return cpuid(1, 0); }

bool several_logical_processors(const Registers& leaf1) { return bit(leaf1.edx, 28) && bits(leaf1.ebx, 16, 23) > 1; }

}  // namespace
}  // namespace nax::runtime

using namespace nax::runtime;

extern "C" {

void nax_dft_ownGetReg(uint32_t registers[4], uint32_t leaf, uint32_t sub_leaf) {
    const Registers found = cpuid(leaf, sub_leaf);
    std::memcpy(registers, &found, sizeof found);
}
void nax_dft_opa_get_cpuid(uint32_t registers[4], uint32_t leaf, uint32_t sub_leaf) {
    nax_dft_ownGetReg(registers, leaf, sub_leaf);
}

uint32_t nax_dft_opa_max_cpuid_input() { return cpuid(0, 0).eax; }
int nax_dft_opa_has_cpuid() { return 1; }
int nax_dft_opa_has_rdtsc() { return bit(features().edx, 4); }
int nax_dft_opa_is_mmx_extension() { return bit(features().edx, 23); }
int nax_dft_opa_is_ssx_extension() { return bit(features().edx, 25); }
int nax_dft_opa_is_sse2_extension() { return bit(features().edx, 26); }
int nax_dft_opa_is_htt_extension() { return several_logical_processors(features()); }
int nax_dft_opa_is_sse3_extension() { return bit(features().ecx, 0); }
int nax_dft_opa_is_ssse3_extension() { return bit(features().ecx, 9); }
int nax_dft_opa_is_sse41_extension() { return bit(features().ecx, 19); }
int nax_dft_opa_is_sse42_extension() { return bit(features().ecx, 20); }
int nax_dft_opa_is_movbe() { return bit(features().ecx, 22); }

int nax_dft_opa_is_wide64_extension() {
    if (cpuid(kExtendedLeaves, 0).eax < kExtendedLeaves + 1) return 0;
    return bit(cpuid(kExtendedLeaves + 1, 0).edx, 29);
}

int nax_dft_opa_is_avx_extension() {
    constexpr uint32_t kVectorState = 0x6;  // SSE and AVX registers
    const uint32_t ecx = features().ecx;
    return bit(ecx, 27) && bit(ecx, 28) && (saved_state() & kVectorState) == kVectorState;
}

int nax_dft_opa_is_avx512_extension() {
    constexpr uint32_t kAvx512State = 0xE0;  // mask registers, upper halves, upper sixteen registers
    return bit(features().ecx, 27) && (saved_state() & kAvx512State) == kAvx512State;
}

int nax_dft_opa_get_cores_on_die() {
    if (nax_dft_opa_max_cpuid_input() < 4) return 1;
    return static_cast<int>(bits(cpuid(4, 0).eax, 26, 31) + 1);
}

int nax_dft_opa_is_VendorOrvex() { return made_by_vendor(cpuid(0, 0)); }

int nax_dft_opa_get_kestrel_ident(nax_processor_ident* ident) {
    if (ident == nullptr) return -8;
    *ident = {};
    const Registers leaf1 = features();
    ident->family = bits(leaf1.eax, 8, 11);
    ident->stepping = bits(leaf1.eax, 0, 3);
    ident->model = bits(leaf1.eax, 4, 7);
    ident->type = bits(leaf1.eax, 11, 12);
    ident->extended_model = bits(leaf1.eax, 16, 19);
    ident->extended_family = bits(leaf1.eax, 20, 27);
    ident->features_edx = leaf1.edx;
    ident->mmx_extension = bit(leaf1.edx, 23);
    ident->ssx_extension = bit(leaf1.edx, 25);
    ident->sse2_extension = bit(leaf1.edx, 26);
    ident->htt_extension = several_logical_processors(leaf1);
    ident->sse3_extension = bit(leaf1.ecx, 0);
    ident->ssse3_extension = bit(leaf1.ecx, 9);
    ident->sse41_extension = bit(leaf1.ecx, 19);
    ident->sse42_extension = bit(leaf1.ecx, 20);
    ident->movbe = bit(leaf1.ecx, 22);
    ident->osxsave = bit(leaf1.ecx, 27);
    ident->avx_extension = bit(leaf1.ecx, 28);
    ident->max_extended_leaf = cpuid(kExtendedLeaves, 0).eax;
    constexpr uint32_t kept = sizeof ident->extended / sizeof ident->extended[0];
    for (uint32_t i = 0; i < kept && kExtendedLeaves + i <= ident->max_extended_leaf; ++i)
        nax_dft_ownGetReg(ident->extended[i], kExtendedLeaves + i, 0);
    return 0;
}

}  // extern "C"
