// Fills with a value: the workhorses by width, and the members by type that choose among them.
#include <bit>

#include "nax/primitives.h"
#include "primitives/fill_avx2.h"
#include "primitives/member.h"

using namespace nax::primitives;
using namespace nax::primitives::avx2;

namespace {

template <class T>
uint8_t* bytes_of(T* array) {
    return reinterpret_cast<uint8_t*>(array);
}

// Two parts of a complex value as one integer, the real part in the low half, where memory begins.
uint32_t joined(uint16_t real, uint16_t imag) { return uint32_t{imag} << 16 | real; }
uint64_t joined(uint32_t real, uint32_t imag) { return uint64_t{imag} << 32 | real; }

// Half a row of 32 bytes. Functions that aren't inlined take the halves: GCC leaves the upper halves of the registers
// in use at the end of one that takes a whole row, which slows down SSE code of the caller by a hundred cycles and
// more.
__m128i repeated(uint8_t bits) { return _mm_set1_epi8(static_cast<char>(bits)); }
__m128i repeated(uint16_t bits) { return _mm_set1_epi16(static_cast<short>(bits)); }
__m128i repeated(uint32_t bits) { return _mm_set1_epi32(static_cast<int>(bits)); }
__m128i repeated(uint64_t bits) { return _mm_set1_epi64x(static_cast<long long>(bits)); }
__m128i repeated(uint64_t real, uint64_t imag) {
    return _mm_set_epi64x(static_cast<long long>(imag), static_cast<long long>(real));
}

// The whole of a workhorse, apart from its members. The value comes in a vector register, where members of
// floating-point type have it: the way through a general register and back shows up to some kilobytes.
template <int Width>
[[gnu::noinline]] int fill(uint8_t* p, int64_t bytes, __m128i half_row) {
    return fill_large<Width>(p, bytes, _mm256_broadcastsi128_si256(half_row));
}

// An array of pairs that starts in the middle of a 16-byte row gets its first and last half element apart; what is
// between is a fill of rows with the halves exchanged.
template <>
[[gnu::noinline]] int fill<16>(uint8_t* p, int64_t bytes, __m128i pair) {
    if (!aligned_to(p, 8) || aligned_to(p, 16)) return fill_large<16>(p, bytes, _mm256_broadcastsi128_si256(pair));
    const __m128i exchanged = _mm_shuffle_epi32(pair, 0x4E);
    std::memcpy(p, &pair, 8);
    std::memcpy(p + bytes - 8, &exchanged, 8);
    return fill_large<16>(p + 8, bytes - 16, _mm256_broadcastsi128_si256(exchanged));
}

// Members fill short arrays themselves: a call more would take as long as the fill.
template <int Width>
[[gnu::always_inline]] inline int set(__m128i half_row, void* array, int32_t length) {
    if (array == nullptr) return NAX_PRIMITIVES_NULL;
    const auto p = static_cast<uint8_t*>(array);
    const int64_t bytes = int64_t{Width} * length;
    return fill_short_or<Width>(p, bytes, half_row, NAX_PRIMITIVES_SIZE,
                                [=] { return fill<Width>(p, bytes, half_row); });
}

}  // namespace

