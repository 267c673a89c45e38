// Output of MCG31.
#include "rng/generators/lanes_simd.h"

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

NAX_ENGINE(mcg31m1, Mcg31, 1)
NAX_ENGINE(mcg31m1, Mcg31, 2)
NAX_ENGINE(mcg31m1, Mcg31, 4)
NAX_ENGINE(mcg31m1, Mcg31, 8)
NAX_ENGINE(mcg31m1, Mcg31, 16)
NAX_ENGINE(mcg31m1, Mcg31, 32)
