#include <gtest/gtest.h>

#include "tests/emulator/emulator.h"

// Defaults of the sanitizer builds: tests ask for impossible amounts of memory, and for floating-point signals.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1:handle_sigfpe=0"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1:handle_sigfpe=0"; }

int main(int argc, char** argv) {
    nax::emulator::install_if_needed();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
