// The thread's mode word, as library code reads and changes it.
#pragma once

#include "nax/mode.h"
#include "runtime/tls_cell.h"

namespace nax::runtime {

// Makes the thread's first word, from the environment or the default, and returns it.
[[gnu::visibility("hidden")]] uint32_t make_first_mode();

// A zero cell is a word not made yet: a made word has an accuracy and an error mode.
inline uint32_t get_mode() {
    const uint32_t word = mode_cell();
    return word != 0 ? word : make_first_mode();
}

[[gnu::visibility("hidden")]] uint32_t set_mode(uint32_t mode);

}  // namespace nax::runtime
