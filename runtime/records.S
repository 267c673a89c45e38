// Dispatch records and stubs of the vector functions, one of each for every row of records.def and form.
//
// A record is two exported objects side by side: the table of three kernels (slots LA, HA, EP) and three costs of one
// element, padded to 16 bytes. Assembler, because a C++ compiler is free to place the two apart.
// A stub is one load from its slot and one jump, nine bytes; arguments pass through untouched. The stubs of the pack
// group first tell the kernel, in the fifth integer argument, that indices and masks are 32-bit integers.
#include "runtime/kernel_names.h"

.macro exported name, kind
    .globl \name
    .type \name, @\kind
.endm

.macro stub name, table, slot, pack
    .p2align 4
    exported \name, function
\name:
    .if \pack
    movl $1, %r8d
    .endif
    movq .L\table + 8 * \slot(%rip), %rax
    jmp *%rax
    .size \name, . - \name
.endm

// `name` is type letter and function, with the I of the strided form.
.macro record name, la, ha, ep, stub_la, stub_ep, cost_la, cost_ha, cost_ep, pack
    .data
    .p2align 3
    exported nax_arq_kernel_\name\()_ttab, object
nax_arq_kernel_\name\()_ttab:
.L\name:
    .quad nax_arq_kernel_\name\()_\la
    .quad nax_arq_kernel_\name\()_\ha
    .quad nax_arq_kernel_\name\()_\ep
    .size nax_arq_kernel_\name\()_ttab, 24
    exported nax_arq_kernel_\name\()_ctab, object
nax_arq_kernel_\name\()_ctab:
    .float \cost_la, \cost_ha, \cost_ep
    .long 0
    .size nax_arq_kernel_\name\()_ctab, 16

    .text
    stub _arq\name, \name, 1, \pack
    stub _arq\name\()_HA, \name, 1, \pack
    stub _arq\name\()_\stub_la, \name, 0, \pack
    stub _arq\name\()_\stub_ep, \name, 2, \pack
.endm

#define RECORD_FORM(type, name, la, ha, ep, cost_la, cost_ha, cost_ep, pack) \
    record name, NAX_TAG_##la, NAX_TAG_##ha, NAX_TAG_##ep, NAX_STUB_LA_##type, NAX_STUB_EP_##type, \
        cost_la, cost_ha, cost_ep, pack

#define RECORD(type, function, signature, la, ha, ep, cost_la, cost_ha, cost_ep) \
    RECORD_FORM(type, type##function, la, ha, ep, cost_la, cost_ha, cost_ep, 0); \
    RECORD_FORM(type, type##function##I, la, ha, ep, cost_la, cost_ha, cost_ep, 0)
#define PACK_RECORD(type, function, signature, la, ha, ep, cost_la, cost_ha, cost_ep) \
    RECORD_FORM(type, type##function, la, ha, ep, cost_la, cost_ha, cost_ep, 1)

#include "runtime/records.def"

    .section .note.GNU-stack, "", @progbits
