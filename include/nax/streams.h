/* Random streams: creation, splitting, copying, saving, and the basic generators.
 *
 * A stream is an opaque block made by __stoNewStreamEx and released by __stoDeleteStream. One stream belongs to one thread
 * at a time; different streams may run on different threads. Every operation returns a 32-bit status: 0 for success, a
 * negative STO_STATUS_... value for failure; __stoRegisterBrng alone returns a positive id.
 *
 *     nax_stream* stream;
 *     uint32_t seed = 7;
 *     if (__stoNewStreamEx(&stream, NAX_BRNG_MT19937, 1, &seed) == STO_STATUS_OK) {
 *         ... draw ...
 *         __stoDeleteStream(&stream);
 *     }
 */
#ifndef NAX_STREAMS_H
#define NAX_STREAMS_H

#include <stddef.h>
#include <stdint.h>

#include "nax/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Generator ids ------------------------------------------------------------------------------------------------- */

/* An id of 0x100000 or more is (row + 1) << 20 plus the sub-stream: NAX_BRNG_WH + 0 to 272 and NAX_BRNG_MT2203 + 0 to 6023
 * name whole families of independent generators. Ids below 0x100000 are the older numbering: 0 MCG31, 1 R250, 2 MRG32K3A,
 * 3 MCG59, 4 to 276 the WH family, 277 SOBOL, 278 NIEDERREITER. A stream keeps the id that it was given. */
enum {
    NAX_BRNG_MCG31 = 0x100000,          /* x = 1132489760 x mod 2^31-1 */
    NAX_BRNG_R250 = 0x200000,           /* generalised feedback shift register, 250 words */
    NAX_BRNG_MRG32K3A = 0x300000,       /* combined multiple recursive generator */
    NAX_BRNG_MCG59 = 0x400000,          /* x = 13^13 x mod 2^59 */
    NAX_BRNG_WH = 0x500000,             /* 273 four-component multiplicative generators */
    NAX_BRNG_SOBOL = 0x600000,          /* quasi-random, up to 40 dimensions, more with the caller's parameters */
    NAX_BRNG_NIEDERREITER = 0x700000,   /* quasi-random, up to 318 dimensions, more with the caller's parameters */
    NAX_BRNG_MT19937 = 0x800000,        /* Mersenne twister */
    NAX_BRNG_MT2203 = 0x900000,         /* 6024 small Mersenne twisters */
    NAX_BRNG_IABSTRACT = 0xA00000,      /* fed by a callback: integers */
    NAX_BRNG_DABSTRACT = 0xB00000,      /* fed by a callback: doubles */
    NAX_BRNG_SABSTRACT = 0xC00000,      /* fed by a callback: singles */
    NAX_BRNG_SFMT19937 = 0xD00000,      /* SIMD-oriented fast Mersenne twister */
    NAX_BRNG_NONDETERM = 0xE00000,      /* the processor's random-number instruction */
    NAX_BRNG_ARS5 = 0xF00000,           /* counter-based, AES rounds */
    NAX_BRNG_PHILOX4X32X10 = 0x1000000  /* counter-based, multiplications */
};

/* ---- The stream and its parts -------------------------------------------------------------------------------------- */

typedef struct nax_stream nax_stream;

/* A block of private data that a generator or a distribution keeps on a stream. */
typedef struct nax_stream_chunk {
    uint32_t Id;                    /* what the chunk holds */
    int32_t Size;                   /* bytes of Data */
    void* Data;                     /* owned by the chunk, or by the shared table when GlobId is set */
    struct nax_stream_chunk* Next;
    uint64_t GlobId[2];             /* identity in the shared read-only table; (0, 0) means private */
} nax_stream_chunk;

/* An entry of the process-wide table of read-only data that chunks of many streams share. */
typedef struct nax_shared_data_entry {
    uint64_t Id0;
    uint64_t Id1;
    int32_t RefCount;
    int32_t Size;                   /* bytes of Data when a chunk brought it, else 0 */
    void* Data;
} nax_shared_data_entry;

/* Methods of an initialisation function. */
enum {
    NAX_INIT_STANDARD = 0,      /* n 32-bit seeds at params */
    NAX_INIT_LEAPFROG = 1,      /* n streams, params points at the 32-bit index of this one */
    NAX_INIT_SKIPAHEAD = 2,     /* n is 2, params points at the 64-bit count */
    NAX_INIT_SKIPAHEADEX = 3    /* n 64-bit words at params, least significant first */
};

