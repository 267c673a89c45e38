/* Parts of the random streams for layers built on top: chunks, shared data, pieces of persistence, entries and data of the
 * single generators. What programs call stands in nax/streams.h. */
#ifndef NAX_ABI_STREAMS_H
#define NAX_ABI_STREAMS_H

#include "nax/streams.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Chunks: private data of generators and distributions ---------------------------------------------------------- */

/* Links a node for `data` (from nax_serv_allocate) at the head of the stream's list, which then owns it. With an identity
 * already in the shared table the node points at the shared block instead, and `data` is neither used nor released.
 * glob_id may be null. STO_STATUS_NO_MEMORY: nothing linked, `data` stays the caller's. */
int __stoAddChunk(nax_stream* stream, uint32_t id, const uint64_t* glob_id, void* data, int size);

/* Data of the first chunk with that id, or null. */
void* __stoSearchChunk(const nax_stream* stream, uint32_t id);

/* Number of chunks. */
int __stoGetNumChunks(const nax_stream* stream);

/* Releases all chunks. Returns 0. */
int __stoDeleteChunks(nax_stream* stream);

/* Releases all chunks with that id and, of the others, all but the last: the list keeps its last surviving node only,
 * which becomes the head and is returned (null when none survives). */
nax_stream_chunk* __stoDeleteChunksById(nax_stream* stream, uint32_t id);

/* ---- Read-only data shared between streams ------------------------------------------------------------------------- */

extern nax_shared_data_entry _GlobRODataTable[128];
extern int32_t _GlobRODataTableCount;
extern int32_t _STO_GLOB_RO_DATA_TABLE_LOCKER_1;

/* Spin lock of the table. Not recursive. */
void _stoGlobRODataTableLock(void);
void _stoGlobRODataTableUnLock(void);

/* Finds the entry of an identity. STO_STATUS_GLOB_NOT_FOUND: none, a null identity or (0, 0). */
int __stoFindGlobRODataTableEntry(nax_shared_data_entry** entry, const uint64_t* glob_id);

/* Appends an entry with one reference. STO_STATUS_GLOB_FULL. */
int __stoCreateGlobRODataTableEntry(nax_shared_data_entry** entry, const uint64_t* glob_id, void* data);

/* Takes a reference for a chunk, whose Data then is the entry's. STO_STATUS_GLOB_NOT_FOUND. */
int __stoRegisterGlobRODataReference(nax_stream_chunk* node, const uint64_t* glob_id);

/* Drops a reference; the last one releases the data and the entry. STO_STATUS_GLOB_NOT_FOUND. */
int __stoUnregisterGlobRODataReference(const uint64_t* glob_id);

/* Makes an identity that no entry has: the time-stamp counter and `value`, the address of the data by custom. Returns 0. */
int __stoGenerateNewGlobalRODataTableEntryId(uint64_t* glob_id, uint64_t value);

/* ---- Pieces of saving and loading ---------------------------------------------------------------------------------- */

/* A place in a memory image. */
typedef struct nax_image_cursor {
    void* Base;
    int32_t Offset;
} nax_image_cursor;

/* The header of a stored stream, whatever its version was. */
typedef struct nax_image_header {
    uint32_t Magic;         /* 0x474E5200 + version */
    uint32_t HeaderSize;    /* 20 */
    uint32_t PayloadSize;   /* StreamStateSize - 16 */
    uint32_t ChunkCount;
    int32_t Brng;
} nax_image_header;

/* Items of `size` bytes to and from a FILE* or an image. 0; STO_STATUS_FILE_WRITE, STO_STATUS_FILE_READ for files. */
int __stoSaveToFile(const void* buffer, size_t size, size_t count, void* file);
int __stoLoadFromFile(void* buffer, size_t size, size_t count, void* file);
int __stoSaveToMemory(const void* source, size_t size, size_t count, void* cursor);
int __stoLoadFromMemory(void* destination, size_t size, size_t count, void* cursor);

/* Advance by `offset` bytes. Return what fseek returns, and 0. */
int __stoSkipLoadingFromFile(long offset, void* file);
int __stoSkipLoadingFromMemory(long offset, void* cursor);

