// Processor facilities that the library asks for beside the exported tests.
#pragma once

#include "nax/abi/streams.h"

namespace nax::rng {

// Carry-less multiplication on vectors wider than 128 bits.
bool has_vector_clmul();

// What __stoCPUisVAES has answered: 0 not asked yet, 1 or -1.
[[gnu::visibility("hidden")]] extern int vector_aes;
inline bool vector_aes_known() { return __atomic_load_n(&vector_aes, __ATOMIC_RELAXED) > 0; }

}  // namespace nax::rng
