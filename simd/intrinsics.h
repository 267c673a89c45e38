// The compiler's intrinsics without its false alarms, and the attribute of every wrapper.
#pragma once

#pragma GCC diagnostic push
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"  // the undefined pass-through operands of unmasked forms
#endif
#include <immintrin.h>
#pragma GCC diagnostic pop

#define NAX_VEC [[gnu::always_inline]] inline