/* __stoLoadFromFile and __stoLoadFromMemory. */
extern int (*const _LoadDispatch[2])(void* destination, size_t size, size_t count, void* source);

/* Reads the chunks that `header` promises (the low 16 bits of its count) and links them to `stream`. Does nothing when
 * *status is negative; stores STO_STATUS_FILE_READ or STO_STATUS_NO_MEMORY there and stops when it fails. `loader` indexes
 * _LoadDispatch. */
void __stoReadChunks(int* status, void* source, const nax_image_header* header, nax_stream* stream, int loader);

/* ---- Processor tests ----------------------------------------------------------------------------------------------- */

int __stoCPUisAES(void);        /* AES instructions */
int __stoCPUisVAES(void);       /* AES on 512-bit vectors */
int __stoCPUisRDRAND(void);     /* the random-number instruction */

/* ---- Modular powers that the linear generators skip with ----------------------------------------------------------- */

/* a^n mod m. O(log n). */
uint32_t __stoiPowMod(uint32_t a, uint64_t n, uint32_t m);
/* a^n mod 2^31-1. */
uint32_t __stoiPowMod2P31M1(uint32_t a, uint64_t n);
/* a^n mod 2^59. */
uint64_t __stoiPowMod2P59(uint64_t a, uint64_t n);

/* x := A^n x mod m for the companion matrix A of x(k+3) = row[0] x(k+2) + row[1] x(k+1) + row[2] x(k): the coefficients go
 * from the newest term to the oldest. x is three consecutive terms below m, oldest first. */
void __stoiVect3PowMod(uint32_t x[3], const uint32_t row[3], uint32_t m, uint64_t n);
/* The same for an n of `words` 64-bit words, least significant first. 0, or STO_STATUS_NO_MEMORY above ten words. */
int __stoiVect3PowArrayMod(uint32_t x[3], const uint32_t row[3], uint32_t m, int words, const uint64_t* n);
/* The same with tabulated matrices A^(2^k), 9 words each, for the two moduli of MRG32K3A; all set bits of n must have a
 * matrix (k below 193 in the library's table). Return 0. */
int __stoiVect3PowArrayMod_M1(uint32_t x[3], int words, const uint64_t* n, const uint32_t* table);
int __stoiVect3PowArrayMod_M2(uint32_t x[3], int words, const uint64_t* n, const uint32_t* table);

/* A^(2^k) of MRG32K3A's two components: 193 matrices of 3 by 3 words row by row for x, then 193 for y. */
extern const uint32_t _sto_mrg32k3a_skipahead_table[2 * 193 * 9];

/* ---- Data of the linear generators --------------------------------------------------------------------------------- */

/* WH: multipliers, moduli and reciprocal moduli of the 273 rows. */
extern const uint8_t _sto_WH_A[273][4];
extern const uint32_t _sto_WH_M[273][4];
extern const double _stodWH_IM_Tab[273][4];

/* Steps of MCG31's and MCG59's real output: the next 1 to 32 numbers on [a, b) from a lane block (the data of chunk 14),
 * whose lanes move on. */
void nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine1_double(void* lanes, double a, double b, double* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine1_float(void* lanes, float a, float b, float* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine2_double(void* lanes, double a, double b, double* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine2_float(void* lanes, float a, float b, float* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine4_double(void* lanes, double a, double b, double* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine4_float(void* lanes, float a, float b, float* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine8_double(void* lanes, double a, double b, double* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine8_float(void* lanes, float a, float b, float* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine16_double(void* lanes, double a, double b, double* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine16_float(void* lanes, float a, float b, float* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine32_double(void* lanes, double a, double b, double* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine32_float(void* lanes, float a, float b, float* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg59_engine1_double(void* lanes, double a, double b, double* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg59_engine1_float(void* lanes, float a, float b, float* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg59_engine2_double(void* lanes, double a, double b, double* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg59_engine2_float(void* lanes, float a, float b, float* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg59_engine4_double(void* lanes, double a, double b, double* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg59_engine4_float(void* lanes, float a, float b, float* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg59_engine8_double(void* lanes, double a, double b, double* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg59_engine8_float(void* lanes, float a, float b, float* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg59_engine16_double(void* lanes, double a, double b, double* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg59_engine16_float(void* lanes, float a, float b, float* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg59_engine32_double(void* lanes, double a, double b, double* r);
void nax_sto_sub_kernel_vrng_coreavx512_mcg59_engine32_float(void* lanes, float a, float b, float* r);

/* ---- Twisters, counter-based, hardware and quasi-random generators --------------------------------------------------- */

/* MT19937. Seeds: init_by_array; none stands for the seed 1. Skip-ahead; no leapfrog, no long skip-ahead. Skips of
 * 2^23 words and more cost one polynomial power, whatever their length. STO_STATUS_NO_MEMORY from skip-ahead: no work
 * space; the stream then stands at the end of the block it was in. */
int __stoBRngMT19937InitStream(int method, nax_stream* stream, int n, const void* params);
int __stosBRngMT19937(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngMT19937(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngMT19937(nax_stream* stream, int n, void* r);

/* MT2203, 6024 sub-streams. Seeds as MT19937. No leapfrog, no skip-ahead. */
int __stoBRngMT2203InitStream(int method, nax_stream* stream, int n, const void* params);
int __stosBRngMT2203(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngMT2203(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngMT2203(nax_stream* stream, int n, void* r);

/* SFMT19937. Seeds: the generator's init_by_array; none stands for the seed 1. Skip-ahead as MT19937, by polynomial from
 * 19968 words on. */
int __stoBRngSFMT19937InitStream(int method, nax_stream* stream, int n, const void* params);
int __stosBRngSFMT19937(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngSFMT19937(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngSFMT19937(nax_stream* stream, int n, void* r);

/* PHILOX4X32X10. Seeds: two key words, then up to four counter words. Both skips in constant time; no leapfrog. */
int __stoBRngPHILOX4X32X10InitStream(int method, nax_stream* stream, int n, const void* params);
/* Moves a PHILOX4X32X10 stream by n words, as __stoSkipAheadStream does. Returns 0. */
int PHILOX4X32X10SkipAhead(nax_stream* stream, uint64_t n);
int __stosBRngPHILOX4X32X10(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngPHILOX4X32X10(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngPHILOX4X32X10(nax_stream* stream, int n, void* r);

/* ARS5. Seeds: four key words, then up to four counter words. Both skips in constant time; no leapfrog.
 * STO_STATUS_NO_AES from output and skips on a processor without AES. */
int __stoBRngARS5InitStream(int method, nax_stream* stream, int n, const void* params);
int __stosBRngARS5(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngARS5(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngARS5(nax_stream* stream, int n, void* r);

/* NONDETERM: the processor's random-number instruction. The second seed word is the number of tries for a value, 10 when
 * absent or 0. Neither leapfrog nor skip-ahead. STO_STATUS_NO_RDRAND; STO_STATUS_RDRAND_FAILED: no value within the tries,
 * the numbers before it stay in r. */
int __stoBRngTRNGInitStream(int method, nax_stream* stream, int n, const void* params);
int __stosBRngTRNG(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngTRNG(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngTRNG(nax_stream* stream, int n, void* r);

/* SOBOL and NIEDERREITER: points of a fixed dimension, flattened; point 0 (all zero) is left out. Parameters of seeding:
 * {dimension}, or {dimension, 1, class, ...} with n counting all words:
 *   class 1   polynomials (SOBOL: for dimensions 2 on, of degree 8 at most; NIEDERREITER: for all dimensions)
 *   class 2   SOBOL: maxdeg, then maxdeg initial numbers for each dimension from 2 on
 *   class 3   SOBOL: polynomials for dimensions 2 on, maxdeg, initial numbers for dimensions 2 on
 *   class 11  SOBOL: as 3, with polynomial and initial numbers of dimension 1 too
 *   class 4   direction numbers: 32 words for each dimension
 * Classes 1 and 2 of SOBOL allow 40 dimensions. Parameters that are too short or past a limit are dropped: the dimension
 * alone counts, and is 1 when it exceeds the default limit (40, 318). STO_STATUS_BAD_ARGUMENT: a polynomial that has no
 * initial numbers (too high a degree) or is constant. STO_STATUS_NO_MEMORY.
 * Leapfrog with n = 0x7FFFFFFF selects coordinate k, else STO_STATUS_NO_LEAPFROG; skip-ahead counts numbers,
 * STO_STATUS_NO_SKIPAHEAD past the end of the sequence. Output: STO_STATUS_QRNG_PERIOD_ELAPSED when the index of the point
 * plus n exceeds 2^32 - 1, nothing is written; STO_STATUS_NO_MEMORY when a chunk of a user-parameter stream is missing.
 * Streams of more than 32 dimensions may run their dimensions on several threads; the results don't depend on it. */
int __stoBRngSobolInitStream(int method, nax_stream* stream, int n, const void* params);
int __stosBRngSobol(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngSobol(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngSobol(nax_stream* stream, int n, void* r);
int __stoBRngNiederrInitStream(int method, nax_stream* stream, int n, const void* params);
int __stosBRngNiederr(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngNiederr(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngNiederr(nax_stream* stream, int n, void* r);

/* ---- Polynomial skip-ahead ------------------------------------------------------------------------------------------ */

/* The operations of a generator with linear state over GF(2), on blocks of the stream's size. */
typedef void (*nax_zero_state_function)(nax_stream* state);
typedef void (*nax_add_state_function)(nax_stream* destination, const nax_stream* source);
typedef void (*nax_copy_state_function)(nax_stream* destination, const nax_stream* source);
typedef void (*nax_update_state_function)(nax_stream* state);
typedef void (*nax_finish_state_function)(nax_stream* stream, nax_stream* work, int extra);  /* extra from Process */

typedef struct nax_skip_parameters {
    /* Settles what needs no algebra and leaves nskip in steps; 0: nothing is left. */
    int (*Process)(nax_stream* stream, uint64_t* nskip, int* extra);
    uint64_t NSkip;
    int32_t N;              /* 64-bit words of room for a remainder */
    int32_t Degree;         /* of the characteristic polynomial */
    int32_t StateSize;      /* bytes of the stream's block */
    int32_t Terms;          /* non-zero terms of the polynomial */
    const int32_t* Table;   /* their exponents, ascending */
} nax_skip_parameters;

/* Moves the stream by g(F) = x^nskip mod p(x), F its step: by Horner's rule, or with a sliding window of eight bits, which
 * needs an eighth of the state additions and a table of 128 states. 0 or STO_STATUS_NO_MEMORY (only Process has then
 * changed the stream). */
int __sto_SkipAheadHorner(nax_stream* stream, nax_zero_state_function zero, nax_add_state_function add,
                          nax_copy_state_function copy1, nax_update_state_function update,
                          nax_finish_state_function copy2, const nax_skip_parameters* params);
int __sto_SkipAheadSWin(nax_stream* stream, nax_zero_state_function zero, nax_add_state_function add,
                        nax_copy_state_function copy1, nax_update_state_function update,
                        nax_finish_state_function copy2, const nax_skip_parameters* params);

/* x^nskip modulo the polynomial over GF(2) with `terms` terms x^table[i]: bit i of the result is in out[i / 64]; words of
 * `out` beyond the degree are zero. 0 or STO_STATUS_NO_MEMORY. */
int __stoPolyRem(uint64_t nskip, int degree, int terms, const int32_t* table, int words, uint64_t* out);

/* Exponents of the characteristic polynomials, ascending. */
extern const int32_t _sto_mt19937_poly[135];
extern const int32_t _sto_sfmt19937_poly[6711];

/* ---- Tables --------------------------------------------------------------------------------------------------------- */

/* MT2203: MatrixA, TemperB, TemperC of the sub-streams. */
extern const uint32_t _sto_mt2203_table[6024][3];

/* SOBOL: primitive polynomials of dimensions 2 on (bit k: coefficient of x^k), their degrees, initial numbers m1 to m8. */
extern const uint32_t uSobolIrredPoly[40];
extern const int32_t iSobolIrredPolyDeg[40];
extern const uint32_t uSobolMInit[39][8];

/* NIEDERREITER: irreducible polynomials by dimension, and their degrees. */
extern const uint32_t uNiederrIrredPoly[320];
extern const int32_t iNiederrIrredPolyDeg[320];

#ifdef __cplusplus
}
#endif
#endif
