// The characteristic polynomials of MT19937 and SFMT19937 as lists of exponents.
#include "nax/abi/streams.h"

#include "rng/generators/twister_polynomials.inc"
