// States of 624 words as rings, for the polynomial skip.
#pragma once

#include <cstdint>

namespace nax::rng {

// to[(to_start + k) mod 624] ^= from[(from_start + k) mod 624] for all k.
void xor_ring_624(uint32_t* to, int to_start, const uint32_t* from, int from_start);

// to[(to_start + k) mod 624] = from[(from_start + k) mod 624] for all k.
void turn_ring_624(uint32_t* to, int to_start, const uint32_t* from, int from_start);

}  // namespace nax::rng
