#include "runtime/x87_environment.h"

namespace nax::runtime {

void raise_x87(uint16_t flag, uint16_t trapped) {
    X87Environment stored;
    stored.store();

    X87Environment pending = stored;
    pending.control = static_cast<uint16_t>(pending.control & ~trapped);
    pending.status = static_cast<uint16_t>((pending.status & ~kX87AllExceptions) | flag);
    pending.load();

    stored.control |= kX87AllExceptions;
    stored.status |= flag;
    stored.load();
}

}  // namespace nax::runtime

// Kernels call this on their first rare block, with vector state in use: no vector or mask register may change.
extern "C" [[gnu::target("general-regs-only")]] int32_t nax_arq_kernel_modify_fpucw_mask_exceptions(
    uint16_t* old_word, uint16_t* new_word) {
    uint16_t word;
    __asm__ volatile("fnstcw %0" : "=m"(word));
    if ((word & nax::runtime::kX87AllExceptions) == nax::runtime::kX87AllExceptions) return 0;
    *old_word = word;
    *new_word = word | nax::runtime::kX87AllExceptions;
    __asm__ volatile("fnclex\n\tfldcw %0" : : "m"(*new_word));
    return 1;
}
