// What kernels call in the runtime: mode word, error reporters, x87 control word.
#pragma once

#include "nax/error.h"
#include "nax/mode.h"

// Sets all six exception masks of the x87 control word; `saved` receives the word found. 1 if the word changed.
extern "C" int32_t nax_arq_kernel_modify_fpucw_mask_exceptions(uint16_t* saved, uint16_t* built);