typedef int (*nax_init_stream_function)(int method, nax_stream* stream, int n, const void* params);
typedef int (*nax_single_brng_function)(nax_stream* stream, int n, float* r, float a, float b);
typedef int (*nax_double_brng_function)(nax_stream* stream, int n, double* r, double a, double b);
typedef int (*nax_integer_brng_function)(nax_stream* stream, int n, void* r);

/* A row of the registry: what the library knows of a generator. */
typedef struct nax_brng_properties {
    int32_t StreamStateSize;    /* bytes of the stream block, its header of 16 bytes included */
    int32_t NSeeds;             /* words of state that __stoCopyStreamState copies */
    int32_t IncludesZero;       /* 1 if the integer output may be 0 */
    int32_t WordSize;           /* bytes of an output word: 4, 8 or 16 */
    int32_t NBits;              /* significant bits of an output word */
    nax_init_stream_function InitStream;
    nax_single_brng_function sBRng;
    nax_double_brng_function dBRng;
    nax_integer_brng_function iBRng;
} nax_brng_properties;

/* The registry: the older numbering (281 rows, the last two empty) and the current one. Read only for callers. */
extern nax_brng_properties __RegBrngs[281];
extern nax_brng_properties __RegBrngsNew[512];
extern int32_t NRegBrngsNew;        /* rows of __RegBrngsNew in use; 16 built-in ones at load */
extern int32_t NumOffsets[512];     /* sub-streams of each row */

/* ---- Life of a stream ---------------------------------------------------------------------------------------------- */

/* Creates a stream of generator `brng` from n 32-bit words at `params`: seeds for a pseudo-random generator, a dimension
 * or a parameter set for a quasi-random one. n of 0 takes the generator's default seed.
 * STO_STATUS_BAD_BRNG: unknown id, or one of the three abstract ids. STO_STATUS_NO_MEMORY: no block; *stream is null.
 * Any other failure is the generator's; the stream then stays allocated in *stream and the caller deletes it. */
int __stoNewStreamEx(nax_stream** stream, int brng, int n, const uint32_t* params);

/* A callback fills slots of an abstract stream's ring of `n` numbers, starting at slot `fill` and going round: at least
 * 1, better `wanted`, at most `free_slots`. Returns how many it placed. It must not change the five arguments. */
typedef int (*nax_integer_callback)(nax_stream* stream, int* n, uint32_t* buffer, int* wanted, int* free_slots, int* fill);
typedef int (*nax_double_callback)(nax_stream* stream, int* n, double* buffer, int* wanted, int* free_slots, int* fill);
typedef int (*nax_single_callback)(nax_stream* stream, int* n, float* buffer, int* wanted, int* free_slots, int* fill);

/* Abstract streams: `buffer` is a ring of n numbers (on [a, b) for the real kinds) that `callback` fills; it is empty at
 * first. Both stay the caller's and must outlive the stream. An abstract stream offers its own output type only.
 * STO_STATUS_BAD_ARGUMENT: n below 1, buffer or callback null, or a not below b. STO_STATUS_NO_MEMORY: no block. */
int __stoiNewAbstractStream(nax_stream** stream, int n, uint32_t* buffer, nax_integer_callback callback);
int __stodNewAbstractStream(nax_stream** stream, int n, double* buffer, double a, double b, nax_double_callback callback);
int __stosNewAbstractStream(nax_stream** stream, int n, float* buffer, float a, float b, nax_single_callback callback);

/* Releases a stream with all its chunks and stores null in *stream; a null one is left alone. Returns 0. */
int __stoDeleteStream(nax_stream** stream);

/* Makes a second stream in the same state. Shared chunks stay shared, the others are duplicated.
 * STO_STATUS_BAD_BRNG: the source's id isn't registered. STO_STATUS_NO_MEMORY: no block (*new_stream is null), or no chunk
 * (*new_stream then has no chunks, and the caller deletes it). */
int __stoCopyStream(nax_stream** new_stream, const nax_stream* source);

/* Copies WordSize times NSeeds bytes of state, and all chunks, between two streams of the same generator. For MCG31 that
 * is the position without the multiplier, so both streams should be equally leapfrogged; for MT2203 and the quasi-random
 * generators both need the same parameters; for SFMT19937 and PHILOX4X32X10 words not yet delivered of the last block
 * aren't copied. __stoCopyStream has none of these limits.
 * Returns 0, or STO_STATUS_NO_MEMORY with the destination's chunks gone. */
int __stoCopyStreamState(nax_stream* destination, const nax_stream* source);

/* Duplicates the source's chunks into a destination that has none; the list's order is reversed. On
 * STO_STATUS_NO_MEMORY the destination has none. */
