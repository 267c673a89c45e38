/* Processor identification, cache geometry, time stamps and floating-point control of the calling thread.
 *
 * Thin wrappers on single instructions of x86-64 (the processor makers' manuals: CPUID, XGETBV, RDTSC, FNSTCW, STMXCSR
 * and their kin). All may be called from any thread; control functions act on the calling thread alone. Test functions
 * return 1 for yes and 0 for no. CPUID takes a thousand times longer under a hypervisor than natively: keep what it
 * says. */
#ifndef NAX_PROCESSOR_H
#define NAX_PROCESSOR_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* --- identification --- */

/* EAX, EBX, ECX, EDX of a CPUID leaf and sub-leaf; both names do the same. */
void nax_dft_opa_get_cpuid(uint32_t registers[4], uint32_t leaf, uint32_t sub_leaf);
void nax_dft_ownGetReg(uint32_t registers[4], uint32_t leaf, uint32_t sub_leaf);

uint32_t nax_dft_opa_max_cpuid_input(void); /* highest basic CPUID leaf */
int nax_dft_opa_has_cpuid(void);            /* always 1 */
int nax_dft_opa_has_rdtsc(void);
int nax_dft_opa_is_mmx_extension(void);
int nax_dft_opa_is_ssx_extension(void); /* the first 128-bit extension */
int nax_dft_opa_is_sse2_extension(void);
int nax_dft_opa_is_sse3_extension(void);
int nax_dft_opa_is_ssse3_extension(void);
int nax_dft_opa_is_sse41_extension(void);
int nax_dft_opa_is_sse42_extension(void);
int nax_dft_opa_is_movbe(void);
int nax_dft_opa_is_wide64_extension(void); /* 64-bit mode */
int nax_dft_opa_is_htt_extension(void);    /* several logical processors in the package */
int nax_dft_opa_is_avx_extension(void);    /* AVX, with registers that the operating system saves */
int nax_dft_opa_is_avx512_extension(void); /* the operating system saves mask and 512-bit registers */
int nax_dft_opa_get_cores_on_die(void);    /* from leaf 4; 1 where that is missing */
int nax_dft_opa_is_VendorOrvex(void);      /* made by the maker whose leaf 2 and leaf 4 tell cache sizes */

/* What leaf 1 and the extended leaves say. `type` has bits 11 and 12 of EAX; `extended` the registers of leaves
 * 0x80000000 to 0x80000008, zero from the first one that the processor lacks. */
typedef struct nax_processor_ident {
    uint32_t family;
    uint32_t stepping;
    uint32_t model;
    uint32_t type;
    uint32_t extended_model;
    uint32_t extended_family;
    uint32_t features_edx;
    uint32_t mmx_extension;
    uint32_t ssx_extension;
    uint32_t sse2_extension;
    uint32_t htt_extension;
    uint32_t sse3_extension;
    uint32_t ssse3_extension;
    uint32_t sse41_extension;
    uint32_t sse42_extension;
    uint32_t movbe;
    uint32_t osxsave;
    uint32_t avx_extension;
    uint32_t max_extended_leaf;
    uint32_t extended[9][4];
} nax_processor_ident;

/* Fills the record. Returns 0, or -8 for a null pointer. */
int nax_dft_opa_get_kestrel_ident(nax_processor_ident* ident);

/* --- caches --- */

/* Size of the largest data or unified cache in bytes, and its line size in bytes (0 where only leaf 2 tells the size).
 * Found on the first call of either and kept. Status: 0; 36 for a processor of another maker or without usable CPUID;
 * 37 when nothing is told about caches; -8 for a null pointer. With a non-zero status the value is 0. */
int nax_dft_opaGetMaxCacheSizeB(int32_t* size);
int nax_dft_opa_get_cache_line_size(int32_t* size);

/* Size of the largest cache that leaf 2 describes, or -1. */
int32_t nax_dft_ownGetCacheSize(void);

/* --- time stamps --- */

