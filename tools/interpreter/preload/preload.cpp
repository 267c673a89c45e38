// LD_PRELOAD=libavx512_interpreter.so PROGRAM: runs a program with AVX-512 code on a host without it.
#include "tools/interpreter/emulator.h"

namespace {

[[gnu::constructor]] void install() { nax::emulator::install_if_needed(); }

}  // namespace