int __stoCopyChunks(nax_stream* destination, const nax_stream* source);

/* Allocates a block for generator `brng` and fills its header; the payload is left unset. `table`, `row` and `offset` are
 * the results of __stoGetBrngBaseOffset. STO_STATUS_BAD_BRNG, STO_STATUS_NO_MEMORY: *stream is null. */
int __stoAllocateStream(nax_stream** stream, const nax_brng_properties* table, int brng, int row, int offset);

/* ---- Splitting a stream -------------------------------------------------------------------------------------------- */

/* Turns the stream into number k (from 0) of `nstreams` that share its sequence round robin: it delivers terms k,
 * k + nstreams, k + 2 nstreams ... from its present position. For quasi-random streams with nstreams = 0x7FFFFFFF it selects
 * coordinate k. STO_STATUS_BAD_NSTREAMS: negative count. STO_STATUS_NO_LEAPFROG: not offered; the stream is unchanged.
 * MCG31, MCG59 and WH offer it. */
int __stoLeapfrogStream(nax_stream* stream, int k, int nstreams);

/* Moves the stream as if nskip numbers had been drawn. STO_STATUS_NO_SKIPAHEAD: not offered, or past the end of a
 * quasi-random sequence; STO_STATUS_NO_MEMORY. Cost: O(log nskip), a fixed polynomial product for the twisters. */
int __stoSkipAheadStream(nax_stream* stream, uint64_t nskip);

/* The same for a count of n 64-bit words, least significant first. MRG32K3A, ARS5 and PHILOX4X32X10 offer it, all others
 * return STO_STATUS_NO_SKIPAHEADEX. */
int __stoSkipAheadStreamEx(nax_stream* stream, int n, const uint64_t* nskip);

/* ---- Saving and loading -------------------------------------------------------------------------------------------- */

/* Saves a stream with its chunks. `length` below 0: `name` is a C string; otherwise it has `length` characters and need
 * not be terminated. STO_STATUS_NO_MEMORY, _FILE_OPEN, _FILE_WRITE (header, payload or the last chunk's data; earlier
 * chunks' short writes go unnoticed), _FILE_CLOSE. */
int __stoSaveStreamF(const nax_stream* stream, const char* name, int length);

/* Rebuilds a stream from a file; on failure *stream is null. STO_STATUS_NO_MEMORY, _FILE_OPEN, _FILE_READ, _BAD_FILE,
 * _FILE_TOO_NEW, _NO_RDRAND, _NO_AES, _FILE_CLOSE. */
int __stoLoadStreamF(nax_stream** stream, const char* name, int length);

/* Bytes of a stream's image. */
int __stoGetStreamSize(const nax_stream* stream);

/* Writes the image into `memory`, which has at least __stoGetStreamSize bytes. Returns 0. */
int __stoSaveStreamM(const nax_stream* stream, void* memory);

/* Rebuilds a stream from an image, which must be whole: no length is given, so none can be tested. On failure *stream is
 * null. STO_STATUS_BAD_IMAGE: bad magic, version, generator or size; STO_STATUS_NO_MEMORY, _FILE_READ (chunks of an unknown
 * layout), _NO_RDRAND, _NO_AES. */
int __stoLoadStreamM(nax_stream** stream, const void* memory);

/* ---- Registry ------------------------------------------------------------------------------------------------------ */

/* Decodes an id: returns the table it belongs to and fills row and sub-stream offset. No checks. */
const nax_brng_properties* __stoGetBrngBaseOffset(int brng, int* row, int* offset);

/* 0 or STO_STATUS_BAD_BRNG for the results of __stoGetBrngBaseOffset. Rows 279 and 280 of the older table pass. */
int __stoIsBrngValid(const nax_brng_properties* table, int row, int offset);

/* Adds a generator of the caller's and returns its id, 0x1100000 for the first one. Not to be called beside stream
 * creation on another thread. STO_STATUS_BAD_STATE_SIZE, _BAD_WORD_SIZE, _BAD_NSEEDS, _BAD_NBITS, _NULL_POINTER;
 * STO_STATUS_NO_MEMORY when all 512 rows are taken. */
int __stoRegisterBrng(const nax_brng_properties* row);

/* Copies the row of generator `brng`. STO_STATUS_BAD_BRNG. */
int __stoGetBrngProperties(int brng, nax_brng_properties* properties);

/* Number of generators in the current table, the 16 built-in ones included. */
int __stoGetNumRegBrngs(void);

/* The id that the stream was created with. */
int __stoGetStreamStateBrng(const nax_stream* stream);

