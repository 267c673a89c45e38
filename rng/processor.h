// Processor facilities that the library asks for beside the exported tests.
#pragma once

namespace nax::rng {

// Carry-less multiplication on vectors wider than 128 bits.
bool has_vector_clmul();

}  // namespace nax::rng
