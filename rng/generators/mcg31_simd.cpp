// Output of MCG31.
#include "rng/generators/mcg_lanes_simd.h"

using namespace nax::rng;

extern "C" {

int __stodBRngMCG31M1(nax_stream* stream, int n, double* r, double a, double b) {
    return generate_real<Mcg31>(stream, n, DoubleOutput<Mcg31>(a, b), r);
}

int __stosBRngMCG31M1(nax_stream* stream, int n, float* r, float a, float b) {
    return generate_real<Mcg31>(stream, n, SingleOutput<Mcg31>(a, b), r);
}

int __stoiBRngMCG31M1(nax_stream* stream, int n, void* r) {
    return generate_words<Mcg31>(stream, n, static_cast<uint32_t*>(r));
}

}  // extern "C"

NAX_ENGINES(mcg31m1, Mcg31)