/* ---- Generators ---------------------------------------------------------------------------------------------------- */

/* Each generator fills its registry row with four functions. InitStream: see the methods above; -2 for another method.
 * sBRng and dBRng write n numbers on [a, b) (b itself can come out by rounding), iBRng n raw words of WordSize bytes.
 * They return 0 unless the generator's notes say otherwise; n of 0 or less writes nothing. */

/* MCG31. Words in 1 to 2^31-2. STO_STATUS_NO_MEMORY from real output, leapfrog and skip-ahead when its chunk is missing. */
int __stoBRngMCG31M1InitStream(int method, nax_stream* stream, int n, const void* params);
int __stosBRngMCG31M1(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngMCG31M1(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngMCG31M1(nax_stream* stream, int n, void* r);

/* R250. No leapfrog, no skip-ahead. */
int __stoBRngR250InitStream(int method, nax_stream* stream, int n, const void* params);
int __stosBRngR250(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngR250(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngR250(nax_stream* stream, int n, void* r);

/* MRG32K3A. Both skips, no leapfrog. STO_STATUS_NO_MEMORY from a long skip of more than ten words. */
int __stoBRngMRG32K3AInitStream(int method, nax_stream* stream, int n, const void* params);
int __stosBRngMRG32K3A(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngMRG32K3A(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngMRG32K3A(nax_stream* stream, int n, void* r);

/* MCG59. Words of 64 bits below 2^59. Statuses as MCG31. */
int __stoBRngMCG59InitStream(int method, nax_stream* stream, int n, const void* params);
int __stosBRngMCG59(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngMCG59(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngMCG59(nax_stream* stream, int n, void* r);

/* WH. Each output of iBRng is four 32-bit words, one per component. */
int __stoBRngWHInitStream(int method, nax_stream* stream, int n, const void* params);
int __stosBRngWH(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngWH(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngWH(nax_stream* stream, int n, void* r);

/* IABSTRACT, DABSTRACT, SABSTRACT: neither leapfrog nor skip-ahead. STO_STATUS_WRONG_ABSTRACT_KIND for output of another
 * type, STO_STATUS_NULL_POINTER without a buffer, STO_STATUS_CALLBACK_BAD_COUNT, STO_STATUS_CALLBACK_EMPTY. After a failure
 * the stream's position is the one before the call. */
int __stoBRngiAbstractInitStream(int method, nax_stream* stream, int n, const void* params);
int __stosBRngiAbstract(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngiAbstract(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngiAbstract(nax_stream* stream, int n, void* r);
int __stoBRngdAbstractInitStream(int method, nax_stream* stream, int n, const void* params);
int __stosBRngdAbstract(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngdAbstract(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngdAbstract(nax_stream* stream, int n, void* r);
int __stoBRngsAbstractInitStream(int method, nax_stream* stream, int n, const void* params);
int __stosBRngsAbstract(nax_stream* stream, int n, float* r, float a, float b);
int __stodBRngsAbstract(nax_stream* stream, int n, double* r, double a, double b);
int __stoiBRngsAbstract(nax_stream* stream, int n, void* r);

/* ---- Quasi-random streams with the caller's parameters -------------------------------------------------------------- */

/* Build direction numbers from the seeding parameters above (n words at params, already tested for length), into the
 * stream or into a block of 33 words for each dimension. `work` is the block of the current point and the rows by bit.
 * 0 or STO_STATUS_BAD_ARGUMENT. */
int __stoSobolUserPolyms(nax_stream* stream, int n, const uint32_t* params);
int __stoSobolUserPolymsDirNumsChunk(nax_stream* stream, int n, const uint32_t* params, uint32_t* block, uint32_t* work);
int __stoNiederrInitUserPolymsStreamStruct(nax_stream* stream, int n, const uint32_t* params);
int __stoNiederrInitUserPolymsChunk(nax_stream* stream, int n, const uint32_t* params, uint32_t* block);

/* Bodies of the parallel loop for single-precision SOBOL points: one block of 32 dimensions for all points. `context` is
 * the library's own record. */
void __sto_sobol_s_default_kernel_aligned(int block, int64_t unused1, int64_t unused2, void* context);
void __sto_sobol_s_default_kernel_unaligned(int block, int64_t unused1, int64_t unused2, void* context);
void __sto_sobol_s_user_kernel_aligned(int block, int64_t unused1, int64_t unused2, void* context);
void __sto_sobol_s_user_kernel_unaligned(int block, int64_t unused1, int64_t unused2, void* context);

#ifdef __cplusplus
}
#endif

#endif
