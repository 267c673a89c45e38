// Runs AVX-512 code on a host without it: an illegal-instruction handler interprets what the processor refuses.
// For tests only; speed is that of an interpreter.
#pragma once

namespace nax::emulator {

// True when the processor and the operating system offer what the kernels need.
bool host_has_avx512();

// Installs the handler on a host that lacks AVX-512; does nothing elsewhere. Returns true if the handler is active.
bool install_if_needed();

}  // namespace nax::emulator
