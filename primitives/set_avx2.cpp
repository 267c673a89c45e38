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

__m256i repeated(uint8_t bits) { return _mm256_set1_epi8(static_cast<char>(bits)); }
__m256i repeated(uint16_t bits) { return _mm256_set1_epi16(static_cast<short>(bits)); }
__m256i repeated(uint32_t bits) { return _mm256_set1_epi32(static_cast<int>(bits)); }
__m256i repeated(uint64_t bits) { return _mm256_set1_epi64x(static_cast<long long>(bits)); }

// The whole of Set_64s, with the value where the members of floating-point type have it: in a vector register.
[[gnu::noinline]] int fill_64(uint8_t* p, int64_t bytes, __m256i row) { return fill_large<8>(p, bytes, row); }

// The members do short fills themselves: a call more would take as long as the fill.

inline int set_8(uint8_t bits, uint8_t* array, int32_t length) {
    if (const int status = check_array(array, length); status != 0) return status;
    return fill_short_or<1>(array, length, repeated(bits), [=] {
        return length > kCachedFillLimit ? nax_dft_avx2_ownsSet_8u(bits, array, length)
                                         : nax_dft_avx2_ownsSet_8u_E9(bits, array, length);
    });
}

inline int set_16(uint16_t bits, void* array, int32_t length) {
    if (const int status = check_array(array, length); status != 0) return status;
    const int64_t bytes = 2 * int64_t{length};
    return fill_short_or<2>(static_cast<uint8_t*>(array), bytes, repeated(bits), [=] {
        const auto target = static_cast<uint16_t*>(array);
        return bytes > kCachedFillLimit ? nax_dft_avx2_ownsSet_16u(bits, target, length)
                                        : nax_dft_avx2_ownsSet_16u_E9(bits, target, length);
    });
}

inline int set_32(uint32_t bits, void* array, int32_t length) {
    if (const int status = check_array(array, length); status != 0) return status;
    const int64_t bytes = 4 * int64_t{length};
    return fill_short_or<4>(static_cast<uint8_t*>(array), bytes, repeated(bits), [=] {
        const auto value = static_cast<int32_t>(bits);
        const auto target = static_cast<int32_t*>(array);
        return bytes > kCachedFillLimit ? nax_dft_avx2_ownsSet_32s(value, target, length)
                                        : nax_dft_avx2_ownsSet_32s_E9(value, target, length);
    });
}

inline int set_64(uint64_t bits, void* array, int32_t length) {
    if (const int status = check_array(array, length); status != 0) return status;
    const auto p = static_cast<uint8_t*>(array);
    const int64_t bytes = 8 * int64_t{length};
    const __m256i row = repeated(bits);
    return fill_short_or<8>(p, bytes, row, [=] { return fill_64(p, bytes, row); });
}

inline int set_64_pairs(uint64_t real, uint64_t imag, void* array, int32_t length) {
    if (const int status = check_array(array, length); status != 0) return status;
    const auto low = static_cast<int64_t>(real), high = static_cast<int64_t>(imag);
    const __m256i row = _mm256_set_epi64x(high, low, high, low);
    return fill_short_or<16>(static_cast<uint8_t*>(array), 16 * int64_t{length}, row, [=] {
        return nax_dft_avx2_ownsSet_64sc(low, high, static_cast<int64_t*>(array), length);
    });
}

}  // namespace

