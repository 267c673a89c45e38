// The processor's own short reciprocal, for kernels over portable lanes.
#include <immintrin.h>

namespace nax::testing {

__m256 processor_reciprocal(__m256 x) { return _mm256_rcp14_ps(x); }

}  // namespace nax::testing
