// Powers by square and multiply from the exponent's low bit.
#include "rng/generators/modular_power.h"

#include "nax/abi/streams.h"

using namespace nax::rng;

extern "C" {

uint32_t __stoiPowMod(uint32_t a, uint64_t n, uint32_t m) {
    uint32_t power = 1;
    for (uint32_t square = a; n != 0; n >>= 1) {
        if (n & 1) power = multiply_mod(power, square, m);
        square = multiply_mod(square, square, m);
    }
    return power;
}

uint32_t __stoiPowMod2P31M1(uint32_t a, uint64_t n) {
    uint32_t power = 1;
    for (uint32_t square = a; n != 0; n >>= 1) {
        if (n & 1) power = multiply_mod_mersenne31(power, square);
        square = multiply_mod_mersenne31(square, square);
    }
    return power;
}

// The squares need no mask: bits from 59 up never come down.
uint64_t __stoiPowMod2P59(uint64_t a, uint64_t n) {
    uint64_t power = 1;
    for (uint64_t square = a; n != 0; n >>= 1) {
        if (n & 1) power = multiply_mod_2p59(power, square);
        square *= square;
    }
    return power;
}

}  // extern "C"
