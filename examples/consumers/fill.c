/* A C program that uses the installed library: fills an array, asks for the pool, and shows this thread's mode word. */
#include <inttypes.h>
#include <stdio.h>

#include "nax/mode.h"
#include "nax/primitives.h"
#include "nax/threaders.h"

int main(void) {
    double values[100];
    nax_threaders threaders;
    double sum = 0;
    if (nax_dft_avx2_opasSet_64f(0.5, values, 100) != 0) return 1;
    for (int i = 0; i < 100; ++i) sum += values[i];
    if (sum != 50) return 2;
    if (nax_serv_fill_threaders(&threaders) != 0) return 3; /* 1 would be the serial stand-in */
    printf("sum %g, threads %s, mode 0x%" PRIx32 "\n", sum, threaders.max_threads() > 0 ? "yes" : "no", _arqGetMode());
    return 0;
}
