#include "platform/time_stamp.h"

#include "nax/processor.h"
#include "platform/cpuid.h"

using namespace nax::platform;

namespace {

// Nothing passes CPUID in either direction.
void fence() { cpuid(0, 0); }

}  // namespace

extern "C" {

uint64_t nax_dft_opa_get_kestrel_counter() { return time_stamp(); }

uint64_t nax_dft_opaStartTsc() {
    fence();
    return time_stamp();
}
uint64_t nax_dft_opaStopTsc() {
    const uint64_t now = time_stamp();
    fence();
    return now;
}
uint64_t nax_dft_opaStartTscp() {
    fence();
    return ordered_time_stamp();
}
uint64_t nax_dft_opaStopTscp() {
    const uint64_t now = ordered_time_stamp();
    fence();
    return now;
}

}  // extern "C"
