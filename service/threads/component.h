// What the service layer looks for in the threading component, besides the pair that callers fetch by name.
#pragma once

#include "nax/threaders.h"

extern "C" {
using nax_threads_fill_function = void (*)(nax_threaders* table);
}

inline constexpr char kFillName[] = "nax_serv_threads_fill_table";