uint64_t nax_dft_opa_get_kestrel_counter(void); /* the counter as it stands, unordered */
uint64_t nax_dft_opaStartTsc(void);             /* fenced from what came before */
uint64_t nax_dft_opaStopTsc(void);              /* fenced from what comes after */
uint64_t nax_dft_opaStartTscp(void);            /* the same two with RDTSCP, which waits for earlier instructions */
uint64_t nax_dft_opaStopTscp(void);

/* --- floating-point values --- */

int nax_dft_opa_isnan(double value);
int nax_dft_opa_finite(double value);

/* --- MXCSR --- */

uint32_t nax_dft_ps_get_ssx(void);
uint32_t nax_dft_ps_set_ssx(uint32_t value, uint32_t mask); /* bits of `mask` become those of `value`; the old word */
uint32_t nax_dft_opa_clear_ssx(void);                       /* back to 0x1F80; returns the old word */
uint32_t nax_dft_opa_set_rc_ssx(uint32_t mode);             /* rounding bits 0x6000; returns the old word */
void nax_dft_opa_set_cw_ssx(uint32_t value);                /* loads the word; reserved bits must be 0 */
int nax_dft_opa_tst_daz_ssx(void);                          /* 1 if denormals-are-zero can be set */

/* --- x87 --- */

uint32_t nax_dft_ps_get_cw_fpu(void);                             /* control word */
uint32_t nax_dft_ps_get_sw_fpu(void);                             /* status word */
uint32_t nax_dft_ps_set_cw_fpu(uint32_t value, uint32_t mask);    /* bits of `mask` become those of `value`; old word */
uint32_t nax_dft_opa_set_rcpc_fpu(uint32_t value, uint32_t mask); /* the same, writing only if something changes */
void nax_dft_opa_set_cw_fpu(uint32_t value);                      /* loads the control word */
uint32_t nax_dft_ps_clear_fpu(void);                              /* clears exceptions; returns the old status word */

/* Masks all x87 exceptions if any is unmasked: stores the old control word in *old_word and the new one in *new_word,
 * clears pending exceptions, loads the new word and returns 1. Returns 0, and writes nothing, if all are masked. Leaves
 * every vector and mask register alone. */
int32_t nax_arq_kernel_modify_fpucw_mask_exceptions(uint16_t* old_word, uint16_t* new_word);

/* --- both in one abstract word, as the C runtime functions of these names have it --- */

#define NAX_CW87_INEXACT 0x00000001u /* exceptions: status flags, and masks in the control word */
#define NAX_CW87_UNDERFLOW 0x00000002u
#define NAX_CW87_OVERFLOW 0x00000004u
#define NAX_CW87_ZERODIVIDE 0x00000008u
#define NAX_CW87_INVALID 0x00000010u
#define NAX_CW87_DENORMAL 0x00080000u
#define NAX_CW87_EXCEPTIONS 0x0008001Fu
#define NAX_CW87_ROUNDING 0x00000300u  /* nearest 0, down 0x100, up 0x200, toward zero 0x300 */
#define NAX_CW87_PRECISION 0x00030000u /* x87 only: 64 bits 0, 53 bits 0x10000, 24 bits 0x20000 */
#define NAX_CW87_INFINITY 0x00040000u  /* x87 only, without effect since the 387 */
#define NAX_CW87_DENORMALS \
    0x03000000u /* MXCSR only: keep 0, flush 0x1000000, operands only 0x2000000, results only 0x3000000 */
#define NAX_CW87_AMBIGUOUS 0x80000000u /* x87 and MXCSR differ in masks or rounding; the x87 ones are shown */

uint32_t nax_dft_opa_control87(uint32_t value,
                               uint32_t mask); /* bits of `mask` become those of `value`; the new word */
uint32_t nax_dft_opa_status87(void);           /* exception flags of both */
uint32_t nax_dft_opa_clear87(void);            /* clears both; returns the old flags */

#ifdef __cplusplus
}
#endif
#endif
