// Clearing memory: the workhorses, and the members by type that choose among them.
#include "nax/primitives.h"
#include "primitives/fill_avx2.h"
#include "primitives/member.h"
#include "primitives/string_instructions.h"

using namespace nax::primitives;
using namespace nax::primitives::avx2;

namespace {

// Short arrays are cleared here: a call more would take as long as the clearing.
[[gnu::always_inline]] inline int zero_member(void* array, int64_t element, int32_t length) {
    if (array == nullptr) return NAX_PRIMITIVES_NULL;
    uint8_t* const p = static_cast<uint8_t*>(array);
    const int64_t bytes = element * length;
    return fill_short_or<1>(p, bytes, _mm_setzero_si128(), NAX_PRIMITIVES_SIZE, [=] {
        return bytes > kCachedFillLimit ? nax_dft_avx2_ownsZero_8u(p, bytes) : nax_dft_avx2_ownsZero_8u_E9(p, bytes);
    });
}

}  // namespace

extern "C" {

int nax_dft_avx2_ownsZero_8u(uint8_t* array, int64_t bytes) {
    return fill_large<1>(array, bytes, _mm256_setzero_si256());
}

int nax_dft_avx2_ownsZero_8u_E9(uint8_t* array, int64_t bytes) {
    return fill_cached<1>(array, bytes, _mm256_setzero_si256());
}

int nax_dft_avx2_ownsZero_8u_repE9(uint8_t* array, int64_t bytes) {
    const UpwardDirection upward;
    const auto count = static_cast<uint64_t>(bytes);
    if (aligned_to(array, 8)) {
        string_store_zero<8>(array, count / 8);
        string_store_zero<1>(array, count % 8);
    } else {
        string_store_zero<1>(array, count);
    }
    return 0;
}

#define ZERO_MEMBER(suffix, type, parts)                                               \
    NAX_SHORT_MEMBER int nax_dft_avx2_opasZero_##suffix(type* array, int32_t length) { \
        return zero_member(array, sizeof(type) * parts, length);                       \
    }
NAX_PRIMITIVE_TYPES(ZERO_MEMBER)
#undef ZERO_MEMBER

}  // extern "C"
