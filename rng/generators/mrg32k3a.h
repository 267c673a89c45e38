// State and constants of MRG32K3A.
#pragma once

#include "rng/stream.h"

namespace nax::rng {

struct Mrg32k3aState {
    uint32_t x[3];       // last three of each component, oldest first
    uint32_t y[3];
};
static_assert(kStreamStateSize<Mrg32k3aState> == 40);

// A component: v(n) = middle v(n-2) + newest v(n-1) - oldest v(n-3) mod 2^32 - defect.
struct MrgComponent {
    uint32_t modulus;
    uint32_t defect;         // 2^32 = defect modulo the modulus
    uint32_t newest;         // multiplier of v(n-1)
    uint32_t middle;         // of v(n-2)
    uint32_t oldest;         // of -v(n-3)

    // The recurrence's coefficients, of the newest term first.
    constexpr uint32_t row(int term) const { return term == 0 ? newest : term == 1 ? middle : modulus - oldest; }
};

inline constexpr MrgComponent kMrgX = {4294967087, 209, 0, 1403580, 810728};
inline constexpr MrgComponent kMrgY = {4294944443, 22853, 527612, 0, 1370589};

// Matrix k of the skip table is A^(2^k); bits of a skip count from here on have none.
inline constexpr int kMrgMatrices = 193;

// Three words each of the jump by 19: v(n+19) = high v(n+2) + mid v(n+1) + low v(n), signs as noted, with an offset that is
// a multiple of the modulus and keeps the sum non-negative. One constant to a full vector.
struct alignas(64) Mrg32k3aVectors {
    uint64_t x_high[8], x_mid[8], x_low[8], x_offset[8];     // + + -
    uint64_t y_high[8], y_mid[8], y_low[8], y_offset[8];     // + - -
};

}  // namespace nax::rng

extern "C" {
extern const nax::rng::Mrg32k3aVectors _sto_imrg32k3a_data;
extern const nax::rng::Mrg32k3aVectors _sto_dmrg32k3a_data;
extern const nax::rng::Mrg32k3aVectors _sto_smrg32k3a_data;
}
