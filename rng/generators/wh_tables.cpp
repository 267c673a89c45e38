// Parameters of the 273 WH generators: multipliers, moduli, and the moduli's reciprocals rounded to double.
#include "rng/registry.h"

using nax::rng::kWhRows;

extern "C" {

constinit const uint8_t _sto_WH_A[kWhRows][4] = {
#define WH_ROW(a1, a2, a3, a4, m1, m2, m3, m4) {a1, a2, a3, a4},
#include "rng/generators/wh273.inc"
#undef WH_ROW
};

constinit const uint32_t _sto_WH_M[kWhRows][4] = {
#define WH_ROW(a1, a2, a3, a4, m1, m2, m3, m4) {m1, m2, m3, m4},
#include "rng/generators/wh273.inc"
#undef WH_ROW
};

constinit const double _stodWH_IM_Tab[kWhRows][4] = {
#define WH_ROW(a1, a2, a3, a4, m1, m2, m3, m4) {1.0 / m1, 1.0 / m2, 1.0 / m3, 1.0 / m4},
#include "rng/generators/wh273.inc"
#undef WH_ROW
};

}  // extern "C"
