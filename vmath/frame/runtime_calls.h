// What kernels call in the runtime: mode word, error reporters, x87 control word.
#pragma once

#include <cstdint>

extern "C" {

uint32_t nax_arq_kernel_GetMode();

// Sets all six exception masks of the x87 control word; `saved` receives the word found. 1 if the word changed.
int nax_arq_kernel_modify_fpucw_mask_exceptions(uint16_t* saved, uint16_t* built);

void nax_arq_kernel_sError(int32_t status, int32_t index, const float* a1, const float* a2, float* r1, float* r2,
                           const char* name);
void nax_arq_kernel_dError(int32_t status, int32_t index, const double* a1, const double* a2, double* r1, double* r2,
                           const char* name);
void nax_arq_kernel_sErrorI(int32_t status, int32_t index, const float* a1, int32_t inca1, const float* a2,
                            int32_t inca2, float* r1, int32_t incr1, float* r2, int32_t incr2, const char* name);
void nax_arq_kernel_dErrorI(int32_t status, int32_t index, const double* a1, int32_t inca1, const double* a2,
                            int32_t inca2, double* r1, int32_t incr1, double* r2, int32_t incr2, const char* name);
}
