#include "tools/interpreter/emulator.h"

namespace nax::emulator {

bool host_has_avx512() {
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
           __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
}

}  // namespace nax::emulator
