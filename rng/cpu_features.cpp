// What the processor offers to the counter-based and the hardware generators, and to products of polynomials.
#include "rng/cpu_features.h"

#include "nax/abi/streams.h"
#include "platform/cpuid.h"
#include "service/service.h"

using namespace nax::platform;

namespace {

bool saves_vector_state() { return (saved_state() & kAvxState) == kAvxState; }

// The tests stand before every call of some generators, and CPUID traps under a hypervisor: each answer is kept, as 1 or -1.
// Threads that come first at once find the same one.
template <class Ask>
[[gnu::noinline]] int learn(int& answer, const Ask& ask) {
    const int known = ask() ? 1 : -1;
    __atomic_store_n(&answer, known, __ATOMIC_RELAXED);
    return known;
}
template <class Ask>
bool kept(int& answer, const Ask& ask) {
    const int known = __atomic_load_n(&answer, __ATOMIC_RELAXED);
    return (known != 0 ? known : learn(answer, ask)) > 0;
}

int aes, rdrand, vector_clmul;

}  // namespace

int nax::rng::vector_aes = 0;

extern "C" {

int __stoCPUisAES(void) {
    return kept(aes, [] { return (cpuid_if_present(1).ecx & bit_AES) != 0; });
}

// The generation tagged qgd has vector AES and its state; of any other processor it is asked. A yes holds for AES too.
int __stoCPUisVAES(void) {
    return kept(nax::rng::vector_aes, [] {
        const bool has_vaes = (cpuid_if_present(7).ecx & bit_VAES) != 0;
        return has_vaes && __stoCPUisAES() != 0 && (nax_serv_cpuisqgd() != 0 || saves_vector_state());
    });
}

int __stoCPUisRDRAND(void) {
    return kept(rdrand, [] { return (cpuid_if_present(1).ecx & bit_RDRND) != 0; });
}

}  // extern "C"

bool nax::rng::has_vector_clmul() {
    return kept(vector_clmul, [] { return (cpuid_if_present(7).ecx & bit_VPCLMULQDQ) != 0 && saves_vector_state(); });
}