extern "C" {

// --- workhorses

int nax_dft_avx2_ownsSet_8u_E9(uint8_t value, uint8_t* array, int64_t length) {
    return fill_cached<1>(array, length, repeated(value));
}
int nax_dft_avx2_ownsSet_16u_E9(uint16_t value, uint16_t* array, int64_t length) {
    return fill_cached<2>(bytes_of(array), 2 * length, repeated(value));
}
int nax_dft_avx2_ownsSet_32s_E9(int32_t value, int32_t* array, int64_t length) {
    return fill_cached<4>(bytes_of(array), 4 * length, repeated(static_cast<uint32_t>(value)));
}

int nax_dft_avx2_ownsSet_8u(uint8_t value, uint8_t* array, int64_t length) {
    return fill_large<1>(array, length, repeated(value));
}
int nax_dft_avx2_ownsSet_16u(uint16_t value, uint16_t* array, int64_t length) {
    return fill_large<2>(bytes_of(array), 2 * length, repeated(value));
}
int nax_dft_avx2_ownsSet_32s(int32_t value, int32_t* array, int64_t length) {
    return fill_large<4>(bytes_of(array), 4 * length, repeated(static_cast<uint32_t>(value)));
}
int nax_dft_avx2_ownsSet_64s(int64_t value, int64_t* array, int64_t length) {
    return fill_64(bytes_of(array), 8 * length, repeated(static_cast<uint64_t>(value)));
}

int nax_dft_avx2_ownsSet_64sc(int64_t real, int64_t imag, int64_t* array, int64_t length) {
    const int64_t pattern[2] = {real, imag};
    return nax_dft_avx2_ownsSet_64sc_M7(pattern, array, length);
}

// An array that starts in the middle of a 16-byte row gets its first and last half element apart; what is between is a
// fill of rows with the halves exchanged.
int nax_dft_avx2_ownsSet_64sc_M7(const int64_t pattern[2], int64_t* array, int64_t length) {
    const int64_t real = pattern[0], imag = pattern[1];
    uint8_t* const p = bytes_of(array);
    if (aligned_to(p, 8) && !aligned_to(p, 16)) {
        array[0] = real;
        fill_large<16>(p + 8, 16 * (length - 1), _mm256_set_epi64x(real, imag, real, imag));
        array[2 * length - 1] = imag;
        return 0;
    }
    return fill_large<16>(p, 16 * length, _mm256_set_epi64x(imag, real, imag, real));
}

// --- members: every type is a bit pattern of one of five widths

int nax_dft_avx2_opasSet_8u(uint8_t value, uint8_t* array, int32_t length) { return set_8(value, array, length); }
int nax_dft_avx2_opasSet_16s(int16_t value, int16_t* array, int32_t length) {
    return set_16(static_cast<uint16_t>(value), array, length);
}
int nax_dft_avx2_opasSet_16sc(int16_t real, int16_t imag, int16_t* array, int32_t length) {
    return set_32(joined(static_cast<uint16_t>(real), static_cast<uint16_t>(imag)), array, length);
}
int nax_dft_avx2_opasSet_32s(int32_t value, int32_t* array, int32_t length) {
    return set_32(static_cast<uint32_t>(value), array, length);
}
int nax_dft_avx2_opasSet_32sc(int32_t real, int32_t imag, int32_t* array, int32_t length) {
    return set_64(joined(static_cast<uint32_t>(real), static_cast<uint32_t>(imag)), array, length);
}
int nax_dft_avx2_opasSet_32f(float value, float* array, int32_t length) {
    return set_32(std::bit_cast<uint32_t>(value), array, length);
}
int nax_dft_avx2_opasSet_32fc(float real, float imag, float* array, int32_t length) {
    return set_64(joined(std::bit_cast<uint32_t>(real), std::bit_cast<uint32_t>(imag)), array, length);
}
int nax_dft_avx2_opasSet_64s(int64_t value, int64_t* array, int32_t length) {
    return set_64(static_cast<uint64_t>(value), array, length);
}
int nax_dft_avx2_opasSet_64sc(int64_t real, int64_t imag, int64_t* array, int32_t length) {
    return set_64_pairs(static_cast<uint64_t>(real), static_cast<uint64_t>(imag), array, length);
}
int nax_dft_avx2_opasSet_64f(double value, double* array, int32_t length) {
    return set_64(std::bit_cast<uint64_t>(value), array, length);
}
int nax_dft_avx2_opasSet_64fc(double real, double imag, double* array, int32_t length) {
    return set_64_pairs(std::bit_cast<uint64_t>(real), std::bit_cast<uint64_t>(imag), array, length);
}

}  // extern "C"
