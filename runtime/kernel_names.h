// Spelling of kernel and stub names, shared by the assembler tables and the C++ record list.
#ifndef NAX_RUNTIME_KERNEL_NAMES_H
#define NAX_RUNTIME_KERNEL_NAMES_H

// The tag that ends a kernel's name: instruction set, level, and three flag letters.
#define NAX_TAG_Z0LA Z0LAynn
#define NAX_TAG_Z0HA Z0HAynn
#define NAX_TAG_Z0EP Z0EPnnn
#define NAX_TAG_L9LA L9LAynn
#define NAX_TAG_L9HA L9HAynn
#define NAX_TAG_L9EP L9EPnnn
#define NAX_TAG_E9HA E9HAynn
#define NAX_TAG_EXHA EXHAynn

// The stub suffixes of slot 0 (LA) and slot 2 (EP): accuracy in bits, by precision.
#define NAX_STUB_LA_s 21
#define NAX_STUB_LA_c 21
#define NAX_STUB_LA_d 50
#define NAX_STUB_LA_z 50
#define NAX_STUB_EP_s 11
#define NAX_STUB_EP_c 11
#define NAX_STUB_EP_d 26
#define NAX_STUB_EP_z 26

#endif
