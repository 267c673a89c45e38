#include <unistd.h>

#include "service/service.h"

// The caller has no memory and may hold locks, so nothing else is run on the way out.
extern "C" [[noreturn]] void nax_serv_exit(int code) { _exit(code); }
