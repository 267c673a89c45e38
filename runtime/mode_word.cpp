#include "runtime/mode_word.h"

namespace nax::runtime {
namespace {

// The fields that a caller may change, in the order in which they are.
constexpr uint32_t kSettableFields[] = {ARQ_ACCURACY_MASK, ARQ_ERRMODE_MASK, ARQ_DENORMALS_MASK, ARQ_TRAP_MASK,
                                        ARQ_CARRIED_MASK};

}  // namespace

[[gnu::cold, gnu::noinline]] uint32_t make_first_mode() {
    const int64_t wanted = nax_arq_kernel_ReadEnvVarMode();
    uint32_t word = ARQ_MODE_DEFAULT;
    if (wanted != -1) {
        word = static_cast<uint32_t>(wanted);
        if ((word & ARQ_ACCURACY_MASK) == 0) word |= ARQ_HA;
        if ((word & ARQ_ERRMODE_MASK) == 0) word |= ARQ_ERRMODE_DEFAULT;
    }
    mode_cell() = word;
    return word;
}

uint32_t set_mode(uint32_t mode) {
    const uint32_t previous = get_mode();
    uint32_t word = previous;
    for (const uint32_t field : kSettableFields)
        if ((mode & field) != 0) word = (word & ~field) | (mode & field);
    mode_cell() = word;
    return previous;
}

static int32_t slot_of(uint32_t mode) { return static_cast<int32_t>(mode & ARQ_ACCURACY_MASK) - 1; }

}  // namespace nax::runtime

using namespace nax::runtime;

extern "C" {

uint32_t _arqSetMode(uint32_t mode) { return set_mode(mode); }
uint32_t nax_arq_kernel_SetMode(uint32_t mode) { return set_mode(mode); }

uint32_t _arqGetMode() { return get_mode(); }
uint32_t nax_arq_kernel_GetMode() { return get_mode(); }

int32_t nax_arq_kernel_GetTTableIndex() { return slot_of(get_mode()); }
int32_t nax_arq_kernel_GetTTableIndexM(int64_t, int64_t mode) { return slot_of(static_cast<uint32_t>(mode)); }

}  // extern "C"
