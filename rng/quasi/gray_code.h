// The order in which points are stepped: point c is the exclusive or of the direction numbers at the bits of the reflected
// Gray code of c, so that neighbours differ in one direction number (I. A. Antonov, V. M. Saleev, USSR Computational
// Mathematics and Mathematical Physics 19 (1979), 252-256).
#pragma once

#include <bit>
#include <cstdint>

namespace nax::rng {

inline constexpr uint32_t gray_code(uint32_t c) { return c ^ c >> 1; }

// The bit in which the codes of c and c + 1 differ: the lowest zero bit of c.
inline int gray_step(uint32_t c) { return std::countr_one(c); }

}  // namespace nax::rng
