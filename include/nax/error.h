/* Errors of single vector elements: per-thread status, callback, errno, printed messages and x87 flags.
 *
 * A vector function returns nothing. An element that it can't settle in an ordinary way - an argument outside the
 * domain, a pole, an overflow, an underflow - gets its result all the same and is reported by the rules of the thread's
 * error mode (nax/mode.h), in this order:
 *   ARQ_ERRMODE_NOERR alone    no report
 *   any other mode             the status is stored, replacing the one before
 *   ARQ_ERRMODE_IGNORE alone   nothing more
 *   ARQ_ERRMODE_CALLBACK       the callback, if one is set, gets an arq_error_record; non-zero ends the report
 *   ARQ_ERRMODE_ERRNO          errno as in the table below
 *   ARQ_ERRMODE_STDERR         a line for the status, then lines with arguments and results (real parts)
 *   ARQ_ERRMODE_EXCEPT         the x87 exception flag; with the matching trap bit, SIGFPE
 * after which the record's r1 and r2, which a callback may have changed, become the element's results.
 *
 * All functions act on the calling thread's state, take constant time, and may be called from any thread. A layer that
 * spreads a call over threads gathers their statuses itself. docs/statuses.md has messages and numbers in one place. */
#ifndef NAX_ERROR_H
#define NAX_ERROR_H

#include <stdint.h>

#include "nax/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What a callback gets; 144 bytes. Single-precision values are widened. With the two negative statuses none of the
 * value fields is filled. A kernel with one argument or one result passes it twice. */
typedef struct arq_error_record {
    int32_t status;
    int32_t index;       /* position of the element in the caller's vector, see _arqSetInterfInputVectorPointer */
    double a1;           /* first argument, real part */
    double a2;           /* second argument */
    double r1;           /* first result; may be changed */
    double r2;           /* second result; may be changed */
    char name[64];       /* user-visible name of the function, such as "vdExp", cut to 47 characters */
    int32_t name_length; /* number of characters in `name` */
    int32_t reserved;    /* not written */
    double a1_imag;      /* these four for complex functions only */
    double a2_imag;
    double r1_imag;
    double r2_imag;
} arq_error_record;

/* Runs on the thread of the vector call, inside it. Returning 0 lets the standard actions of the mode follow and then
 * writes r1 and r2 of the record to the caller's result vectors; any other value ends the report, and the element
 * keeps the result that the function had found. */
typedef int32_t (*arq_error_callback)(arq_error_record* record);

/* Every accessor exists under an outer and a kernel name, which behave alike. */

/* The status of the last report on this thread, 0 at first. A success does not clear it. Set and Clear return the
 * previous one. */
int32_t _arqSetErrStatus(int32_t status);
int32_t _arqGetErrStatus(void);
int32_t _arqClearErrStatus(void);
int32_t nax_arq_kernel_SetErrStatus(int32_t status);
int32_t nax_arq_kernel_GetErrStatus(void);
int32_t nax_arq_kernel_ClearErrStatus(void);

/* This thread's callback, null at first. Set and Clear return the previous one. It is called only in modes with
 * ARQ_ERRMODE_CALLBACK, which the default mode has. */
arq_error_callback _arqSetErrorCallBack(arq_error_callback callback);
arq_error_callback _arqGetErrorCallBack(void);
arq_error_callback _arqClearErrorCallBack(void);
arq_error_callback nax_arq_kernel_SetErrorCallBack(arq_error_callback callback);
arq_error_callback nax_arq_kernel_GetErrorCallBack(void);
arq_error_callback nax_arq_kernel_ClearErrorCallBack(void);

/* For a layer that cuts one vector into several calls: start of the whole first argument vector. While it is not null,
 * reported indices count from there, in elements, whatever the stride. Null switches this off. */
void _arqSetInterfInputVectorPointer(const void* whole_vector);
void nax_arq_kernel_SetInterfInputVectorPointer(const void* whole_vector);

/* The reporters, one call for one element. `a1`, `a2`, `r1` and `r2` are the starts of the vectors (float or double;
 * for c and z pairs, real part first), the element is vector[index], or vector[index * stride] in the forms with
 * strides, which count elements and pairs. `name` is the function's user-visible name. A layer above reports its own
 * findings, ARQ_STATUS_BAD_ARGUMENT and ARQ_STATUS_BAD_MEMORY, here too: the four vectors are then not touched. */
void nax_arq_kernel_sError(int32_t status, int32_t index, const float* a1, const float* a2, float* r1, float* r2,
                           const char* name);
void nax_arq_kernel_dError(int32_t status, int32_t index, const double* a1, const double* a2, double* r1, double* r2,
                           const char* name);
void nax_arq_kernel_cError(int32_t status, int32_t index, const float* a1, const float* a2, float* r1, float* r2,
                           const char* name);
void nax_arq_kernel_zError(int32_t status, int32_t index, const double* a1, const double* a2, double* r1, double* r2,
                           const char* name);
void nax_arq_kernel_sErrorI(int32_t status, int32_t index, const float* a1, int32_t inca1, const float* a2,
                            int32_t inca2, float* r1, int32_t incr1, float* r2, int32_t incr2, const char* name);
void nax_arq_kernel_dErrorI(int32_t status, int32_t index, const double* a1, int32_t inca1, const double* a2,
                            int32_t inca2, double* r1, int32_t incr1, double* r2, int32_t incr2, const char* name);
void nax_arq_kernel_cErrorI(int32_t status, int32_t index, const float* a1, int32_t inca1, const float* a2,
                            int32_t inca2, float* r1, int32_t incr1, float* r2, int32_t incr2, const char* name);
void nax_arq_kernel_zErrorI(int32_t status, int32_t index, const double* a1, int32_t inca1, const double* a2,
                            int32_t inca2, double* r1, int32_t incr1, double* r2, int32_t incr2, const char* name);

/* Destructors of a thread's cells: give them back to the service layer. */
void ErrStatus_cleanup(void* cell);
void CallBack_cleanup(void* cell);
void InputVecorPointer_cleanup(void* cell);

/* Record of the key behind one kind of per-thread cell; zero until the first use. */
typedef struct nax_tls_key {
    uint32_t key;              /* as pthread_key_create gives it */
    void (*destructor)(void*); /* frees the cell of an ending thread */
    int32_t lock;              /* service-layer lock, held while the key is made */
    uint32_t flags;            /* bit 0: the key exists */
} nax_tls_key;

/* Deletes the key if it exists; the service layer calls it for each key at its end. Cells of living threads stay. */
void nax_tls_destroy(void* key_record);

#ifdef __cplusplus
}
#endif
#endif
