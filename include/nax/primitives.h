/* Signal primitives: fill, clear, copy and sort typed arrays.
 *
 * Every function returns 0, NAX_PRIMITIVES_NULL for a null pointer, or NAX_PRIMITIVES_SIZE for a length below 1, tested
 * in this order; nothing is written then. Lengths count elements; complex types (the names in c) are pairs, real part
 * first, and `length` counts pairs. Arrays need no alignment; those aligned to their element are filled faster. Source
 * and target of a copy don't overlap. Time is linear in the bytes touched; nothing is allocated, and any number of
 * threads may work on different arrays.
 *
 * Fills of more than 2 MiB that exceed the largest cache (nax/processor.h) bypass the caches, where its size is known.
 */
#ifndef NAX_PRIMITIVES_H
#define NAX_PRIMITIVES_H

#include <stdint.h>

#include "nax/status.h"

#ifdef __cplusplus
extern "C" {
#endif


/* Copies `length` elements. */
int nax_dft_avx2_opasCopy_8u(const uint8_t* source, uint8_t* target, int32_t length);
int nax_dft_avx2_opasCopy_16s(const int16_t* source, int16_t* target, int32_t length);
int nax_dft_avx2_opasCopy_16sc(const int16_t* source, int16_t* target, int32_t length);
int nax_dft_avx2_opasCopy_32s(const int32_t* source, int32_t* target, int32_t length);
int nax_dft_avx2_opasCopy_32sc(const int32_t* source, int32_t* target, int32_t length);
int nax_dft_avx2_opasCopy_32f(const float* source, float* target, int32_t length);
int nax_dft_avx2_opasCopy_32fc(const float* source, float* target, int32_t length);
int nax_dft_avx2_opasCopy_64s(const int64_t* source, int64_t* target, int32_t length);
int nax_dft_avx2_opasCopy_64sc(const int64_t* source, int64_t* target, int32_t length);
int nax_dft_avx2_opasCopy_64f(const double* source, double* target, int32_t length);
int nax_dft_avx2_opasCopy_64fc(const double* source, double* target, int32_t length);

/* Sets `length` elements to zero. */
int nax_dft_avx2_opasZero_8u(uint8_t* array, int32_t length);
int nax_dft_avx2_opasZero_16s(int16_t* array, int32_t length);
int nax_dft_avx2_opasZero_16sc(int16_t* array, int32_t length);
int nax_dft_avx2_opasZero_32s(int32_t* array, int32_t length);
int nax_dft_avx2_opasZero_32sc(int32_t* array, int32_t length);
int nax_dft_avx2_opasZero_32f(float* array, int32_t length);
int nax_dft_avx2_opasZero_32fc(float* array, int32_t length);
int nax_dft_avx2_opasZero_64s(int64_t* array, int32_t length);
int nax_dft_avx2_opasZero_64sc(int64_t* array, int32_t length);
int nax_dft_avx2_opasZero_64f(double* array, int32_t length);
int nax_dft_avx2_opasZero_64fc(double* array, int32_t length);

/* Sets `length` elements to a value, bit for bit; complex values are two arguments, real part first. */
int nax_dft_avx2_opasSet_8u(uint8_t value, uint8_t* array, int32_t length);
int nax_dft_avx2_opasSet_16s(int16_t value, int16_t* array, int32_t length);
int nax_dft_avx2_opasSet_16sc(int16_t real, int16_t imag, int16_t* array, int32_t length);
int nax_dft_avx2_opasSet_32s(int32_t value, int32_t* array, int32_t length);
int nax_dft_avx2_opasSet_32sc(int32_t real, int32_t imag, int32_t* array, int32_t length);
int nax_dft_avx2_opasSet_32f(float value, float* array, int32_t length);
int nax_dft_avx2_opasSet_32fc(float real, float imag, float* array, int32_t length);
int nax_dft_avx2_opasSet_64s(int64_t value, int64_t* array, int32_t length);
int nax_dft_avx2_opasSet_64sc(int64_t real, int64_t imag, int64_t* array, int32_t length);
int nax_dft_avx2_opasSet_64f(double value, double* array, int32_t length);
int nax_dft_avx2_opasSet_64fc(double real, double imag, double* array, int32_t length);

/* --- Radix sorts ---
 *
 *     double x[1000], scratch[1000];
 *     ...
 *     nax_dft_avx2_opasSortRadixAscend_64f_I(x, scratch, 1000);
 *
 * Order: integers by value. Floating-point numbers by their bits, which is by value with negative zero before zero; NaNs
 * with the sign bit set come before all else and other NaNs after all else, by their bits. Descending is the reverse of it.
 *
 * Memory: the caller's scratch and at most 100 KiB of the stack; nothing is allocated. Time: linear in the length, whatever the keys;
 * keys in order or in reverse order already are found so in one pass. What the scratch holds afterwards is of no use.
 *
 * Source: digits from the top over buckets chosen by a sample, Batcher's networks for short ones, and Knuth's Algorithm
 * 5.2.5R (TAOCP 3) for keys that share their leading digits. */

/* Sorts `length` keys in place. `scratch` has as many elements; the sorts of 8u don't touch it, and it may be null there. */
int nax_dft_avx2_opasSortRadixAscend_8u_I(uint8_t* array, uint8_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixAscend_16s_I(int16_t* array, int16_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixAscend_16u_I(uint16_t* array, uint16_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixAscend_32s_I(int32_t* array, int32_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixAscend_32u_I(uint32_t* array, uint32_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixAscend_32f_I(float* array, float* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixAscend_64f_I(double* array, double* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixDescend_8u_I(uint8_t* array, uint8_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixDescend_16s_I(int16_t* array, int16_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixDescend_16u_I(uint16_t* array, uint16_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixDescend_32s_I(int32_t* array, int32_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixDescend_32u_I(uint32_t* array, uint32_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixDescend_32f_I(float* array, float* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixDescend_64f_I(double* array, double* scratch, int32_t length);

/* Writes to `index` the numbers 0 ... length - 1 in the order of the keys, equal keys in the order of their numbers. Key i
 * is read at `distance` bytes times i from `source`, of any alignment; a distance below the key's size gives
 * NAX_PRIMITIVES_SIZE. The keys stay where they are: they may be a member of an array of records. `scratch` has `length`
 * elements; 8u doesn't touch it, and it may be null there.
 *
 *     struct quake { float depth, magnitude; } quakes[1000];
 *     int32_t strongest_first[1000], scratch[1000];
 *     nax_dft_avx2_opasSortRadixIndexDescend_32f(&quakes[0].magnitude, sizeof(struct quake), strongest_first, scratch,
 *                                                1000);
 */
int nax_dft_avx2_opasSortRadixIndexAscend_8u(const uint8_t* source, int32_t distance, int32_t* index, int32_t* scratch,
                                             int32_t length);
int nax_dft_avx2_opasSortRadixIndexAscend_16s(const int16_t* source, int32_t distance, int32_t* index, int32_t* scratch,
                                              int32_t length);
int nax_dft_avx2_opasSortRadixIndexAscend_16u(const uint16_t* source, int32_t distance, int32_t* index,
                                              int32_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixIndexAscend_32s(const int32_t* source, int32_t distance, int32_t* index, int32_t* scratch,
                                              int32_t length);
int nax_dft_avx2_opasSortRadixIndexAscend_32u(const uint32_t* source, int32_t distance, int32_t* index,
                                              int32_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixIndexAscend_32f(const float* source, int32_t distance, int32_t* index, int32_t* scratch,
                                              int32_t length);
int nax_dft_avx2_opasSortRadixIndexDescend_8u(const uint8_t* source, int32_t distance, int32_t* index, int32_t* scratch,
                                              int32_t length);
int nax_dft_avx2_opasSortRadixIndexDescend_16s(const int16_t* source, int32_t distance, int32_t* index,
                                               int32_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixIndexDescend_16u(const uint16_t* source, int32_t distance, int32_t* index,
                                               int32_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixIndexDescend_32s(const int32_t* source, int32_t distance, int32_t* index,
                                               int32_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixIndexDescend_32u(const uint32_t* source, int32_t distance, int32_t* index,
                                               int32_t* scratch, int32_t length);
int nax_dft_avx2_opasSortRadixIndexDescend_32f(const float* source, int32_t distance, int32_t* index, int32_t* scratch,
                                               int32_t length);

/* --- Workhorses: no checks, the length in bytes for Copy and Zero and in elements for Set; they return 0. --- */

int nax_dft_avx2_ownsCopy_8u_AVX(const uint8_t* source, uint8_t* target, int32_t bytes);   /* for less than 32 KiB */
int nax_dft_avx2_ownsCopy_8u_repE9(const uint8_t* source, uint8_t* target, int32_t bytes); /* by a string move */
int nax_dft_avx2_ownsCopy_8u(const uint8_t* source, uint8_t* target, int32_t bytes);       /* by 16-byte moves */
int nax_dft_avx2_ownsCopy_8u_E9(const uint8_t* source, uint8_t* target, int32_t bytes);    /* by 32-byte moves */

int nax_dft_avx2_ownsZero_8u(uint8_t* array, int64_t bytes);       /* past the caches when larger than they are */
int nax_dft_avx2_ownsZero_8u_E9(uint8_t* array, int64_t bytes);    /* through the caches */
int nax_dft_avx2_ownsZero_8u_repE9(uint8_t* array, int64_t bytes); /* by a string store */

int nax_dft_avx2_ownsSet_8u(uint8_t value, uint8_t* array, int64_t length); /* as Zero_8u and Zero_8u_E9 */
int nax_dft_avx2_ownsSet_16u(uint16_t value, uint16_t* array, int64_t length);
int nax_dft_avx2_ownsSet_32s(int32_t value, int32_t* array, int64_t length);
int nax_dft_avx2_ownsSet_64s(int64_t value, int64_t* array, int64_t length);
int nax_dft_avx2_ownsSet_8u_E9(uint8_t value, uint8_t* array, int64_t length);
int nax_dft_avx2_ownsSet_16u_E9(uint16_t value, uint16_t* array, int64_t length);
int nax_dft_avx2_ownsSet_32s_E9(int32_t value, int32_t* array, int64_t length);
int nax_dft_avx2_ownsSet_64sc(int64_t real, int64_t imag, int64_t* array, int64_t length);
int nax_dft_avx2_ownsSet_64sc_M7(const int64_t pattern[2], int64_t* array, int64_t length);

#ifdef __cplusplus
}
#endif
#endif
