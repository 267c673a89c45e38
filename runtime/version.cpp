#include "nax/mode.h"

extern "C" int dll_cpu_version() { return 9; }
