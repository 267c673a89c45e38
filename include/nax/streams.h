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
