#include "tests/emulator/emulator.h"

namespace nax::emulator {

bool install_if_needed() { return false; }

}  // namespace nax::emulator