extern "C" {

// --- workhorses

int nax_dft_avx2_ownsSet_8u_E9(uint8_t value, uint8_t* array, int64_t length) {
    return fill_cached<1>(array, length, _mm256_broadcastsi128_si256(repeated(value)));
}
int nax_dft_avx2_ownsSet_16u_E9(uint16_t value, uint16_t* array, int64_t length) {
    return fill_cached<2>(bytes_of(array), 2 * length, _mm256_broadcastsi128_si256(repeated(value)));
}
int nax_dft_avx2_ownsSet_32s_E9(int32_t value, int32_t* array, int64_t length) {
    return fill_cached<4>(bytes_of(array), 4 * length,
                          _mm256_broadcastsi128_si256(repeated(static_cast<uint32_t>(value))));
}

int nax_dft_avx2_ownsSet_8u(uint8_t value, uint8_t* array, int64_t length) {
    return fill<1>(array, length, repeated(value));
}
int nax_dft_avx2_ownsSet_16u(uint16_t value, uint16_t* array, int64_t length) {
    return fill<2>(bytes_of(array), 2 * length, repeated(value));
}
int nax_dft_avx2_ownsSet_32s(int32_t value, int32_t* array, int64_t length) {
    return fill<4>(bytes_of(array), 4 * length, repeated(static_cast<uint32_t>(value)));
}
int nax_dft_avx2_ownsSet_64s(int64_t value, int64_t* array, int64_t length) {
    return fill<8>(bytes_of(array), 8 * length, repeated(static_cast<uint64_t>(value)));
}

int nax_dft_avx2_ownsSet_64sc(int64_t real, int64_t imag, int64_t* array, int64_t length) {
    const int64_t pattern[2] = {real, imag};
    return nax_dft_avx2_ownsSet_64sc_M7(pattern, array, length);
}
int nax_dft_avx2_ownsSet_64sc_M7(const int64_t pattern[2], int64_t* array, int64_t length) {
    const auto real = static_cast<uint64_t>(pattern[0]), imag = static_cast<uint64_t>(pattern[1]);
    return fill<16>(bytes_of(array), 16 * length, repeated(real, imag));
}

// --- members: every type is a bit pattern of one of five widths. Where a workhorse stands apart for fills of up to
// 2 MiB, `set` chooses between the two by the same limit.

NAX_SHORT_MEMBER int nax_dft_avx2_opasSet_8u(uint8_t value, uint8_t* array, int32_t length) {
    return set<1>(repeated(value), array, length);
}
NAX_SHORT_MEMBER int nax_dft_avx2_opasSet_16s(int16_t value, int16_t* array, int32_t length) {
    return set<2>(repeated(static_cast<uint16_t>(value)), array, length);
}
NAX_SHORT_MEMBER int nax_dft_avx2_opasSet_16sc(int16_t real, int16_t imag, int16_t* array, int32_t length) {
    return set<4>(repeated(joined(static_cast<uint16_t>(real), static_cast<uint16_t>(imag))), array, length);
}
NAX_SHORT_MEMBER int nax_dft_avx2_opasSet_32s(int32_t value, int32_t* array, int32_t length) {
    return set<4>(repeated(static_cast<uint32_t>(value)), array, length);
}
NAX_SHORT_MEMBER int nax_dft_avx2_opasSet_32sc(int32_t real, int32_t imag, int32_t* array, int32_t length) {
    return set<8>(repeated(joined(static_cast<uint32_t>(real), static_cast<uint32_t>(imag))), array, length);
}
NAX_SHORT_MEMBER int nax_dft_avx2_opasSet_32f(float value, float* array, int32_t length) {
    return set<4>(repeated(std::bit_cast<uint32_t>(value)), array, length);
}
NAX_SHORT_MEMBER int nax_dft_avx2_opasSet_32fc(float real, float imag, float* array, int32_t length) {
    return set<8>(repeated(joined(std::bit_cast<uint32_t>(real), std::bit_cast<uint32_t>(imag))), array, length);
}
NAX_SHORT_MEMBER int nax_dft_avx2_opasSet_64s(int64_t value, int64_t* array, int32_t length) {
    return set<8>(repeated(static_cast<uint64_t>(value)), array, length);
}
NAX_SHORT_MEMBER int nax_dft_avx2_opasSet_64sc(int64_t real, int64_t imag, int64_t* array, int32_t length) {
    return set<16>(repeated(static_cast<uint64_t>(real), static_cast<uint64_t>(imag)), array, length);
}
NAX_SHORT_MEMBER int nax_dft_avx2_opasSet_64f(double value, double* array, int32_t length) {
    return set<8>(repeated(std::bit_cast<uint64_t>(value)), array, length);
}
NAX_SHORT_MEMBER int nax_dft_avx2_opasSet_64fc(double real, double imag, double* array, int32_t length) {
    return set<16>(repeated(std::bit_cast<uint64_t>(real), std::bit_cast<uint64_t>(imag)), array, length);
}

}  // extern "C"
