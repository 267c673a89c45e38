// Output of MCG59.
#include "rng/generators/mcg_lanes_simd.h"

using namespace nax::rng;

extern "C" {

int __stodBRngMCG59(nax_stream* stream, int n, double* r, double a, double b) {
    return generate_real<Mcg59>(stream, n, DoubleOutput<Mcg59>(a, b), r);
}

int __stosBRngMCG59(nax_stream* stream, int n, float* r, float a, float b) {
    return generate_real<Mcg59>(stream, n, SingleOutput<Mcg59>(a, b), r);
}

int __stoiBRngMCG59(nax_stream* stream, int n, void* r) {
    return generate_words<Mcg59>(stream, n, static_cast<uint64_t*>(r));
}

}  // extern "C"

NAX_ENGINES(mcg59, Mcg59)
