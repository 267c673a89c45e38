// The instruction set that a file is compiled for, as the name of a namespace. Every template and inline function that
// files of different sets share stands in that namespace: bodies of two sets under one name would be merged by the linker.
#pragma once

#if defined(__AVX512F__)
#define NAX_ISA avx512
#elif defined(__AVX2__)
#define NAX_ISA avx2
#elif defined(__AVX__)
#define NAX_ISA avx
#else
#define NAX_ISA sse2
#endif
