/* The mode word: which accuracy a dispatching caller picks, what happens on errors, and whether denormals are flushed.
 *
 * Each thread has a word of its own, made on first use: from the environment variable NAX_ARQ_MODE if it holds a valid
 * value, else ARQ_MODE_DEFAULT. A new thread does not inherit its parent's word. All functions here may be called from
 * any thread and take constant time; they fail only by ending the process with code 3 when a thread's first word can't
 * be allocated.
 *
 * NAX_ARQ_MODE is a comma-separated list of items, in any order, each "ARQ_" and a keyword:
 *   LA HA EP DEFAULT_PRECISION                                     accuracy (HA when none is given)
 *   ERRMODE_IGNORE ERRMODE_ERRNO ERRMODE_STDERR ERRMODE_EXCEPT
 *   ERRMODE_CALLBACK ERRMODE_NOERR ERRMODE_DEFAULT                 error mode (the default when none is given)
 *   TRAP_INVALID TRAP_DIVBYZERO TRAP_OVERFLOW TRAP_UNDERFLOW       trap bits
 *   FLOAT_CONSISTENT DOUBLE_CONSISTEN RESTORE                      accepted, without effect; the second is spelt so
 * for instance NAX_ARQ_MODE=ARQ_LA,ARQ_ERRMODE_STDERR. Items are combined by OR (LA with HA gives EP). A value with
 * anything else in it, with a comma at its end, or of 255 characters or more counts as absent, without a message. */
#ifndef NAX_MODE_H
#define NAX_MODE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Accuracy field. */
#define ARQ_LA 0x00000001u
#define ARQ_HA 0x00000002u
#define ARQ_EP 0x00000003u
#define ARQ_ACCURACY_MASK 0x0000000Fu

/* Floating-point precision requests: taken from the environment alone, and without effect. */
#define ARQ_PRECISION_MASK 0x000000F0u

/* Error mode: what a reporter does (nax/error.h). IGNORE and NOERR count when they stand alone in the field. */
#define ARQ_ERRMODE_IGNORE 0x00000100u   /* keep the status, nothing else */
#define ARQ_ERRMODE_ERRNO 0x00000200u    /* set errno */
#define ARQ_ERRMODE_STDERR 0x00000400u   /* print to the standard error stream */
#define ARQ_ERRMODE_EXCEPT 0x00000800u   /* raise the x87 exception flag */
#define ARQ_ERRMODE_CALLBACK 0x00001000u /* call the thread's callback, if one is set */
#define ARQ_ERRMODE_NOERR 0x00002000u    /* no report at all: rare elements keep the vector code's result */
#define ARQ_ERRMODE_DEFAULT 0x00001A00u
#define ARQ_ERRMODE_MASK 0x0000FF00u

/* Carried for callers: stored and returned, and not looked at. */
#define ARQ_CARRIED_MASK 0x00030000u

/* Denormal field: kernels flush denormal arguments and results to zero when it is ARQ_DENORMALS_FLUSH;
 * ARQ_DENORMALS_KEEP and every other value mean no flushing. */
#define ARQ_DENORMALS_FLUSH 0x00280000u
#define ARQ_DENORMALS_KEEP 0x00140000u
#define ARQ_DENORMALS_MASK 0x003C0000u

/* Traps: an error raised under ARQ_ERRMODE_EXCEPT becomes a floating-point signal (SIGFPE) on the calling thread. */
#define ARQ_TRAP_INVALID 0x01000000u
#define ARQ_TRAP_DIVBYZERO 0x02000000u
#define ARQ_TRAP_OVERFLOW 0x04000000u
#define ARQ_TRAP_UNDERFLOW 0x08000000u
#define ARQ_TRAP_MASK 0x0F000000u

#define ARQ_MODE_DEFAULT (ARQ_HA | ARQ_ERRMODE_DEFAULT)

/* Changes this thread's word and returns the previous one. Accuracy, error mode, denormal field, trap bits and carried
 * field are each replaced if the argument's field is not zero and left alone otherwise; so 0 changes nothing, and a
 * field that is zero can't be restored by handing the old word back. Other bits of `mode` are dropped. Accuracy values
 * above 3 are stored as given. The second name is the kernels' own entry to the same function. */
uint32_t _arqSetMode(uint32_t mode);
uint32_t nax_arq_kernel_SetMode(uint32_t mode);

/* This thread's word. */
uint32_t _arqGetMode(void);
uint32_t nax_arq_kernel_GetMode(void);

/* Slot of a dispatch record (0 LA, 1 HA, 2 EP) that this thread's word asks for: its accuracy field less one. The
 * caller holds to 0, 1, 2 where it has stored an accuracy above 3. */
int32_t nax_arq_kernel_GetTTableIndex(void);

/* The same for the word `mode`; the first argument has no meaning. Touches no state. -1 for accuracy 0. */
int32_t nax_arq_kernel_GetTTableIndexM(int64_t unused, int64_t mode);

/* The mode word that NAX_ARQ_MODE asks for, without the defaults that a thread's first word gets; -1 when the variable
 * is absent or does not parse. */
int64_t nax_arq_kernel_ReadEnvVarMode(void);

/* Destructor of a thread's cell: gives it back to the service layer. */
void Mode_cleanup(void* cell);

/* Version of the processor level that this library is made for, by which a dispatching layer tells it from its
 * siblings. */
int dll_cpu_version(void);

#ifdef __cplusplus
}
#endif
#endif
