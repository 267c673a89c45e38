// Processor facilities that the library asks for beside the exported tests.
#pragma once

#include "nax/streams.h"

namespace nax::rng {

// Carry-less multiplication on vectors wider than 128 bits.
bool has_vector_clmul();

// What __stoCPUisVAES answers, without a call once it is known.
extern int vector_aes;  // 0: not asked yet, 1 or -1
inline bool has_vector_aes() {
    const int known = __atomic_load_n(&vector_aes, __ATOMIC_RELAXED);
    return known != 0 ? known > 0 : __stoCPUisVAES() != 0;
}

}  // namespace nax::rng
