#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "tools/interpreter/emulator.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define NAX_LEAK_CHECK_AT_EXIT 1
#endif
#endif

// Defaults of the sanitizer builds: tests ask for impossible amounts of memory, and for floating-point signals.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1:handle_sigfpe=0"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1:handle_sigfpe=0"; }

namespace {

// The leak check at exit of clang 14 crashes on the threads of an OpenMP runtime that was loaded with dlopen.
[[maybe_unused]] bool pool_is_loaded() {
    FILE* const maps = std::fopen("/proc/self/maps", "r");
    if (maps == nullptr) return false;
    char line[4096];
    bool found = false;
    while (!found && std::fgets(line, sizeof line, maps) != nullptr) found = std::strstr(line, "libnax_threads") != nullptr;
    std::fclose(maps);
    return found;
}

}  // namespace

int main(int argc, char** argv) {
    nax::emulator::install_if_needed();
    testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
#ifdef NAX_LEAK_CHECK_AT_EXIT
    if (pool_is_loaded()) {
        std::fflush(nullptr);
        _exit(result);
    }
#endif
    return result;
}
